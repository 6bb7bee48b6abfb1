// Lines of a peer, its address, when it is tried again, and its times.
#include "live/lines.h"
#include "live/connection.h"
#include "live/livetimes.h"
#include "live/retry.h"
#include "support/testing.h"

namespace RecStation {
namespace {

using namespace testing;

std::vector<std::string> linesOf(LineSplitter& splitter)
{
    std::vector<std::string> lines;
    while (const auto line = splitter.next()) {
        lines.emplace_back(*line);
    }
    return lines;
}

TEST(LineSplitter, LinesThatComeInPiecesAreWhole)
{
    LineSplitter splitter(100);
    splitter.put("on");
    EXPECT_THAT(linesOf(splitter), IsEmpty());
    splitter.put("e\r\ntwo\n\nfo");
    EXPECT_TRUE(splitter.holdsLine());
    EXPECT_THAT(linesOf(splitter), ElementsAre("one", "two", ""));
    splitter.put("ur\n");
    EXPECT_THAT(linesOf(splitter), ElementsAre("four"));
}

TEST(LineSplitter, AnOverlongLineIsDroppedAndCountedOnceAndTheNextIsWhole)
{
    LineSplitter splitter(4);
    splitter.put("12345\n1234\n");
    EXPECT_THAT(linesOf(splitter), ElementsAre("1234"));
    EXPECT_EQ(splitter.tooLong(), 1U);
    for (int i = 0; i < 1000; ++i) {
        splitter.put("endless ");
        EXPECT_THAT(linesOf(splitter), IsEmpty());
    }
    splitter.put("end\nnext\n");
    EXPECT_THAT(linesOf(splitter), ElementsAre("next"));
    EXPECT_EQ(splitter.tooLong(), 2U);
}

TEST(Address, HostsPortsAndBracketsAreTold)
{
    const auto text = [](const char* from) {
        const auto address = parseAddress(from, 4532);
        return address ? addressText(*address) : std::string("none");
    };
    EXPECT_EQ(text("localhost"), "localhost:4532");
    EXPECT_EQ(text("192.168.1.20:99"), "192.168.1.20:99");
    EXPECT_EQ(text("[::1]:99"), "[::1]:99");
    EXPECT_EQ(text("[::1]"), "[::1]:4532");
    EXPECT_EQ(text("fe80::1%eth0"), "[fe80::1%eth0]:4532");
    for (const char* wrong : {"", ":99", "host:", "host:0", "host:65536", "host:-1", "[::1", "[::1]99", "a b", "a/b"}) {
        EXPECT_EQ(text(wrong), "none") << wrong;
    }
}

TEST(TellRate, TwentyTimesAtOnceAndOnceMoreForEveryMinute)
{
    using std::chrono::seconds;
    TellRate rate;
    TellRate::Time now = std::chrono::steady_clock::now();
    const auto told = [&](int times) {
        int count = 0;
        for (int i = 0; i < times; ++i) {
            count += rate.take(now) ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(told(19), 19);
    EXPECT_FALSE(rate.isSpent());
    EXPECT_EQ(told(100), 1);
    EXPECT_TRUE(rate.isSpent());
    now += seconds(59);
    EXPECT_EQ(told(1), 0);
    now += seconds(1);
    EXPECT_EQ(told(2), 1);
    now += seconds(150);
    EXPECT_EQ(told(5), 2) << "of the half minute that is over, the rest comes with the next half";
    now += seconds(30);
    EXPECT_EQ(told(5), 1);
    now += std::chrono::hours(24);
    EXPECT_EQ(told(100), 20);
}

TEST(Retry, PausesGrowToHalfAMinuteAndBeginAnewAfterSuccess)
{
    Retry retry;
    EXPECT_EQ(retry.next().count(), 250);
    EXPECT_EQ(retry.next().count(), 500);
    for (int i = 0; i < 10; ++i) {
        static_cast<void>(retry.next());
    }
    EXPECT_EQ(retry.next().count(), 30'000);
    retry.reset(Retry::Lasting / 2);
    EXPECT_EQ(retry.next().count(), 30'000) << "such a success is none";
    retry.reset(Retry::Lasting);
    EXPECT_EQ(retry.next().count(), 250);
}

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
