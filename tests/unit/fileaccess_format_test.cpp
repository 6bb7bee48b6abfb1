// The bytes that CFileAccess writes: header, times, data, and where the tables end.
#include "fileaccess_fixture.h"
#include "support/modelreader.h"

using namespace FileAccessTests;

namespace {

class FileFormat : public FileAccessTest {
protected:
    /// The bytes of a file with one record and the header.
    [[nodiscard]] std::string written(const HeaderFields& header) const
    {
        const auto file = openForWriting("a.dat");
        write(*file, 1, "data", 10);
        close(*file, header);
        return bytesOf("a.dat");
    }
    [[nodiscard]] CHeaderData readBack(const std::string& bytes) const
    {
        CHeaderData header;
        EXPECT_EQ(openBytes(bytes)->read(header), 1U);
        return header;
    }
};

}  // namespace

TEST_F(FileFormat, TheHeaderBeginsWithItsNumbersAsTextFrequenciesWithSixDigits)
{
    const HeaderFields odd{.startFrequency = 90'012'345.0F, .minLevel = -140, .maxLevel = -1};
    const HeaderFields ofTheRecorder{.startFrequency = 9e7F, .stopFrequency = 1.2e8F, .stepWidth = 100'000};
    for (const auto& [fields, begin] : {std::pair{HeaderFields{}, std::string("2#0#20#3000#0.025#-30#100#")},
                                        std::pair{odd, std::string("2#0#9.00123e+07#3000#0.025#-140#-1#")},
                                        std::pair{ofTheRecorder, std::string("2#0#9e+07#1.2e+08#100000#-3")}}) {
        EXPECT_EQ(written(fields).substr(0, begin.size()), begin);
    }
    EXPECT_EQ(written({}).substr(26 + 18, 6), "4#A1B2");
    const CHeaderData read = readBack(written(odd));
    EXPECT_EQ(read.startFreq(), 90'012'300.0F);
    EXPECT_EQ(read.minLevel(), -140);
    EXPECT_EQ(read.maxLevel(), -1);
}

TEST_F(FileFormat, TimesAreEightBytesLeastSignificantFirst)
{
    HeaderFields header{.startMs = 0x0102'0304'0506ULL, .stopMs = 0x23'2323'2323ULL};
    const std::string bytes = written(header);
    EXPECT_EQ(bytes.substr(26, 9), std::string("\x06\x05\x04\x03\x02\x01\0\0#", 9));
    EXPECT_EQ(bytes.substr(35, 9), std::string("#####\0\0\0#", 9));
}

TEST_F(FileFormat, HeaderTimesAreWholeMilliseconds)
{
    CHeaderData header = makeHeader({});
    header.set_startTS(CTimeStamp(5'999ULL));
    const auto file = openForWriting("a.dat");
    file->CloseRecording(header, true);
    EXPECT_EQ(TestSupport::parseRecording(bytesOf("a.dat")).header.startMs, 5U);
    EXPECT_EQ(readBack(bytesOf("a.dat")).startTS().getTimeStamp(), 5'000U);
}

TEST_F(FileFormat, HeaderTimesBeyond32BitsOfMillisecondsComeBack)
{
    HeaderFields header{.startMs = 1'700'000'000'123ULL, .stopMs = 18'446'744'073'709'551ULL};
    const CHeaderData read = readBack(written(header));
    EXPECT_EQ(read.startTS().getTimeStamp(), 1'700'000'000'123'000ULL);
    EXPECT_EQ(read.stopTS().getTimeStamp(), 18'446'744'073'709'551'000ULL);
}

TEST_F(FileFormat, ANullTimeIsWrittenAsZero)
{
    CHeaderData empty;
    empty.set_version(2, 0);
    const auto file = openForWriting("a.dat");
    file->CloseRecording(empty, true);
    EXPECT_EQ(TestSupport::parseRecording(bytesOf("a.dat")).header.startMs, 0U);
}

TEST_F(FileFormat, EveryHeaderFieldComesBack)
{
    HeaderFields fields{.majorVersion = 32'767,
                        .minorVersion = -5,
                        .startFrequency = 1.25F,
                        .stopFrequency = -2.5e-20F,
                        .stepWidth = 3.5e+30F,
                        .minLevel = -2'147'483'647 - 1,
                        .maxLevel = 2'147'483'647,
                        .jobId = "job #1",
                        .deviceName = "N\xfcrnberg",
                        .deviceType = "17#",
                        .automatic = true};
    EXPECT_EQ(fieldsOf(readBack(written(fields))), fields);
}

TEST_F(FileFormat, TheAreaBehindTheHeaderRecordKeepsItsPlaceholders)
{
    const std::string bytes = written({});
    HeaderFields fields{.firstRecord = 500, .timeTable = 508};
    const std::string header = fields.bytes();
    EXPECT_EQ(bytes.substr(0, header.size()), header);
    EXPECT_EQ(bytes.substr(header.size(), 500 - header.size()), std::string(499 - header.size(), '0') + '#');
}

TEST_F(FileFormat, TheAreaBehindTheHeaderRecordIsIgnored)
{
    const auto reference = ReferenceRecording().record(1, "data", 10).record(2, "more", 20);
    std::string bytes = reference.close();
    HeaderFields fields;
    const std::size_t end = fields.bytes().size() + 20;
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(end), bytes.begin() + 500, '\xA5');
    const auto file = openBytes(bytes);
    CVTCmdData record;
    ASSERT_TRUE(file->IsValidFile());
    EXPECT_EQ(file->readfirst(record), 20U);
    EXPECT_EQ(dataOf(record), "data");
}

TEST_F(FileFormat, AHeaderLongerThanItsAreaIsWrittenOverWhatFollows)
{
    HeaderFields fields{.deviceName = std::string(600, 'n')};
    const std::vector<TypeFields> types{{1, 2, std::string(300, 'k'), "/PATH"}};
    CVTTypesData table = makeTypes(types);
    const auto file = openForWriting("a.dat");
    file->write(table);
    write(*file, 1, "data", 10);
    close(*file, fields);
    EXPECT_EQ(bytesOf("a.dat"), ReferenceRecording().types(types).record(1, "data", 10).close(fields));
}

TEST_F(FileFormat, AHeaderLongerThanTheFileExtendsIt)
{
    HeaderFields fields{.deviceType = std::string(600, 't')};
    const auto file = openForWriting("a.dat");
    close(*file, fields);
    EXPECT_EQ(bytesOf("a.dat"), fields.bytes());
    EXPECT_EQ(std::string(readBack(fields.bytes()).deviceType()), fields.deviceType);
}

TEST_F(FileFormat, AHeaderTextIsWrittenUpToItsNulWithItsFullLength)
{
    HeaderFields fields{.deviceName = std::string("ab\0cd", 5), .deviceType = std::string("\0x", 2)};
    const std::string bytes = written(fields);
    EXPECT_EQ(bytes.substr(26 + 18, 13), "4#A1B25#ab2#0");
    EXPECT_EQ(bytes, ReferenceRecording().record(1, "data", 10).close(fields));
}

TEST_F(FileFormat, AFileWithoutAnyRecordHasNoPositionsAndNoTables)
{
    const auto file = openForWriting("a.dat");
    close(*file);
    const std::string bytes = bytesOf("a.dat");
    EXPECT_EQ(bytes, ReferenceRecording().close());
    EXPECT_EQ(bytes.size(), 500U);

    const auto reader = openBytes(bytes);
    ASSERT_TRUE(reader->IsValidFile());
    CVTCmdData record = makeRecord(7, "kept");
    EXPECT_EQ(reader->readfirst(record), 0U);
    EXPECT_EQ(reader->readfirst(record, 0), 0U);
    EXPECT_EQ(reader->readprev(record, 10), 0U);
    EXPECT_EQ(reader->readnext(record), 0U);
    EXPECT_EQ(reader->read(record, 10), 0U);
    EXPECT_EQ(record.cmd(), 7);
    EXPECT_EQ(dataOf(record), "kept");
}

TEST_F(FileFormat, DataOfAnyBytesComesBackUnchanged)
{
    std::string data = "1#2#";
    for (int byte = 0; byte < 256; ++byte) {
        data += static_cast<char>(byte);
    }
    data += "##\r\n\x1a#";
    const auto file = openForWriting("a.dat");
    write(*file, 1, data, 10);
    write(*file, 2, "#", 20);
    write(*file, 3, std::string(1, '\0'), 30);
    close(*file);
    const auto reader = openForReading("a.dat");
    CVTCmdData record;
    EXPECT_EQ(reader->readfirst(record), 20U);
    EXPECT_EQ(dataOf(record), data);
    EXPECT_EQ(reader->readnext(record), 30U);
    EXPECT_EQ(dataOf(record), "#");
    EXPECT_EQ(reader->readnext(record), 0U);
    EXPECT_EQ(dataOf(record), std::string(1, '\0'));
}

TEST_F(FileFormat, TheTimeTableRunsToTheEndOfTheFileWithoutARangeTable)
{
    // What stands after the last pair reads as further pairs: here the bookmark 777, whose text spells a pair.
    const ReferenceRecording reference = ReferenceRecording().record(1, "data", 10).record(2, "more", 20);
    TestSupport::ByteBuilder bytes(reference.close());
    HeaderFields header{.firstRecord = 500, .timeTable = 516, .bookmarkTable = bytes.position()};
    bytes.time(777).text(TestSupport::ByteBuilder().time(888).number(500).bytes()).overwrite(0, header.bytes());
    const auto file = openBytes(bytes.bytes());
    CVTCmdData record;
    EXPECT_EQ(file->read(record, 888), 20U);
    EXPECT_EQ(dataOf(record), "data");
    EXPECT_EQ(file->readprev(record, 888), 777U);
    EXPECT_EQ(file->readprev(record, 20), 10U);
    EXPECT_EQ(dataOf(record), "data");
}

TEST_F(FileFormat, TheTimeTableEndsAtTheRangeTable)
{
    const ReferenceRecording reference = ReferenceRecording().record(1, "data", 10, true).record(2, "more", 20);
    TestSupport::ByteBuilder bytes(reference.close());
    bytes.time(777).number(500);
    const auto file = openBytes(bytes.bytes());
    CVTCmdData record;
    EXPECT_EQ(file->readprev(record, 777), 0U);
    EXPECT_EQ(file->read(record, 777), 0U);
    EXPECT_EQ(dataOf(record), "more");
}
