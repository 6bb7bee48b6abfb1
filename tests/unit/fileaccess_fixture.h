// What the tests of CFileAccess share: a directory of their own and short ways to write and read.
#pragma once

#include "support/libraryobjects.h"
#include "support/memorydirectory.h"
#include "support/testing.h"

namespace FileAccessTests {

using Recording2::CFileAccess;
using namespace TestSupport;

/// A header that no file of these tests holds.
inline CHeaderData presetHeader()
{
    HeaderFields fields{.majorVersion = 9,
                        .minorVersion = 8,
                        .startFrequency = 7,
                        .stopFrequency = 6,
                        .stepWidth = 5,
                        .minLevel = 4,
                        .maxLevel = 3,
                        .startMs = 2,
                        .stopMs = 1,
                        .jobId = "kept job",
                        .deviceName = "kept name",
                        .deviceType = "kept type"};
    return makeHeader(fields);
}

/// A temporary directory, and objects opened on files in it.
class FileAccessTest : public testing::Test {
protected:
    [[nodiscard]] QString filePath(const QString& name) const { return m_directory.filePath(name); }
    [[nodiscard]] bool exists(const QString& name) const { return QFileInfo::exists(filePath(name)); }
    [[nodiscard]] std::string bytesOf(const QString& name) const { return TestSupport::readFile(filePath(name)); }

    [[nodiscard]] std::unique_ptr<CFileAccess> openForWriting(const QString& name) const
    {
        return open(name, true, false);
    }
    [[nodiscard]] std::unique_ptr<CFileAccess> openForReading(const QString& name, bool readTables = true) const
    {
        return open(name, false, readTables);
    }
    /// Puts the bytes into a file and opens that.
    [[nodiscard]] std::unique_ptr<CFileAccess> openBytes(const std::string& bytes, bool readTables = true) const
    {
        TestSupport::writeFile(filePath("made.rec"), bytes);
        return openForReading("made.rec", readTables);
    }
    static void write(CFileAccess& file, std::int32_t code, const std::string& data, unsigned long long time,
                      bool rangeDef = false)
    {
        CVTCmdData record = makeRecord(code, data);
        EXPECT_EQ(file.write(record, time, rangeDef), 0U);
    }
    static void close(CFileAccess& file, const HeaderFields& fields = {})
    {
        CHeaderData header = makeHeader(fields);
        file.CloseRecording(header, true);
    }
    [[nodiscard]] std::string name8(const QString& name) const { return TestSupport::fileName8(filePath(name)); }
    /// Every way to read once; all answer 0 and read nothing.
    static void expectReadsToAnswerZero(CFileAccess& file)
    {
        CHeaderData header = presetHeader();
        CVTTypesData types = makeTypes({{1, 2, "KEY", "/PATH"}});
        CVTCmdData record = makeRecord(3, "kept");
        EXPECT_EQ(file.read(header), 0U);
        EXPECT_EQ(file.read(types), 0U);
        EXPECT_EQ(file.read(record), 0U);
        EXPECT_EQ(file.read(record, 10), 0U);
        EXPECT_EQ(file.readAndReturnTimeOfCurrentCmd(record), 0U);
        EXPECT_EQ(file.readfirst(record), 0U);
        EXPECT_EQ(file.readfirst(record, 3), 0U);
        EXPECT_EQ(file.readnext(record), 0U);
        EXPECT_EQ(file.readnext(record, 4), 0U);
        EXPECT_EQ(file.readprev(record, 10), 0U);
        EXPECT_EQ(record.cmd(), 3);
        EXPECT_EQ(dataOf(record), "kept");
        EXPECT_EQ(fieldsOf(header), fieldsOf(presetHeader()));
        EXPECT_EQ(types.get_vector().size(), 1U);
    }
    /// Every operation once; none may throw, and all answer 0.
    static void expectAllOperationsToAnswerZero(CFileAccess& file)
    {
        CHeaderData header = makeHeader({});
        CVTTypesData types = makeTypes({{1, 2, "KEY", "/PATH"}});
        CVTCmdData record = makeRecord(3, "kept");
        EXPECT_EQ(file.write(types), 0U);
        EXPECT_EQ(file.write(record, 10, true), 0U);
        EXPECT_EQ(file.write(header), 0U);
        expectReadsToAnswerZero(file);
        file.readTables();
        expectReadsToAnswerZero(file);
        EXPECT_EQ(file.fileSize(), 0);
    }

private:
    [[nodiscard]] std::unique_ptr<CFileAccess> open(const QString& name, bool write, bool readTables) const
    {
        return std::make_unique<CFileAccess>(TestSupport::fileName8(filePath(name)).c_str(), "/Rec", nullptr, write,
                                             readTables, false, nullptr, nullptr);
    }

    QTemporaryDir m_directory{TestSupport::directoryTemplate()};
};

}  // namespace FileAccessTests
