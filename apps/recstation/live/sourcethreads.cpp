// Handing sources to and fro between their threads and the one that steps them.
#include "live/sourcethreads.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include <system/stopsignal.h>

namespace RecStation {

namespace {

std::atomic<bool> sourceLeftBehind = false;

}  // namespace

SourceThreads::Arrival SourceThreads::ask(std::size_t number, Source& source)
{
    Arrival arrival{number, std::nullopt, nullptr};
    try {
        arrival.time = source.nextTime();
    } catch (...) {
        arrival.failure = std::current_exception();
    }
    return arrival;
}

void SourceThreads::add(std::size_t number, Source& source)
{
    const std::lock_guard lock(m_mutex);
    Worker& worker = m_workers[number];
    worker.thread = std::thread([this, number, &source, &worker] { work(number, source, worker); });
    ++m_running;
}

void SourceThreads::work(std::size_t number, Source& source, Worker& worker)
{
    bool goesOn = true;
    while (goesOn) {
        Arrival arrival = ask(number, source);
        goesOn = arrival.time.has_value();
        handOver(worker, std::move(arrival));
        goesOn = goesOn && awaitTurn(worker);
    }
    const std::lock_guard lock(m_mutex);
    worker.hasEnded = true;
    m_changed.notify_one();
}

void SourceThreads::handOver(Worker& worker, Arrival arrival)
{
    bool tell = false;
    {
        const std::lock_guard lock(m_mutex);
        worker.hasTurn = false;
        m_come.push_back(std::move(arrival));
        m_changed.notify_one();
        tell = std::exchange(m_isAwaited, false);
    }
    if (tell && m_onArrival) {
        m_onArrival();
    }
}

// False when there is none any more.
bool SourceThreads::awaitTurn(Worker& worker)
{
    std::unique_lock lock(m_mutex);
    worker.turnChanged.wait(lock, [this, &worker] { return worker.hasTurn || m_finishing; });
    return !m_finishing;
}

std::optional<SourceThreads::Arrival> SourceThreads::first()
{
    const std::lock_guard lock(m_mutex);
    m_isAwaited = m_come.empty();
    return m_isAwaited ? std::nullopt : std::optional(m_come.front());
}

std::optional<SourceThreads::Arrival> SourceThreads::firstUntil(std::chrono::steady_clock::time_point latest)
{
    std::unique_lock lock(m_mutex);
    const bool hasCome = m_changed.wait_until(lock, latest, [this] { return !m_come.empty(); });
    return hasCome ? std::optional(m_come.front()) : std::nullopt;
}

void SourceThreads::takeFirst()
{
    const std::lock_guard lock(m_mutex);
    m_running -= m_come.front().time ? 0U : 1U;
    m_come.pop_front();
}

void SourceThreads::giveTurn(std::size_t source)
{
    const std::lock_guard lock(m_mutex);
    Worker& worker = m_workers.at(source);
    worker.hasTurn = true;
    worker.turnChanged.notify_one();
}

bool SourceThreads::finish(std::optional<std::chrono::milliseconds> patience)
{
    const auto ended = [](const auto& entry) { return entry.second.hasEnded; };
    const auto allEnded = [this, &ended] { return std::all_of(m_workers.begin(), m_workers.end(), ended); };
    std::unique_lock lock(m_mutex);
    m_finishing = true;
    for (auto& [number, worker] : m_workers) {
        worker.turnChanged.notify_one();
    }
    if (m_running > 0) {
        System::StopSignal::request();
    }
    if (patience) {
        m_changed.wait_for(lock, *patience, allEnded);
    } else {
        m_changed.wait(lock, allEnded);
    }
    for (auto& [number, worker] : m_workers) {
        if (worker.thread.joinable() && worker.hasEnded) {
            worker.thread.join();
        } else if (worker.thread.joinable()) {
            worker.thread.detach();
            sourceLeftBehind = true;
        }
    }
    return allEnded();
}

bool SourceThreads::isLeftBehind(std::size_t source)
{
    const std::lock_guard lock(m_mutex);
    const auto worker = m_workers.find(source);
    return m_finishing && worker != m_workers.end() && !worker->second.hasEnded;
}

bool SourceThreads::leftThreadBehind()
{
    return sourceLeftBehind;
}

}  // namespace RecStation
