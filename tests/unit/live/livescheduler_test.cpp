// Sources side by side: who is silent, floods, fails or ends harms no other.
#include "live/livescheduler.h"

#include <future>

#include <system/stopsignal.h>

#include "input/badlines.h"
#include "live/connection.h"
#include "runner.h"
#include "support/program.h"

namespace RecStation {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto Bearable = 10s;  // of a busy machine; who is held back waits for minutes

/// Has something every so often, so many times; then it ends, or is silent.
class PacedSource final : public Source {
public:
    PacedSource(int count, std::chrono::milliseconds pause, bool ends = true)
        : m_left(count), m_pause(pause), m_ends(ends)
    {
    }

    [[nodiscard]] QString name() const override { return "paced"; }
    void prepare() override {}
    [[nodiscard]] std::optional<unsigned long long> nextTime() override
    {
        try {
            if (m_left == 0 && m_ends) {
                return std::nullopt;
            }
            if (m_left == 0 || m_pause > 0ms) {
                pauseUntil(in(m_left == 0 ? 1h : m_pause));
            }
        } catch (const Stopped&) {
            return std::nullopt;
        }
        m_came = Clock::now();
        return systemTimeUs();
    }
    void step() override
    {
        --m_left;
        ++steps;
        mostLate = std::max(mostLate, Clock::now() - m_came);
        if (onStep) {
            onStep();
        }
    }
    [[nodiscard]] SourceReport report() const override { return {}; }

    std::function<void()> onStep;
    int steps = 0;
    Clock::duration mostLate{};

private:
    int m_left;
    std::chrono::milliseconds m_pause;
    bool m_ends;
    Clock::time_point m_came;
};

class FailingSource final : public Source {
public:
    explicit FailingSource(bool strict = false) : m_strict(strict) {}

    [[nodiscard]] QString name() const override { return "failing"; }
    void prepare() override {}
    [[nodiscard]] std::optional<unsigned long long> nextTime() override
    {
        if (m_strict) {
            throw StrictError("broken");
        }
        throw std::runtime_error("broken");
    }
    void step() override {}
    [[nodiscard]] SourceReport report() const override { return {}; }

private:
    bool m_strict;
};

class LiveSchedulerTest : public testing::Test {
protected:
    static void SetUpTestSuite() { TestSupport::requireApplication(); }

    template <typename Kind, typename... Arguments>
    Kind& add(Arguments... arguments)
    {
        auto source = std::make_unique<Kind>(arguments...);
        Kind& reference = *source;
        m_scheduler.add(std::move(source));
        return reference;
    }

    void run()
    {
        m_runner.run();
        m_scheduler.finish();
    }

    System::StopSignal m_signal;
    SimulatedClock m_clock;
    bool m_stop = false;
    std::vector<std::string> m_told;
    std::uint64_t m_records = 0;
    std::vector<std::string> m_failures;
    LiveScheduler m_scheduler{m_clock,
                              {},
                              {[this] { m_runner.wakeFromAnyThread(); },
                               [this](const Source& source, const QString& clause) {
                                   m_told.push_back((source.name() + ": " + clause).toStdString());
                               },
                               [this](const Source& source, const std::string& sentence) {
                                   m_failures.push_back(source.name().toStdString() + ": " + sentence);
                               },
                               [this] { return m_records; }}};
    Runner m_runner{m_scheduler, std::nullopt, {[] {}, [this] { return m_stop; }, [] {}}};
};

TEST_F(LiveSchedulerTest, ASilentSourceHoldsNoOtherBack)
{
    const auto& silent = add<PacedSource>(0, 0ms, false);
    auto& talking = add<PacedSource>(100, 1ms);
    talking.onStep = [&] { m_stop = talking.steps == 100; };
    run();
    EXPECT_EQ(talking.steps, 100);
    EXPECT_EQ(silent.steps, 0);
    EXPECT_LT(talking.mostLate, Bearable);
}

TEST_F(LiveSchedulerTest, AFloodHoldsNoOtherBack)
{
    auto& flood = add<PacedSource>(1'000'000'000, 0ms);
    auto& slow = add<PacedSource>(20, 5ms);
    slow.onStep = [&] { m_stop = slow.steps == 20; };
    run();
    EXPECT_EQ(slow.steps, 20);
    EXPECT_GT(flood.steps, 100);
    EXPECT_LT(slow.mostLate, Bearable);
}

TEST_F(LiveSchedulerTest, TheRunEndsWhenEverySourceHasEndedAndNobodyIsAskedToStop)
{
    const auto& first = add<PacedSource>(3, 0ms);
    const auto& second = add<PacedSource>(5, 1ms);
    run();
    EXPECT_EQ(first.steps, 3);
    EXPECT_EQ(second.steps, 5);
    EXPECT_FALSE(System::StopSignal::requested());
}

TEST_F(LiveSchedulerTest, ASourceThatBreaksOffIsToldAndEndsNoOther)
{
    add<FailingSource>();
    auto& talking = add<PacedSource>(20, 1ms);
    run();
    EXPECT_EQ(talking.steps, 20);
    EXPECT_THAT(m_failures, testing::ElementsAre("failing: broken"));
}

TEST_F(LiveSchedulerTest, WhatTheLastSourceThrowsIsThrownOnWhereAllBreakOff)
{
    add<FailingSource>();
    add<FailingSource>();
    EXPECT_THROW(m_runner.run(), std::runtime_error);
    m_scheduler.finish();
    EXPECT_THAT(m_failures, testing::SizeIs(1));
}

TEST_F(LiveSchedulerTest, ASourceThatIsReadStrictlyEndsTheRun)
{
    add<PacedSource>(0, 0ms, false);
    add<FailingSource>(true);
    EXPECT_THROW(m_runner.run(), StrictError);
    m_scheduler.finish();
}

TEST_F(LiveSchedulerTest, TheClockShowsTheTimeOfEveryStepAndNeverGoesBack)
{
    auto& source = add<PacedSource>(50, 0ms);
    unsigned long long last = 0;
    source.onStep = [&] {
        EXPECT_GE(stationTimeUs(), last);
        last = stationTimeUs();
    };
    run();
    EXPECT_GT(last, 0U);
}

/// Tells times of a clock that is so much behind the system's.
class BehindSource final : public Source {
public:
    explicit BehindSource(unsigned long long behindUs) : m_behindUs(behindUs) {}
    [[nodiscard]] QString name() const override { return "behind"; }
    void prepare() override {}
    [[nodiscard]] std::optional<unsigned long long> nextTime() override
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return times.size() < 5 ? std::optional(systemTimeUs() - m_behindUs) : std::nullopt;
    }
    void step() override { times.push_back(stationTimeUs()); }
    [[nodiscard]] SourceReport report() const override { return {}; }

    std::vector<unsigned long long> times;

private:
    unsigned long long m_behindUs;
};

TEST_F(LiveSchedulerTest, TimesFarBehindTheClockDoNotStopItAndAreToldOnce)
{
    constexpr unsigned long long FiveHoursUs = 5 * 3'600'000'000ULL;
    const unsigned long long begin = systemTimeUs();
    m_clock.set(begin);
    const auto& behind = add<BehindSource>(FiveHoursUs);
    run();
    EXPECT_EQ(std::adjacent_find(behind.times.begin(), behind.times.end(), std::greater_equal<>()), behind.times.end());
    EXPECT_GT(behind.times.front(), begin);
    EXPECT_LE(behind.times.back(), systemTimeUs());
    EXPECT_THAT(m_told, testing::ElementsAre(testing::StartsWith("behind: its time lies 5 h 00 min behind")));
}

TEST_F(LiveSchedulerTest, TheTimesOfAPeerThatTellsThemFirstAreTheClocks)
{
    constexpr unsigned long long HourUs = 3'600'000'000;
    const auto& behind = add<BehindSource>(HourUs);
    run();
    EXPECT_LE(behind.times.back(), systemTimeUs() - HourUs);
    EXPECT_TRUE(m_told.empty());
}

// A recording has a record for each millisecond, so that a flood would move the times of everybody.
TEST_F(LiveSchedulerTest, WhoMakesTooManyRecordsWaitsAndNobodyElse)
{
    auto& flood = add<PacedSource>(1'000'000'000, 0ms);
    flood.onStep = [&] { m_records += 3; };
    auto& slow = add<PacedSource>(100, 5ms);
    slow.onStep = [&] {
        ++m_records;
        m_stop = slow.steps == 100;
    };
    const auto begin = Clock::now();
    run();
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    EXPECT_LE(static_cast<double>(m_records), 110 + 1000 * seconds);
    EXPECT_GT(static_cast<double>(m_records), 50 * seconds) << "it waits no longer than it has to";
    EXPECT_LT(slow.mostLate, Bearable);
    EXPECT_THAT(m_told, testing::ElementsAre(testing::StartsWith("paced: it tells more than a recording holds")));
}

TEST_F(LiveSchedulerTest, AwaitingAStepEndsWhenNothingComesForSoLong)
{
    add<PacedSource>(0, 0ms, false);
    m_runner.awaitStep(1ms);
    EXPECT_FALSE(m_scheduler.nextTime());
    m_scheduler.finish();
}

TEST_F(LiveSchedulerTest, FinishingEndsThreadsThatWaitForInputAndForTheirTurn)
{
    add<PacedSource>(0, 0ms, false);
    add<PacedSource>(10, 0ms);
    while (!m_scheduler.nextTime()) {
        std::this_thread::yield();
    }
    m_scheduler.finish();
    m_scheduler.finish();
}

/// Waits for something that no wish to stop ends.
class HangingSource final : public Source {
public:
    explicit HangingSource(std::future<void> end) : m_end(std::move(end)) {}
    [[nodiscard]] QString name() const override { return "hanging"; }
    void prepare() override {}
    [[nodiscard]] std::optional<unsigned long long> nextTime() override
    {
        m_end.wait();
        return std::nullopt;
    }
    void step() override {}
    [[nodiscard]] SourceReport report() const override { return {}; }

private:
    std::future<void> m_end;
};

TEST(SourceThreads, OneThatHangsIsLeftBehindAfterItsTimeAndTold)
{
    const System::StopSignal signal;
    std::promise<void> end;
    FailingSource failing;
    HangingSource hanging(end.get_future());
    SourceThreads threads;
    threads.add(1, failing);
    threads.add(7, hanging);
    const auto arrival = threads.firstUntil(Clock::now() + 1h);
    ASSERT_TRUE(arrival);
    EXPECT_EQ(arrival->source, 1U);
    EXPECT_TRUE(arrival->failure);
    threads.takeFirst();
    EXPECT_FALSE(threads.firstUntil(Clock::now()));
    EXPECT_FALSE(SourceThreads::leftThreadBehind());
    EXPECT_FALSE(threads.finish(1ms));
    EXPECT_TRUE(SourceThreads::leftThreadBehind());
    end.set_value();
    EXPECT_TRUE(threads.finish());
}

}  // namespace
}  // namespace RecStation
