// The header object of the interface: version, texts and times, copied and assigned.
#include <gtest/gtest.h>

#include <recording2/recordmodel.h>

using Recording2::CHeaderData;
using Recording2::CTimeStamp;

namespace {

CHeaderData fullHeader()
{
    CHeaderData header;
    header.set_version(2, 1);
    header.set_startFreq(1.5F);
    header.set_stopFreq(2.5F);
    header.set_stepWidth(0.25F);
    header.set_minLevel(-7);
    header.set_maxLevel(77);
    header.set_deviceType("type");
    header.set_deviceName("name");
    header.setJobID("job");
    header.set_startTS(CTimeStamp(1'000ULL));
    header.set_stopTS(CTimeStamp(2'000ULL));
    header.setAutomaticRec(true);
    return header;
}

void expectFull(const CHeaderData& header)
{
    EXPECT_EQ(header.majorversion(), 2);
    EXPECT_EQ(header.minorversion(), 1);
    EXPECT_EQ(header.startFreq(), 1.5F);
    EXPECT_EQ(header.stopFreq(), 2.5F);
    EXPECT_EQ(header.stepWidth(), 0.25F);
    EXPECT_EQ(header.minLevel(), -7);
    EXPECT_EQ(header.maxLevel(), 77);
    EXPECT_STREQ(header.deviceType(), "type");
    EXPECT_STREQ(header.deviceName(), "name");
    EXPECT_STREQ(header.getJobID(), "job");
    EXPECT_EQ(header.startTS().getTimeStamp(), 1'000U);
    EXPECT_EQ(header.stopTS().getTimeStamp(), 2'000U);
    EXPECT_TRUE(header.isAutomaticRec());
}

}  // namespace

TEST(HeaderData, ADefaultHeaderHasEmptyTextsAndTimesThatReadAsZero)
{
    const CHeaderData header;
    EXPECT_EQ(header.deviceTypeLength(), 0U);
    EXPECT_EQ(header.deviceNameLength(), 0U);
    EXPECT_EQ(header.JobIDLength(), 0U);
    EXPECT_STREQ(header.deviceType(), "");
    EXPECT_STREQ(header.deviceName(), "");
    EXPECT_STREQ(header.getJobID(), "");
    EXPECT_EQ(header.startTS().getTimeStamp(), 0U);
    EXPECT_EQ(header.stopTS().getTimeStamp(), 0U);
}

TEST(HeaderData, TheCombinedVersionHoldsTheMajorOneInTheUpperHalfWhichANegativeMinorOneHides)
{
    CHeaderData header;
    for (const auto& [major, minor, combined] : std::vector<std::array<int, 3>>{
             {2, 0, 131'072}, {3, 5, 3 * 65'536 + 5}, {-1, 0, -65'536}, {1, -1, -1}, {2, -1, -1}, {2, -2, -2}}) {
        header.set_version(static_cast<std::int16_t>(major), static_cast<std::int16_t>(minor));
        EXPECT_EQ(header.version(), combined) << major << '.' << minor;
    }
}

TEST(HeaderData, AStringIsStoredWholeWithItsNulBytesAndACStringUpToItsNul)
{
    CHeaderData header;
    std::string text("a\0b", 3);
    header.set_deviceName(text);
    header.set_deviceType(text);
    EXPECT_EQ(std::string(header.deviceName(), header.deviceNameLength()), text);
    EXPECT_EQ(std::string(header.deviceType(), header.deviceTypeLength()), text);
    header.set_deviceName("ab\0cd");
    header.setJobID("x\0y");
    EXPECT_EQ(header.deviceNameLength(), 2U);
    EXPECT_EQ(header.JobIDLength(), 1U);
    header.setJobID("");
    header.set_deviceName("");
    header.set_deviceType("");
    EXPECT_EQ(header.JobIDLength() + header.deviceNameLength() + header.deviceTypeLength(), 0U);
}

TEST(HeaderData, ACopyHasEveryFieldAndWhatIsSetFromItselfStaysAsItIs)
{
    CHeaderData header;
    header.set_deviceName("something that was there before");
    header = fullHeader();
    const CHeaderData copy(header);
    const CHeaderData& same = header;
    header = same;
    expectFull(header);
    header.set_deviceName(header.deviceName());
    header.set_deviceType(header.deviceType());
    header.setJobID(header.getJobID());
    expectFull(header);
    header.set_deviceName("changed");
    expectFull(copy);
}

TEST(HeaderData, ACopysTimesAreNotNullAndAssigningThemBackLeavesNullTimesNull)
{
    CHeaderData original;
    const CHeaderData copy(original);
    EXPECT_EQ(copy.startTS().getTimeStamp(), 0U);
    EXPECT_FALSE(copy.startTS().toString().isEmpty());
    original = copy;
    EXPECT_EQ(original.startTS().getTimeStamp(), 0U);
    EXPECT_EQ(original.stopTS().getTimeStamp(), 0U);
}

TEST(HeaderData, TheTimesReturnedAreCopies)
{
    const CHeaderData header = fullHeader();
    header.startTS().setTime_ts(9);
    CTimeStamp stop = header.stopTS();
    stop.setTime_ts(9);
    expectFull(header);
}
