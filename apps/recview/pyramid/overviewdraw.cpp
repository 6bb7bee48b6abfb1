// Pictures and curves of a recording, of blocks or of single sweeps.
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "blockpainter.h"
#include "overviewparts.h"
#include "units.h"

namespace RecView {

namespace {

/// Enters single sweeps into a grid: each from its moment to the next one's, or as long as one stands at most.
class SweepPainter {
public:
    explicit SweepPainter(Grid& grid, const KnownType& type)
        : m_grid(grid), m_type(type), m_levels(grid.view().rows), m_counts(grid.view().rows)
    {
    }

    /// The next sweep; those before the view may be among them. @return false behind the view
    bool add(const PassingSweep& sweep)
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
    /// After the last one.
    void finish() { enter(std::numeric_limits<double>::infinity()); }

private:
    void enter(double untilMs)
    {
        if (m_momentMs) {
            m_grid.add({*m_momentMs, std::min(untilMs, *m_momentMs + m_hold)}, m_levels, {m_lowRow, m_highRow}, 1);
        }
    }
    void place(const values::ChannelRange& range)
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
    [[nodiscard]] double holdMs(const values::ChannelRange& range) const
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

    Grid& m_grid;
    const KnownType& m_type;
    std::optional<double> m_momentMs;  // of the sweep that is not yet entered
    double m_hold = 0;
    values::ChannelRange m_range;
    struct Place {
        std::uint32_t channel;
        std::uint32_t firstRow;
        std::uint32_t endRow;
    };
    std::vector<Place> m_places;
    bool m_isPlaced = false;
    std::size_t m_lowRow = 0;
    std::size_t m_highRow = 0;
    std::vector<float> m_levels;
    std::vector<float> m_counts;
};

constexpr std::uint64_t MostExactBytes = std::uint64_t{24} << 20U;

/// Of the pixels that lie above each other in a grid, what they are together.
float combinedRow(const Grid& grid, std::size_t row)
{
    const std::size_t columns = grid.view().columns;
    const std::span<const float> levels = std::span(grid.levels()).subspan(row * columns, columns);
    float together = std::numeric_limits<float>::quiet_NaN();
    double sum = 0;
    double count = 0;
    for (const float level : levels) {
        if (std::isnan(level)) {
            continue;
        }
        sum += double{level};
        ++count;
        const bool isFirst = std::isnan(together);
        together = isFirst                          ? level
                   : grid.view().of == Combine::Min ? std::min(together, level)
                                                    : std::max(together, level);
    }
    return grid.view().of == Combine::Mean && count > 0 ? static_cast<float>(sum / count) : together;
}

}  // namespace

void Overview::draw(Grid& grid, bool ofSingleUnits) const
{
    const View& view = grid.view();
    if (view.exact && bytesOfExact(view) <= MostExactBytes) {
        drawSweeps(grid);
        return;
    }
    const Private::Reading reading(*d);
    const KnownType* type = d->type(view.code);
    if (type == nullptr) {
        return;
    }
    const auto tracker = d->trackers.find(view.code);
    for (const Stretch& covered : type->covered({view.fromMs, view.toMs})) {
        grid.cover(covered);
        grid.notExact();
    }
    for (const KnownSeries& known : type->series) {
        const bool isOpen = tracker != d->trackers.end();
        const std::vector<OpenRow>* open = isOpen ? &tracker->second->openRows(known.series.number) : nullptr;
        BlockPainter(*d->store, *type, known, open, grid).paint(ofSingleUnits);
    }
}

void Overview::drawSweeps(Grid& grid) const
{
    const View& view = grid.view();
    KnownType type;
    {
        const Private::Reading reading(*d);
        const KnownType* known = d->type(view.code);
        if (known == nullptr) {
            return;
        }
        type = *known;
    }
    for (const Stretch& covered : type.covered({view.fromMs, view.toMs})) {
        grid.cover(covered);
    }
    Beginning begin = sweepsFrom(view.code, view.fromMs);
    SweepPainter painter(grid, type);
    readSweeps(begin.records, begin.head, view.code, std::move(begin.state),
               [&](const PassingSweep& sweep) { return painter.add(sweep); });
    painter.finish();
}

std::uint64_t Overview::bytesOfExact(const View& view) const
{
    const std::shared_lock lock(d->mutex);
    const KnownType* type = d->type(view.code);
    if (type == nullptr || type->firstMs > view.toMs || view.fromMs > d->tables.head.endMs) {
        return 0;
    }
    const CheckpointReader reader(*d->store);
    const std::optional<CheckpointEntry> first = reader.beforeMoment(view.code, view.fromMs);
    const std::optional<CheckpointEntry> behind = reader.afterMoment(view.code, view.toMs);
    const std::int64_t end = behind ? behind->next.position : d->tables.head.bytes;
    return static_cast<std::uint64_t>(std::max<std::int64_t>(end - (first ? first->next.position : 0), 0));
}

Curve Overview::spectrumOver(std::int32_t code, const Stretch& time, const RecTool::FrequencySpan& span,
                             std::size_t points) const
{
    constexpr std::size_t Columns = 32;  // so that blocks do not reach far over the stretch
    Curve curve;
    View view{code, time.fromMs, time.toMs, span.lowHz, span.highHz, Columns, points, Combine::Max, true};
    for (const Combine of : {Combine::Max, Combine::Min, Combine::Mean}) {
        view.of = of;
        Grid grid(view);
        draw(grid);
        grid.finish();
        for (std::size_t point = 0; point < points; ++point) {
            curve.levels(of).push_back(combinedRow(grid, points - 1 - point));
        }
        curve.exact = curve.exact && grid.exact();
    }
    for (std::size_t point = 0; point < points; ++point) {
        curve.at.push_back(span.lowHz +
                           span.width() * (static_cast<double>(point) + 0.5) / static_cast<double>(points));
    }
    return curve;
}

Curve Overview::channelOver(std::int32_t code, double hz, const Stretch& time, std::size_t columns) const
{
    Curve curve;
    View view{code, time.fromMs, time.toMs, 0, 0, columns, 1, Combine::Max, true};
    {
        // The middle of the channel, so that its neighbours are not in it.
        const Private::Reading reading(*d);
        const KnownType* type = d->type(code);
        double quarter = 0;
        for (std::size_t i = 0; type != nullptr && i < type->series.size(); ++i) {
            const Series& series = type->series[i].series;
            if (quarter == 0 && series.span.lowHz <= hz && hz <= series.span.highHz && series.range.size() > 0) {
                quarter = std::max(RecTool::channelWidthHz(series.range) / 4, 0.5);
                curve.hz = series.range.frequencyHz(RecTool::nearestChannel(series.range, hz));
            }
        }
        if (quarter == 0) {
            return curve;
        }
        view.lowHz = curve.hz - quarter;
        view.highHz = curve.hz + quarter;
    }
    for (const Combine of : {Combine::Max, Combine::Min, Combine::Mean}) {
        view.of = of;
        Grid grid(view);
        draw(grid, true);
        grid.finish();
        curve.levels(of) = grid.levels();
        curve.exact = curve.exact && grid.exact();
    }
    const double columnMs = (time.toMs - time.fromMs) / static_cast<double>(columns);
    for (std::size_t column = 0; column < columns; ++column) {
        curve.at.push_back(time.fromMs + columnMs * (static_cast<double>(column) + 0.5));
    }
    return curve;
}

}  // namespace RecView
