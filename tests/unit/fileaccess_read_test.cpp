// Reading of type tables, time tables and single records, sound and damaged.
#include "fileaccess_fixture.h"

using namespace FileAccessTests;
using TestSupport::ByteBuilder;

namespace {

class Reading : public FileAccessTest {
protected:
    [[nodiscard]] std::vector<TypeFields> readTypes(const std::string& block) const
    {
        ByteBuilder bytes(TestSupport::headerArea());
        bytes.raw(block).overwrite(0, HeaderFields{.typeTable = 500}.bytes());
        CVTTypesData types;
        EXPECT_EQ(openBytes(bytes.bytes())->read(types), 1U);
        return fieldsOf(types);
    }
    /// A file with the records "a", "b" and "c" at 500, 505 and 510 and the bytes in place of the time table.
    [[nodiscard]] std::unique_ptr<CFileAccess> openWithTimeTable(const std::string& table) const
    {
        ByteBuilder bytes(TestSupport::headerArea());
        for (const char* data : {"a", "b", "c"}) {
            bytes.raw(TestSupport::recordBytes(1, data));
        }
        bytes.raw(table).overwrite(0, HeaderFields{.firstRecord = 500, .timeTable = 515}.bytes());
        return openBytes(bytes.bytes());
    }
    static std::string dataAt(CFileAccess& file, unsigned long long time)
    {
        CVTCmdData record;
        file.read(record, time);
        return dataOf(record);
    }
};

}  // namespace

TEST_F(Reading, TypesComeBackInTheirOrder)
{
    const std::vector<TypeFields> types{{5, 1, "FIVE", "/5"}, {-2, -7, "", ""}, {3, 0, "#", std::string("\0#", 2)}};
    EXPECT_EQ(readTypes(TestSupport::typeTableBytes(types)), types);
    EXPECT_TRUE(readTypes("0#").empty());
    EXPECT_TRUE(readTypes("-3#").empty());
}

TEST_F(Reading, OfTwoTypesWithOneNumberTheFirstIsKept)
{
    const TypeFields first{5, 1, "FIRST", "/1"};
    EXPECT_EQ(readTypes(TestSupport::typeTableBytes({first, {5, 2, "SECOND", "/2"}})), std::vector<TypeFields>{first});
}

TEST_F(Reading, TypesAreAddedToThoseThatTheTableHolds)
{
    const auto file = openBytes(ReferenceRecording().types({{5, 1, "FILE", "/F"}, {6, 1, "SIX", "/S"}}).close());
    CVTTypesData types = makeTypes({{5, 9, "MINE", "/M"}});
    EXPECT_EQ(file->read(types), 1U);
    EXPECT_EQ(fieldsOf(types), (std::vector<TypeFields>{{5, 9, "MINE", "/M"}, {6, 1, "SIX", "/S"}}));
}

TEST_F(Reading, DamagedNumbersOfATypeReadAsZero)
{
    EXPECT_EQ(readTypes("2##7#1#a1#bx8#1#c1#d"),
              (std::vector<TypeFields>{{0, 7, "a", "b"}}));  // the second has the number 0 as well
    EXPECT_EQ(readTypes("1#4#x1#a1#b"), (std::vector<TypeFields>{{4, 0, "a", "b"}}));
    EXPECT_EQ(readTypes("1#4#5##1#b"), (std::vector<TypeFields>{{4, 5, "", "b"}}));
}

TEST_F(Reading, ATypeCountBeyondTheFileComesBackAtOnce)
{
    const std::vector<TypeFields> types = readTypes("2000000000#1#2#1#a1#b");
    ASSERT_FALSE(types.empty());
    EXPECT_EQ(types.front(), (TypeFields{1, 2, "a", "b"}));
    EXPECT_LE(types.size(), 2U);
}

TEST_F(Reading, RecordsCanBeReadFromBehindTheTypeTable)
{
    const auto file =
        openBytes(ReferenceRecording().types({{1, 2, "KEY", "/PATH"}}).record(1, "a", 10).record(2, "b", 20).close());
    CVTCmdData record;
    EXPECT_EQ(file->read(record, 20), 0U);
    CVTTypesData types;
    EXPECT_EQ(file->read(types), 1U);
    EXPECT_EQ(file->readnext(record), 20U);
    EXPECT_EQ(dataOf(record), "a");
}

TEST_F(Reading, WithoutTablesRecordsAreReadInSequenceButHaveNoTimes)
{
    const auto file = openBytes(
        ReferenceRecording().types({{1, 2, "KEY", "/PATH"}}).record(1, "a", 10).record(2, "b", 20).close(), false);
    CVTTypesData types;
    CVTCmdData record;
    ASSERT_TRUE(file->IsValidFile());
    EXPECT_EQ(file->readfirst(record), 0U);
    EXPECT_EQ(file->readprev(record, 20), 0U);
    EXPECT_EQ(dataOf(record), "");
    EXPECT_EQ(file->read(types), 1U);
    EXPECT_EQ(file->readAndReturnTimeOfCurrentCmd(record), 0U);
    EXPECT_EQ(dataOf(record), "a");
    EXPECT_EQ(file->read(record, 10), 0U);  // no index to look the time up in: stays where it is
    EXPECT_EQ(dataOf(record), "b");
}

TEST_F(Reading, LoadingTheTablesGoesToTheFirstRecord)
{
    const auto file = openBytes(
        ReferenceRecording().types({{1, 2, "KEY", "/PATH"}}).record(1, "a", 10).record(2, "b", 20).close(), false);
    CVTCmdData record;
    file->readTables();
    EXPECT_EQ(file->readnext(record), 20U);
    EXPECT_EQ(dataOf(record), "a");
    EXPECT_EQ(file->readnext(record), 0U);
    file->readTables();
    EXPECT_EQ(file->readnext(record), 20U);
    EXPECT_EQ(dataOf(record), "a");
}

TEST_F(Reading, ATimeOfFewerThanEightBytesIsDropped)
{
    const std::string sound = ByteBuilder().time(10).number(500).time(20).number(505).bytes();
    for (std::size_t bytes = 1; bytes < 8; ++bytes) {
        const auto file = openWithTimeTable(sound + std::string(bytes, '\x01'));
        CVTCmdData record;
        EXPECT_EQ(file->readprev(record, 20), 10U) << bytes;
        EXPECT_EQ(file->read(record, 21), 0U) << bytes;
        EXPECT_EQ(dataOf(record), "b") << bytes;
    }
}

TEST_F(Reading, ATimeWithoutItsPositionTakesTheOneBefore)
{
    const std::string sound = ByteBuilder().time(10).number(500).time(20).number(505).bytes();
    const std::string time = ByteBuilder().time(30).bytes();
    for (const std::size_t bytes : {std::size_t{8}, std::size_t{9}}) {
        const auto file = openWithTimeTable(sound + time.substr(0, bytes));
        EXPECT_EQ(dataAt(*file, 30), "b");
        CVTCmdData record;
        EXPECT_EQ(file->readprev(record, 30), 20U);
        EXPECT_EQ(file->read(record, 10), 20U);  // the position keeps its first time
    }
}

TEST_F(Reading, APositionThatCannotBeReadTakesTheOneBefore)
{
    const auto file = openWithTimeTable(
        ByteBuilder().time(10).number(505).time(20).raw("x").time(30).raw("99999999999#").time(40).number(510).bytes());
    EXPECT_EQ(dataAt(*file, 20), "b");
    EXPECT_EQ(dataAt(*file, 30), "b");
    EXPECT_EQ(dataAt(*file, 40), "c");
}

TEST_F(Reading, TheFirstPositionOfATimeAndTheFirstTimeOfAPositionStay)
{
    const auto file =
        openWithTimeTable(ByteBuilder().time(10).number(505).time(20).number(505).time(10).number(510).bytes());
    EXPECT_EQ(dataAt(*file, 10), "b");
    EXPECT_EQ(dataAt(*file, 20), "b");
    CVTCmdData record;
    file->readTables();
    EXPECT_EQ(file->readnext(record), 10U);  // "a"; 505 follows, whose first time is 10
    EXPECT_EQ(file->readnext(record), 10U);  // "b"; 510 follows, whose time is the repeated 10
    EXPECT_EQ(dataOf(record), "b");
}

TEST_F(Reading, ARecordOfLengthZeroLeavesTheObjectAsItWas)
{
    ByteBuilder bytes(TestSupport::headerArea());
    bytes.raw("5#0#").raw(TestSupport::recordBytes(6, "b"));
    const HeaderFields header{.firstRecord = 500, .timeTable = bytes.position()};
    bytes.time(10).number(500).time(20).number(504).overwrite(0, header.bytes());
    const auto file = openBytes(bytes.bytes());

    CVTCmdData record = makeRecord(9, "kept");
    EXPECT_EQ(file->read(record), 20U);
    EXPECT_EQ(record.cmd(), 9);
    EXPECT_EQ(dataOf(record), "kept");
    EXPECT_EQ(file->read(record, 10), 0U);  // this way it answers 0
    EXPECT_EQ(record.cmd(), 9);
    EXPECT_EQ(file->readnext(record), 0U);  // the next one, and the last
    EXPECT_EQ(record.cmd(), 6);
    EXPECT_EQ(dataOf(record), "b");
}

TEST_F(Reading, ANegativeLengthIsARecordWithoutDataButNoneByTime)
{
    ByteBuilder bytes(TestSupport::headerArea());
    bytes.raw("7#-5#").raw(TestSupport::recordBytes(6, "b"));
    const HeaderFields header{.firstRecord = 500, .timeTable = bytes.position()};
    bytes.time(10).number(500).time(20).number(505).overwrite(0, header.bytes());
    const auto file = openBytes(bytes.bytes());

    CVTCmdData record = makeRecord(9, "kept");
    EXPECT_EQ(file->read(record, 10), 0U);
    EXPECT_EQ(record.cmd(), 9);
    const auto again = openBytes(bytes.bytes());
    EXPECT_EQ(again->read(record), 20U);
    EXPECT_EQ(record.cmd(), 7);
    EXPECT_EQ(dataOf(record), "kept");
    const auto third = openBytes(bytes.bytes());
    record.set_cmd(9);
    EXPECT_EQ(third->readAndReturnTimeOfCurrentCmd(record), 10U);
    EXPECT_EQ(record.cmd(), 7);
    EXPECT_EQ(dataOf(record), "kept");
}

TEST_F(Reading, TheFirstOfACodeIsFoundBehindARecordAtTimeZeroThatReadsWhatIsHere)
{
    ByteBuilder bytes(TestSupport::headerArea());
    std::vector<std::int64_t> positions;
    for (const auto& [code, length] : {std::pair(1, 1), std::pair(2, 700), std::pair(3, 1), std::pair(4, 1)}) {
        positions.push_back(bytes.position());
        bytes.raw(TestSupport::recordBytes(code, std::string(static_cast<std::size_t>(length), 'x')));
    }
    const HeaderFields header{.firstRecord = 500, .timeTable = bytes.position()};
    for (std::size_t i = 0; i < positions.size(); ++i) {
        bytes.time(i).number(positions[i]);
    }
    bytes.overwrite(0, header.bytes());
    const auto file = openBytes(bytes.bytes());

    CVTCmdData record;
    EXPECT_EQ(file->readnext(record), 1U);
    EXPECT_EQ(file->readfirst(record, 3), 2U);
    EXPECT_EQ(record.cmd(), 3);
}

TEST_F(Reading, ARecordThatReachesPastTheFileFailsTheStreamForGood)
{
    ByteBuilder bytes(TestSupport::headerArea());
    bytes.raw(TestSupport::recordBytes(1, "a")).raw("2#99#b");
    const HeaderFields header{.firstRecord = 500, .timeTable = bytes.position()};
    bytes.time(10).number(500).time(20).number(505).overwrite(0, header.bytes());
    const auto file = openBytes(bytes.bytes());
    CVTCmdData record;
    ASSERT_TRUE(file->IsValidFile());
    EXPECT_EQ(file->readnext(record), 20U);
    EXPECT_EQ(dataOf(record), "a");
    EXPECT_EQ(file->readnext(record), 0U);
    expectReadsToAnswerZero(*file);
    EXPECT_NO_THROW(file->readTables());
    file->addBookmark(10, "a");
    EXPECT_FALSE(file->bookmarksAvailable());
    file->writeBookmarks();
    file->rebuildChannelRangeDef();
    file->clearChannelRangeDef();
    EXPECT_EQ(bytesOf("made.rec"), bytes.bytes());
    EXPECT_NO_THROW(close(*file));
}
