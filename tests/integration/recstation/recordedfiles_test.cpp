// What looks after a run: counted changes, the files that recorders left, and the space that is left for them.
#include <QSysInfo>

#include <values/tree.h>

#include "changecounter.h"
#include "recordedfiles.h"
#include "support/files.h"
#include "support/testing.h"
#include "watch/spacewatch.h"

namespace RecStation {
namespace {

class Watcher final : public IObserver {
public:
    void Update(void* /*subject*/, TChangeCode /*code*/) override {}
};

TEST(ChangeCounter, CountsARecordForEveryRecorderThatWatchesAChangedValue)
{
    ChangeCounter counter;
    Watcher first;
    Watcher second;
    values::Tree tree;
    values::ValuePtr<values::Value<bool>> value;
    value.Attach("/Flag");
    counter.follow(tree);
    value->SetValue(true);
    EXPECT_EQ(counter.records(), 0U);
    value->AddObserver(&first);
    value->SetValue(false);
    value->AddObserver(&second);
    value->SetValue(true);
    EXPECT_EQ(counter.changes(), 3U);
    EXPECT_EQ(counter.records(), 3U);
    value->RemoveObserver(&first);
    value->RemoveObserver(&second);
}

TEST(ChangeCounter, FollowsAValueThatWasCreatedAndOthersWithTheNextLookAtTheTree)
{
    ChangeCounter counter;
    values::Tree tree;
    const auto create = [](const char* path) {
        values::ValuePtr<values::Value<bool>> value;
        value.Attach(QString::fromLatin1(path));
        return value.get();
    };
    values::Value<bool>* const first = create("/First");
    counter.follow(tree, "/First");
    first->SetValue(true);
    EXPECT_EQ(counter.changes(), 1U);

    // Of two new values one is told.
    values::Value<bool>* const second = create("/Second");
    values::Value<bool>* const third = create("/Third");
    counter.follow(tree, "/Third");
    counter.follow(tree);
    first->SetValue(false);
    second->SetValue(true);
    third->SetValue(true);
    EXPECT_EQ(counter.changes(), 4U);
}

class RecordedFilesTest : public testing::Test {
protected:
    [[nodiscard]] QString path(const char* name) const { return m_directory.filePath(QString::fromLatin1(name)); }

    void write(const char* name, const QByteArray& bytes) const { TestSupport::writeBytes(path(name), bytes); }

    QTemporaryDir m_directory;
};

TEST_F(RecordedFilesTest, TheFinishedNameIsCutAtTheFirstDot)
{
    EXPECT_EQ(finishedPath(path("a.b__RX.tmp")), path("a.rec"));
    EXPECT_EQ(finishedPath(path("a__RX.tmp")), path("a__RX.rec"));
}

TEST_F(RecordedFilesTest, AFileUnderNeitherNameIsMissing)
{
    const FileReport report = examineRecording(path("a.tmp"));
    EXPECT_EQ(report.state, FileReport::State::Missing);
    EXPECT_EQ(report.path, path("a.rec"));
    EXPECT_EQ(report.problem, "the file is not on the disk");
}

// As when another program recovered it, and somebody laid a link under its name.
TEST_F(RecordedFilesTest, ALinkUnderTheFinishedNameIsNoRecording)
{
    if (QSysInfo::productType() == QLatin1String("windows")) {
        GTEST_SKIP() << "what Qt makes there is no link";
    }
    write("elsewhere", "no recording");
    ASSERT_TRUE(QFile::link(path("elsewhere"), path("a.rec")));
    EXPECT_EQ(examineRecording(path("a.tmp")).state, FileReport::State::Missing);
}

TEST_F(RecordedFilesTest, AFileThatWasNeverClosedIsAProblem)
{
    write("a.rec", QByteArray(499, '0') + "#");
    const FileReport report = examineRecording(path("a.tmp"));
    EXPECT_EQ(report.state, FileReport::State::Finished);
    EXPECT_EQ(report.bytes, 500);
    EXPECT_TRUE(report.problem.startsWith("not completely written"));
}

TEST_F(RecordedFilesTest, AFileThatKeptItsTemporaryNameIsTheOneReported)
{
    write("a.tmp", "short");
    write("a.rec", "another recording");
    const FileReport report = examineRecording(path("a.tmp"));
    EXPECT_EQ(report.state, FileReport::State::Temporary);
    EXPECT_EQ(report.path, path("a.tmp"));
    EXPECT_EQ(report.bytes, 5);
    EXPECT_FALSE(report.problem.isEmpty());
}

TEST_F(RecordedFilesTest, EveryTemporaryNameThatTheRecorderShowsIsKeptOnce)
{
    values::Tree tree;
    FileNameWatch watch("/Status");
    values::ValuePtr<values::Value<QString>> name;
    name.Attach("/Status/REC_FILENAME");
    for (const char* shown : {"/x/a.tmp", "/x/a.rec", "/x/b.tmp", "", "/x/a.tmp"}) {
        name->SetValue(QString::fromLatin1(shown));
    }
    EXPECT_EQ(watch.temporaryPaths(), QStringList({"/x/a.tmp", "/x/b.tmp"}));
}

TEST_F(RecordedFilesTest, TheAddressThatIsShownWithANameIsKept)
{
    values::Tree tree;
    FileNameWatch watch("/Status");
    values::ValuePtr<values::Value<QString>> name;
    values::ValuePtr<values::Value<QString>> address;
    name.Attach("/Status/REC_FILENAME");
    address.Attach("/Status/REC_ZELVOFILEPATH");
    address->SetValue("zelvo:///group/1");
    name->SetValue("/x/a.tmp");
    name->SetValue("/x/a.rec");
    address->SetValue("zelvo:///group");  // which did not take the file
    name->SetValue("/x/b.tmp");
    address->SetValue(QString());
    name->SetValue("/x/c.tmp");
    EXPECT_EQ(watch.addressOf("/x/a.tmp"), "zelvo:///group/1");
    EXPECT_TRUE(watch.addressOf("/x/b.tmp").isEmpty());
    EXPECT_TRUE(watch.addressOf("/x/c.tmp").isEmpty());
}

TEST_F(RecordedFilesTest, AnArchivedFileIsExaminedWhereItIsStored)
{
    FileReport report = examineRecording(path("gone.tmp"));
    write("stored.rec", "no recording");
    examineArchived(report, path("stored.rec"));
    EXPECT_EQ(report.state, FileReport::State::Archived);
    EXPECT_EQ(report.bytes, 12);
    EXPECT_FALSE(report.problem.isEmpty());
    EXPECT_NE(report.problem, "the file is not on the disk");
}

using namespace testing;

constexpr std::int64_t megabyte = 1'000'000;
constexpr std::int64_t gigabyte = 1'000 * megabyte;

class SpaceWatchTest : public testing::Test {
protected:
    /// Another second later.
    std::string check(std::int64_t freeBytes, std::int64_t written = 0)
    {
        m_free = freeBytes;
        m_elapsedMs += 1'000;
        return m_watch.check("/r", written, m_elapsedMs).toStdString();
    }
    /// Ten seconds of writing at a rate, of which nothing may be told.
    void writeAt(std::int64_t bytesPerSecond, std::int64_t freeBytes)
    {
        for (int second = 0; second < 10; ++second) {
            m_written += bytesPerSecond;
            EXPECT_EQ(check(freeBytes, m_written), "");
        }
    }

    std::int64_t m_free = 0;
    std::int64_t m_written = 0;
    std::int64_t m_elapsedMs = 0;
    SpaceWatch m_watch = SpaceWatch([this](const QString&) { return m_free; });
};

TEST_F(SpaceWatchTest, NothingIsToldOfMuchSpaceAndSlowWriting)
{
    writeAt(megabyte, 100 * gigabyte);
}

TEST_F(SpaceWatchTest, LessThanAGigabyteIsToldOnce)
{
    EXPECT_EQ(check(gigabyte), "");
    EXPECT_THAT(check(gigabyte - 1), AllOf(HasSubstr("1000.0 MB are left in /r"), testing::Not(HasSubstr("rate"))));
    EXPECT_EQ(check(gigabyte - 1), "");
    EXPECT_EQ(check(gigabyte * 6 / 10), "");
}

TEST_F(SpaceWatchTest, ItIsToldAgainEachTimeThatHalfOfItIsGone)
{
    EXPECT_NE(check(800 * megabyte), "");
    EXPECT_EQ(check(401 * megabyte), "");
    EXPECT_NE(check(400 * megabyte), "");
    EXPECT_EQ(check(201 * megabyte), "");
    EXPECT_NE(check(200 * megabyte), "");
}

TEST_F(SpaceWatchTest, LessThanTenMinutesAtThePresentRateAreToldWithTheTime)
{
    writeAt(megabyte, 100 * gigabyte);
    std::string told;
    for (int second = 0; second < 10 && told.empty(); ++second) {
        m_written += 500 * megabyte;
        told = check(100 * gigabyte, m_written);
    }
    EXPECT_THAT(told, HasSubstr("100.0 GB are left in /r, enough for about "));
    EXPECT_EQ(check(100 * gigabyte, m_written), "");
}

TEST_F(SpaceWatchTest, AfterSpaceWasMadeItIsToldAnew)
{
    EXPECT_NE(check(900 * megabyte), "");
    EXPECT_EQ(check(50 * gigabyte), "");
    EXPECT_NE(check(900 * megabyte), "");
}

TEST_F(SpaceWatchTest, EachDirectoryIsWatchedByItself)
{
    m_free = 1;
    EXPECT_NE(m_watch.check("/a", 0, 1), "");
    EXPECT_NE(m_watch.check("/b", 0, 1), "");
    EXPECT_EQ(m_watch.check("/a", 0, 2), "");
}

TEST(SpaceWatch, WhereTheSystemDoesNotTellNothingIsToldEither)
{
    SpaceWatch watch([](const QString&) { return std::nullopt; });
    EXPECT_EQ(watch.check("/a", 0, 0), "");
}

TEST(SpaceWatch, TheSystemTellsTheSpaceOfADirectory)
{
    EXPECT_GT(freeSpaceOf("/").value_or(0), 0);
    EXPECT_FALSE(freeSpaceOf("/no/such/directory"));
}

}  // namespace
}  // namespace RecStation
