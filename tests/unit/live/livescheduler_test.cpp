// Sources side by side: who is silent, floods, fails or ends harms no other.
#include "live/livescheduler.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <QCoreApplication>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <system/stopsignal.h>

#include "live/connection.h"
#include "runner.h"

namespace RecStation {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

bool haveApplication()
{
    static int argc = 1;
    static char name[] = "test";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    return true;
}

/// Has something every so often, so many times; then it ends, or is silent.
class PacedSource final : public Source {
public:
    PacedSource(int count, std::chrono::milliseconds pause, bool ends = true)
        : m_left(count), m_pause(pause), m_ends(ends)
    {
    }

    [[nodiscard]] QString name() const override { return QStringLiteral("paced"); }
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
    [[nodiscard]] QString name() const override { return QStringLiteral("failing"); }
    void prepare() override {}
    [[nodiscard]] std::optional<unsigned long long> nextTime() override { throw std::runtime_error("broken"); }
    void step() override {}
    [[nodiscard]] SourceReport report() const override { return {}; }
};

class LiveSchedulerTest : public testing::Test {
protected:
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

    bool m_hasApplication = haveApplication();
    System::StopSignal m_signal;
    SimulatedClock m_clock;
    bool m_stop = false;
    LiveScheduler m_scheduler{m_clock, {}, [this] { m_runner.wakeFromAnyThread(); }};
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
    EXPECT_LT(talking.mostLate, 5s);
}

TEST_F(LiveSchedulerTest, AFloodHoldsNoOtherBack)
{
    auto& flood = add<PacedSource>(1'000'000'000, 0ms);
    auto& slow = add<PacedSource>(20, 5ms);
    slow.onStep = [&] { m_stop = slow.steps == 20; };
    run();
    EXPECT_EQ(slow.steps, 20);
    EXPECT_GT(flood.steps, 100);
    EXPECT_LT(slow.mostLate, 1s);
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

TEST_F(LiveSchedulerTest, WhatASourceThrowsInItsThreadEndsTheRunAndIsThrownOn)
{
    add<PacedSource>(0, 0ms, false);
    add<FailingSource>();
    EXPECT_THROW(m_runner.run(), std::runtime_error);
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

}  // namespace
}  // namespace RecStation
