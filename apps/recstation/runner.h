// The event loop that drives the scheduler, as fast as possible or paced.
#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <optional>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include "scheduler.h"

namespace RecStation {

/// Runs in the thread of the application object.
class Runner {
public:
    struct Hooks {
        std::function<void()> afterStep;      ///< what it throws ends the run
        std::function<bool()> stopRequested;  ///< asked before every step
        std::function<void()> idle = {};      ///< about four times a second while it waits; may be empty
    };

    /// @param speed recorded seconds per second; nothing: as fast as possible
    Runner(Scheduler& scheduler, std::optional<double> speed, Hooks hooks);

    /// Runs until every source has ended or a stop is requested.
    /// @throws what a source or a hook throws
    void run();
    /// Runs until there is something to step, which it leaves, or that time has passed; else as run.
    void awaitStep(std::chrono::milliseconds atMost);
    /// Lets run notice a requested stop while it waits for the next step's time.
    void wake();

    void wakeFromAnyThread();

private:
    void runSteps();
    bool stepsUntilWait();
    void waitIdly(long long milliseconds);
    [[nodiscard]] long long millisecondsUntil(unsigned long long time);

    Scheduler& m_scheduler;
    std::optional<double> m_speed;
    Hooks m_hooks;
    QEventLoop m_loop;
    QTimer m_timer;
    QElapsedTimer m_sinceStart;
    std::optional<unsigned long long> m_start;  // recorded time of the first step
    std::exception_ptr m_failure;
    std::optional<std::chrono::milliseconds> m_onlyAwaits;  // for so long
};

}  // namespace RecStation
