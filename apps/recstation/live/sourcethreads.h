// The threads in which sources wait for their input, and the turns between them and the one that steps them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "sources/source.h"

namespace RecStation {

/// Each source's nextTime runs in a thread of its own, so that one that is silent holds no other; what it answers waits
/// here, and the source with it, until it is given the turn again. Used by one thread, which steps the sources.
class SourceThreads {
public:
    struct Arrival {
        std::size_t source = 0;                  ///< its number
        std::optional<unsigned long long> time;  ///< nothing: the source has ended
        std::exception_ptr failure;              ///< why it broke off, if it did
    };

    /// What a source answers in the calling thread.
    [[nodiscard]] static Arrival ask(std::size_t number, Source& source);

    /// @param onArrival called from the thread of a source when first had nothing and has something now
    explicit SourceThreads(std::function<void()> onArrival = {}) : m_onArrival(std::move(onArrival)) {}
    SourceThreads(const SourceThreads&) = delete;
    SourceThreads& operator=(const SourceThreads&) = delete;
    ~SourceThreads() { finish(); }

    /// Begins to wait for a source, which must live until its thread has ended.
    void add(std::size_t number, Source& source);
    /// Some source may still have something: it has not ended, as far as was taken from here.
    [[nodiscard]] bool areRunning() const { return m_running > 0; }

    /// What came first and was not taken yet; never waits.
    [[nodiscard]] std::optional<Arrival> first();
    /// The same after waiting until then at most.
    [[nodiscard]] std::optional<Arrival> firstUntil(std::chrono::steady_clock::time_point latest);
    void takeFirst();
    void giveTurn(std::size_t source);

    /// Ends the threads, also those that wait: the process is asked to stop if any source has not ended.
    /// @param patience how long that may take; nothing: as long as they need
    /// @return false: some are left behind, and use their sources and this object until the process ends
    bool finish(std::optional<std::chrono::milliseconds> patience = std::nullopt);
    [[nodiscard]] bool isLeftBehind(std::size_t source);
    /// By any object: the process is to end without destructors.
    [[nodiscard]] static bool leftThreadBehind();

private:
    struct Worker {
        std::thread thread;
        std::condition_variable turnChanged;
        bool hasTurn = true;
        bool hasEnded = false;
    };

    void work(std::size_t number, Source& source, Worker& worker);
    void handOver(Worker& worker, Arrival arrival);
    [[nodiscard]] bool awaitTurn(Worker& worker);

    std::function<void()> m_onArrival;
    std::size_t m_running = 0;  // known to the thread that steps

    std::mutex m_mutex;                       // for all below
    std::map<std::size_t, Worker> m_workers;  // by the numbers of their sources
    std::condition_variable m_changed;
    std::deque<Arrival> m_come;
    bool m_isAwaited = false;
    bool m_finishing = false;
};

/// Deletes what sources use, unless a thread that was left behind still does.
struct DeleteUnlessUsed {
    template <typename Used>
    void operator()(Used* used) const
    {
        if (!SourceThreads::leftThreadBehind()) {
            delete used;
        }
    }
};

}  // namespace RecStation
