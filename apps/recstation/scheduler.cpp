// Choosing the source that is due next, and telling gaps between two steps.
#include "scheduler.h"

#include <algorithm>
#include <utility>

#include "input/timeorder.h"

namespace RecStation {

Scheduler::Scheduler(SimulatedClock& clock, BeforeStep beforeStep) : m_clock(clock), m_beforeStep(std::move(beforeStep))
{
}

void Scheduler::add(std::unique_ptr<Source> source)
{
    m_sources.push_back(std::move(source));
    m_due.emplace_back();
}

void Scheduler::prepare()
{
    for (const auto& source : m_sources) {
        source->prepare();
    }
}

std::optional<std::size_t> Scheduler::earliest()
{
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < m_sources.size(); ++i) {
        Due& due = m_due[i];
        if (!due.asked) {
            due = {true, m_sources[i]->nextTime()};
        }
        if (due.time && (!found || *due.time < *m_due[*found].time)) {
            found = i;
        }
    }
    return found;
}

std::optional<unsigned long long> Scheduler::nextTime()
{
    const auto source = earliest();
    if (!source) {
        return std::nullopt;
    }
    return clockTime(*m_due[*source].time);
}

void Scheduler::tellGaps(unsigned long long gapUs, std::function<void(unsigned long long time)> beyondGap)
{
    m_gapUs = gapUs;
    m_beyondGap = std::move(beyondGap);
}

bool Scheduler::isBehindGap(unsigned long long time) const
{
    return m_gapUs && m_stepped && isBeyond(m_clock.CurrentTime(), time, *m_gapUs);
}

unsigned long long Scheduler::clockTime(unsigned long long time) const
{
    return isBehindGap(time) ? time : std::max(time, m_clock.CurrentTime());
}

void Scheduler::step()
{
    const auto source = earliest();
    if (!source) {
        return;
    }
    Due& due = m_due[*source];
    const unsigned long long time = *due.time;
    due = {};
    stepAt(time, *m_sources[*source]);
}

void Scheduler::stepAt(unsigned long long time, Source& source)
{
    if (isBehindGap(time)) {
        m_beyondGap(time);
    }
    m_clock.set(std::max(time, m_clock.CurrentTime()));
    m_stepped = true;
    if (m_beforeStep) {
        m_beforeStep(m_clock.CurrentTime());
    }
    source.step();
}

// Source by source: what waited has no order among them that anybody could rely on.
std::optional<unsigned long long> Scheduler::unfinishedTime()
{
    for (std::size_t i = 0; i < m_sources.size() && !m_unfinishedTime; ++i) {
        m_unfinished = m_sources[i].get();
        m_unfinishedTime = m_unfinished->unfinishedTime();
    }
    return m_unfinishedTime ? std::optional(clockTime(*m_unfinishedTime)) : std::nullopt;
}

void Scheduler::stepUnfinished()
{
    if (unfinishedTime()) {
        stepAt(*std::exchange(m_unfinishedTime, std::nullopt), *m_unfinished);
    }
}

}  // namespace RecStation
