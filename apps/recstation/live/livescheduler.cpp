// Handing sources to and fro between their threads and the station's.
#include "live/livescheduler.h"

#include <utility>

#include <system/stopsignal.h>

namespace RecStation {

LiveScheduler::LiveScheduler(SimulatedClock& clock, BeforeStep beforeStep, std::function<void()> onArrival)
    : Scheduler(clock, std::move(beforeStep)), m_onArrival(std::move(onArrival))
{
}

LiveScheduler::~LiveScheduler()
{
    finish();
}

// All there are before the first begins: the threads look at the list.
void LiveScheduler::begin()
{
    for (std::size_t i = 0; i < sources().size(); ++i) {
        m_workers.push_back(std::make_unique<Worker>());
    }
    m_running = m_workers.size();
    for (std::size_t i = 0; i < m_workers.size(); ++i) {
        m_workers[i]->thread = std::thread([this, i] { work(i); });
    }
}

void LiveScheduler::work(std::size_t source)
{
    for (bool goesOn = true; goesOn;) {
        std::optional<unsigned long long> time;
        std::exception_ptr failure;
        try {
            time = sources()[source]->nextTime();
        } catch (...) {
            failure = std::current_exception();
        }
        goesOn = time.has_value();
        handOver(source, time, failure);
        goesOn = goesOn && awaitTurn(*m_workers[source]);
    }
}

void LiveScheduler::handOver(std::size_t source, std::optional<unsigned long long> time, std::exception_ptr failure)
{
    bool tell = false;
    {
        const std::lock_guard lock(m_mutex);
        Worker& worker = *m_workers[source];
        worker.turn = false;
        worker.time = time;
        worker.failure = std::move(failure);
        m_come.push_back(source);
        tell = std::exchange(m_stationWaits, false);
    }
    if (tell) {
        m_onArrival();
    }
}

// False when there is none any more.
bool LiveScheduler::awaitTurn(Worker& worker)
{
    std::unique_lock lock(m_mutex);
    worker.turnChanged.wait(lock, [this, &worker] { return worker.turn || m_finishing; });
    return !m_finishing;
}

std::optional<unsigned long long> LiveScheduler::nextTime()
{
    if (m_workers.empty()) {
        begin();
    }
    const std::lock_guard lock(m_mutex);
    while (!m_come.empty()) {
        const Worker& first = *m_workers[m_come.front()];
        if (first.time) {
            return clockTime(*first.time);
        }
        m_come.pop_front();
        --m_running;
        if (first.failure) {
            std::rethrow_exception(first.failure);
        }
    }
    m_stationWaits = m_running > 0;
    return std::nullopt;
}

void LiveScheduler::step()
{
    if (!nextTime()) {
        return;
    }
    std::size_t source = 0;
    unsigned long long time = 0;
    {
        const std::lock_guard lock(m_mutex);
        source = m_come.front();
        m_come.pop_front();
        time = *m_workers[source]->time;
    }
    stepAt(time, *sources()[source]);
    const std::lock_guard lock(m_mutex);
    m_workers[source]->turn = true;
    m_workers[source]->turnChanged.notify_one();
}

void LiveScheduler::finish()
{
    {
        const std::lock_guard lock(m_mutex);
        m_finishing = true;
        for (const auto& worker : m_workers) {
            worker->turnChanged.notify_one();
        }
    }
    if (m_running > 0) {
        System::StopSignal::request();
    }
    for (const auto& worker : m_workers) {
        if (worker->thread.joinable()) {
            worker->thread.join();
        }
    }
}

}  // namespace RecStation
