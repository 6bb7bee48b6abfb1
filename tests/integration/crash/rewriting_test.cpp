// Bookmarks and channel ranges that are stored while the process is killed, or a call of the system fails: at every
// call what was before or what is to be can be read, and whoever changes the file next goes on from there.
#include <cerrno>
#include <csignal>

#include "rewriting.h"

namespace CrashTests {
namespace {

using namespace testing;

TEST_P(Rewriting, LeavesTheOldOrTheNewStateAtEveryCallOfTheSystem)
{
    lay();
    const Tables before = tables();
    int calls = 0;
    ASSERT_EQ(changeInChild({}, calls), 0);
    const Tables after = tables();
    const std::string bytesAfter = bytes();
    ASSERT_NE(after, before);
    ASSERT_FALSE(QFile::exists(undoName()));
    EXPECT_GE(calls, 12);

    const std::vector<Trouble> troubles = {
        {true, 0, false}, {false, ENOSPC, false}, {false, ENOSPC, true}, {false, EIO, false}, {false, EIO, true}};
    std::uint64_t tried = 0;
    for (Trouble planned : troubles) {
        for (planned.from = 1; planned.from <= calls && !HasFailure(); ++planned.from, ++tried) {
            SCOPED_TRACE((planned.kill ? "killed" : "error " + std::to_string(planned.error)) +
                         (planned.lasting ? " from call " : " at call ") + std::to_string(planned.from));
            lay();
            int made = 0;
            const int exitCode = changeInChild(planned, made);
            ASSERT_EQ(exitCode == -SIGKILL, planned.kill);
            const std::string left = bytes();
            const Tables now = tables();
            ASSERT_THAT(now, AnyOf(Eq(before), Eq(after)));
            if (!planned.kill && GetParam().tells) {
                ASSERT_EQ(now, exitCode == 0 ? after : before);
            }
            ASSERT_EQ(bytes(), left);  // reading changes nothing
            if (now == after && !QFile::exists(undoName())) {
                ASSERT_EQ(left, bytesAfter);
            }
            expectGoesOn(now);
        }
    }
    count(tried, "interrupted changes");
}

// Wherever a change was interrupted, who may only read reads the state that the writer's next change starts from.
TEST_P(Rewriting, IsReadAlikeByWhoMayNotWrite)
{
    lay();
    const Tables before = tables();
    const std::string bytesBefore = bytes();
    int calls = 0;
    ASSERT_EQ(changeInChild({}, calls), 0);
    int halfway = 0;
    for (int call = 1; call <= calls && !HasFailure(); ++call) {
        SCOPED_TRACE(call);
        lay();
        ASSERT_EQ(chmod(path().c_str(), 0644), 0);
        int made = 0;
        ASSERT_EQ(changeInChild({true, 0, false, call}, made), -SIGKILL);
        if (!QFile::exists(undoName())) {
            continue;
        }
        const std::string left = bytes();
        const std::string undo = TestSupport::readFile(undoName());
        const Tables now = tables();
        halfway += now == before && left != bytesBefore ? 1 : 0;
        EXPECT_TRUE(readsWithoutPermission(now));
        EXPECT_EQ(bytes(), left);
        EXPECT_EQ(TestSupport::readFile(undoName()), undo);
    }
    EXPECT_GT(halfway, 0) << "no change was interrupted in its middle";
}

// What was read of the tables is then less than the file holds.
TEST_P(Rewriting, AfterTheTablesCouldNotBeReadWholeLosesNothing)
{
    m_more = 10'000;  // no reading buffer holds header and tables
    lay();
    const Tables before = tables();
    ASSERT_TRUE(changed(*openFile(path())));
    const Tables after = tables();
    trouble = {};
    static_cast<void>(openFile(path()));
    const int calls = trouble.calls;
    for (int call = 1; call <= calls && !HasFailure(); ++call) {
        SCOPED_TRACE(call);
        lay();
        trouble = {false, EIO, false, call};
        auto file = openFile(path());
        trouble = {};
        static_cast<void>(changed(*file));
        file.reset();
        EXPECT_THAT(tables(), AnyOf(Eq(before), Eq(after)));
    }
}

// Else a power cut could leave half a change and no way back.
TEST_P(Rewriting, HasTheWayBackOnTheDeviceBeforeTheRecordingIsTouchedAndTheRecordingBeforeItGoes)
{
    lay();
    std::vector<std::string> calls;
    {
        auto file = openFile(path());
        callsMade = &calls;
        static_cast<void>(changed(*file));
    }
    callsMade = nullptr;
    const std::string folder =
        "fsync " + QFileInfo(undoName()).absoluteDir().dirName().toStdString();  // where the way back has its name
    std::set<std::string> toBeFsynced;
    int written = 0;
    for (const std::string& call : calls) {
        if (call == "write a.rec.undo") {
            toBeFsynced.insert({"fsync a.rec.undo", folder});
        } else if (call == "write a.rec") {
            EXPECT_THAT(toBeFsynced, testing::IsSubsetOf({std::string("fsync a.rec")}));
            toBeFsynced.insert("fsync a.rec");
            ++written;
        } else if (call == "remove a.rec.undo") {
            EXPECT_THAT(toBeFsynced, testing::IsEmpty());
        }
        toBeFsynced.erase(call);
    }
    EXPECT_GT(written, 0);
    EXPECT_THAT(toBeFsynced, testing::IsEmpty());
}

// A program that saves by renaming, or who moves recordings about.
TEST_P(Rewriting, OfAFileThatTookTheNameWhileTheLockWasWaitedForChangesThatOne)
{
    lay();
    const std::string before = bytes();
    ASSERT_TRUE(changed(*openFile(path())));
    const Tables after = tables();
    lay();
    const QString name = QString::fromStdString(path());
    auto file = openFile(path());
    beforeLocking = [&] {
        EXPECT_TRUE(QFile::rename(name, name + ".aside"));
        TestSupport::writeFile(name, before);
    };
    static_cast<void>(changed(*file));
    file.reset();
    EXPECT_EQ(tables(), after);
    EXPECT_EQ(TestSupport::readFile(name + ".aside"), before);
}
std::string nameOf(const testing::TestParamInfo<RewritingCase>& tried)
{
    return tried.param.name;
}
INSTANTIATE_TEST_SUITE_P(Changes, Rewriting,
                         testing::Values(RewritingCase{"TheFirstBookmark", addTogether, true, false},
                                         RewritingCase{"TheFirstBookmarkAlone", add, true, false, false},
                                         RewritingCase{"TheFirstBookmarkWithoutRanges", add, false, false, false},
                                         RewritingCase{"AnotherBookmark", addTogether},
                                         RewritingCase{"RemovingABookmark", remove},
                                         RewritingCase{"ClearingRanges", clear},
                                         RewritingCase{"ClearingRangesAlone", clearAlone, true, false, false},
                                         RewritingCase{"RebuildingRanges", rebuild},
                                         RewritingCase{"RebuildingRangesAlone", rebuildAlone, true, false, false},
                                         RewritingCase{"TheFirstRanges", rebuild, false, false}),
                         nameOf);

using RewritingAtOnce = Rewriting;

TEST_P(RewritingAtOnce, ByManyProcessesStoresWhatEachWasTold)
{
    constexpr std::uint64_t Processes = 4;
    constexpr std::uint64_t Each = 15;
    lay();
    Tables expected = tables();
    std::vector<pid_t> children;
    for (std::uint64_t process = 0; process < Processes; ++process) {
        const pid_t child = fork();
        if (child == 0) {
            bool stored = true;
            for (std::uint64_t i = 0; i < Each; ++i) {
                auto file = openFile(path());
                stored = stored && file->rewriteTogether(
                                       [&] {
                                           file->addBookmark(1'000 + process * 100 + i, std::to_string(process));
                                           file->writeBookmarks();
                                       },
                                       {});
            }
            _exit(stored ? 0 : 1);
        }
        children.push_back(child);
    }
    for (std::uint64_t process = 0; process < Processes; ++process) {
        int status = 0;
        EXPECT_EQ(waitpid(children[process], &status, 0), children[process]);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        for (std::uint64_t i = 0; i < Each; ++i) {
            expected.bookmarks.emplace(1'000 + process * 100 + i, std::to_string(process));
        }
    }
    EXPECT_EQ(tables(), expected);
    EXPECT_FALSE(QFile::exists(undoName()));
}

TEST_P(RewritingAtOnce, KeepsTheFirstBookmarksThatAnotherStoresWhileTheLockIsWaitedFor)
{
    TestSupport::writeFile(QString::fromStdString(path()), recordingBytes(GetParam().withRanges));
    Tables expected = tables();
    auto file = openFile(path());
    beforeLocking = [&] { EXPECT_TRUE(addTogether(*openFile(path()))); };
    file->rebuildChannelRangeDef();
    file.reset();
    expected.bookmarks.emplace(1'500, "added");
    EXPECT_EQ(tables(), expected);
}

INSTANTIATE_TEST_SUITE_P(Changes, RewritingAtOnce, testing::Values(RewritingCase{"Bookmarks", add}), nameOf);

}  // namespace
}  // namespace CrashTests
