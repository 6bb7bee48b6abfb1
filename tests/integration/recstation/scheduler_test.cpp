// Several sources merged by time, the simulated clock, how fast the run goes, and what ends it.
#include <vkbase/quonos.h>

#include "runner.h"
#include "scheduler.h"
#include "sources/source.h"
#include "support/program.h"

namespace RecStation {
namespace {

/// A source that is due at given times and notes what happens to it.
class ScriptedSource final : public Source {
public:
    ScriptedSource(std::string name, std::vector<unsigned long long> times, std::vector<std::string>& log)
        : m_name(std::move(name)), m_times(std::move(times)), m_log(log)
    {
    }

    [[nodiscard]] QString name() const override { return QString::fromStdString(m_name); }
    void prepare() override { m_log.push_back(m_name + " prepared"); }
    [[nodiscard]] std::optional<unsigned long long> nextTime() override
    {
        ++m_asked;
        return m_next < m_times.size() ? std::optional(m_times[m_next]) : std::nullopt;
    }
    void step() override
    {
        ++m_next;
        m_log.push_back(m_name + "@" + std::to_string(QuonOS::Create()->CurrentTime()));
        if (onStep) {
            onStep();
        }
    }
    [[nodiscard]] std::optional<unsigned long long> unfinishedTime() override { return unfinished; }
    [[nodiscard]] SourceReport report() const override { return {m_next, 0, 0}; }
    [[nodiscard]] int asked() const { return m_asked; }

    std::function<void()> onStep;
    std::optional<unsigned long long> unfinished;

private:
    std::string m_name;
    std::vector<unsigned long long> m_times;
    std::vector<std::string>& m_log;
    std::size_t m_next = 0;
    int m_asked = 0;
};

using testing::ElementsAre;

class SchedulerTest : public testing::Test {
protected:
    ScriptedSource& add(const std::string& name, std::vector<unsigned long long> times)
    {
        auto source = std::make_unique<ScriptedSource>(name, std::move(times), m_steps);
        ScriptedSource& added = *source;
        m_scheduler.add(std::move(source));
        return added;
    }

    void runToEnd()
    {
        while (m_scheduler.nextTime()) {
            m_scheduler.step();
        }
    }

    SimulatedClock m_clock;
    Scheduler m_scheduler{m_clock};
    std::vector<std::string> m_steps;
};

TEST_F(SchedulerTest, SourcesAreMergedByTime)
{
    add("a", {10, 40});
    add("b", {20, 30, 50});
    runToEnd();
    EXPECT_THAT(m_steps, ElementsAre("a@10", "b@20", "b@30", "a@40", "b@50"));
}

TEST_F(SchedulerTest, SourcesDueAtTheSameTimeStepInTheOrderTheyWereAdded)
{
    add("a", {10, 20});
    add("b", {10, 20});
    runToEnd();
    EXPECT_THAT(m_steps, ElementsAre("a@10", "b@10", "a@20", "b@20"));
}

TEST_F(SchedulerTest, TheClockOfTheProcessShowsTheTimeOfTheStep)
{
    add("a", {1'000});
    m_scheduler.step();
    EXPECT_EQ(QuonOS::Create()->CurrentTime(), 1'000U);
}

TEST_F(SchedulerTest, BehindAGapTheClockMayGoBack)
{
    std::vector<unsigned long long> gaps;
    m_scheduler.tellGaps(50, [&](unsigned long long time) {
        gaps.push_back(time);
        m_clock.set(time);
    });
    add("a", {1'000, 1'040, 1'030, 500, 520, 600});
    runToEnd();
    EXPECT_THAT(m_steps, ElementsAre("a@1000", "a@1040", "a@1040", "a@500", "a@520", "a@600"));
    EXPECT_THAT(gaps, ElementsAre(500, 600));
}

TEST_F(SchedulerTest, TheClockNeverGoesBackwards)
{
    m_clock.set(100);
    add("a", {10, 110});
    EXPECT_EQ(m_scheduler.nextTime(), 100U);
    runToEnd();
    EXPECT_THAT(m_steps, ElementsAre("a@100", "a@110"));
}

TEST_F(SchedulerTest, ASourceIsAskedForItsNextTimeOncePerStep)
{
    const ScriptedSource& source = add("a", {10});
    add("b", {20, 30});
    runToEnd();
    EXPECT_EQ(source.asked(), 2);
}

TEST_F(SchedulerTest, WhatASourceLeftUnfinishedIsSteppedAtItsTimeButNeverBeforeTheClock)
{
    m_clock.set(100);
    std::vector<ScriptedSource*> sources;
    for (const char* name : {"a", "b"}) {
        sources.push_back(&add(name, {}));
        sources.back()->onStep = [source = sources.back()] { source->unfinished.reset(); };
    }
    EXPECT_FALSE(m_scheduler.unfinishedTime());
    sources[0]->unfinished = 120;
    sources[1]->unfinished = 90;
    EXPECT_EQ(m_scheduler.unfinishedTime(), 120U);
    m_scheduler.stepUnfinished();
    EXPECT_EQ(m_scheduler.unfinishedTime(), 120U);
    m_scheduler.stepUnfinished();
    m_scheduler.stepUnfinished();
    EXPECT_FALSE(m_scheduler.unfinishedTime());
    EXPECT_THAT(m_steps, ElementsAre("a@120", "b@120"));
}

TEST_F(SchedulerTest, TheTimeIsToldBeforeTheStep)
{
    SimulatedClock clock;
    Scheduler scheduler(clock, [this](unsigned long long time) { m_steps.push_back(std::to_string(time)); });
    scheduler.add(std::make_unique<ScriptedSource>("a", std::vector<unsigned long long>{10, 20}, m_steps));
    scheduler.step();
    scheduler.step();
    EXPECT_THAT(m_steps, ElementsAre("10", "a@10", "20", "a@20"));
}

TEST_F(SchedulerTest, WithoutSourcesThereIsNoNextTimeAndAStepDoesNothing)
{
    EXPECT_FALSE(m_scheduler.nextTime());
    m_scheduler.step();
    EXPECT_EQ(m_clock.CurrentTime(), 0U);
}

TEST_F(SchedulerTest, PrepareReachesEverySource)
{
    add("a", {});
    add("b", {});
    m_scheduler.prepare();
    EXPECT_THAT(m_steps, ElementsAre("a prepared", "b prepared"));
}

TEST(SimulatedClock, GivesTheSystemsClockBackWhenItEnds)
{
    {
        SimulatedClock clock;
        clock.set(5);
    }
    EXPECT_GT(QuonOS::Create()->CurrentTime(), 1'000'000U);
}

using namespace testing;

class RunnerTest : public SchedulerTest {
protected:
    RunnerTest() { TestSupport::requireApplication(); }

    void run(std::optional<double> speed)
    {
        Runner runner(m_scheduler, speed, {[this] { ++m_afterSteps; }, [this] { return m_stop; }});
        m_runner = &runner;
        runner.run();
    }

    int m_afterSteps = 0;
    bool m_stop = false;
    Runner* m_runner = nullptr;
};

TEST_F(RunnerTest, RunsEveryStepAndEnds)
{
    add("a", {10, 20, 30});
    run(std::nullopt);
    EXPECT_THAT(m_steps, ElementsAre("a@10", "a@20", "a@30"));
    EXPECT_EQ(m_afterSteps, 3);
}

TEST_F(RunnerTest, ASpeedPacesTheStepsFromTheFirstOneOn)
{
    constexpr unsigned long long firstUs = 1'000'000'000;
    constexpr unsigned long long laterUs = 20'000;
    add("a", {firstUs, firstUs + laterUs});
    QElapsedTimer elapsed;
    elapsed.start();
    run(1.0);
    EXPECT_GE(elapsed.elapsed(), 19);
    EXPECT_THAT(m_steps, SizeIs(2));
}

class FastRunnerTest : public RunnerTest, public WithParamInterface<std::optional<double>> {};

TEST_P(FastRunnerTest, ADayOfRecordedTimeTakesHardlyAnyTime)
{
    add("a", {0, 86'400'000'000});
    run(GetParam());
    EXPECT_THAT(m_steps, SizeIs(2));
}

INSTANTIATE_TEST_SUITE_P(WithoutASpeedAndAtAHighOne, FastRunnerTest, testing::Values(std::nullopt, 1e8));

TEST_F(RunnerTest, AStopBetweenStepsEndsTheRun)
{
    add("a", {10, 20, 30}).onStep = [this] { m_stop = m_steps.size() == 2; };
    run(std::nullopt);
    EXPECT_THAT(m_steps, SizeIs(2));
}

TEST_F(RunnerTest, AStopWhileItWaitsEndsTheRun)
{
    add("a", {0, 86'400'000'000}).onStep = [this] {
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
    add("a", {10, 20}).onStep = [] { throw std::runtime_error("broken"); };
    EXPECT_THROW(run(std::nullopt), std::runtime_error);
    EXPECT_THAT(m_steps, SizeIs(1));
}

}  // namespace
}  // namespace RecStation
