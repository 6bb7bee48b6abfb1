// What a file says to the archive when it is opened, closed and destroyed, and what it does with the answers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <recording2/fileaccess.h>
#include <recording2/filenames.h>

#include "../recording/recorder_fixture.h"
#include "scriptedarchive.h"
#include "support/recordingbytes.h"

namespace RecorderTests {
namespace {

using Archive = TestSupport::ScriptedArchive;
using FilePeer = Recording2::FileAccessTestPeer;
using testing::Each;
using testing::Not;
using testing::SizeIs;
using TestSupport::scriptedArchive;
using Zelvo::ZelvoError;

const QString Address = QStringLiteral("zelvo:///GROUP/7");

class ArchivedFile : public testing::Test {
protected:
    ArchivedFile()
    {
        archive = Archive();
        FilePeer::setGroup(QStringLiteral("Initial GUID String"));
        client = std::make_unique<Zelvo::ZelvoClient>();
    }

    [[nodiscard]] std::unique_ptr<CFileAccess> open(const QString& path, bool write, bool sameGroup = false) const
    {
        return std::make_unique<CFileAccess>(TestSupport::fileName8(path).c_str(), QStringLiteral("/Status"), nullptr,
                                             write, true, sameGroup, nullptr, client.get());
    }
    std::unique_ptr<CFileAccess> record(const QString& name, bool sameGroup = false) const
    {
        return open(station.file(name), true, sameGroup);
    }
    static void close(CFileAccess& file, bool skipHandOff = false)
    {
        CHeaderData header;
        header.set_version(2, 0);
        file.CloseRecording(header, skipHandOff);
    }
    /// A finished recording, made without the archive.
    [[nodiscard]] QString finished(const QString& name) const
    {
        CFileAccess file(TestSupport::fileName8(station.file(name)).c_str(), QStringLiteral("/Status"), nullptr, true,
                         true, false, nullptr, nullptr);
        CVTCmdData command;
        command.set_cmd(1);
        command.set_str("data", 4);
        file.write(command, 10, false);
        close(file);
        return station.file(name);
    }
    [[nodiscard]] QString archivePath() const { return station.text(QStringLiteral("/Status/REC_ZELVOFILEPATH")); }
    [[nodiscard]] QString uncPath() const { return station.text(QStringLiteral("/Status/REC_UNCFILEPATH")); }

    /// Creates and closes a file; the one trace that it leaves must be that of the archive's error.
    void expectTraced(const QString& message)
    {
        const TraceLog log;
        const auto file = record(QStringLiteral("a.tmp"));
        EXPECT_TRUE(file->IsValidFile());
        close(*file);
        ASSERT_THAT(log.lines(), SizeIs(1));
        EXPECT_EQ(log.lines().front().text, message + QStringLiteral("the archive says no"));
        EXPECT_EQ(log.lines().front().source, QStringLiteral(R"(devicecontrol\recording2\fileaccess)"));
        EXPECT_TRUE(QFile::exists(station.file(QStringLiteral("a.rec")))) << "it is recorded all the same";
    }

    Archive& archive = scriptedArchive();
    Station station;
    std::unique_ptr<Zelvo::ZelvoClient> client;
};

TEST_F(ArchivedFile, IsRegisteredWhenItIsOpenedAndHandedOverWhenItIsClosed)
{
    const auto file = record(QStringLiteral("a.tmp"));
    EXPECT_TRUE(file->IsValidFile());
    EXPECT_EQ(archive.calls, QStringList({QStringLiteral("SetUser Arbitary Username"),
                                          QStringLiteral("CreateFileGroup"), QStringLiteral("AddFile a.rec GROUP-1")}));
    EXPECT_EQ(FilePeer::group(), QStringLiteral("GROUP-1"));
    archive.calls.clear();
    close(*file);
    EXPECT_EQ(archive.calls, QStringList(QStringLiteral("MoveToNas GROUP-1")));
}

TEST_F(ArchivedFile, HasItsFinalNameAndAllItsBytesWhenItIsHandedOver)
{
    const auto file = record(QStringLiteral("a.tmp"));
    qint64 bytes = -1;
    archive.onMove = [&] {
        bytes = QFileInfo(station.file(QStringLiteral("a.rec"))).size();
        EXPECT_FALSE(QFile::exists(station.file(QStringLiteral("a.tmp"))));
    };
    close(*file);
    EXPECT_EQ(bytes, 500);
}

TEST_F(ArchivedFile, AGroupIsDescribedByNineItemsInTheirOrder)
{
    const QDateTime before = QDateTime::currentDateTime();
    const auto file = record(QStringLiteral("a.tmp"));
    ASSERT_THAT(archive.groups, SizeIs(1));
    const Archive::Group& group = archive.groups.front();
    EXPECT_EQ(group.version, QStringLiteral("2"));
    EXPECT_GE(group.expires, before.addDays(7));
    EXPECT_LE(group.expires, group.at.addDays(7));
    EXPECT_EQ(group.expires.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(group.description, QStringLiteral("Scan-Records (Recording2)"));
    EXPECT_EQ(static_cast<int>(group.type), 8);
    EXPECT_EQ(group.maxBytes, 52'428'800ULL);
    EXPECT_EQ(group.directory, QDir::toNativeSeparators(station.directory()));
    EXPECT_TRUE(group.reserved.isEmpty());
    // The second may have changed between the texts.
    bool startTextFits = false;
    bool titleFits = false;
    for (QDateTime at = before; at <= group.at.addMSecs(999); at = at.addSecs(1)) {
        startTextFits = startTextFits || group.startText == QStringLiteral("Start Time:") + at.toString(Qt::TextDate);
        titleFits =
            titleFits || group.title == QStringLiteral("Scan Recording - ") + at.toString(QStringLiteral("hh-mm-ss"));
    }
    EXPECT_TRUE(startTextFits) << group.startText.toStdString();
    EXPECT_TRUE(titleFits) << group.title.toStdString();
}

TEST_F(ArchivedFile, TheDirectoryOfAGroupIsAbsolute)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(station.directory()));
    const auto file = open(QStringLiteral("a.tmp"), true);
    EXPECT_TRUE(QDir::setCurrent(before));
    ASSERT_THAT(archive.groups, SizeIs(1));
    EXPECT_EQ(QFileInfo(archive.groups.front().directory).canonicalFilePath(),
              QFileInfo(station.directory()).canonicalFilePath());
    EXPECT_TRUE(QFileInfo(Recording2::FileNames::fromBytes(file->path())).isAbsolute());
}

TEST_F(ArchivedFile, WithoutAnOperatorNameTheUserIsArbitaryUsername)
{
    const auto userOf = [this](const QString& name) {
        archive.calls.clear();
        record(name);
        return archive.calls.value(0);
    };
    const QString arbitrary = QStringLiteral("SetUser Arbitary Username");
    EXPECT_EQ(userOf(QStringLiteral("a.tmp")), arbitrary);
    station.add<Text>(QStringLiteral("/ADMINISTRATION/DEVICE_NAME")).SetValue(QStringLiteral("RX7"));
    EXPECT_EQ(userOf(QStringLiteral("b.tmp")), arbitrary);
    station.add<Text>(QStringLiteral("/DEVICES/RX8/OPERATOR_NAME")).SetValue(QStringLiteral("of another device"));
    EXPECT_EQ(userOf(QStringLiteral("c.tmp")), arbitrary);
    station.add<Text>(QStringLiteral("/DEVICES/RX7/OPERATOR_NAME")).SetValue(QStringLiteral("Ms Operator"));
    EXPECT_EQ(userOf(QStringLiteral("d.tmp")), QStringLiteral("SetUser Ms Operator"));
}

TEST_F(ArchivedFile, GoesWhereTheArchiveSaysUnderItsOwnName)
{
    ASSERT_TRUE(QDir(station.directory()).mkdir(QStringLiteral("elsewhere")));
    archive.directory = station.file(QStringLiteral("elsewhere"));
    const auto file = record(QStringLiteral("a.tmp"));
    EXPECT_TRUE(file->IsValidFile());
    EXPECT_EQ(file->path(), TestSupport::fileName8(station.file(QStringLiteral("elsewhere/a.tmp"))));
    close(*file);
    EXPECT_TRUE(QFile::exists(station.file(QStringLiteral("elsewhere/a.rec"))));
    EXPECT_EQ(station.files(), QStringList());
}

TEST_F(ArchivedFile, ItsAddressIsPublishedAndPartOfItsFullPath)
{
    archive.fileId = 42;
    const auto file = record(QStringLiteral("a.tmp"));
    EXPECT_EQ(archivePath(), QStringLiteral("zelvo:///GROUP-1/42"));
    EXPECT_EQ(uncPath(), QString());
    EXPECT_EQ(file->fullRecordingFilePath(), station.file(QStringLiteral("a.tmp#zelvo:///GROUP-1/42")));
}

TEST_F(ArchivedFile, AFileThatTheArchiveDidNotTakeHasOnlyTheAddressOfItsGroup)
{
    archive.addError = ZelvoError::UnknownGroup;
    const auto file = record(QStringLiteral("a.tmp"));
    EXPECT_EQ(archivePath(), QStringLiteral("zelvo:///GROUP-1"));
}

TEST_F(ArchivedFile, TheArchiveIsGivenTheNameUpToItsFirstDotAndRec)
{
    record(QStringLiteral("a.b.tmp"));
    EXPECT_EQ(archive.calls.last(), QStringLiteral("AddFile a.rec GROUP-1"));
    record(QStringLiteral("c.dat"));
    EXPECT_EQ(archive.calls.last(), QStringLiteral("AddFile c.rec GROUP-2"));
}

TEST_F(ArchivedFile, AContinuationJoinsTheCurrentGroupWithoutContactingTheServer)
{
    const auto first = record(QStringLiteral("a.tmp"));
    archive.calls.clear();
    EXPECT_EQ(FilePeer::newGroup(*first, true), QStringLiteral("GROUP-1"));
    EXPECT_TRUE(archive.calls.isEmpty());
    const auto second = record(QStringLiteral("b.tmp"), true);
    EXPECT_EQ(archive.calls, QStringList(QStringLiteral("AddFile b.rec GROUP-1")));
    EXPECT_EQ(FilePeer::group(), QStringLiteral("GROUP-1"));
    EXPECT_EQ(second->path(), TestSupport::fileName8(station.file(QStringLiteral("b.tmp"))));
}

TEST_F(ArchivedFile, WithNoArchiveAvailableTheGroupIsErrorAndNothingIsRegisteredOrMoved)
{
    archive.available = false;
    const auto file = record(QStringLiteral("a.b.tmp"));
    EXPECT_TRUE(file->IsValidFile());
    EXPECT_EQ(FilePeer::group(), QStringLiteral("ERROR"));
    EXPECT_EQ(uncPath(), station.file(QStringLiteral("a.rec")));
    EXPECT_EQ(archivePath(), QString());
    EXPECT_EQ(file->fullRecordingFilePath(), station.file(QStringLiteral("a.b.tmp#zelvo:///ERROR/-1")));
    close(*file);
    EXPECT_TRUE(archive.calls.isEmpty()) << archive.calls.join(QLatin1Char('\n')).toStdString();
    EXPECT_TRUE(QFile::exists(station.file(QStringLiteral("a.rec"))));
}

TEST_F(ArchivedFile, AnArchiveThatGoesAwayWhileAGroupIsMadeIsNotPublished)
{
    archive.available = true;
    record(QStringLiteral("a.tmp"));
    station.value<Text>(QStringLiteral("/Status/REC_ZELVOFILEPATH")).SetValue(QStringLiteral("before"));
    const auto second = record(QStringLiteral("b.tmp"), true);
    EXPECT_EQ(archivePath(), QStringLiteral("zelvo:///GROUP-1/2"));
    archive.available = false;
    station.value<Text>(QStringLiteral("/Status/REC_ZELVOFILEPATH")).SetValue(QStringLiteral("before"));
    const auto third = record(QStringLiteral("c.tmp"), true);
    EXPECT_EQ(archivePath(), QStringLiteral("before"));
}

TEST_F(ArchivedFile, WithoutAClientEveryOperationDoesNothing)
{
    client.reset();
    const auto file = record(QStringLiteral("a.tmp"));
    EXPECT_TRUE(file->IsValidFile());
    EXPECT_EQ(FilePeer::newGroup(*file, false), QStringLiteral("ERROR"));
    EXPECT_EQ(FilePeer::addFile(*file, QStringLiteral("/a.tmp"), QStringLiteral("GROUP")), -1);
    FilePeer::move(*file, QStringLiteral("GROUP"), 1);
    FilePeer::setGroup(QStringLiteral("of another recorder"));
    close(*file);
    EXPECT_FALSE(open(Address, false)->IsValidFile()) << "an address is no file name";
    EXPECT_TRUE(archive.calls.isEmpty()) << archive.calls.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(file->GetZelvoErrorCode(), ZelvoError::None);
}

TEST_F(ArchivedFile, AClosedFileIsNotHandedOverWhenThatIsToBeSkipped)
{
    const auto file = record(QStringLiteral("a.tmp"));
    archive.calls.clear();
    close(*file, true);
    EXPECT_TRUE(archive.calls.isEmpty());
    EXPECT_TRUE(QFile::exists(station.file(QStringLiteral("a.rec"))));
}

TEST_F(ArchivedFile, AnExceptionWhileAFileIsClosedLeavesItInvalidAndIsTraced)
{
    for (const bool standard : {true, false}) {
        const auto file = record(QStringLiteral("a.tmp"));
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
        EXPECT_EQ(log.lines().front().text,
                  QStringLiteral("Unexpected exception in CFileAccess::CloseRecording: ") +
                      (standard ? QStringLiteral("the archive is gone") : QStringLiteral("unknown exception")));
        EXPECT_TRUE(QFile::remove(station.file(QStringLiteral("a.rec")))) << "it was written whole";
    }
}

TEST_F(ArchivedFile, TheInstanceJoinsNoGroupThatIsThere)
{
    FilePeer::setGroup(QStringLiteral("GROUP-9"));
    const CFileAccess* file =
        CFileAccess::instance(TestSupport::fileName8(station.file(QStringLiteral("a.tmp"))).c_str(),
                              QStringLiteral("/Status"), nullptr, true, false);
    EXPECT_EQ(FilePeer::group(), QStringLiteral("ERROR"));
    EXPECT_EQ(uncPath(), station.file(QStringLiteral("a.rec")));
    EXPECT_TRUE(file->IsValidFile());
    CFileAccess::release();
}

TEST_F(ArchivedFile, AFileIsHandedOverOnce)
{
    const auto file = record(QStringLiteral("a.tmp"));
    close(*file);
    close(*file);
    EXPECT_EQ(archive.calls.count(QStringLiteral("MoveToNas GROUP-1")), 1);
}

TEST_F(ArchivedFile, AFileWhoseNameIsTakenIsNotHandedOver)
{
    TestSupport::writeFile(station.file(QStringLiteral("a.rec")), "another");
    const auto file = record(QStringLiteral("a.b.tmp"));
    archive.calls.clear();
    close(*file);
    EXPECT_TRUE(archive.calls.isEmpty()) << archive.calls.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(TestSupport::readFile(station.file(QStringLiteral("a.rec"))), "another");
    EXPECT_EQ(QFileInfo(station.file(QStringLiteral("a.b.tmp"))).size(), 500);
}

TEST_F(ArchivedFile, AFileIsHandedOverUnderTheNameThatTheArchiveKnowsOnly)
{
    close(*record(QStringLiteral("a.rec")));
    EXPECT_EQ(archive.calls.last(), QStringLiteral("MoveToNas GROUP-1"));
    close(*record(QStringLiteral("b.dat")));
    EXPECT_EQ(archive.calls.last(), QStringLiteral("AddFile b.rec GROUP-2"));
}

TEST_F(ArchivedFile, WhatCouldNotBeOpenedIsNeitherRenamedNorHandedOver)
{
    ASSERT_TRUE(QDir(station.directory()).mkdir(QStringLiteral("a.tmp")));
    const auto file = record(QStringLiteral("a.tmp"));
    EXPECT_FALSE(file->IsValidFile());
    close(*file);
    EXPECT_TRUE(QFileInfo(station.file(QStringLiteral("a.tmp"))).isDir());
    EXPECT_FALSE(QFileInfo::exists(station.file(QStringLiteral("a.rec"))));
    EXPECT_EQ(archive.calls.last(), QStringLiteral("CreateFileGroup"));
}

TEST_F(ArchivedFile, TheInstanceOfTheProcessJoinsNoGroup)
{
    FilePeer::setGroup(QStringLiteral("of another recorder"));
    CFileAccess* file = CFileAccess::instance(TestSupport::fileName8(station.file(QStringLiteral("a.tmp"))).c_str(),
                                              QStringLiteral("/Status"), nullptr, true, true);
    ASSERT_TRUE(file->IsValidFile());
    EXPECT_EQ(FilePeer::group(), QStringLiteral("ERROR"));
    EXPECT_EQ(uncPath(), station.file(QStringLiteral("a.rec")));
    CFileAccess::release();
    EXPECT_TRUE(archive.calls.isEmpty());
}

TEST_F(ArchivedFile, AFileThatWasNeverClosedIsNotHandedOver)
{
    record(QStringLiteral("a.tmp"));
    EXPECT_THAT(archive.calls, Not(testing::Contains(QStringLiteral("MoveToNas GROUP-1"))));
}

TEST_F(ArchivedFile, AFileThatCannotBeCreatedJoinsNoGroup)
{
    const auto file = record(QStringLiteral("missing/a.tmp"));
    EXPECT_FALSE(file->IsValidFile());
    EXPECT_EQ(archive.calls.last(), QStringLiteral("CreateFileGroup"));
    EXPECT_EQ(file->fullRecordingFilePath(), station.file(QStringLiteral("missing/a.tmp#zelvo:///GROUP-1/-1")));
}

TEST_F(ArchivedFile, AGroupThatCouldNotBeMadeIsTracedAndTheAnswerIsTheGroup)
{
    ASSERT_TRUE(QDir(station.directory()).mkdir(QStringLiteral("elsewhere")));
    archive.createError = ZelvoError::Unreachable;
    archive.directory = station.file(QStringLiteral("elsewhere"));
    archive.guid = QStringLiteral("ERROR");
    expectTraced(QStringLiteral("Zelvo ERROR: error while get the File-Group-GUID: --> "));
    EXPECT_EQ(FilePeer::group(), QStringLiteral("ERROR"));
    EXPECT_EQ(archive.calls.last(), QStringLiteral("CreateFileGroup")) << "no file of it is registered or moved";
    EXPECT_EQ(archivePath(), QString());
    EXPECT_EQ(uncPath(), station.file(QStringLiteral("a.rec"))) << "the path is unchanged";
}

TEST_F(ArchivedFile, AnotherAnswerOfAFailedRequestStaysTheGroupAndThePathIsUnchanged)
{
    archive.createError = ZelvoError::Failed;
    archive.directory = station.file(QStringLiteral("elsewhere"));
    archive.guid = QStringLiteral("something");
    const auto file = record(QStringLiteral("a.tmp"));
    EXPECT_EQ(FilePeer::group(), QStringLiteral("something"));
    EXPECT_EQ(file->path(), TestSupport::fileName8(station.file(QStringLiteral("a.tmp"))));
}

TEST_F(ArchivedFile, AFileThatCouldNotBeAddedIsTracedAndKeepsTheAnswerAsItsNumber)
{
    archive.addError = ZelvoError::UnknownGroup;
    archive.fileId = 5;
    expectTraced(QStringLiteral("Zelvo ERROR: error while add the File to the FileGroup: --> "));
    EXPECT_EQ(record(QStringLiteral("b.tmp"))->fullRecordingFilePath(),
              station.file(QStringLiteral("b.tmp#zelvo:///GROUP-2/5")));
}

TEST_F(ArchivedFile, AMoveThatCouldNotBeAskedForIsTraced)
{
    archive.moveError = ZelvoError::Unreachable;
    expectTraced(QStringLiteral("Zelvo ERROR: error while move the File to the NAS: --> "));
}

TEST_F(ArchivedFile, ErrorsAreTracedOnlyWhereTheMaskAsksForIt)
{
    archive.createError = archive.addError = archive.moveError = ZelvoError::Failed;
    {
        const TraceLog log(~ErrorHandler::RecordingTraces);
        close(*record(QStringLiteral("a.tmp")));
        EXPECT_THAT(log.lines(), SizeIs(0));
    }
    const TraceLog log;
    close(*record(QStringLiteral("b.tmp")));
    EXPECT_THAT(log.lines(), SizeIs(3));
}

TEST_F(ArchivedFile, AnAddressIsReadFromTheLocalPathUnderASharedLock)
{
    archive.localPath = finished(QStringLiteral("cached.rec"));
    {
        const auto file = open(Address, false);
        EXPECT_TRUE(file->IsValidFile());
        EXPECT_EQ(file->path(), TestSupport::fileName8(archive.localPath));
        EXPECT_EQ(file->GetZelvoErrorCode(), ZelvoError::None);
        CVTCmdData command;
        file->readfirst(command);
        EXPECT_EQ(std::string(command.strData(), command.strDataLen()), "data");
        EXPECT_EQ(archive.calls, QStringList(QStringLiteral("RequestFile zelvo:///GROUP/7 2")));
    }
    EXPECT_EQ(archive.calls.last(), QStringLiteral("CloseFile zelvo:///GROUP/7"));
}

TEST_F(ArchivedFile, AnAddressIsWrittenUnderAnExclusiveLockThatIsGivenBackWhenTheFileIsClosed)
{
    archive.localPath = station.file(QStringLiteral("new.rec"));
    qint64 bytesWhenTold = -1;
    archive.onClose = [&] { bytesWhenTold = QFileInfo(archive.localPath).size(); };
    {
        const auto file = open(Address, true);
        EXPECT_TRUE(file->IsValidFile());
        EXPECT_EQ(archive.calls.first(), QStringLiteral("RequestFile zelvo:///GROUP/7 3"));
        CVTCmdData command;
        command.set_cmd(1);
        command.set_str("data", 4);
        file->write(command, 10, false);
    }
    EXPECT_EQ(archive.calls.count(QStringLiteral("CloseFile zelvo:///GROUP/7")), 1);
    EXPECT_GT(bytesWhenTold, 500) << "what was written has left the buffer before";
}

TEST_F(ArchivedFile, TheArchiveIsToldOnceWhenTheLastCopyIsGone)
{
    archive.localPath = finished(QStringLiteral("cached.rec"));
    auto file = open(Address, false);
    auto copy = std::make_unique<CFileAccess>(*file);
    file.reset();
    EXPECT_EQ(archive.calls.count(QStringLiteral("CloseFile zelvo:///GROUP/7")), 0);
    copy.reset();
    EXPECT_EQ(archive.calls.count(QStringLiteral("CloseFile zelvo:///GROUP/7")), 1);
}

TEST_F(ArchivedFile, AClientThatIsNoLongerConnectedIsNotToldAboutTheEnd)
{
    archive.localPath = finished(QStringLiteral("cached.rec"));
    auto file = open(Address, false);
    archive.connected = false;
    file.reset();
    EXPECT_EQ(archive.calls.last(), QStringLiteral("RequestFile zelvo:///GROUP/7 2"));
}

TEST_F(ArchivedFile, AnAddressThatIsNoLongerValidIsNotClosed)
{
    archive.localPath = finished(QStringLiteral("cached.rec"));
    auto file = open(Address, false);
    archive.urlsAreValid = false;
    file.reset();
    EXPECT_EQ(archive.calls.last(), QStringLiteral("RequestFile zelvo:///GROUP/7 2"));
}

TEST_F(ArchivedFile, AFileWithoutAnAddressIsNeitherAskedForNorGivenBack)
{
    archive.localPath = station.file(QStringLiteral("another.rec"));
    const QString path = finished(QStringLiteral("plain.rec"));
    EXPECT_TRUE(open(path, false)->IsValidFile());
    EXPECT_TRUE(archive.calls.isEmpty()) << archive.calls.join(QLatin1Char('\n')).toStdString();
}

TEST_F(ArchivedFile, WhileTheClientIsNotConnectedAnAddressIsTakenForAFileName)
{
    archive.connected = false;
    archive.localPath = finished(QStringLiteral("cached.rec"));
    EXPECT_FALSE(open(Address, false)->IsValidFile());
    EXPECT_TRUE(archive.calls.isEmpty());
}

TEST_F(ArchivedFile, AnAddressThatTheArchiveRefusesIsNotOpened)
{
    archive.urlsAreValid = false;
    archive.urlError = ZelvoError::BadName;
    archive.localPath = finished(QStringLiteral("cached.rec"));
    auto file = open(Address, false);
    EXPECT_FALSE(file->IsValidFile());
    EXPECT_EQ(file->GetZelvoErrorCode(), ZelvoError::BadName);
    archive.urlsAreValid = true;
    file.reset();
    EXPECT_TRUE(archive.calls.isEmpty()) << "neither requested nor closed";
}

TEST_F(ArchivedFile, AFileThatTheArchiveDoesNotGiveIsNotOpened)
{
    archive.requestError = ZelvoError::Locked;
    archive.localPath = finished(QStringLiteral("cached.rec"));
    auto file = open(Address, false);
    EXPECT_FALSE(file->IsValidFile());
    EXPECT_EQ(file->GetZelvoErrorCode(), ZelvoError::Locked);
    CVTCmdData command;
    EXPECT_EQ(file->readfirst(command), 0ULL);
    EXPECT_NO_THROW(close(*file));
    file.reset();
    EXPECT_EQ(archive.calls, QStringList(QStringLiteral("RequestFile zelvo:///GROUP/7 2")));
}

TEST_F(ArchivedFile, AnAnswerWithoutAPathIsNotOpened)
{
    auto file = open(Address, true);
    EXPECT_FALSE(file->IsValidFile());
    EXPECT_EQ(file->fileSize(), 0);
    file.reset();
    EXPECT_EQ(archive.calls, QStringList(QStringLiteral("RequestFile zelvo:///GROUP/7 3"))) << "no group, no close";
}

TEST_F(ArchivedFile, AFileOfTheArchiveThatIsNoRecordingIsGivenBack)
{
    archive.localPath = station.file(QStringLiteral("cached.rec"));
    TestSupport::writeFile(archive.localPath, "no recording");
    EXPECT_FALSE(open(Address, false)->IsValidFile());
    EXPECT_EQ(archive.calls.last(), QStringLiteral("CloseFile zelvo:///GROUP/7"));
}

}  // namespace
}  // namespace RecorderTests
