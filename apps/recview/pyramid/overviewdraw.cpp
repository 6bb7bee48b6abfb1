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
