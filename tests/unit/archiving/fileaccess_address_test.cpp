// Files that are asked for by an address of the archive, and given back.
#include "archiveclient.h"

namespace RecorderTests {
namespace {

using Zelvo::ZelvoError;

class ArchiveAddress : public ArchiveClientTest {};

TEST_F(ArchiveAddress, AnAddressIsReadFromTheLocalPathUnderASharedLock)
{
    archive.localPath = finished("cached.rec");
    {
        const auto file = open(Address, false);
        EXPECT_TRUE(file->IsValidFile());
        EXPECT_EQ(file->path(), TestSupport::fileName8(archive.localPath));
        EXPECT_EQ(file->GetZelvoErrorCode(), ZelvoError::None);
        CVTCmdData command;
        file->readfirst(command);
        EXPECT_EQ(std::string(command.strData(), command.strDataLen()), "data");
        EXPECT_EQ(archive.calls, QStringList("RequestFile zelvo:///GROUP/7 2"));
    }
    EXPECT_EQ(archive.calls.last(), "CloseFile zelvo:///GROUP/7");
}

TEST_F(ArchiveAddress, AnAddressIsWrittenUnderAnExclusiveLockThatIsGivenBackWhenTheFileIsClosed)
{
    archive.localPath = station.file("new.rec");
    qint64 bytesWhenTold = -1;
    archive.onClose = [&] { bytesWhenTold = QFileInfo(archive.localPath).size(); };
    {
        const auto file = open(Address, true);
        EXPECT_TRUE(file->IsValidFile());
        EXPECT_EQ(archive.calls.first(), "RequestFile zelvo:///GROUP/7 3");
        CVTCmdData command;
        command.set_cmd(1);
        command.set_str("data", 4);
        file->write(command, 10, false);
    }
    EXPECT_EQ(archive.calls.count("CloseFile zelvo:///GROUP/7"), 1);
    EXPECT_GT(bytesWhenTold, 500) << "what was written has left the buffer before";
}

TEST_F(ArchiveAddress, TheArchiveIsToldOnceWhenTheLastCopyIsGone)
{
    archive.localPath = finished("cached.rec");
    auto file = open(Address, false);
    auto copy = std::make_unique<CFileAccess>(*file);
    file.reset();
    EXPECT_EQ(archive.calls.count("CloseFile zelvo:///GROUP/7"), 0);
    copy.reset();
    EXPECT_EQ(archive.calls.count("CloseFile zelvo:///GROUP/7"), 1);
}

TEST_F(ArchiveAddress, NeitherAClientThatIsNoLongerConnectedIsToldAboutTheEndNorAnInvalidAddress)
{
    for (bool* state : {&archive.connected, &archive.urlsAreValid}) {
        archive.localPath = finished("cached.rec");
        auto file = open(Address, false);
        *state = false;
        file.reset();
        *state = true;
        EXPECT_EQ(archive.calls.last(), "RequestFile zelvo:///GROUP/7 2");
    }
}

TEST_F(ArchiveAddress, AFileWithoutAnAddressIsNeitherAskedForNorGivenBack)
{
    archive.localPath = station.file("another.rec");
    const QString path = finished("plain.rec");
    EXPECT_TRUE(open(path, false)->IsValidFile());
    EXPECT_TRUE(archive.calls.isEmpty()) << archive.calls.join('\n').toStdString();
}

TEST_F(ArchiveAddress, WhileTheClientIsNotConnectedAnAddressIsTakenForAFileName)
{
    archive.connected = false;
    archive.localPath = finished("cached.rec");
    EXPECT_FALSE(open(Address, false)->IsValidFile());
    EXPECT_TRUE(archive.calls.isEmpty());
}

TEST_F(ArchiveAddress, AnAddressThatTheArchiveRefusesIsNotOpened)
{
    archive.urlsAreValid = false;
    archive.urlError = ZelvoError::BadName;
    archive.localPath = finished("cached.rec");
    auto file = open(Address, false);
    EXPECT_FALSE(file->IsValidFile());
    EXPECT_EQ(file->GetZelvoErrorCode(), ZelvoError::BadName);
    archive.urlsAreValid = true;
    file.reset();
    EXPECT_TRUE(archive.calls.isEmpty()) << "neither requested nor closed";
}

TEST_F(ArchiveAddress, AFileThatTheArchiveDoesNotGiveIsNotOpened)
{
    archive.requestError = ZelvoError::Locked;
    archive.localPath = finished("cached.rec");
    auto file = open(Address, false);
    EXPECT_FALSE(file->IsValidFile());
    EXPECT_EQ(file->GetZelvoErrorCode(), ZelvoError::Locked);
    CVTCmdData command;
    EXPECT_EQ(file->readfirst(command), 0ULL);
    EXPECT_NO_THROW(close(*file));
    file.reset();
    EXPECT_EQ(archive.calls, QStringList("RequestFile zelvo:///GROUP/7 2"));
}

TEST_F(ArchiveAddress, AnAnswerWithoutAPathIsNotOpened)
{
    auto file = open(Address, true);
    EXPECT_FALSE(file->IsValidFile());
    EXPECT_EQ(file->fileSize(), 0);
    file.reset();
    EXPECT_EQ(archive.calls, QStringList("RequestFile zelvo:///GROUP/7 3")) << "no group, no close";
}

TEST_F(ArchiveAddress, AFileOfTheArchiveThatIsNoRecordingIsGivenBack)
{
    archive.localPath = station.file("cached.rec");
    TestSupport::writeFile(archive.localPath, "no recording");
    EXPECT_FALSE(open(Address, false)->IsValidFile());
    EXPECT_EQ(archive.calls.last(), "CloseFile zelvo:///GROUP/7");
}

}  // namespace
}  // namespace RecorderTests
