// A pipe or a device in a run of live sources.
#pragma once

#include <memory>
#include <utility>

#include "live/livetimes.h"
#include "sources/source.h"

namespace RecStation {

/// Gives the steps of another source the time of their arrival, or keeps theirs and tells how late they came.
class ArrivalSource final : public Source {
public:
    ArrivalSource(std::unique_ptr<Source> source, bool sourceTime) : m_source(std::move(source)), m_times(sourceTime) {}

    [[nodiscard]] QString name() const override { return m_source->name(); }
    void prepare() override { m_source->prepare(); }
    [[nodiscard]] std::optional<unsigned long long> nextTime() override { return arrived(m_source->nextTime()); }
    void step() override { m_source->step(); }
    [[nodiscard]] std::optional<unsigned long long> unfinishedTime() override
    {
        return arrived(m_source->unfinishedTime());
    }
    [[nodiscard]] bool plainValuesComeFirst() const override { return m_source->plainValuesComeFirst(); }
    [[nodiscard]] QStringList spectra() const override { return m_source->spectra(); }
    [[nodiscard]] SourceReport report() const override
    {
        SourceReport report = m_source->report();
        report.live = true;
        report.silent = !m_came;
        report.lag = m_times.lag();
        return report;
    }

private:
    std::optional<unsigned long long> arrived(std::optional<unsigned long long> time)
    {
        m_came = m_came || time;
        return time ? std::optional(m_times.take({systemTimeUs(), time})) : std::nullopt;
    }

    std::unique_ptr<Source> m_source;
    LiveTimes m_times;
    bool m_came = false;
};

}  // namespace RecStation
