// Texts at an axis: labels that keep apart, units of frequencies, ticks of time.
#include "plot/labels.h"
#include "support/testing.h"

using namespace RecTool;
using namespace testing;

TEST(Labels, StandWhereTheyShouldOrAreMovedApartEvenlyAndStayBetweenTheEnds)
{
    EXPECT_THAT(placeLabels({10, 50, 80}, 10, 0, 100), ElementsAre(Optional(10.0), Optional(50.0), Optional(80.0)));
    EXPECT_THAT(placeLabels({50, 50}, 10, 0, 100), ElementsAre(Optional(45.0), Optional(55.0)));
    EXPECT_THAT(placeLabels({49, 50, 51}, 10, 0, 100), ElementsAre(Optional(40.0), Optional(50.0), Optional(60.0)));
    EXPECT_THAT(placeLabels({0, 1}, 10, 0, 100), ElementsAre(Optional(5.0), Optional(15.0)));
    EXPECT_THAT(placeLabels({99, 100}, 10, 0, 100), ElementsAre(Optional(85.0), Optional(95.0)));
}

TEST(Labels, LabelsWithoutRoomAreLeftOutWhereItIsMostCrowded)
{
    const auto places = placeLabels({0, 40, 41, 42, 100}, 25, 0, 100);
    EXPECT_TRUE(places[0].has_value());
    EXPECT_FALSE(places[2].has_value());
    EXPECT_TRUE(places[4].has_value());
}

TEST(Labels, NeitherCoverEachOtherNorStandFarFromWhatTheyName)
{
    std::vector<double> wanted;
    for (int i = 0; i < 3000; ++i) {
        wanted.push_back(i < 2900 ? i * 0.01 : i * 0.2);
    }
    const auto places = placeLabels(wanted, 20, 0, 800);
    double last = -10;
    std::size_t placed = 0;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (places[i]) {
            EXPECT_GE(*places[i], last + 20 - 1e-9);
            EXPECT_LE(std::abs(*places[i] - wanted[i]), 80);
            last = *places[i];
            ++placed;
        }
    }
    EXPECT_GT(placed, 2U);
}

TEST(Labels, NoLabelFitsOnALineThatIsTooShort)
{
    EXPECT_THAT(placeLabels({1}, 10, 0, 5), ElementsAre(std::nullopt));
    EXPECT_THAT(placeLabels({}, 10, 0, 5), ElementsAre());
}

TEST(FrequencyUnits, FrequenciesHaveTheSameUnitAndAsManyDecimals)
{
    EXPECT_THAT(frequenciesAlike({431.7e6, 433.5e6, 438.65e6}), ElementsAre("431.70 MHz", "433.50 MHz", "438.65 MHz"));
    EXPECT_THAT(frequenciesAlike({145e6, 1.2962e9}), ElementsAre("145.0 MHz", "1296.2 MHz"));
    EXPECT_THAT(frequenciesAlike({150.015e6}), ElementsAre("150.015 MHz"));
    EXPECT_THAT(frequenciesAlike({0, 7.5}), ElementsAre("0.0 Hz", "7.5 Hz"));
    EXPECT_THAT(frequenciesAlike({}), IsEmpty());
}

namespace {

constexpr std::uint64_t Start = 1'700'000'000'250;  // 2023-11-14 22:13:20.250 UTC

std::vector<std::string> labelsOf(const std::vector<TimeTick>& ticks)
{
    std::vector<std::string> labels;
    for (const TimeTick& tick : ticks) {
        labels.push_back(tick.label);
    }
    return labels;
}

}  // namespace

TEST(TimeTicks, ClockTicksStandAtWholeUnitsOfTheClock)
{
    const std::vector<TimeTick> ticks = clockTicks({0, 3000}, Start, 4);
    EXPECT_THAT(labelsOf(ticks), ElementsAre("22:13:21", "22:13:22", "22:13:23"));
    EXPECT_EQ(ticks[0].timeMs, 750);
    EXPECT_THAT(labelsOf(clockTicks({0, 400}, Start, 4)),
                ElementsAre("22:13:20.300", "22:13:20.400", "22:13:20.500", "22:13:20.600"));
    EXPECT_THAT(labelsOf(clockTicks({0, 600'000}, Start, 3)), ElementsAre("22:15", "22:20"));
}

TEST(TimeTicks, OverMidnightTheDayIsSaidOnce)
{
    EXPECT_THAT(labelsOf(clockTicks({0, 3 * 3'600'000}, Start, 4)),
                ElementsAre("23:00\n2023-11-14", "00:00\n2023-11-15", "01:00"));
    EXPECT_EQ(onlyDay({0, 3 * 3'600'000}, Start), "");
    EXPECT_EQ(onlyDay({0, 3000}, Start), "2023-11-14");
}

TEST(TimeTicks, ManyDaysAreLabelledByDate)
{
    EXPECT_THAT(labelsOf(clockTicks({0, std::uint64_t{4} * 86'400'000}, Start, 5)),
                ElementsAre("2023-11-15", "2023-11-16", "2023-11-17", "2023-11-18"));
}

TEST(TimeTicks, ElapsedTicksCountFromTheStart)
{
    EXPECT_THAT(labelsOf(elapsedTicks({1500, 4000}, 3)), ElementsAre("2 s", "3 s", "4 s"));
    EXPECT_THAT(labelsOf(elapsedTicks({0, 40}, 4)), ElementsAre("0.00 s", "0.01 s", "0.02 s", "0.03 s", "0.04 s"));
    EXPECT_THAT(labelsOf(elapsedTicks({0, 7'200'000}, 2)), ElementsAre("0:00:00", "1:00:00", "2:00:00"));
}

TEST(TimeTicks, WhatWasMeasuredBeforeTheStartHasTicksTooAndPartsOfAMillisecondCount)
{
    EXPECT_THAT(labelsOf(elapsedTicks({-120'000, 60'000}, 3)),
                ElementsAre("-0:02:00", "-0:01:00", "0:00:00", "0:01:00"));
    EXPECT_THAT(labelsOf(elapsedTicks({9.5, 11.25}, 2)), ElementsAre("0.010 s", "0.011 s"));
}

TEST(TimeTicks, ThereAreNeverManyMoreThanWanted)
{
    for (double span = 1; span < 1e15; span = span * 3 + 1) {
        EXPECT_LE(elapsedTicks({0, span}, 7).size(), 8U) << span;
        EXPECT_GE(elapsedTicks({0, span}, 7).size(), 1U) << span;
    }
}

TEST(TimeTicks, TimesUpToTheLargestThereIsHaveLabels)
{
    constexpr double Last = 18'446'744'073'709'551'615.0;  // what a record may tell
    EXPECT_EQ(elapsedTicks({0, Last}, 7).back().label, "4800000000000:00:00");
    EXPECT_LE(elapsedTicks({Last, Last}, 7).size(), 2U);
    EXPECT_EQ(elapsedTicks({Last, Last}, 7).front().label, "5124095576030:25:51.615");
}

TEST(TimeTicks, AStartThatIsNotKnownIsNoClockTime)
{
    EXPECT_FALSE(isClockTime(0, {0, 1}));
    EXPECT_TRUE(isClockTime(Start, {0, 1}));
    EXPECT_FALSE(isClockTime(~std::uint64_t{0}, {0, 1}));
    EXPECT_FALSE(isClockTime(Start, {0, 1e19}));
}
