// The times of what arrives, and how late it is.
#include "live/livetimes.h"

#include <gtest/gtest.h>

namespace RecStation {
namespace {

TEST(LiveTimes, TheArrivalIsRecordedUnlessThePeersTimeIsWanted)
{
    LiveTimes byArrival(false);
    EXPECT_EQ(byArrival.take({1'000, 900}), 1'000U);
    LiveTimes byPeer(true);
    EXPECT_EQ(byPeer.take({1'000, 900}), 900U);
    EXPECT_EQ(byPeer.take({1'200, std::nullopt}), 1'100U) << "as late as what came before";
}

TEST(LiveTimes, NothingGoesBack)
{
    LiveTimes byPeer(true);
    EXPECT_EQ(byPeer.take({1'000, 900}), 900U);
    EXPECT_EQ(byPeer.take({1'100, 500}), 900U);
    LiveTimes byArrival(false);
    EXPECT_EQ(byArrival.take({1'000, std::nullopt}), 1'000U);
    EXPECT_EQ(byArrival.take({900, std::nullopt}), 1'000U);
}

TEST(LiveTimes, ATimeThatLeapsCountsWhenTheNextConfirmsIt)
{
    constexpr unsigned long long second = 1'000'000;
    constexpr unsigned long long day = 86'400 * second;
    LiveTimes times(true);
    EXPECT_EQ(times.take({10 * day, 9 * day}), 9 * day);
    EXPECT_EQ(times.take({10 * day + second, 7'000 * day}), 9 * day + second) << "one alone";
    EXPECT_EQ(times.take({10 * day + 2 * second, 9 * day + 2 * second}), 9 * day + 2 * second);
    EXPECT_EQ(times.take({10 * day + 3 * second, 7'000 * day}), 9 * day + 3 * second);
    EXPECT_EQ(times.take({10 * day + 4 * second, 7'000 * day + second}), 7'000 * day + second) << "and another";
    EXPECT_EQ(times.lag()->mostUs, static_cast<long long>(day));
}

TEST(LiveTimes, AClockThatWasSetBackIsFollowed)
{
    constexpr unsigned long long second = 1'000'000;
    LiveTimes byArrival(false);
    EXPECT_EQ(byArrival.take({100 * second, std::nullopt}), 100 * second);
    EXPECT_EQ(byArrival.take({91 * second, std::nullopt}), 100 * second);
    EXPECT_EQ(byArrival.take({20 * second, std::nullopt}), 20 * second);
}

TEST(LiveTimes, TheLagIsToldInItsMiddleAndItsMostAlsoOfVeryMany)
{
    LiveTimes times(false);
    EXPECT_FALSE(times.lag());
    for (unsigned long long i = 0; i <= 100'000; ++i) {
        static_cast<void>(times.take({10'000'000 + i, 10'000'000}));
    }
    ASSERT_TRUE(times.lag());
    EXPECT_NEAR(static_cast<double>(times.lag()->middleUs), 50'000, 100);
    EXPECT_EQ(times.lag()->mostUs, 100'000);
    LiveTimes ahead(true);
    EXPECT_EQ(ahead.take({1'000, 1'500}), 1'500U);
    EXPECT_EQ(ahead.lag()->middleUs, -500);
}

}  // namespace
}  // namespace RecStation
