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

TEST(HeaderData, TheCombinedVersionHoldsTheMajorOneInTheUpperHalf)
{
    CHeaderData header;
    header.set_version(2, 0);
    EXPECT_EQ(header.version(), 131'072);
    header.set_version(3, 5);
    EXPECT_EQ(header.version(), 3 * 65'536 + 5);
    header.set_version(-1, 0);
    EXPECT_EQ(header.version(), -65'536);
}

TEST(HeaderData, ANegativeMinorVersionHidesTheMajorOne)
{
    CHeaderData header;
    header.set_version(1, -1);
    EXPECT_EQ(header.version(), -1);
    header.set_version(2, -1);
    EXPECT_EQ(header.version(), -1);
    header.set_version(2, -2);
    EXPECT_EQ(header.version(), -2);
}

TEST(HeaderData, AnEmptyCStringLeavesAnEmptyText)
{
    CHeaderData header = fullHeader();
    header.setJobID("");
    header.set_deviceName("");
    header.set_deviceType("");
    EXPECT_EQ(header.JobIDLength(), 0U);
    EXPECT_EQ(header.deviceNameLength(), 0U);
    EXPECT_EQ(header.deviceTypeLength(), 0U);
}

TEST(HeaderData, AStringIsStoredWholeWithItsNulBytes)
{
    CHeaderData header;
    std::string text("a\0b", 3);
    header.set_deviceName(text);
    header.set_deviceType(text);
    ASSERT_EQ(header.deviceNameLength(), 3U);
    ASSERT_EQ(header.deviceTypeLength(), 3U);
    EXPECT_EQ(std::string(header.deviceName(), 3), text);
    EXPECT_EQ(std::string(header.deviceType(), 3), text);
}

TEST(HeaderData, ACStringIsStoredUpToItsNul)
{
    CHeaderData header;
    header.set_deviceName("ab\0cd");
    header.setJobID("x\0y");
    EXPECT_EQ(header.deviceNameLength(), 2U);
    EXPECT_EQ(header.JobIDLength(), 1U);
}

TEST(HeaderData, ATextSetFromItsOwnBufferStaysAsItIs)
{
    CHeaderData header = fullHeader();
    header.set_deviceName(header.deviceName());
    header.set_deviceType(header.deviceType());
    header.setJobID(header.getJobID());
    expectFull(header);
}

TEST(HeaderData, ACopyHasEveryField)
{
    const CHeaderData header = fullHeader();
    const CHeaderData copy(header);  // NOLINT(performance-unnecessary-copy-initialization): the copy is what is tested
    expectFull(copy);
}

TEST(HeaderData, AnAssignedHeaderHasEveryField)
{
    CHeaderData target;
    target.set_deviceName("something that was there before");
    target = fullHeader();
    expectFull(target);
}

TEST(HeaderData, AssigningAHeaderToItselfChangesNothing)
{
    CHeaderData header = fullHeader();
    const CHeaderData& same = header;
    header = same;
    expectFull(header);
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
