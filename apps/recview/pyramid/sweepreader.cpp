// Single sweeps: read again, and entered into grids.
#include <algorithm>
#include <cmath>
#include <limits>

#include "overviewparts.h"
#include "sweeptext.h"
#include "units.h"

namespace RecView {

void readSweeps(const RecordSource& records, const OverviewHead& head, std::int32_t code, Restored from,
                const std::function<bool(const PassingSweep&)>& visit)
{
    std::optional<TypeMoments> moments;
    const LevelMap* map = asLevels(from.state.value(code));
    if (const RecTool::LastRecord* last = from.state.find(code)) {
        moments = from.moments[code];
        const LevelMap* inForce = asLevels(last->value);
        if (inForce != nullptr && inForce->size() > 0 &&
            !visit({last->record, moments->lastMs, inForce->GetChannelRange(), inForce->GetCells()})) {
            return;
        }
    }
    std::vector<float> levels;
    Record pending;  // a sweep that the map has not taken over yet
    bool isPending = false;
    records(from.next, [&](const Record& record) {
        if (record.code != code || record.timeMs == 0) {
            return true;
        }
        const double moment = momentOf(record, head, moments ? &*moments : nullptr);
        moments = TypeMoments{moment, 0, {}};
        bool allMeasured = false;
        if (map != nullptr && map->size() > 0 && readWholeSweep(record.data, map->size(), levels, allMeasured)) {
            pending = record;
            isPending = true;
            return visit({record, moment, map->GetChannelRange(), levels});
        }
        if (isPending) {
            from.state.apply(pending);
            isPending = false;
        }
        from.state.apply(record);
        const LevelMap* after = asLevels(from.state.find(code)->value);
        map = asLevels(from.state.value(code));
        const bool isSweep = after != nullptr && after->size() > 0;
        return !isSweep || visit({record, moment, after->GetChannelRange(), after->GetCells()});
    });
}

SweepPainter::SweepPainter(Grid& grid, const KnownType& type)
    : m_grid(grid), m_type(type), m_levels(grid.view().rows), m_counts(grid.view().rows)
{
}

bool SweepPainter::add(const PassingSweep& sweep)
{
    enter(sweep.momentMs);
    const View& view = m_grid.view();
    if (sweep.momentMs > view.toMs) {
        m_momentMs.reset();
        return false;
    }
    m_momentMs = sweep.momentMs;
    if (!m_isPlaced || sweep.range != m_range) {
        place(sweep.range);
        m_hold = holdMs(sweep.range);
    }
    std::fill(m_levels.begin(), m_levels.end(), std::numeric_limits<float>::quiet_NaN());
    std::fill(m_counts.begin(), m_counts.end(), 0.0F);
    for (const Place& place : m_places) {
        const float level = sweep.levels[place.channel];
        if (std::isnan(level) || (view.of == Combine::Mean && std::isinf(level))) {
            continue;
        }
        for (std::uint32_t row = place.firstRow; row < place.endRow; ++row) {
            float& pixel = m_levels[row];
            if (view.of == Combine::Mean) {
                pixel = m_counts[row] > 0 ? pixel + level : level;
                ++m_counts[row];
            } else if (view.of == Combine::Max) {
                pixel = pixel >= level ? pixel : level;
            } else {
                pixel = pixel <= level ? pixel : level;
            }
        }
    }
    for (std::size_t row = 0; view.of == Combine::Mean && row < m_levels.size(); ++row) {
        m_levels[row] /= std::max(m_counts[row], 1.0F);
    }
    return true;
}

void SweepPainter::finish()
{
    enter(std::numeric_limits<double>::infinity());
}

void SweepPainter::enter(double untilMs)
{
    if (m_momentMs) {
        m_grid.add({*m_momentMs, std::min(untilMs, *m_momentMs + m_hold)}, m_levels, {m_lowRow, m_highRow}, 1);
    }
}

void SweepPainter::place(const values::ChannelRange& range)
{
    m_isPlaced = true;
    m_range = range;
    m_places.clear();
    const View& view = m_grid.view();
    m_lowRow = view.rows;
    m_highRow = 0;
    const double half = RecTool::channelWidthHz(range) / 2;
    const double perHz = static_cast<double>(view.rows) / (view.highHz - view.lowHz);
    for (std::size_t channel = 0; channel < range.size(); ++channel) {
        const double hz = range.frequencyHz(channel);
        const auto [low, high] =
            Grid::pixels((hz - half - view.lowHz) * perHz, (hz + half - view.lowHz) * perHz, view.rows);
        if (low < high) {
            m_places.push_back({static_cast<std::uint32_t>(channel), static_cast<std::uint32_t>(low),
                                static_cast<std::uint32_t>(high)});
            m_lowRow = std::min(m_lowRow, low);
            m_highRow = std::max(m_highRow, high);
        }
    }
}

/// That of the series; of mixed ones, which are not known by their ranges, the longest.
double SweepPainter::holdMs(const values::ChannelRange& range) const
{
    double mixed = 0;
    for (const KnownSeries& known : m_type.series) {
        if (known.series.isMixed) {
            mixed = std::max(mixed, known.series.usualMs);
        } else if (known.series.range == range) {
            return longestHold(known.series.usualMs);
        }
    }
    return longestHold(mixed);
}

}  // namespace RecView
