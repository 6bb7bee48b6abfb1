// Fixture of the tests of what files say to the archive.
#pragma once

#include <recording2/fileaccess.h>

#include "../recording/recorder_fixture.h"
#include "scriptedarchive.h"

namespace RecorderTests {

const QString Address = "zelvo:///GROUP/7";

/// Files that are opened with a client of the scripted archive.
class ArchiveClientTest : public testing::Test {
protected:
    ArchiveClientTest()
    {
        archive = TestSupport::ScriptedArchive();
        Recording2::FileAccessTestPeer::setGroup("Initial GUID String");
        client = std::make_unique<Zelvo::ZelvoClient>();
    }

    [[nodiscard]] std::unique_ptr<CFileAccess> open(const QString& path, bool write, bool sameGroup = false) const
    {
        return std::make_unique<CFileAccess>(TestSupport::fileName8(path).c_str(), "/Status", nullptr, write, true,
                                             sameGroup, nullptr, client.get());
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
        CFileAccess file(TestSupport::fileName8(station.file(name)).c_str(), "/Status", nullptr, true, true, false,
                         nullptr, nullptr);
        CVTCmdData command;
        command.set_cmd(1);
        command.set_str("data", 4);
        file.write(command, 10, false);
        close(file);
        return station.file(name);
    }
    [[nodiscard]] QString archivePath() const { return station.text("/Status/REC_ZELVOFILEPATH"); }
    [[nodiscard]] QString uncPath() const { return station.text("/Status/REC_UNCFILEPATH"); }

    /// Creates and closes a file; the one trace that it leaves must be that of the archive's error.
    void expectTraced(const QString& message)
    {
        const TraceLog log;
        const auto file = record("a.tmp");
        EXPECT_TRUE(file->IsValidFile());
        close(*file);
        EXPECT_THAT(log.lines(),
                    testing::ElementsAre(testing::FieldsAre(message + "the archive says no",
                                                            R"(devicecontrol\recording2\fileaccess)", testing::_)));
        EXPECT_TRUE(QFile::exists(station.file("a.rec"))) << "it is recorded all the same";
    }

    TestSupport::ScriptedArchive& archive = TestSupport::scriptedArchive();
    Station station;
    std::unique_ptr<Zelvo::ZelvoClient> client;
};

}  // namespace RecorderTests
