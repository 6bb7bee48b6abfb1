// Runs sources side by side: each waits for its input in a thread of its own, and steps when something has come.
#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "scheduler.h"

namespace RecStation {

/// The sources' nextTime runs in their threads, prepare, step and all else in the station's: the two never at the same
/// time. What comes first is stepped first; a source that always has something waits behind every other that has
/// something too.
class LiveScheduler final : public Scheduler {
public:
    /// @param onArrival called from the thread of a source when nextTime had nothing and has something now
    LiveScheduler(SimulatedClock& clock, BeforeStep beforeStep, std::function<void()> onArrival);
    ~LiveScheduler() override;

    /// Never waits. Nothing also when nothing has come yet: then isWaiting is true. @throws what a source throws
    [[nodiscard]] std::optional<unsigned long long> nextTime() override;
    [[nodiscard]] bool isWaiting() const override { return m_running > 0; }
    void step() override;
    /// Ends the threads, also those that wait: the process is asked to stop if any does.
    void finish() override;

private:
    struct Worker {
        std::thread thread;
        std::condition_variable turnChanged;
        bool turn = true;  // the source's, else the station's
        std::optional<unsigned long long> time;
        std::exception_ptr failure;
    };

    void begin();
    void work(std::size_t source);
    void handOver(std::size_t source, std::optional<unsigned long long> time, std::exception_ptr failure);
    [[nodiscard]] bool awaitTurn(Worker& worker);

    std::function<void()> m_onArrival;
    std::vector<std::unique_ptr<Worker>> m_workers;  // one per source
    std::size_t m_running = 0;                       // that have not ended; known to the station's thread

    std::mutex m_mutex;              // for all below, and the workers' turns
    std::deque<std::size_t> m_come;  // sources that have something, or ended, in the order of their coming
    bool m_stationWaits = false;
    bool m_finishing = false;
};

}  // namespace RecStation
