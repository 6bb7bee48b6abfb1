// Which files a recorder left: finished, missing, never closed, or archived under an address.
#include "recordedfiles.h"

#include <QDir>
#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace RecStation {
namespace {

class RecordedFilesTest : public testing::Test {
protected:
    [[nodiscard]] QString path(const char* name) const { return m_directory.filePath(QString::fromLatin1(name)); }

    void write(const char* name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

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
    EXPECT_FALSE(report.problem.isEmpty());
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
    EXPECT_TRUE(report.problem.startsWith(QStringLiteral("not completely written")));
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
    FileNameWatch watch(QStringLiteral("/Status"));
    values::ValuePtr<values::Value<QString>> name;
    name.Attach(QStringLiteral("/Status/REC_FILENAME"));
    for (const char* shown : {"/x/a.tmp", "/x/a.rec", "/x/b.tmp", "", "/x/a.tmp"}) {
        name->SetValue(QString::fromLatin1(shown));
    }
    EXPECT_EQ(watch.temporaryPaths(), QStringList({QStringLiteral("/x/a.tmp"), QStringLiteral("/x/b.tmp")}));
}

TEST_F(RecordedFilesTest, TheAddressThatIsShownWithANameIsKept)
{
    values::Tree tree;
    FileNameWatch watch(QStringLiteral("/Status"));
    values::ValuePtr<values::Value<QString>> name;
    values::ValuePtr<values::Value<QString>> address;
    name.Attach(QStringLiteral("/Status/REC_FILENAME"));
    address.Attach(QStringLiteral("/Status/REC_ZELVOFILEPATH"));
    address->SetValue(QStringLiteral("zelvo:///group/1"));
    name->SetValue(QStringLiteral("/x/a.tmp"));
    name->SetValue(QStringLiteral("/x/a.rec"));
    address->SetValue(QStringLiteral("zelvo:///group"));  // which did not take the file
    name->SetValue(QStringLiteral("/x/b.tmp"));
    address->SetValue(QString());
    name->SetValue(QStringLiteral("/x/c.tmp"));
    EXPECT_EQ(watch.addressOf(QStringLiteral("/x/a.tmp")), QStringLiteral("zelvo:///group/1"));
    EXPECT_TRUE(watch.addressOf(QStringLiteral("/x/b.tmp")).isEmpty());
    EXPECT_TRUE(watch.addressOf(QStringLiteral("/x/c.tmp")).isEmpty());
}

TEST_F(RecordedFilesTest, AnArchivedFileIsExaminedWhereItIsStored)
{
    FileReport report = examineRecording(path("gone.tmp"));
    EXPECT_EQ(report.state, FileReport::State::Missing);
    EXPECT_FALSE(report.problem.isEmpty());
    write("stored.rec", "no recording");
    examineArchived(report, path("stored.rec"));
    EXPECT_EQ(report.state, FileReport::State::Archived);
    EXPECT_EQ(report.bytes, 12);
    EXPECT_FALSE(report.problem.isEmpty());
    EXPECT_NE(report.problem, QStringLiteral("the file is not on the disk"));
}

}  // namespace
}  // namespace RecStation
