// Bookmarks and channel ranges that are stored while the process is killed, or a call of the system fails: at every
// call what was before or what is to be can be read, and whoever changes the file next goes on from there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <recording2/fileaccess.h>
#include <recording2/inspection/verify/verification.h>

#include "life.h"
#include "support/recordingbytes.h"

namespace {

/// What happens at the call of the system with a number, once or from then on.
struct Trouble {
    bool kill = false;
    int error = 0;
    bool lasting = false;
    int from = 0;  ///< 0: never
    int calls = 0;

    bool now()
    {
        ++calls;
        return from != 0 && (lasting ? calls >= from : calls == from);
    }
};
Trouble trouble;

/// What was written, forced and removed, as "write a.rec", while it is asked for.
std::vector<std::string>* callsMade = nullptr;

void note(const char* call, const std::string& path)
{
    if (callsMade != nullptr) {
        callsMade->push_back(std::string(call) + ' ' + path.substr(path.rfind('/') + 1));
    }
}

void note(const char* call, int file)
{
    char path[4'096];
    const ssize_t size = readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path);
    note(call, std::string(path, static_cast<std::size_t>(std::max(ssize_t{0}, size))));
}

/// What happens in front of the next wait for a lock, once.
std::function<void()> beforeLocking;

/// @param half what the call may have done before
template <typename Result, typename Call, typename Half>
Result troubled(Call call, Half half)
{
    if (!trouble.now()) {
        return call();
    }
    half();
    if (trouble.kill) {
        raise(SIGKILL);
    }
    errno = trouble.error;
    return -1;
}

template <typename Call>
int troubled(Call call)
{
    return troubled<int>(call, [] {});
}

}  // namespace

// Names that the linker makes, not we.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl50-cpp)
extern "C" {
int __real_open(const char* path, int flags, ...);
int __real_close(int file);
ssize_t __real_pread(int file, void* bytes, size_t size, off_t position);
ssize_t __real_pwrite(int file, const void* bytes, size_t size, off_t position);
int __real_ftruncate(int file, off_t size);
int __real_fdatasync(int file);
int __real_fsync(int file);
int __real_unlink(const char* path);
int __real_fchown(int file, uid_t owner, gid_t group);
int __real_fchmod(int file, mode_t mode);
int __real_flock(int file, int operation);

int __wrap_open(const char* path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return troubled([&] { return __real_open(path, flags, mode); });
}
int __wrap_close(int file)
{
    return troubled<int>([&] { return __real_close(file); }, [&] { __real_close(file); });
}
ssize_t __wrap_pread(int file, void* bytes, size_t size, off_t position)
{
    return troubled<ssize_t>([&] { return __real_pread(file, bytes, size, position); }, [] {});
}
ssize_t __wrap_pwrite(int file, const void* bytes, size_t size, off_t position)
{
    note("write", file);
    return troubled<ssize_t>([&] { return __real_pwrite(file, bytes, size, position); },
                             [&] { static_cast<void>(!__real_pwrite(file, bytes, size / 2, position)); });
}
int __wrap_ftruncate(int file, off_t size)
{
    note("write", file);
    return troubled([&] { return __real_ftruncate(file, size); });
}
int __wrap_fdatasync(int file)
{
    note("force", file);
    return troubled([&] { return __real_fdatasync(file); });
}
int __wrap_fsync(int file)
{
    note("force", file);
    return troubled([&] { return __real_fsync(file); });
}
int __wrap_unlink(const char* path)
{
    note("remove", path);
    return troubled([&] { return __real_unlink(path); });
}
int __wrap_fchown(int file, uid_t owner, gid_t group)
{
    return troubled([&] { return __real_fchown(file, owner, group); });
}
int __wrap_fchmod(int file, mode_t mode)
{
    return troubled([&] { return __real_fchmod(file, mode); });
}
int __wrap_flock(int file, int operation)
{
    if (const auto first = std::exchange(beforeLocking, nullptr)) {
        first();
    }
    return troubled([&] { return __real_flock(file, operation); });
}
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl50-cpp)

namespace CrashTests {
namespace {

using Recording2::CFileAccess;
using testing::AnyOf;
using testing::Eq;

/// What the tables of a file hold.
struct Tables {
    std::map<std::uint64_t, std::string> bookmarks;
    std::vector<std::uint64_t> ranges;
    bool operator==(const Tables&) const = default;
};

void PrintTo(const Tables& tables, std::ostream* out)
{
    *out << testing::PrintToString(tables.bookmarks) << ' ' << testing::PrintToString(tables.ranges);
}

std::unique_ptr<CFileAccess> openFile(const std::string& path)
{
    return std::make_unique<CFileAccess>(path.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
}

std::string recordingBytes(bool withRanges, std::size_t more = 0)
{
    TestSupport::ReferenceRecording recording;
    recording.types({{20, 7, "DFSPECTRUM", "/DfSpectrum"}});
    for (std::uint64_t i = 1; i <= 20; ++i) {
        recording.record(20, "7;1|34;1e+08,25000,2|50;" + std::string(more, ' '), 100 * i, withRanges && i % 2 == 0);
    }
    TestSupport::HeaderFields header;
    header.startMs = 1'700'000'000'000;
    header.stopMs = header.startMs + 5'000;
    return recording.close(header);
}

const std::string LongText(300, 'x');
const std::map<std::uint64_t, std::string> SomeBookmarks{{10, "one"}, {20, "two"}, {30, LongText}};

using Change = std::function<bool(CFileAccess&)>;

bool storedTogether(CFileAccess& file, const std::function<void()>& change)
{
    return file.rewriteTogether(change, {});
}

bool add(CFileAccess& file)
{
    file.addBookmark(1'500, "added");
    file.writeBookmarks();
    return true;
}

bool addTogether(CFileAccess& file)
{
    return storedTogether(file, [&] { add(file); });
}

bool remove(CFileAccess& file)
{
    return storedTogether(file, [&] {
        file.removeBookmark(30);
        file.writeBookmarks();
    });
}

bool clear(CFileAccess& file)
{
    return storedTogether(file, [&] {
        file.clearChannelRangeDef();
        file.writeBookmarks();  // into which clearing runs
    });
}

bool clearAlone(CFileAccess& file)
{
    file.clearChannelRangeDef();
    return true;
}

bool rebuild(CFileAccess& file)
{
    return storedTogether(file, [&] {
        if (file.channelRangeDefAvailable()) {
            file.clearChannelRangeDef();
        }
        for (const unsigned long long time : {300U, 500U, 900U}) {
            file.addChannelRangeDef(time);
        }
        file.rebuildChannelRangeDef();
        if (file.bookmarksAvailable()) {
            file.writeBookmarks();
        }
    });
}

bool rebuildAlone(CFileAccess& file)
{
    file.addChannelRangeDef(300);
    file.rebuildChannelRangeDef();
    return true;
}

struct RewritingCase {
    const char* name;
    Change change;
    bool withRanges = true;
    bool withBookmarks = true;
    bool tells = true;  ///< the change says whether it was stored
};

class Rewriting : public testing::TestWithParam<RewritingCase> {
protected:
    [[nodiscard]] std::string path() const { return m_directory.filePath(QStringLiteral("a.rec")).toStdString(); }
    [[nodiscard]] QString undoName() const { return m_directory.filePath(QStringLiteral("a.rec.undo")); }
    [[nodiscard]] std::string bytes() const { return TestSupport::readFile(QString::fromStdString(path())); }

    void lay() const
    {
        QFile::remove(undoName());
        TestSupport::writeFile(QString::fromStdString(path()), recordingBytes(GetParam().withRanges, m_more));
        if (GetParam().withBookmarks) {
            auto file = openFile(path());
            for (const auto& [time, text] : SomeBookmarks) {
                file->addBookmark(time, text);
            }
        }
    }
    /// What both readers read; the file must be sound.
    [[nodiscard]] Tables tables() const
    {
        namespace Inspection = Recording2::Inspection;
        const Inspection::Verification verified = Inspection::verify(path());
        EXPECT_EQ(verified.readability, Inspection::Readability::Ok) << verified.problem;
        EXPECT_EQ(verified.count(Inspection::Severity::Damage), 0U) << verified.remarks.front().text;
        EXPECT_EQ(verified.records, 20U);
        const Inspection::Summary summary = Inspection::inspect(path());
        Tables read;
        for (const Inspection::Bookmark& bookmark : summary.bookmarks) {
            read.bookmarks.emplace(bookmark.timeMs, bookmark.text);
        }
        read.ranges = summary.channelRangeTimes;
        EXPECT_EQ(tablesOfLibrary(), read);
        return read;
    }
    [[nodiscard]] Tables tablesOfLibrary() const
    {
        auto file = openFile(path());
        EXPECT_TRUE(file->IsValidFile());
        Tables read;
        std::string text;
        unsigned long long time = 0;
        std::size_t left = file->bookmarksAvailable() ? 100 : 0;
        file->BookmarkTableToBegin();
        for (bool more = true; more && left > 0; --left) {
            more = file->getNextBookmark(time, text);
            read.bookmarks.emplace(time, text);
        }
        Recording2::CVTCmdData record;
        file->CRDTableToBegin();
        for (bool more = true; more;) {
            time = 0;
            more = file->readNextChannelRangeDef(record, time);
            if (time != 0) {
                read.ranges.push_back(time);
            }
        }
        return read;
    }
    /// Nothing may throw.
    static bool changed(CFileAccess& file) noexcept { return GetParam().change(file); }
    /// The change in a process of its own, with the trouble.
    /// @return its exit code: 0 stored, 1 not stored; -1 when it was killed
    [[nodiscard]] int changeInChild(const Trouble& planned, int& calls) const
    {
        int counted[2];
        EXPECT_EQ(pipe(counted), 0);
        const pid_t child = fork();
        if (child == 0) {
            auto file = openFile(path());
            trouble = planned;
            const bool stored = changed(*file);
            const int made = trouble.calls;
            trouble = {};
            static_cast<void>(!write(counted[1], &made, sizeof made));
            _exit(stored ? 0 : 1);
        }
        ::close(counted[1]);
        calls = 0;
        static_cast<void>(!read(counted[0], &calls, sizeof calls));
        ::close(counted[0]);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    /// Whether another user, who may write neither the file nor its folder, reads these tables.
    [[nodiscard]] bool readsWithoutPermission(const Tables& expected) const
    {
        constexpr id_t Nobody = 65'534;
        const QByteArray folder = QFile::encodeName(m_directory.path());
        EXPECT_EQ(chmod(path().c_str(), 0444), 0);
        EXPECT_EQ(chmod(folder.constData(), 0555), 0);
        const pid_t child = fork();
        if (child == 0) {
            const bool another =
                geteuid() != 0 || (setgroups(0, nullptr) == 0 && setegid(Nobody) == 0 && seteuid(Nobody) == 0);
            const bool alike =
                another && !QFile(QString::fromStdString(path())).open(QIODevice::ReadWrite) && tables() == expected;
            _exit(alike && !HasFailure() ? 0 : 1);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(chmod(folder.constData(), 0700), 0);
        EXPECT_EQ(chmod(path().c_str(), 0644), 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    /// Whoever changes the file next finds it as it was read, and leaves no trace of the trouble.
    void expectGoesOn(Tables now) const
    {
        {
            auto file = openFile(path());
            EXPECT_TRUE(file->rewriteTogether(
                [&] {
                    file->addBookmark(4'000, "next");
                    file->writeBookmarks();
                },
                {}));
        }
        now.bookmarks.emplace(4'000, "next");
        EXPECT_FALSE(QFile::exists(undoName()));
        EXPECT_EQ(tables(), now);
    }

    std::size_t m_more = 0;  ///< bytes of each record

private:
    QTemporaryDir m_directory{directoryTemplate()};
};

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
            ASSERT_EQ(exitCode == -1, planned.kill);
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
        ASSERT_EQ(changeInChild({true, 0, false, call}, made), -1);
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
        "force " + QFileInfo(undoName()).absoluteDir().dirName().toStdString();  // where the way back has its name
    std::set<std::string> toBeForced;
    int written = 0;
    for (const std::string& call : calls) {
        if (call == "write a.rec.undo") {
            toBeForced.insert({"force a.rec.undo", folder});
        } else if (call == "write a.rec") {
            EXPECT_THAT(toBeForced, testing::IsSubsetOf({std::string("force a.rec")}));
            toBeForced.insert("force a.rec");
            ++written;
        } else if (call == "remove a.rec.undo") {
            EXPECT_THAT(toBeForced, testing::IsEmpty());
        }
        toBeForced.erase(call);
    }
    EXPECT_GT(written, 0);
    EXPECT_THAT(toBeForced, testing::IsEmpty());
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
        EXPECT_TRUE(QFile::rename(name, name + QStringLiteral(".aside")));
        TestSupport::writeFile(name, before);
    };
    static_cast<void>(changed(*file));
    file.reset();
    EXPECT_EQ(tables(), after);
    EXPECT_EQ(TestSupport::readFile(name + QStringLiteral(".aside")), before);
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
                         [](const testing::TestParamInfo<RewritingCase>& tried) {
                             return std::string(tried.param.name);
                         });

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

INSTANTIATE_TEST_SUITE_P(Changes, RewritingAtOnce, testing::Values(RewritingCase{"Bookmarks", add}),
                         [](const testing::TestParamInfo<RewritingCase>& tried) {
                             return std::string(tried.param.name);
                         });

}  // namespace
}  // namespace CrashTests
