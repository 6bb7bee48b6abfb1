// When the value of a record was measured, and what counts as a bearing.
#include <replay/bearingreplay.h>
#include <replay/recordingtime.h>

#include "support/testing.h"

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

struct Measured {
    const char* what;
    std::vector<std::string> texts;
    Expected bearings;
};

const std::string Three = "7;1|34;1e6,25000,3|50;///";
const std::string State = "7;2|34;1e6,25000,3|50;/90//";

const std::vector<Measured> MeasuredCases{
    {"a cell that changes", {Three, "7;2|51;1,90/", "7;3|50;/90/45/"}, {{1, 90}, {2, 45}}},
    {"the same result under a new time stamp", {Three, "7;2|51;1,90/", "7;3|51;1,90/"}, {{1, 90}, {1, 90}}},
    {"the same result in the same minute too", {Three, "7;2|51;1,90/", "7;2|51;1,90/"}, {{1, 90}, {1, 90}}},
    {"not the state that a file begins with", {Three, "7;2|51;1,90/", State, State}, {{1, 90}}},
    {"all cells with their range under a new time stamp",
     {Three, "7;2|51;1,90/", "7;3|34;1e6,25000,3|50;/90//"},
     {{1, 90}, {1, 90}}},
    {"every cell that is named", {Three, "7;2|51;0,90/45/", "7;3|51;0,90/45/"}, {{0, 90}, {1, 45}, {0, 90}, {1, 45}}},
    {"not the cells of a record of all that did not change",
     {"7;1|34;1e6,25000,2|50;90/45/", "7;2|50;90/46/"},
     {{0, 90}, {1, 45}, {1, 46}}},
    {"the only channel by every record", {"7;1|34;1e6,25000,1|50;90/", "7;2|50;90/"}, {{0, 90}, {0, 90}}},
    {"no other texts", {"7;1|34;1e6,25000,2|50;90/45/", "3;1,2,3", "7;2|51;9,1/"}, {{0, 90}, {1, 45}}},
};

TEST(MeasuredBearings, AreWhatRecordsMeasured)
{
    for (const Measured& measured : MeasuredCases) {
        EXPECT_EQ(bearingsOf(measured.texts), measured.bearings) << measured.what;
    }
}

TEST(MeasuredBearings, WhereNoneOfAllCellsChangedItIsThatOfTheFrequencyInForce)
{
    const std::vector<std::string> texts = {"7;1|34;1e6,25000,2|50;90/45/", "7;1|50;90/45/"};
    EXPECT_EQ(bearingsOf(texts, 1025000), (Expected{{0, 90}, {1, 45}, {1, 45}}));
    EXPECT_EQ(bearingsOf(texts, 1012500), (Expected{{0, 90}, {1, 45}}));  // nobody knows
    EXPECT_EQ(bearingsOf({"7;1|34;1e6,25000,2|50;/45/", "7;1|50;/45/"}), (Expected{{1, 45}, {1, 45}}));
}

using RecTool::measuredUs;

double momentOf(const std::string& text, std::uint64_t timeMs, std::uint64_t startMs)
{
    Recording2::Inspection::Record record;
    record.timeMs = timeMs;
    record.data = text;
    return RecTool::momentMs(record, startMs);
}

TEST(MeasuredTime, IsToldByAMapAndNotByPlainValuesAndMapsWithoutATimeStamp)
{
    EXPECT_EQ(measuredUs("6;1700000000010240|51;0,<<<"), 1700000000010240U);
    EXPECT_EQ(measuredUs("7;1700000000010240"), 1700000000010240U);
    for (const char* text : {"3;1700000000010240,0,1", "6;0|51;0,<<<", "6;", "6;12x|51;0,<<<", "7", "", "34;1,2,3"}) {
        EXPECT_EQ(measuredUs(text), std::nullopt) << text;
    }
}

TEST(MeasuredTime, IsWhereAValueStandsOrElseTheRecordsOwnTime)
{
    constexpr std::uint64_t Start = 1'700'000'000'000;
    struct {
        const char* what;
        const char* text;
        std::uint64_t timeMs;
        std::uint64_t startMs;
        double momentMs;
    } const cases[]{
        {"filed one millisecond after the other", "6;1700000000000000|51;0,<<<", 20, Start, 0},
        {"the next", "6;1700000000010240|51;0,<<<", 22, Start, 10.24},
        {"and the next", "6;1700000000020480|51;0,<<<", 24, Start, 20.48},
        {"no map", "3;-30,-120,20", 25, Start, 25},
        {"no start", "6;1700000000010240|51;0,<<<", 22, 0, 22},
        {"the latest start", "6;1700000000010240|51;0,<<<", 22, std::numeric_limits<std::uint64_t>::max(), 22},
        {"a bearing older than the start", "7;1699999940000000|51;0,90/", 15, Start, -60000},
        {"but not the state at the start", "7;1699999940000000|34;1e6,25000,1|50;90/", 15, Start, 15}};
    for (const auto& [what, text, timeMs, startMs, expected] : cases) {
        EXPECT_EQ(momentOf(text, timeMs, startMs), expected) << what;
    }
}

}  // namespace
}  // namespace RecToolTests
