// Which blocks a picture is made of, and which pixels they count for.
#include "blockpainter.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "units.h"

namespace RecView {

namespace {

constexpr float NotPainted = std::numeric_limits<float>::quiet_NaN();

template <typename Value>
constexpr Value Nothing = NoHundredths;
template <>
constexpr float Nothing<float> = NotPainted;

inline bool isNothing(std::int16_t level)
{
    return level == NoHundredths;
}

inline bool isNothing(float level)
{
    return std::isnan(level);
}

inline float inDb(std::int16_t level)
{
    constexpr float PerDb = 100;
    return static_cast<float>(level) / PerDb;
}

inline float inDb(float level)
{
    return level;
}

}  // namespace

BlockPainter::BlockPainter(const Store& store, const KnownType& type, const KnownSeries& series,
                           const std::vector<OpenRow>* open, Grid& grid)
    : m_store(store),
      m_type(type),
      m_series(series.series),
      m_holdMs(longestHold(series.series.usualMs)),
      m_againMs(longestHold(series.againMs)),
      m_open(open),
      m_grid(grid),
      m_levels(grid.view().rows, NotPainted),
      m_weights(grid.view().rows)
{
}

const Column* BlockPainter::rowsOf(std::size_t time) const
{
    return m_store.find(BlockLayout::keyOf(BlockKind::Rows, m_series.code, m_series.number, time));
}

/// The row that a moment lies in, or the first one after it.
std::uint64_t BlockPainter::firstRow(const Column& rows, double ms) const
{
    const std::uint64_t behind = endRow(rows, ms);
    return behind == 0 ? 0 : behind - 1;
}

/// The first row that begins after a moment.
std::uint64_t BlockPainter::endRow(const Column& rows, double ms) const
{
    return rows.partitionPoint<BlockRow>([ms](const BlockRow& row) { return row.firstMs <= ms; });
}

BlockPainter::Level BlockPainter::choose(bool ofSingleUnits) const
{
    constexpr double MostBlocks = 6e6;  // of a picture; more take too long
    constexpr double Halves = 2;
    const View& view = m_grid.view();
    const double pixelMs = (view.toMs - view.fromMs) / static_cast<double>(view.columns);
    const double pixelHz = (view.highHz - view.lowHz) / static_cast<double>(view.rows);
    const auto units = static_cast<double>(m_spans.size());
    const double unitHz = std::max(m_series.span.width() / units, pixelHz * 1e-6);
    const double shownMs = std::min(view.toMs, m_series.lastMs + m_holdMs) - std::max(view.fromMs, m_series.firstMs);
    Level best;
    double bestBlur = std::numeric_limits<double>::infinity();
    double bestCost = bestBlur;
    for (std::size_t time = 0; time < BlockLayout::TimeLevels; ++time) {
        const Column* rows = rowsOf(time);
        const double count =
            rows == nullptr ? 0 : static_cast<double>(endRow(*rows, view.toMs) - firstRow(*rows, view.fromMs));
        if (count == 0 && time > 0) {
            continue;
        }
        const double blockMs = std::max(shownMs / std::max(count, 1.0), pixelMs * 1e-3);
        for (std::size_t frequency = 0; frequency < BlockLayout::Groups.size(); ++frequency) {
            if (!BlockLayout::has(time, frequency, m_spans.size())) {
                continue;
            }
            const double blockHz = unitHz * static_cast<double>(BlockLayout::Groups[frequency]);
            double blur = std::max(1.0, Halves * blockMs / pixelMs) * std::max(1.0, Halves * blockHz / pixelHz);
            const double cost = static_cast<double>(view.columns * view.rows) * (pixelMs / blockMs) *
                                std::min(pixelHz / blockHz, static_cast<double>(m_spans.size()));
            blur *= cost > MostBlocks ? 1e6 * cost : 1;
            blur *= ofSingleUnits && frequency > 0 ? 1e3 : 1;
            if (blur < bestBlur || (blur == bestBlur && cost < bestCost)) {
                best = {time, frequency};
                bestBlur = blur;
                bestCost = cost;
            }
        }
    }
    return best;
}

/// Finds the rows of pixels for the groups of a level of frequency, channel by channel in lists, whose gaps stay free.
void BlockPainter::place(std::size_t frequency)
{
    if (m_placedFor == frequency + 1) {
        return;
    }
    m_placedFor = frequency + 1;
    m_places.clear();
    m_lowRow = m_grid.view().rows;
    m_highRow = 0;
    const View& view = m_grid.view();
    const double perHz = static_cast<double>(view.rows) / (view.highHz - view.lowHz);
    const std::size_t units = BlockLayout::Groups[frequency];
    const std::size_t stride = m_series.range.isList() ? 1 : units;
    for (std::size_t unit = m_firstUnit / stride * stride; unit < m_endUnit; unit += stride) {
        const std::size_t last = std::min(unit + stride, m_spans.size()) - 1;
        const auto [low, high] = Grid::pixels((m_spans[unit].lowHz - view.lowHz) * perHz,
                                              (m_spans[last].highHz - view.lowHz) * perHz, view.rows);
        if (low == high) {
            continue;
        }
        const auto group = static_cast<std::uint32_t>(unit / units);
        const Place place{group, static_cast<std::uint32_t>(low), static_cast<std::uint32_t>(high),
                          static_cast<float>(last + 1 - unit)};
        m_lowRow = std::min(m_lowRow, low);
        m_highRow = std::max(m_highRow, high);
        Place* before = m_places.empty() ? nullptr : &m_places.back();
        if (before != nullptr && before->group == group && before->endRow >= place.firstRow) {
            before->endRow = std::max(before->endRow, place.endRow);
            before->weight += place.weight;
        } else {
            m_places.push_back(place);
        }
    }
}

void BlockPainter::paint(bool ofSingleUnits)
{
    const View& view = m_grid.view();
    const bool isSeen = m_series.sweeps > 0 && m_series.firstMs < view.toMs &&
                        m_series.lastMs + m_againMs > view.fromMs && m_series.span.lowHz <= view.highHz &&
                        m_series.span.highHz >= view.lowHz;
    if (!isSeen) {
        return;
    }
    m_spans = unitSpans(m_series.range);
    const auto first = std::partition_point(m_spans.begin(), m_spans.end(),
                                            [&](const auto& span) { return span.highHz < view.lowHz; });
    const auto end =
        std::partition_point(first, m_spans.end(), [&](const auto& span) { return span.lowHz <= view.highHz; });
    m_firstUnit = static_cast<std::size_t>(first - m_spans.begin());
    m_endUnit = static_cast<std::size_t>(end - m_spans.begin());
    Level level = choose(ofSingleUnits);
    const Column* rows = rowsOf(level.time);
    std::uint64_t from = rows == nullptr ? 0 : firstRow(*rows, view.fromMs);
    // What is not yet in rows of a level is in those of the levels below.
    for (;;) {
        if (rows != nullptr) {
            paintRows(level, from);
        }
        if (level.time == 0) {
            break;
        }
        const std::uint64_t count = rows == nullptr ? 0 : rows->count<BlockRow>();
        const std::uint64_t behind = count == 0 ? 0 : rows->at<BlockRow>(count - 1).childEnd;
        --level.time;
        if (!BlockLayout::has(level.time, level.frequency, m_spans.size())) {
            ++level.frequency;
        }
        rows = rowsOf(level.time);
        from = rows == nullptr ? 0 : std::max(behind, firstRow(*rows, view.fromMs));
    }
    if (m_open != nullptr && m_open->front().row.sweeps > 0) {
        paintOpen(m_open->front());
    }
}

void BlockPainter::paintRows(const Level& level, std::uint64_t first)
{
    const Column& rows = *rowsOf(level.time);
    const std::uint64_t end = endRow(rows, m_grid.view().toMs);
    const std::size_t groups = BlockLayout::groups(level.frequency, m_spans.size());
    constexpr std::size_t PieceBytes = std::size_t{1} << 20U;
    const std::uint64_t perPiece = std::max<std::size_t>(PieceBytes / (groups * sizeof(std::int16_t)), 1);
    place(level.frequency);
    std::vector<BlockRow> piece;
    while (first < end && !m_places.empty()) {
        const std::uint64_t count = std::min(end - first, perPiece);
        // One more tells where the last one ends.
        piece.resize(static_cast<std::size_t>(std::min(count + 1, rows.count<BlockRow>() - first)));
        if (!rows.read(first, std::span(piece))) {
            return;
        }
        if (piece.size() == count) {
            BlockRow behind;
            behind.firstMs = firstMsAfter(level, first + count - 1);
            piece.push_back(behind);
        }
        paintStored(level, first, piece);
        first += count;
    }
}

/// Where the row after the last one of a level begins; infinite where there is none.
double BlockPainter::firstMsAfter(const Level& level, std::uint64_t row) const
{
    std::uint64_t behind = rowsOf(level.time)->at<BlockRow>(row).childEnd;
    for (std::size_t time = level.time; time-- > 0;) {
        const Column* rows = rowsOf(time);
        if (rows != nullptr && behind < rows->count<BlockRow>()) {
            return rows->at<BlockRow>(behind).firstMs;
        }
        const std::uint64_t count = rows == nullptr ? 0 : rows->count<BlockRow>();
        behind = count == 0 ? 0 : rows->at<BlockRow>(count - 1).childEnd;
    }
    const bool isOpen = m_open != nullptr && m_open->front().row.sweeps > 0;
    return isOpen ? m_open->front().row.firstMs : std::numeric_limits<double>::infinity();
}

/// @param rows those to be painted, and one that tells where the last of them ends
void BlockPainter::paintStored(const Level& level, std::uint64_t first, std::span<const BlockRow> rows)
{
    const auto column = [&](BlockKind kind) {
        const auto plane = static_cast<std::size_t>(m_grid.view().of);
        return m_store.find(
            BlockLayout::keyOf(kind, m_series.code, m_series.number, level.time, level.frequency, plane));
    };
    const Column* levels = column(BlockKind::Levels);
    const Column* floats = column(BlockKind::Floats);
    const std::size_t groups = BlockLayout::groups(level.frequency, m_spans.size());
    std::vector<std::int16_t> hundredths(groups * (rows.size() - 1));
    std::vector<float> exact(groups);
    if (levels == nullptr || !levels->read(first * groups, std::span(hundredths))) {
        return;
    }
    for (std::size_t i = 0; i + 1 < rows.size(); ++i) {
        if (rows[i].floats == BlockRow::NoFloats) {
            fold(std::span<const std::int16_t>(hundredths).subspan(i * groups, groups));
        } else if (floats != nullptr && floats->read(rows[i].floats * std::uint64_t{groups}, std::span(exact))) {
            fold(std::span<const float>(exact));
        } else {
            continue;
        }
        const bool isLast = std::isinf(rows[i + 1].firstMs);
        enter(rows[i], isLast ? std::nullopt : std::optional(rows[i + 1].firstMs));
    }
}

void BlockPainter::paintOpen(const OpenRow& open)
{
    constexpr std::size_t Frequency = 1;
    place(Frequency);
    std::vector<float> groups(BlockLayout::groups(Frequency, m_spans.size()));
    for (std::size_t group = 0; group < groups.size(); ++group) {
        const std::size_t first = group * BlockLayout::Groups[Frequency];
        const auto levels = open.block.levels(first, std::min(first + BlockLayout::Groups[Frequency], m_spans.size()));
        groups[group] = levels[static_cast<std::size_t>(m_grid.view().of)];
    }
    fold(std::span<const float>(groups));
    enter(open.row, std::nullopt);
}

/// Enters what was folded: up to the next row, but not over a pause.
void BlockPainter::enter(const BlockRow& row, std::optional<double> next)
{
    const double hold = row.lastMs + m_holdMs;
    Stretch stretch{row.firstMs, hold};
    if (next && *next - row.lastMs <= m_againMs) {
        stretch.toMs = *next;
    } else if (next) {
        stretch.toMs = std::min(hold, *next);
    }
    const auto paused = std::lower_bound(m_type.pauses.begin(), m_type.pauses.end(), stretch.fromMs,
                                         [](const Pause& pause, double ms) { return pause.toMs <= ms; });
    const std::pair<std::size_t, std::size_t> rows{m_lowRow, m_highRow};
    if (paused == m_type.pauses.end() || paused->fromMs >= stretch.toMs) {
        m_grid.add(stretch, m_levels, rows, static_cast<float>(row.sweeps));
        return;
    }
    for (const Stretch& covered : m_type.covered(stretch)) {
        const Stretch part{std::max(covered.fromMs, stretch.fromMs), std::min(covered.toMs, stretch.toMs)};
        if (part.fromMs < part.toMs) {
            m_grid.add(part, m_levels, rows, static_cast<float>(row.sweeps));
        }
    }
}

template <typename Value>
void BlockPainter::fold(std::span<const Value> groups)
{
    switch (m_grid.view().of) {
        case Combine::Max:
            foldBest(groups, [](Value a, Value b) { return a > b; });
            return;
        case Combine::Min:
            foldBest(groups, [](Value a, Value b) { return a < b; });
            return;
        case Combine::Mean:
            foldMean(groups);
            return;
    }
}

template <typename Value, typename Better>
void BlockPainter::foldBest(std::span<const Value> groups, Better better)
{
    std::vector<Value> best(m_levels.size(), Nothing<Value>);
    for (const Place& place : m_places) {
        const Value level = groups[place.group];
        if (isNothing(level)) {
            continue;
        }
        for (std::uint32_t row = place.firstRow; row < place.endRow; ++row) {
            best[row] = isNothing(best[row]) || better(level, best[row]) ? level : best[row];
        }
    }
    for (std::size_t row = m_lowRow; row < m_highRow; ++row) {
        m_levels[row] = isNothing(best[row]) ? NotPainted : inDb(best[row]);
    }
}

template <typename Value>
void BlockPainter::foldMean(std::span<const Value> groups)
{
    std::fill(m_levels.begin(), m_levels.end(), 0.0F);
    std::fill(m_weights.begin(), m_weights.end(), 0.0F);
    for (const Place& place : m_places) {
        const Value level = groups[place.group];
        if (isNothing(level)) {
            continue;
        }
        for (std::uint32_t row = place.firstRow; row < place.endRow; ++row) {
            m_levels[row] += inDb(level) * place.weight;
            m_weights[row] += place.weight;
        }
    }
    for (std::size_t row = m_lowRow; row < m_highRow; ++row) {
        m_levels[row] = m_weights[row] > 0 ? m_levels[row] / m_weights[row] : NotPainted;
    }
}

}  // namespace RecView
