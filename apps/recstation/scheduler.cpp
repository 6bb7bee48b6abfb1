#include "scheduler.h"

#include <algorithm>
#include <utility>

namespace recstation {

Scheduler::Scheduler(SimulatedClock& clock) : m_clock(clock)
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
    return std::max(*m_due[*source].time, m_clock.CurrentTime());
}

void Scheduler::step()
{
    const auto source = earliest();
    if (!source) {
        return;
    }
    Due& due = m_due[*source];
    m_clock.set(std::max(*due.time, m_clock.CurrentTime()));
    due = {};
    m_sources[*source]->step();
}

}  // namespace recstation
