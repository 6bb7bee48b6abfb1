// Runs sources side by side: each waits for its input in a thread of its own, and steps when something has come.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <QString>

#include "live/sourcethreads.h"
#include "scheduler.h"

namespace RecStation {

/// A recording holds one record for every millisecond: more of them move it, and everybody's records behind, into the
/// future. Who makes the most of them waits then.
class RecordBudget {
public:
    using Clock = std::chrono::steady_clock;

    /// @return whether the source is to wait until the budget is there again
    [[nodiscard]] bool spend(std::size_t source, std::uint64_t records, Clock::time_point now)
    {
        refill(now);
        m_left -= static_cast<double>(records);
        double& used = m_used[source] += static_cast<double>(records);
        return m_left < 0 &&
               std::all_of(m_used.begin(), m_used.end(), [used](const auto& other) { return other.second <= used; });
    }
    /// How long that is. @return 0: it is there
    [[nodiscard]] std::chrono::milliseconds wait(Clock::time_point now)
    {
        refill(now);
        return std::chrono::ceil<std::chrono::milliseconds>(Seconds(std::max(0.0, -m_left / PerSecond)));
    }

private:
    using Seconds = std::chrono::duration<double>;
    static constexpr double PerSecond = 1000;
    static constexpr double AtOnce = 100;

    void refill(Clock::time_point now)
    {
        m_left = std::min(AtOnce, m_left + Seconds(now - m_filled).count() * PerSecond);
        m_filled = now;
        if (now - m_halved > std::chrono::seconds(1)) {
            m_halved = now;
            for (auto& [source, used] : m_used) {
                used /= 2;
            }
        }
    }

    double m_left = AtOnce;
    Clock::time_point m_filled = Clock::now();
    Clock::time_point m_halved = Clock::now();
    std::map<std::size_t, double> m_used;  // lately, by each source
};

/// The sources' nextTime runs in their threads, prepare, step and all else in the station's: the two never at the same
/// time. What comes first is stepped first; a source that always has something waits behind every other that has
/// something too.
class LiveScheduler final : public Scheduler {
public:
    struct Hooks {
        /// Called from the thread of a source when nextTime had nothing and has something now.
        std::function<void()> onArrival;
        /// Told once of each source whose time lies far behind what was stepped already, so that the clock shows what
        /// has passed since, and of each that makes too many records and has to wait: one clause. May be empty.
        std::function<void(const Source& source, const QString& clause)> tell = {};
        /// Told of a source that broke off with a sentence while there are others, which go on. May be empty.
        std::function<void(const Source& source, const std::string& sentence)> onFailure = {};
        /// How many records were made by now. May be empty.
        std::function<std::uint64_t()> records = {};
    };

    LiveScheduler(SimulatedClock& clock, BeforeStep beforeStep, Hooks hooks)
        : Scheduler(clock, std::move(beforeStep)), m_hooks(std::move(hooks)), m_threads(m_hooks.onArrival)
    {
    }

    /// Never waits. Nothing also when nothing has come yet: then isWaiting is true.
    /// @throws what a source throws when it was the last that had not, or is read strictly
    [[nodiscard]] std::optional<unsigned long long> nextTime() override;
    [[nodiscard]] bool isWaiting() const override { return m_threads.areRunning(); }
    [[nodiscard]] std::optional<std::chrono::milliseconds> askAgainIn() override;
    void step() override;
    /// Ends the threads, also those that wait: the process is asked to stop if any does. One that hangs is left behind:
    /// the recordings are to be closed, whatever the driver of a receiver does.
    void finish() override;
    [[nodiscard]] bool hangs(std::size_t source) override { return m_threads.isLeftBehind(source); }

private:
    void noteFailure(const SourceThreads::Arrival& arrival);
    [[nodiscard]] bool isFarBehind(unsigned long long time) const;
    [[nodiscard]] unsigned long long stepTime(unsigned long long time) const;

    void tell(std::size_t source, const QString& clause) const;
    void spend(std::size_t source, std::uint64_t records);
    void endWaits();

    Hooks m_hooks;
    std::chrono::steady_clock::time_point m_lastStep;  // or the beginning
    std::set<std::size_t> m_behindTold;                // sources
    std::size_t m_failed = 0;                          // sources that broke off
    std::size_t m_begun = 0;                           // sources that have their threads
    RecordBudget m_budget;
    std::vector<std::size_t> m_waiting;          // sources, for the budget
    std::map<std::size_t, std::size_t> m_waits;  // of each source
    SourceThreads m_threads;
};

}  // namespace RecStation
