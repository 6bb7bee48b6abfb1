// Reading of headers, sound and damaged field by field.
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

class ReadingHeaders : public FileAccessTest {
protected:
    [[nodiscard]] CHeaderData readHeader(const std::string& bytes, CHeaderData header = presetHeader()) const
    {
        EXPECT_EQ(openBytes(bytes, false)->read(header), 1U);
        return header;
    }
    /// What a field of the sound header is replaced by, and what is read then.
    struct Damaged {
        Field field;
        std::string bytes;
        HeaderFields read;
    };
    void expectRead(std::vector<Damaged> rows) const
    {
        for (Damaged& row : rows) {
            row.read.automatic = true;
            EXPECT_EQ(fieldsOf(readHeader(RawHeader().with(row.field, row.bytes))), row.read)
                << "field " << row.field << ": " << row.bytes;
        }
    }
};

}  // namespace

TEST_F(ReadingHeaders, ANumberThatCannotBeReadKeepsItsTargetAndIsSkippedAsOneByte)
{
    expectRead({{StartFreq, "#", {.startFrequency = 7}},
                {StartFreq, "x", {.startFrequency = 7}},
                {StartFreq, "-#", {.startFrequency = 7}},
                {StopFreq, "#", {.stopFrequency = 6}},
                {StepWidth, "#", {.stepWidth = 5}},
                {MinLevel, "x", {.minLevel = 4}},
                {MaxLevel, "#", {.maxLevel = 3}}});
}

TEST_F(ReadingHeaders, AHeaderOfTheOldFormatLeavesTheTargetsOtherFieldsAlsoWhereItsVersionCannotBeRead)
{
    HeaderFields old{.majorVersion = 1};
    for (const std::string& bytes : {ReferenceRecording().close(old), RawHeader().with(Major, "#")}) {
        const auto file = openBytes(bytes, false);
        EXPECT_FALSE(file->IsValidFile());
        CHeaderData header = presetHeader();
        EXPECT_EQ(file->read(header), 0U);
        EXPECT_EQ(header.startFreq(), 7);
        EXPECT_STREQ(header.deviceName(), "kept name");
    }
}

TEST_F(ReadingHeaders, NumbersBeyondTheirWidthKeepTheTarget)
{
    expectRead({{Minor, "32767#", {.minorVersion = 32'767}},
                {MinLevel, "99999999999#", {.minLevel = 4}},
                {MinLevel, "2147483648#", {.minLevel = 4}},
                {MinLevel, "-2147483649#", {.minLevel = 4}},
                {MinLevel, "-2147483648#", {.minLevel = -2'147'483'647 - 1}},
                {MaxLevel, "99999999999999999999999999#", {.maxLevel = 3}},
                {StartFreq, "1e99#", {.startFrequency = 7}}});
    EXPECT_FALSE(openBytes(RawHeader().with(Major, "70000#"))->IsValidFile());
}

TEST_F(ReadingHeaders, LeadingWhiteSpaceAndASignAreTaken)
{
    expectRead({{MinLevel, " \t\r\n\v\f+7#", {.minLevel = 7}},
                {MaxLevel, "  -7#", {.maxLevel = -7}},
                {MaxLevel, "007#", {.maxLevel = 7}},
                {StartFreq, " +1.5E+3#", {.startFrequency = 1'500}},
                {MinLevel, " \n+7#", {.minLevel = 7}}});
}

TEST_F(ReadingHeaders, AnyByteStandsForTheSeparator)
{
    expectRead({{MinLevel, "-30!", {}}, {MinLevel, std::string("-30\0", 4), {}}});
}

TEST_F(ReadingHeaders, TextsAreReadByTheirLengthAndOneOfZeroOrLessKeepsTheTarget)
{
    for (const char* length : {"0#", "-5#", "#"}) {
        expectRead({{JobId, length, {.jobId = "kept job"}},
                    {DeviceName, length, {.deviceName = "kept name"}},
                    {DeviceType, length, {.deviceType = "kept type"}}});
    }
    expectRead({{DeviceName, "5#a#7# ", {.deviceName = "a#7# "}}});
}

TEST_F(ReadingHeaders, TheAutomaticFlagIsSetFromOneUpwards)
{
    const RawHeader raw;
    EXPECT_TRUE(readHeader(raw.with(Automatic, "1#")).isAutomaticRec());
    EXPECT_TRUE(readHeader(raw.with(Automatic, "77#")).isAutomaticRec());
    EXPECT_FALSE(readHeader(raw.with(Automatic, "0#")).isAutomaticRec());
    EXPECT_FALSE(readHeader(raw.with(Automatic, "-1#")).isAutomaticRec());
    CHeaderData automatic = presetHeader();
    automatic.setAutomaticRec(true);
    EXPECT_TRUE(readHeader(raw.with(Automatic, "x"), automatic).isAutomaticRec()) << "a damaged one leaves its target";
}

TEST_F(ReadingHeaders, AHeaderThatEndsEarlyKeepsTheFieldsThatAreMissing)
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

TEST_F(ReadingHeaders, ALengthBeyondTheFileComesBackAtOnce)
{
    const RawHeader raw;
    for (const Field field : {JobId, DeviceName, DeviceType}) {
        const auto file = openBytes(raw.with(field, "2147483647#x"));
        EXPECT_TRUE(file->IsValidFile());
    }
}

TEST_F(ReadingHeaders, TheHeaderLeavesTheReadPositionWhereItWas)
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
