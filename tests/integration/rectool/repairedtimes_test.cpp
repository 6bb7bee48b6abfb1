// Times for records whose own are lost.
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <recording2/inspection/rescue/repairedtimes.h>

namespace {

using Recording2::Inspection::RepairedTimes;
using Recording2::Inspection::repairTimes;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::optional<std::uint64_t> Lost;

}  // namespace

TEST(RepairedTimes, KnownTimesStay)
{
    const RepairedTimes times = repairTimes({10, 11, 500}, 600, 7);
    EXPECT_THAT(times.times, ElementsAre(10, 11, 500));
    EXPECT_EQ(times.kept, 3U);
    EXPECT_EQ(times.between + times.inFront + times.behind + times.moved, 0U);
    EXPECT_THAT(repairTimes({}, 600, 0).times, IsEmpty());
}

TEST(RepairedTimes, LostOnesLieEvenlyBetweenTheirNeighbours)
{
    const RepairedTimes times = repairTimes({100, Lost, Lost, Lost, 200}, 600, 0);
    EXPECT_THAT(times.times, ElementsAre(100, 125, 150, 175, 200));
    EXPECT_EQ(times.between, 3U);
}

TEST(RepairedTimes, LostOnesInFrontLieEvenlyFromTheStart)
{
    const RepairedTimes times = repairTimes({Lost, Lost, 30}, 600, 0);
    EXPECT_THAT(times.times, ElementsAre(10, 20, 30));
    EXPECT_EQ(times.inFront, 2U);
}

TEST(RepairedTimes, LostOnesBehindLieEvenlyUpToTheEnd)
{
    const RepairedTimes times = repairTimes({100, Lost, Lost}, 600, 0);
    EXPECT_THAT(times.times, ElementsAre(100, 350, 600));
    EXPECT_EQ(times.behind, 2U);
    EXPECT_EQ(times.stepMs, std::nullopt);
}

TEST(RepairedTimes, WithoutAnyTimeTheyLieEvenlyOverTheRecording)
{
    EXPECT_THAT(repairTimes({Lost, Lost, Lost}, 600, 0).times, ElementsAre(200, 400, 600));
}

TEST(RepairedTimes, APeriodGoesBeforeTheEnd)
{
    const RepairedTimes times = repairTimes({100, Lost, Lost}, 600, 20);
    EXPECT_THAT(times.times, ElementsAre(100, 120, 140));
    EXPECT_EQ(times.stepMs, 20U);
    EXPECT_THAT(repairTimes({Lost, Lost}, 0, 20).times, ElementsAre(20, 40));
}

TEST(RepairedTimes, WithoutAnEndTheyGoOnInTheMeanDistance)
{
    EXPECT_THAT(repairTimes({100, 110, 130, Lost, Lost}, 0, 0).times, ElementsAre(100, 110, 130, 145, 160));
    EXPECT_THAT(repairTimes({100, Lost, Lost}, 100, 0).times, ElementsAre(100, 101, 102));
    EXPECT_THAT(repairTimes({Lost, Lost}, 0, 0).times, ElementsAre(1, 2));
}

TEST(RepairedTimes, WhereThereIsNoRoomKnownOnesMove)
{
    const RepairedTimes times = repairTimes({10, Lost, Lost, 11, 12, 50}, 600, 0);
    EXPECT_THAT(times.times, ElementsAre(10, 11, 12, 13, 14, 50));
    EXPECT_EQ(times.moved, 2U);
    EXPECT_EQ(times.kept, 2U);
}

TEST(RepairedTimes, HugeTimesDoNotOverflow)
{
    constexpr std::uint64_t Late = std::numeric_limits<std::int64_t>::max();
    const RepairedTimes times = repairTimes({10, Lost, Late}, 600, 0);
    EXPECT_EQ(times.times[1], 10 + (Late - 10) / 2);
}
