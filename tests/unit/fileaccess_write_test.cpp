// Writing records, type tables and headers: times that move on, and where each block lands.
#include "fileaccess_fixture.h"
#include "support/modelreader.h"

using namespace FileAccessTests;
using TestSupport::ParsedRecording;

namespace {

class Writing : public FileAccessTest {
protected:
    Writing() : m_file(openForWriting("a.tmp")) {}

    CFileAccess& file() { return *m_file; }
    std::string closedBytes(const HeaderFields& header = {})
    {
        close(*m_file, header);
        return bytesOf("a.rec");
    }

private:
    std::unique_ptr<CFileAccess> m_file;
};

using Times = std::vector<std::uint64_t>;
const std::vector<TypeFields> someTypes{{3, 8, "DFSPECTRUM", "/Devices/Df"}, {1, -2, "LEVEL", "/LEVEL"}};

}  // namespace

TEST_F(Writing, ATimeThatIsTakenOrPassedMovesToTheNextMillisecondThatIsFree)
{
    for (const auto& [given, stored] : std::vector<std::pair<Times, Times>>{{{50, 50, 50}, {50, 51, 52}},
                                                                            {{50, 50, 51, 60}, {50, 51, 52, 60}},
                                                                            {{100, 10, 0}, {100, 101, 102}},
                                                                            {{0, 0}, {0, 1}}}) {
        const auto file = openForWriting("b.tmp");
        for (const std::uint64_t time : given) {
            write(*file, 1, "a", time);
        }
        close(*file);
        Times times;
        for (const ParsedRecording::Record& record : TestSupport::parseRecording(bytesOf("b.rec")).records) {
            times.push_back(record.time);
        }
        EXPECT_EQ(times, stored);
        ASSERT_TRUE(QFile::remove(filePath("b.rec")));
    }
}

TEST_F(Writing, ARecordWithoutDataIsNotWrittenButAdvancesTheTimeWhoseMillisecondItLeaves)
{
    write(file(), 1, "a", 10);
    const std::int32_t size = file().fileSize();
    write(file(), 2, "", 500, true);
    EXPECT_EQ(file().fileSize(), size);
    write(file(), 3, "c", 20);
    EXPECT_EQ(closedBytes(), ReferenceRecording().record(1, "a", 10).record(3, "c", 500).close());
    const auto other = openForWriting("b.tmp");
    write(*other, 2, "", 500, true);
    close(*other);
    EXPECT_EQ(bytesOf("b.rec"), ReferenceRecording().close());
}

TEST_F(Writing, TimesUseAll64BitsAndCodesTheirWhole32Bits)
{
    const std::vector<std::pair<std::int32_t, std::uint64_t>> records = {{0, 0x0102'0304'0506'0708ULL},
                                                                         {-2'147'483'647 - 1, 0x7FFF'FFFF'FFFF'FF23ULL},
                                                                         {2'147'483'647, 0xFFFF'FFFF'FFFF'FF23ULL}};
    ReferenceRecording expected;
    for (const auto& [code, time] : records) {
        write(file(), code, "a", time);
        expected.record(code, "a", time);
    }
    EXPECT_EQ(closedBytes(), expected.close());
}

TEST_F(Writing, TheMovedTimeNotTheGivenOneIsThatOfTheRangeDefinitionInTheTableBehindTheTimes)
{
    write(file(), 1, "a", 50);
    write(file(), 2, "b", 50, true);
    write(file(), 3, "c", 20, true);
    write(file(), 4, "d", 90);
    EXPECT_EQ(closedBytes(), ReferenceRecording()
                                 .record(1, "a", 50)
                                 .record(2, "b", 51, true)
                                 .record(3, "c", 52, true)
                                 .record(4, "d", 90)
                                 .close());
}

TEST_F(Writing, AFileWithoutRecordsHasNoTimeTable)
{
    const ParsedRecording recording = TestSupport::parseRecording(closedBytes());
    EXPECT_EQ(recording.header.firstRecord, 0);
    EXPECT_EQ(recording.header.timeTable, 0);
    EXPECT_EQ(recording.header.channelRangeTable, 0);
    EXPECT_EQ(recording.header.bookmarkTable, 0);
}

TEST_F(Writing, TheFileSizeIsWhatWasWrittenSoFar)
{
    CVTTypesData types = makeTypes(someTypes);
    file().write(types);
    const auto typesEnd = static_cast<std::int32_t>(500 + TestSupport::typeTableBytes(someTypes).size());
    EXPECT_EQ(file().fileSize(), typesEnd);
    write(file(), 12, std::string(20'000, 'x'), 10);
    EXPECT_EQ(file().fileSize(), typesEnd + 3 + 6 + 20'000);
}

TEST_F(Writing, TheTypeTableStoredFirstLiesBehindTheHeaderAreaWhateverItHolds)
{
    const std::vector<TypeFields> odd{{-1, 2'147'483'647, std::string("a\0#b", 4), ""},
                                      {2, 0, std::string(700, 'k'), "\xe4\xff"}};
    for (const auto& fields : {someTypes, odd, std::vector<TypeFields>()}) {
        const auto file = openForWriting("b.tmp");
        CVTTypesData types = makeTypes(fields);
        EXPECT_EQ(file->write(types), 0U);
        write(*file, 3, "data", 10);
        close(*file);
        const std::string bytes = bytesOf("b.rec");
        EXPECT_EQ(bytes, ReferenceRecording().types(fields).record(3, "data", 10).close());
        EXPECT_EQ(TestSupport::parseRecording(bytes).header.typeTable, 500);
        CVTTypesData read;
        EXPECT_EQ(openBytes(bytes)->read(read), 1U);
        EXPECT_EQ(fieldsOf(read), fields);
        ASSERT_TRUE(QFile::remove(filePath("b.rec")));
    }
}

TEST_F(Writing, ASecondTypeTableIsAppendedButNothingPointsToIt)
{
    CVTTypesData types = makeTypes(someTypes);
    CVTTypesData other = makeTypes({{9, 9, "OTHER", "/OTHER"}});
    file().write(types);
    file().write(other);
    write(file(), 3, "data", 10);
    const std::string bytes = closedBytes();
    EXPECT_EQ(bytes,
              ReferenceRecording().types(someTypes).types({{9, 9, "OTHER", "/OTHER"}}).record(3, "data", 10).close());
    CVTTypesData read;
    EXPECT_EQ(openBytes(bytes)->read(read), 1U);
    EXPECT_EQ(fieldsOf(read), someTypes);
}

TEST_F(Writing, ATypeTableStoredAfterRecordsLiesBetweenThem)
{
    CVTTypesData types = makeTypes(someTypes);
    write(file(), 3, "first", 10);
    file().write(types);
    write(file(), 3, "second", 20);
    const std::string bytes = closedBytes();
    EXPECT_EQ(bytes, ReferenceRecording().record(3, "first", 10).types(someTypes).record(3, "second", 20).close());

    const auto reader = openBytes(bytes);
    CVTCmdData record;
    EXPECT_EQ(reader->readfirst(record), 0U);  // no record begins after the first one
    EXPECT_EQ(reader->read(record, 20), 0U);
    EXPECT_EQ(dataOf(record), "second");
}

TEST_F(Writing, TheHeaderGoesToTheStartOfTheFile)
{
    CVTTypesData types = makeTypes(someTypes);
    file().write(types);
    write(file(), 3, "data", 10);
    CHeaderData first = makeHeader({});
    EXPECT_EQ(file().write(first), 0U);
    HeaderFields positions{
        .typeTable = 500,
        .firstRecord = 500 + static_cast<std::int32_t>(TestSupport::typeTableBytes(someTypes).size())};
    EXPECT_EQ(file().fileSize(), static_cast<std::int32_t>(positions.bytes().size()));
}

TEST_F(Writing, WriteAnswersZeroWhateverItWrote)
{
    CVTTypesData types = makeTypes(someTypes);
    CVTCmdData record = makeRecord(1, "data");
    CHeaderData header = makeHeader({});
    EXPECT_EQ(file().write(types), 0U);
    EXPECT_EQ(file().write(record, 10, true), 0U);
    EXPECT_EQ(file().write(header), 0U);
}
