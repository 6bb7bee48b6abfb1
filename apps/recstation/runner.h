// The event loop that drives the scheduler, as fast as possible or paced, and learns of the wish to stop.
#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <system/stopsignal.h>

#include "scheduler.h"

class QSocketNotifier;

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

/// The wish to stop, told to the event loop. At most one object at a time. While it lives, a reader of the messages
/// that goes away does not end the recording.
class StopNotifier {
public:
    /// @param wake called once from the event loop of the constructing thread
    explicit StopNotifier(const std::function<void()>& wake);
    StopNotifier(const StopNotifier&) = delete;
    StopNotifier& operator=(const StopNotifier&) = delete;
    ~StopNotifier();

private:
    std::unique_ptr<QTimer> m_wake;  // started by whatever thread the signal comes in
    System::StopSignal m_signal;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace RecStation
