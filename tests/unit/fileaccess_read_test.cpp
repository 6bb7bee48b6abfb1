// Reading of headers, type tables, time tables and single records, sound and damaged.
#include "fileaccess_fixture.h"

using namespace FileAccessTests;
using TestSupport::ByteBuilder;

namespace {

/// A header record whose fields can be replaced one by one.
struct RawHeader {
    std::vector<std::string> fields;

    explicit RawHeader(const HeaderFields& sound = {})
    {
        const ByteBuilder times = ByteBuilder().time(sound.startMs).time(sound.stopMs);
        fields = {"2#",
                  "0#",
                  "20#",
                  "3000#",
                  "0.025#",
                  "-30#",
                  "100#",
                  times.bytes().substr(0, 9),
                  times.bytes().substr(9),
                  ByteBuilder().text(sound.jobId).bytes(),
                  ByteBuilder().text(sound.deviceName).bytes(),
                  ByteBuilder().text(sound.deviceType).bytes(),
                  ByteBuilder().number(sound.typeTable).bytes(),
                  ByteBuilder().number(sound.firstRecord).bytes(),
                  ByteBuilder().number(sound.timeTable).bytes(),
                  ByteBuilder().number(sound.channelRangeTable).bytes(),
                  ByteBuilder().number(sound.bookmarkTable).bytes(),
                  "1#"};
    }
    [[nodiscard]] std::string bytes() const
    {
        std::string all;
        for (const std::string& field : fields) {
            all += field;
        }
        return all;
    }
    [[nodiscard]] std::string with(std::size_t field, const std::string& text) const
    {
        RawHeader other = *this;
        other.fields.at(field) = text;
        return other.bytes();
    }
};

enum Field : std::size_t {
    Major,
    Minor,
    StartFreq,
    StopFreq,
    StepWidth,
    MinLevel,
    MaxLevel,
    StartTime,
    StopTime,
    JobId,
    DeviceName,
    DeviceType,
    TypeTable,
    FirstRecord,
    TimeTable,
    RangeTable,
    BookmarkTable,
    Automatic
};

/// A header that no file of these tests holds.
CHeaderData presetHeader()
{
    HeaderFields fields;
    fields.majorVersion = 9;
    fields.minorVersion = 8;
    fields.startFrequency = 7;
    fields.stopFrequency = 6;
    fields.stepWidth = 5;
    fields.minLevel = 4;
    fields.maxLevel = 3;
    fields.startMs = 2;
    fields.stopMs = 1;
    fields.jobId = "kept job";
    fields.deviceName = "kept name";
    fields.deviceType = "kept type";
    return makeHeader(fields);
}

class Reading : public FileAccessTest {
protected:
    [[nodiscard]] CHeaderData readHeader(const std::string& bytes, CHeaderData header = presetHeader()) const
    {
        EXPECT_EQ(openBytes(bytes, false)->read(header), 1U);
        return header;
    }
    /// Everything but the field is as in the sound header.
    static void expectSoundExcept(const CHeaderData& header, Field damaged)
    {
        const auto expect = [&](Field field, bool sound) { EXPECT_TRUE(sound || field == damaged) << field; };
        expect(Minor, header.minorversion() == 0);
        expect(StartFreq, header.startFreq() == 20);
        expect(StopFreq, header.stopFreq() == 3'000);
        expect(StepWidth, header.stepWidth() == 0.025F);
        expect(MinLevel, header.minLevel() == -30);
        expect(MaxLevel, header.maxLevel() == 100);
        expect(StartTime, header.startTS().getMilliSecs() == HeaderFields().startMs);
        expect(StopTime, header.stopTS().getMilliSecs() == HeaderFields().stopMs);
        expect(JobId, header.getJobID() == HeaderFields().jobId);
        expect(DeviceName, header.deviceName() == HeaderFields().deviceName);
        expect(DeviceType, header.deviceType() == HeaderFields().deviceType);
        expect(Automatic, header.isAutomaticRec());
    }
    [[nodiscard]] std::vector<TypeFields> readTypes(const std::string& block) const
    {
        HeaderFields header;
        header.typeTable = 500;
        ByteBuilder bytes(TestSupport::headerArea());
        bytes.raw(block).overwrite(0, header.bytes());
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
        HeaderFields header;
        header.firstRecord = 500;
        header.timeTable = 515;
        bytes.raw(table).overwrite(0, header.bytes());
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

TEST_F(Reading, ANumberThatCannotBeReadKeepsItsTargetAndIsSkippedAsOneByte)
{
    const RawHeader raw;
    for (const char* damage : {"#", "x", "-#"}) {
        SCOPED_TRACE(damage);
        const CHeaderData header = readHeader(raw.with(StartFreq, damage));
        EXPECT_EQ(header.startFreq(), 7);
        expectSoundExcept(header, StartFreq);
    }
    CHeaderData header = readHeader(raw.with(StopFreq, "#"));
    EXPECT_EQ(header.stopFreq(), 6);
    expectSoundExcept(header, StopFreq);
    header = readHeader(raw.with(StepWidth, "#"));
    EXPECT_EQ(header.stepWidth(), 5);
    expectSoundExcept(header, StepWidth);
    header = readHeader(raw.with(MinLevel, "x"));
    EXPECT_EQ(header.minLevel(), 4);
    expectSoundExcept(header, MinLevel);
    header = readHeader(raw.with(MaxLevel, "#"));
    EXPECT_EQ(header.maxLevel(), 3);
    expectSoundExcept(header, MaxLevel);
}

TEST_F(Reading, AMajorVersionThatCannotBeReadIsOfTheOldFormat)
{
    CHeaderData header;
    const auto file = openBytes(RawHeader().with(Major, "#"), false);
    EXPECT_FALSE(file->IsValidFile());
    EXPECT_EQ(file->read(header), 0U);
}

TEST_F(Reading, AHeaderOfTheOldFormatLeavesTheTargetsOtherFields)
{
    HeaderFields old;
    old.majorVersion = 1;
    const auto file = openBytes(ReferenceRecording().close(old));
    CHeaderData header = presetHeader();
    EXPECT_EQ(file->read(header), 0U);
    EXPECT_EQ(header.startFreq(), 7);
    EXPECT_STREQ(header.deviceName(), "kept name");
}

TEST_F(Reading, NumbersBeyondTheirWidthKeepTheTarget)
{
    const RawHeader raw;
    EXPECT_EQ(readHeader(raw.with(Minor, "32767#")).minorversion(), 32'767);
    EXPECT_EQ(readHeader(raw.with(MinLevel, "99999999999#")).minLevel(), 4);
    EXPECT_EQ(readHeader(raw.with(MinLevel, "2147483648#")).minLevel(), 4);
    EXPECT_EQ(readHeader(raw.with(MinLevel, "-2147483649#")).minLevel(), 4);
    EXPECT_EQ(readHeader(raw.with(MinLevel, "-2147483648#")).minLevel(), -2'147'483'647 - 1);
    EXPECT_EQ(readHeader(raw.with(MaxLevel, "99999999999999999999999999#")).maxLevel(), 3);
    EXPECT_EQ(readHeader(raw.with(StartFreq, "1e99#")).startFreq(), 7);
    expectSoundExcept(readHeader(raw.with(StartFreq, "1e99#")), StartFreq);
    EXPECT_FALSE(openBytes(raw.with(Major, "70000#"))->IsValidFile());
}

TEST_F(Reading, LeadingWhiteSpaceAndASignAreTaken)
{
    const RawHeader raw;
    EXPECT_EQ(readHeader(raw.with(MinLevel, " \t\r\n\v\f+7#")).minLevel(), 7);
    EXPECT_EQ(readHeader(raw.with(MaxLevel, "  -7#")).maxLevel(), -7);
    EXPECT_EQ(readHeader(raw.with(MaxLevel, "007#")).maxLevel(), 7);
    EXPECT_EQ(readHeader(raw.with(StartFreq, " +1.5E+3#")).startFreq(), 1'500);
    expectSoundExcept(readHeader(raw.with(MinLevel, " \n+7#")), MinLevel);
}

TEST_F(Reading, AnyByteStandsForTheSeparator)
{
    expectSoundExcept(readHeader(RawHeader().with(MinLevel, "-30!")), Automatic);
    expectSoundExcept(readHeader(RawHeader().with(MinLevel, std::string("-30\0", 4))), Automatic);
}

TEST_F(Reading, ATextOfLengthZeroOrLessKeepsTheTarget)
{
    const RawHeader raw;
    for (const char* length : {"0#", "-5#", "#"}) {
        SCOPED_TRACE(length);
        CHeaderData header = readHeader(raw.with(JobId, length));
        EXPECT_STREQ(header.getJobID(), "kept job");
        expectSoundExcept(header, JobId);
        header = readHeader(raw.with(DeviceName, length));
        EXPECT_STREQ(header.deviceName(), "kept name");
        expectSoundExcept(header, DeviceName);
        header = readHeader(raw.with(DeviceType, length));
        EXPECT_STREQ(header.deviceType(), "kept type");
        expectSoundExcept(header, DeviceType);
    }
}

TEST_F(Reading, TextsAreReadByTheirLength)
{
    const CHeaderData header = readHeader(RawHeader().with(DeviceName, "5#a#7# "));
    EXPECT_STREQ(header.deviceName(), "a#7# ");
    expectSoundExcept(header, DeviceName);
}

TEST_F(Reading, TheAutomaticFlagIsSetFromOneUpwards)
{
    const RawHeader raw;
    EXPECT_TRUE(readHeader(raw.with(Automatic, "1#")).isAutomaticRec());
    EXPECT_TRUE(readHeader(raw.with(Automatic, "77#")).isAutomaticRec());
    EXPECT_FALSE(readHeader(raw.with(Automatic, "0#")).isAutomaticRec());
    EXPECT_FALSE(readHeader(raw.with(Automatic, "-1#")).isAutomaticRec());
}

TEST_F(Reading, AHeaderThatEndsEarlyKeepsTheFieldsThatAreMissing)
{
    const std::string whole = RawHeader().bytes();
    CHeaderData header = readHeader(whole.substr(0, 20));  // up to the step width
    EXPECT_EQ(header.stepWidth(), 0.025F);
    EXPECT_EQ(header.maxLevel(), 3);
    EXPECT_EQ(header.startTS().getMilliSecs(), 2U);
    EXPECT_STREQ(header.deviceType(), "kept type");

    header = readHeader(whole.substr(0, 26 + 9 + 5));  // five bytes of the stop time
    EXPECT_EQ(header.startTS().getMilliSecs(), HeaderFields().startMs);
    EXPECT_EQ(header.stopTS().getMilliSecs(), 1U);
    EXPECT_STREQ(header.getJobID(), "kept job");
}

TEST_F(Reading, ALengthBeyondTheFileComesBackAtOnce)
{
    const RawHeader raw;
    for (const Field field : {JobId, DeviceName, DeviceType}) {
        const auto file = openBytes(raw.with(field, "2147483647#x"));
        EXPECT_TRUE(file->IsValidFile());
    }
}

TEST_F(Reading, TheHeaderLeavesTheReadPositionWhereItWas)
{
    const auto file = openBytes(ReferenceRecording().record(1, "a", 10).record(2, "b", 20).record(3, "c", 30).close());
    CVTCmdData record;
    CHeaderData header;
    EXPECT_EQ(file->readnext(record), 20U);
    EXPECT_EQ(file->read(header), 1U);
    EXPECT_EQ(header.stopFreq(), 3'000);
    EXPECT_EQ(file->readnext(record), 30U);
    EXPECT_EQ(dataOf(record), "b");
}

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
    HeaderFields header;
    header.firstRecord = 500;
    header.timeTable = bytes.position();
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

TEST_F(Reading, ARecordThatReachesPastTheFileFailsTheStreamForGood)
{
    ByteBuilder bytes(TestSupport::headerArea());
    bytes.raw(TestSupport::recordBytes(1, "a")).raw("2#99#b");
    HeaderFields header;
    header.firstRecord = 500;
    header.timeTable = bytes.position();
    bytes.time(10).number(500).time(20).number(505).overwrite(0, header.bytes());
    const auto file = openBytes(bytes.bytes());
    CVTCmdData record;
    ASSERT_TRUE(file->IsValidFile());
    EXPECT_EQ(file->readnext(record), 20U);
    EXPECT_EQ(dataOf(record), "a");
    EXPECT_EQ(file->readnext(record), 0U);
    CHeaderData kept = presetHeader();
    CVTTypesData types;
    EXPECT_EQ(file->read(kept), 0U);
    EXPECT_EQ(kept.startFreq(), 7);
    EXPECT_EQ(file->read(types), 0U);
    EXPECT_EQ(file->readfirst(record), 0U);
    EXPECT_EQ(file->read(record, 10), 0U);
    EXPECT_EQ(file->readprev(record, 20), 0U);
    EXPECT_NO_THROW(file->readTables());
    EXPECT_NO_THROW(close(*file));
}
