// Lost times spread evenly between those that are known, each millisecond taken once.
#include "repairedtimes.h"

#include <algorithm>

namespace Recording2::Inspection {

namespace {

using Known = std::vector<std::optional<std::uint64_t>>;

/// The part of a distance at one of so many equal steps, without overflow for any distance.
std::uint64_t partOf(std::uint64_t distance, std::uint64_t step, std::uint64_t steps)
{
    return distance / steps * step + distance % steps * step / steps;
}

class TimeRepair {
public:
    TimeRepair(const Known& known, std::uint64_t lengthMs, std::uint64_t periodMs)
        : m_known(known), m_lengthMs(lengthMs), m_periodMs(periodMs)
    {
        m_result.times.reserve(known.size());
    }

    RepairedTimes run()
    {
        for (std::size_t i = 0; i < m_known.size();) {
            if (m_known[i]) {
                keep(*m_known[i++]);
                continue;
            }
            const auto begin = m_known.begin() + static_cast<std::ptrdiff_t>(i);
            const auto next = std::find_if(begin, m_known.end(), [](const auto& time) { return time.has_value(); });
            const auto lost = static_cast<std::uint64_t>(next - begin);
            if (next == m_known.end()) {
                goOn(lost);
            } else {
                fill(lost, **next);
            }
            i += lost;
        }
        return std::move(m_result);
    }

private:
    [[nodiscard]] std::uint64_t last() const { return m_result.times.empty() ? 0 : m_result.times.back(); }
    void add(std::uint64_t time) { m_result.times.push_back(std::max(time, last() + 1)); }

    void keep(std::uint64_t time)
    {
        if (m_result.times.empty() || time > last()) {
            m_result.times.push_back(time);
            ++m_result.kept;
        } else {
            add(time);
            ++m_result.moved;
        }
    }

    void fill(std::uint64_t lost, std::uint64_t next)
    {
        (m_result.times.empty() ? m_result.inFront : m_result.between) += lost;
        const std::uint64_t from = last();
        const std::uint64_t room = next > from ? next - from : 0;
        for (std::uint64_t i = 1; i <= lost; ++i) {
            add(from + partOf(room, i, lost + 1));
        }
    }

    void goOn(std::uint64_t lost)
    {
        m_result.behind = lost;
        const std::uint64_t from = last();
        const bool evenly = m_periodMs == 0 && m_lengthMs > from && m_lengthMs - from >= lost;
        if (!evenly) {
            m_result.stepMs = m_periodMs != 0 ? m_periodMs : meanDistance();
        }
        for (std::uint64_t i = 1; i <= lost; ++i) {
            add(from + (evenly ? partOf(m_lengthMs - from, i, lost) : i * *m_result.stepMs));
        }
    }

    [[nodiscard]] std::uint64_t meanDistance() const
    {
        const std::vector<std::uint64_t>& times = m_result.times;
        return times.size() < 2 ? 1 : std::max<std::uint64_t>(1, (times.back() - times.front()) / (times.size() - 1));
    }

    const Known& m_known;
    std::uint64_t m_lengthMs;
    std::uint64_t m_periodMs;
    RepairedTimes m_result;
};

}  // namespace

RepairedTimes repairTimes(const Known& known, std::uint64_t lengthMs, std::uint64_t periodMs)
{
    return TimeRepair(known, lengthMs, periodMs).run();
}

std::vector<std::string> describe(const RepairedTimes& times, std::string (*number)(std::uint64_t))
{
    const auto counted = [&](std::uint64_t count) { return number(count) + (count == 1 ? " time" : " times"); };
    std::vector<std::string> lines;
    if (times.between > 0) {
        lines.push_back(counted(times.between) + ", evenly between the known times around them");
    }
    if (times.inFront > 0) {
        lines.push_back(counted(times.inFront) + ", evenly from the start to the first known time");
    }
    if (times.behind > 0) {
        const std::string rule =
            times.stepMs ? ", every " + std::to_string(*times.stepMs) + " ms" : std::string(", evenly to the end");
        const bool none = times.kept == 0;
        lines.push_back(counted(times.behind) + rule + (none ? " (none was known)" : " behind the last known time"));
    }
    if (times.moved > 0) {
        lines.push_back(counted(times.moved) + " moved to the next free millisecond");
    }
    return lines;
}

}  // namespace Recording2::Inspection
