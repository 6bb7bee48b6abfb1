// Stepping sources in the order in which they had something.
#include "live/livescheduler.h"

#include <exception>

#include "input/badlines.h"
#include "progress.h"

namespace RecStation {

std::optional<unsigned long long> LiveScheduler::nextTime()
{
    for (; m_begun < sources().size(); ++m_begun) {
        m_threads.add(m_begun, *sources()[m_begun]);
        m_lastStep = std::chrono::steady_clock::now();
    }
    endWaits();
    while (const auto arrival = m_threads.first()) {
        if (arrival->time) {
            return stepTime(*arrival->time);
        }
        m_threads.takeFirst();
        if (arrival->failure) {
            noteFailure(*arrival);
        }
    }
    return std::nullopt;
}

// What one source reads is no reason to end the others.
void LiveScheduler::noteFailure(const SourceThreads::Arrival& arrival)
{
    if (++m_failed == sources().size()) {
        std::rethrow_exception(arrival.failure);
    }
    try {
        std::rethrow_exception(arrival.failure);
    } catch (const StrictError&) {
        throw;
    } catch (const std::exception& error) {
        if (m_hooks.onFailure) {
            m_hooks.onFailure(*sources()[arrival.source], error.what());
        }
    }
}

// A clock of a peer's that is behind, or the system's that was set back: until it caught up, all would have one time.
// What lies beyond a gap that is told goes back.
bool LiveScheduler::isFarBehind(unsigned long long time) const
{
    constexpr unsigned long long MostBehindUs = 10'000'000;
    return clockTime(time) > time + MostBehindUs;
}

unsigned long long LiveScheduler::stepTime(unsigned long long time) const
{
    if (!isFarBehind(time)) {
        return clockTime(time);
    }
    const auto passed =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - m_lastStep);
    return clock().CurrentTime() + static_cast<unsigned long long>(passed.count());
}

void LiveScheduler::finish()
{
    constexpr std::chrono::seconds Patience{3};
    if (!SourceThreads::leftThreadBehind()) {
        m_threads.finish(Patience);
    }
}

void LiveScheduler::step()
{
    if (!nextTime()) {
        return;
    }
    const auto arrival = *m_threads.first();
    m_threads.takeFirst();
    if (isFarBehind(*arrival.time) && m_behindTold.insert(arrival.source).second) {
        const QString behind = lagText(static_cast<long long>(clock().CurrentTime() - *arrival.time));
        tell(arrival.source,
             QStringLiteral("its time lies %1 behind what is recorded already: the recording goes on as time passes")
                 .arg(behind));
    }
    const std::uint64_t before = m_hooks.records ? m_hooks.records() : 0;
    stepAt(stepTime(*arrival.time), *sources()[arrival.source]);
    m_lastStep = std::chrono::steady_clock::now();
    spend(arrival.source, m_hooks.records ? m_hooks.records() - before : 0);
}

void LiveScheduler::tell(std::size_t source, const QString& clause) const
{
    if (m_hooks.tell) {
        m_hooks.tell(*sources()[source], clause);
    }
}

// Gives the source its turn, or lets it wait for that.
void LiveScheduler::spend(std::size_t source, std::uint64_t records)
{
    constexpr std::size_t ManyWaits = 100;
    if (!m_budget.spend(source, records, m_lastStep)) {
        m_threads.giveTurn(source);
        return;
    }
    m_waiting.push_back(source);
    if (++m_waits[source] == ManyWaits) {
        tell(source,
             QStringLiteral("it tells more than a recording holds, which is 1,000 changes a second: it has to wait"));
    }
}

void LiveScheduler::endWaits()
{
    if (!m_waiting.empty() && m_budget.wait(std::chrono::steady_clock::now()).count() == 0) {
        for (const std::size_t source : std::exchange(m_waiting, {})) {
            m_threads.giveTurn(source);
        }
    }
}

std::optional<std::chrono::milliseconds> LiveScheduler::askAgainIn()
{
    return m_waiting.empty() ? std::nullopt : std::optional(m_budget.wait(std::chrono::steady_clock::now()));
}

}  // namespace RecStation
