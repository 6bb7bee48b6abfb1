// What counts as a bearing among the records of a direction finder's map.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <replay/bearingreplay.h>

namespace RecToolTests {
namespace {

/// The channels and azimuths of the bearings that texts lead to, one text a millisecond.
std::vector<std::pair<std::size_t, double>> bearingsOf(const std::vector<std::string>& texts, double frequencyHz = 0)
{
    std::vector<std::pair<std::size_t, double>> bearings;
    RecTool::MeasuredBearings measured([&bearings](const RecTool::BearingChange& bearing) {
        bearings.emplace_back(bearing.channel, bearing.bearing.azimuthDeg);
    });
    measured.tune(frequencyHz);
    Recording2::Inspection::Record record;
    for (const std::string& text : texts) {
        ++record.timeMs;
        record.data = text;
        measured.apply(record);
    }
    return bearings;
}

using Expected = std::vector<std::pair<std::size_t, double>>;

TEST(MeasuredBearings, ACellThatChangesIsABearing)
{
    EXPECT_EQ(bearingsOf({"7;1|34;1e6,25000,3|50;///", "7;2|51;1,90/", "7;3|50;/90/45/"}),
              (Expected{{1, 90}, {2, 45}}));
}

TEST(MeasuredBearings, TheSameResultUnderANewTimeStampIsAnotherBearing)
{
    EXPECT_EQ(bearingsOf({"7;1|34;1e6,25000,3|50;///", "7;2|51;1,90/", "7;3|51;1,90/"}), (Expected{{1, 90}, {1, 90}}));
}

TEST(MeasuredBearings, TheSameResultInTheSameMinuteIsAnotherBearingToo)
{
    EXPECT_EQ(bearingsOf({"7;1|34;1e6,25000,3|50;///", "7;2|51;1,90/", "7;2|51;1,90/"}), (Expected{{1, 90}, {1, 90}}));
}

TEST(MeasuredBearings, TheStateThatAFileBeginsWithIsNone)
{
    const std::string state = "7;2|34;1e6,25000,3|50;/90//";
    EXPECT_EQ(bearingsOf({"7;1|34;1e6,25000,3|50;///", "7;2|51;1,90/", state, state}), (Expected{{1, 90}}));
}

TEST(MeasuredBearings, ARecordOfAllCellsSaysNothingAboutThoseThatDidNotChange)
{
    EXPECT_EQ(bearingsOf({"7;1|34;1e6,25000,2|50;90/45/", "7;2|50;90/46/"}), (Expected{{0, 90}, {1, 45}, {1, 46}}));
}

TEST(MeasuredBearings, WhereNoneOfAllCellsChangedItIsThatOfTheFrequencyInForce)
{
    const std::vector<std::string> texts = {"7;1|34;1e6,25000,2|50;90/45/", "7;1|50;90/45/"};
    EXPECT_EQ(bearingsOf(texts, 1025000), (Expected{{0, 90}, {1, 45}, {1, 45}}));
    EXPECT_EQ(bearingsOf(texts, 1012500), (Expected{{0, 90}, {1, 45}}));  // nobody knows
    EXPECT_EQ(bearingsOf({"7;1|34;1e6,25000,2|50;/45/", "7;1|50;/45/"}), (Expected{{1, 45}, {1, 45}}));
}

TEST(MeasuredBearings, TheOnlyChannelOfAMapIsMeasuredByEveryRecord)
{
    EXPECT_EQ(bearingsOf({"7;1|34;1e6,25000,1|50;90/", "7;2|50;90/"}), (Expected{{0, 90}, {0, 90}}));
}

TEST(MeasuredBearings, TextsThatAreNoBearingsArePassedOver)
{
    EXPECT_EQ(bearingsOf({"7;1|34;1e6,25000,2|50;90/45/", "3;1,2,3", "7;2|51;9,1/"}), (Expected{{0, 90}, {1, 45}}));
}

}  // namespace
}  // namespace RecToolTests
