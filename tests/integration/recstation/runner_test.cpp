// The run from step to step: how fast it goes, and what ends it.
#include "runner.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "application.h"
#include "scriptedsource.h"

namespace RecStation {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

class RunnerTest : public testing::Test {
protected:
    RunnerTest() { requireApplication(); }

    ScriptedSource& add(std::vector<unsigned long long> times)
    {
        auto source = std::make_unique<ScriptedSource>("a", std::move(times), m_steps);
        ScriptedSource& reference = *source;
        m_scheduler.add(std::move(source));
        return reference;
    }

    void run(std::optional<double> speed)
    {
        Runner runner(m_scheduler, speed, {[this] { ++m_afterSteps; }, [this] { return m_stop; }});
        m_runner = &runner;
        runner.run();
    }

    SimulatedClock m_clock;
    Scheduler m_scheduler{m_clock};
    std::vector<std::string> m_steps;
    int m_afterSteps = 0;
    bool m_stop = false;
    Runner* m_runner = nullptr;
};

TEST_F(RunnerTest, RunsEveryStepAndEnds)
{
    add({10, 20, 30});
    run(std::nullopt);
    EXPECT_THAT(m_steps, ElementsAre("a@10", "a@20", "a@30"));
    EXPECT_EQ(m_afterSteps, 3);
}

TEST_F(RunnerTest, WithoutASpeedADayOfRecordedTimeTakesNoTime)
{
    add({0, 86'400'000'000});
    run(std::nullopt);
    EXPECT_THAT(m_steps, SizeIs(2));
}

TEST_F(RunnerTest, ASpeedPacesTheStepsFromTheFirstOneOn)
{
    constexpr unsigned long long firstUs = 1'000'000'000;
    constexpr unsigned long long laterUs = 20'000;
    add({firstUs, firstUs + laterUs});
    QElapsedTimer elapsed;
    elapsed.start();
    run(1.0);
    EXPECT_GE(elapsed.elapsed(), 19);
    EXPECT_THAT(m_steps, SizeIs(2));
}

TEST_F(RunnerTest, AHighSpeedShortensTheWait)
{
    add({0, 86'400'000'000});
    run(1e8);
    EXPECT_THAT(m_steps, SizeIs(2));
}

TEST_F(RunnerTest, AStopBetweenStepsEndsTheRun)
{
    add({10, 20, 30}).onStep = [this] { m_stop = m_steps.size() == 2; };
    run(std::nullopt);
    EXPECT_THAT(m_steps, SizeIs(2));
}

TEST_F(RunnerTest, AStopWhileItWaitsEndsTheRun)
{
    add({0, 86'400'000'000}).onStep = [this] {
        QTimer::singleShot(0, [this] {
            m_stop = true;
            m_runner->wake();
        });
    };
    run(1.0);
    EXPECT_THAT(m_steps, SizeIs(1));
}

TEST_F(RunnerTest, WhatAStepThrowsEndsTheRunAndIsThrownOn)
{
    add({10, 20}).onStep = [] { throw std::runtime_error("broken"); };
    EXPECT_THROW(run(std::nullopt), std::runtime_error);
    EXPECT_THAT(m_steps, SizeIs(1));
}

}  // namespace
}  // namespace RecStation
