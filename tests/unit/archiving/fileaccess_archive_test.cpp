// What a file says to the archive when it is opened, closed and destroyed, and what it does with the answers.
#include <recording2/filenames.h>

#include "archiveclient.h"

namespace RecorderTests {
namespace {

using Archive = TestSupport::ScriptedArchive;
using FilePeer = Recording2::FileAccessTestPeer;
using namespace testing;
using Zelvo::ZelvoError;

class ArchivedFile : public ArchiveClientTest {};

TEST_F(ArchivedFile, IsRegisteredWhenItIsOpenedAndHandedOverWhenItIsClosed)
{
    const auto file = record("a.tmp");
    EXPECT_TRUE(file->IsValidFile());
    EXPECT_EQ(archive.calls, QStringList({"SetUser Arbitary Username", "CreateFileGroup", "AddFile a.rec GROUP-1"}));
    EXPECT_EQ(FilePeer::group(), "GROUP-1");
    archive.calls.clear();
    close(*file);
    EXPECT_EQ(archive.calls, QStringList("MoveToNas GROUP-1"));
}

TEST_F(ArchivedFile, HasItsFinalNameAndAllItsBytesWhenItIsHandedOver)
{
    const auto file = record("a.tmp");
    qint64 bytes = -1;
    archive.onMove = [&] {
        bytes = QFileInfo(station.file("a.rec")).size();
        EXPECT_FALSE(QFile::exists(station.file("a.tmp")));
    };
    close(*file);
    EXPECT_EQ(bytes, 500);
}

TEST_F(ArchivedFile, AGroupIsDescribedByNineItemsInTheirOrder)
{
    const QDateTime before = QDateTime::currentDateTime();
    const auto file = record("a.tmp");
    ASSERT_THAT(archive.groups, SizeIs(1));
    const Archive::Group& group = archive.groups.front();
    EXPECT_EQ(group.version, "2");
    EXPECT_GE(group.expires, before.addDays(7));
    EXPECT_LE(group.expires, group.at.addDays(7));
    EXPECT_EQ(group.expires.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(group.description, "Scan-Records (Recording2)");
    EXPECT_EQ(static_cast<int>(group.type), 8);
    EXPECT_EQ(group.maxBytes, 52'428'800ULL);
    EXPECT_EQ(group.directory, QDir::toNativeSeparators(station.directory()));
    EXPECT_TRUE(group.reserved.isEmpty());
    // The second may have changed between the texts.
    bool startTextFits = false;
    bool titleFits = false;
    for (QDateTime at = before; at <= group.at.addMSecs(999); at = at.addSecs(1)) {
        startTextFits = startTextFits || group.startText == "Start Time:" + at.toString(Qt::TextDate);
        titleFits = titleFits || group.title == "Scan Recording - " + at.toString("hh-mm-ss");
    }
    EXPECT_TRUE(startTextFits) << group.startText.toStdString();
    EXPECT_TRUE(titleFits) << group.title.toStdString();
}

TEST_F(ArchivedFile, TheDirectoryOfAGroupIsAbsolute)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(station.directory()));
    const auto file = open("a.tmp", true);
    EXPECT_TRUE(QDir::setCurrent(before));
    ASSERT_THAT(archive.groups, SizeIs(1));
    EXPECT_EQ(QFileInfo(archive.groups.front().directory).canonicalFilePath(),
              QFileInfo(station.directory()).canonicalFilePath());
    EXPECT_TRUE(QFileInfo(Recording2::FileNames::fromBytes(file->path())).isAbsolute());
}

#if !defined(_WIN32)
TEST_F(ArchivedFile, KeepsItsDirectoryAlsoUnderANameThatBeginsWithAColon)
{
    const QString path = station.directory() + "/:a.tmp";
    const auto file = open(path, true);
    EXPECT_EQ(file->path(), TestSupport::fileName8(path));
    close(*file);
    EXPECT_TRUE(QFile::exists(station.directory() + "/:a.rec"));
}
#endif

TEST_F(ArchivedFile, WithoutAnOperatorNameTheUserIsArbitaryUsername)
{
    const auto userOf = [this](const QString& name) {
        archive.calls.clear();
        record(name);
        return archive.calls.value(0);
    };
    const QString arbitrary = "SetUser Arbitary Username";
    EXPECT_EQ(userOf("a.tmp"), arbitrary);
    station.add<Text>("/ADMINISTRATION/DEVICE_NAME").SetValue("RX7");
    EXPECT_EQ(userOf("b.tmp"), arbitrary);
    station.add<Text>("/DEVICES/RX8/OPERATOR_NAME").SetValue("of another device");
    EXPECT_EQ(userOf("c.tmp"), arbitrary);
    station.add<Text>("/DEVICES/RX7/OPERATOR_NAME").SetValue("Ms Operator");
    EXPECT_EQ(userOf("d.tmp"), "SetUser Ms Operator");
}

TEST_F(ArchivedFile, GoesWhereTheArchiveSaysUnderItsOwnName)
{
    ASSERT_TRUE(QDir(station.directory()).mkdir("elsewhere"));
    archive.directory = station.file("elsewhere");
    const auto file = record("a.tmp");
    EXPECT_TRUE(file->IsValidFile());
    EXPECT_EQ(file->path(), TestSupport::fileName8(station.file("elsewhere/a.tmp")));
    close(*file);
    EXPECT_TRUE(QFile::exists(station.file("elsewhere/a.rec")));
    EXPECT_EQ(station.files(), QStringList());
}

TEST_F(ArchivedFile, ItsAddressIsPublishedAndPartOfItsFullPathOrThatOfItsGroupWhereItWasNotTaken)
{
    archive.fileId = 42;
    EXPECT_EQ(record("a%2.tmp")->fullRecordingFilePath(), station.file("a%2.tmp#zelvo:///GROUP-1/42"));
    auto file = record("a.tmp");
    EXPECT_EQ(archivePath(), "zelvo:///GROUP-2/42");
    EXPECT_EQ(uncPath(), QString());
    EXPECT_EQ(file->fullRecordingFilePath(), station.file("a.tmp#zelvo:///GROUP-2/42"));
    archive.addError = ZelvoError::UnknownGroup;
    file = record("b.tmp");
    EXPECT_EQ(archivePath(), "zelvo:///GROUP-3");
}

TEST_F(ArchivedFile, TheArchiveIsGivenTheNameUpToItsFirstDotAndRecAndTheFileUnderThatNameOnly)
{
    record("a.b.tmp");
    EXPECT_EQ(archive.calls.last(), "AddFile a.rec GROUP-1");
    close(*record("b.dat"));
    EXPECT_EQ(archive.calls.last(), "AddFile b.rec GROUP-2");
    close(*record("a.rec"));
    EXPECT_EQ(archive.calls.last(), "MoveToNas GROUP-3");
}

TEST_F(ArchivedFile, AContinuationJoinsTheCurrentGroupWithoutContactingTheServer)
{
    const auto first = record("a.tmp");
    archive.calls.clear();
    EXPECT_EQ(FilePeer::newGroup(*first, true), "GROUP-1");
    EXPECT_TRUE(archive.calls.isEmpty());
    const auto second = record("b.tmp", true);
    EXPECT_EQ(archive.calls, QStringList("AddFile b.rec GROUP-1"));
    EXPECT_EQ(FilePeer::group(), "GROUP-1");
    EXPECT_EQ(second->path(), TestSupport::fileName8(station.file("b.tmp")));
}

TEST_F(ArchivedFile, WithNoArchiveAvailableTheGroupIsErrorAndNothingIsRegisteredOrMoved)
{
    archive.available = false;
    const auto file = record("a.b.tmp");
    EXPECT_TRUE(file->IsValidFile());
    EXPECT_EQ(FilePeer::group(), "ERROR");
    EXPECT_EQ(uncPath(), station.file("a.rec"));
    EXPECT_EQ(archivePath(), QString());
    EXPECT_EQ(file->fullRecordingFilePath(), station.file("a.b.tmp#zelvo:///ERROR/-1"));
    close(*file);
    EXPECT_TRUE(archive.calls.isEmpty()) << archive.calls.join('\n').toStdString();
    EXPECT_TRUE(QFile::exists(station.file("a.rec")));
}

TEST_F(ArchivedFile, AnArchiveThatGoesAwayWhileAGroupIsMadeIsNotPublished)
{
    archive.available = true;
    record("a.tmp");
    station.value<Text>("/Status/REC_ZELVOFILEPATH").SetValue("before");
    const auto second = record("b.tmp", true);
    EXPECT_EQ(archivePath(), "zelvo:///GROUP-1/2");
    archive.available = false;
    station.value<Text>("/Status/REC_ZELVOFILEPATH").SetValue("before");
    const auto third = record("c.tmp", true);
    EXPECT_EQ(archivePath(), "before");
}

TEST_F(ArchivedFile, WithoutAClientEveryOperationDoesNothing)
{
    client.reset();
    const auto file = record("a.tmp");
    EXPECT_TRUE(file->IsValidFile());
    EXPECT_EQ(FilePeer::newGroup(*file, false), "ERROR");
    EXPECT_EQ(FilePeer::addFile(*file, "/a.tmp", "GROUP"), -1);
    FilePeer::move(*file, "GROUP", 1);
    FilePeer::setGroup("of another recorder");
    close(*file);
    EXPECT_FALSE(open(Address, false)->IsValidFile()) << "an address is no file name";
    EXPECT_TRUE(archive.calls.isEmpty()) << archive.calls.join('\n').toStdString();
    EXPECT_EQ(file->GetZelvoErrorCode(), ZelvoError::None);
}

TEST_F(ArchivedFile, AFileIsHandedOverOnceWhenItIsClosedUnlessThatIsToBeSkipped)
{
    record("never.tmp");
    auto file = record("a.tmp");
    close(*file, true);
    EXPECT_TRUE(QFile::exists(station.file("a.rec")));
    EXPECT_TRUE(archive.calls.filter("MoveToNas").isEmpty());
    file = record("b.tmp");
    close(*file);
    close(*file);
    EXPECT_EQ(archive.calls.filter("MoveToNas"), QStringList("MoveToNas GROUP-3"));
}

TEST_F(ArchivedFile, AnExceptionWhileAFileIsClosedLeavesItInvalidAndIsTraced)
{
    for (const bool standard : {true, false}) {
        const auto file = record("a.tmp");
        ASSERT_TRUE(file->IsValidFile());
        archive.onMove = [standard] {
            if (standard) {
                throw std::runtime_error("the archive is gone");
            }
            throw 7;  // NOLINT(hicpp-exception-baseclass): observers may throw anything
        };
        const TraceLog log;
        EXPECT_NO_THROW(close(*file));
        EXPECT_FALSE(file->IsValidFile());
        ASSERT_THAT(log.lines(), SizeIs(1));
        EXPECT_EQ(log.lines().front().text, QString("Unexpected exception in CFileAccess::CloseRecording: ") +
                                                (standard ? "the archive is gone" : "unknown exception"));
        EXPECT_TRUE(QFile::remove(station.file("a.rec"))) << "it was written whole";
    }
}

TEST_F(ArchivedFile, TheInstanceOfTheProcessJoinsNoGroupThatIsThere)
{
    for (const bool readTables : {false, true}) {
        FilePeer::setGroup("GROUP-9");
        const CFileAccess* file = CFileAccess::instance(TestSupport::fileName8(station.file("a.tmp")).c_str(),
                                                        "/Status", nullptr, true, readTables);
        EXPECT_TRUE(file->IsValidFile());
        EXPECT_EQ(FilePeer::group(), "ERROR");
        EXPECT_EQ(uncPath(), station.file("a.rec"));
        CFileAccess::release();
    }
    EXPECT_TRUE(archive.calls.isEmpty());
}

TEST_F(ArchivedFile, AFileWhoseNameIsTakenIsNotHandedOver)
{
    TestSupport::writeFile(station.file("a.rec"), "another");
    const auto file = record("a.b.tmp");
    archive.calls.clear();
    close(*file);
    EXPECT_TRUE(archive.calls.isEmpty()) << archive.calls.join('\n').toStdString();
    EXPECT_EQ(TestSupport::readFile(station.file("a.rec")), "another");
    EXPECT_EQ(QFileInfo(station.file("a.b.tmp")).size(), 500);
}

TEST_F(ArchivedFile, WhatCouldNotBeOpenedIsNeitherRenamedNorHandedOver)
{
    ASSERT_TRUE(QDir(station.directory()).mkdir("a.tmp"));
    const auto file = record("a.tmp");
    EXPECT_FALSE(file->IsValidFile());
    close(*file);
    EXPECT_TRUE(QFileInfo(station.file("a.tmp")).isDir());
    EXPECT_FALSE(QFileInfo::exists(station.file("a.rec")));
    EXPECT_EQ(archive.calls.last(), "CreateFileGroup");
}

TEST_F(ArchivedFile, AFileThatCannotBeCreatedJoinsNoGroup)
{
    const auto file = record("missing/a.tmp");
    EXPECT_FALSE(file->IsValidFile());
    EXPECT_EQ(archive.calls.last(), "CreateFileGroup");
    EXPECT_EQ(file->fullRecordingFilePath(), station.file("missing/a.tmp#zelvo:///GROUP-1/-1"));
}

TEST_F(ArchivedFile, AGroupThatCouldNotBeMadeIsTracedAndTheAnswerIsTheGroup)
{
    ASSERT_TRUE(QDir(station.directory()).mkdir("elsewhere"));
    archive.createError = ZelvoError::Unreachable;
    archive.directory = station.file("elsewhere");
    archive.guid = "ERROR";
    expectTraced("Zelvo ERROR: error while get the File-Group-GUID: --> ");
    EXPECT_EQ(FilePeer::group(), "ERROR");
    EXPECT_EQ(archive.calls.last(), "CreateFileGroup") << "no file of it is registered or moved";
    EXPECT_EQ(archivePath(), QString());
    EXPECT_EQ(uncPath(), station.file("a.rec")) << "the path is unchanged";
}

TEST_F(ArchivedFile, AnotherAnswerOfAFailedRequestStaysTheGroupAndThePathIsUnchanged)
{
    archive.createError = ZelvoError::Failed;
    archive.directory = station.file("elsewhere");
    archive.guid = "something";
    const auto file = record("a.tmp");
    EXPECT_EQ(FilePeer::group(), "something");
    EXPECT_EQ(file->path(), TestSupport::fileName8(station.file("a.tmp")));
}

TEST_F(ArchivedFile, AFileThatCouldNotBeAddedIsTracedAndKeepsTheAnswerAsItsNumber)
{
    archive.addError = ZelvoError::UnknownGroup;
    archive.fileId = 5;
    expectTraced("Zelvo ERROR: error while add the File to the FileGroup: --> ");
    EXPECT_EQ(record("b.tmp")->fullRecordingFilePath(), station.file("b.tmp#zelvo:///GROUP-2/5"));
}

TEST_F(ArchivedFile, AMoveThatCouldNotBeAskedForIsTraced)
{
    archive.moveError = ZelvoError::Unreachable;
    expectTraced("Zelvo ERROR: error while move the File to the NAS: --> ");
}

TEST_F(ArchivedFile, ErrorsAreTracedOnlyWhereTheMaskAsksForIt)
{
    archive.createError = archive.addError = archive.moveError = ZelvoError::Failed;
    {
        const TraceLog log(~ErrorHandler::RecordingTraces);
        close(*record("a.tmp"));
        EXPECT_THAT(log.lines(), SizeIs(0));
    }
    const TraceLog log;
    close(*record("b.tmp"));
    EXPECT_THAT(log.lines(), SizeIs(3));
}

}  // namespace
}  // namespace RecorderTests
