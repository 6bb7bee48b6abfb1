// Which series a sweep belongs to, what of it is entered when, and when rows of blocks end.
#include "sweeptracker.h"

namespace RecView {

namespace {

constexpr double ShareOfRecords = 0.15;  // of their bytes may become blocks
constexpr std::size_t MixedUnits = 2048;
constexpr std::size_t MostPauses = 65'536;

bool areAllFinite(std::span<const float> levels)
{
    float sum = 0;
    for (const float level : levels) {
        sum += level * 0;  // NaN for what is infinite or none
    }
    return sum == 0;
}

/// Twice as wide as two spans together, so that not every new range makes it wider.
values::ChannelRange gridAround(const RecTool::FrequencySpan& a, const RecTool::FrequencySpan& b)
{
    const double low = std::min(a.lowHz, b.lowHz);
    const double high = std::max(a.highHz, b.highHz);
    const double width = std::clamp((high - low) * 2, 1.0, 1e300);
    const double step = width / static_cast<double>(MixedUnits);
    return values::ChannelRange::Even(low / 2 + high / 2 - width / 2 + step / 2, step, MixedUnits);
}

}  // namespace

SweepTracker::SweepTracker(Store& store, std::int32_t code, KnownType& type, SeriesLimits& limits)
    : m_store(store), m_code(code), m_type(type), m_limits(limits)
{
}

void SweepTracker::takeWhole(const TrackedSweep& sweep, const std::vector<float>& levels, bool allMeasured,
                             const LevelMap& before)
{
    settle(&before);
    pauseBefore(sweep.momentMs, &before);
    begin(sweep);
    if (allMeasured && m_units->isIdentity()) {
        m_series[m_current]->blocks.open().block.takeMeasured(levels, 1);
    } else {
        enter(levels, 1);
    }
    end(sweep, nullptr);
}

void SweepTracker::prepare(const std::string& text, double momentMs, const LevelMap* before)
{
    pauseBefore(momentMs, before);
    m_isPartial = before != nullptr && m_units != nullptr && readWrittenCells(text, before->size(), m_runs);
    if (!m_isPartial) {
        settle(before);
        return;
    }
    m_before.clear();
    const std::span<const float> cells = before->GetCells();
    for (const auto& [first, end] : m_runs) {
        m_before.insert(m_before.end(), cells.begin() + static_cast<std::ptrdiff_t>(first),
                        cells.begin() + static_cast<std::ptrdiff_t>(end));
    }
}

void SweepTracker::take(const TrackedSweep& sweep, const LevelMap& after)
{
    if (after.size() == 0) {
        return;
    }
    if (!m_isPartial) {
        useRange(after.GetChannelRange(), sweep.momentMs);
    }
    begin(sweep);
    if (m_isPartial && m_streak > 0) {
        OpenBlock& block = m_series[m_current]->blocks.open().block;
        const std::span<const float> cells = after.GetCells();
        auto old = m_before.begin();
        for (const auto& [first, end] : m_runs) {
            for (std::size_t channel = first; channel < end; ++channel, ++old) {
                const auto [unit, behind] = m_units->of(channel);
                for (std::size_t i = unit; i < behind; ++i) {
                    block.touch(i, *old);
                    block.addToSum(i, *old, m_streak);
                    block.addToSum(i, cells[channel], -m_streak);
                }
            }
        }
    }
    ++m_streak;
    if (!m_isPartial) {
        settle(&after);
    }
    end(sweep, &after);
}

void SweepTracker::settle(const LevelMap* map)
{
    if (m_streak > 0 && map != nullptr && m_units != nullptr && map->size() == m_units->channels()) {
        const std::span<const float> cells = map->GetCells();
        if (m_units->isIdentity() && areAllFinite(cells)) {
            m_series[m_current]->blocks.open().block.takeMeasured(cells, m_streak);
        } else {
            enter(cells, m_streak);
        }
    }
    m_streak = 0;
}

void SweepTracker::refresh()
{
    for (std::size_t i = 0; i < m_series.size(); ++i) {
        m_type.series[i].series.usualMs = m_series[i]->toNext.ms();
        m_type.series[i].againMs = m_series[i]->again.ms();
    }
}

void SweepTracker::finish(const LevelMap* map)
{
    settle(map);
    refresh();
    for (const auto& tracked : m_series) {
        LevelBlocks& blocks = tracked->blocks;
        if (m_credit >= static_cast<double>(blocks.allBytes())) {
            m_credit -= static_cast<double>(blocks.endAll());
        } else if (blocks.open().row.sweeps > 0) {
            m_credit -= static_cast<double>(blocks.endRow(m_credit));
        }
    }
}

const std::vector<OpenRow>& SweepTracker::openRows(std::uint32_t series) const
{
    return m_series[series]->blocks.openRows();
}

/// A row does not reach over a pause, where there is room on disk to end it before.
void SweepTracker::pauseBefore(double momentMs, const LevelMap* map)
{
    if (m_series.empty()) {
        return;
    }
    Tracked& tracked = *m_series[m_current];
    const Series& series = m_type.series[m_current].series;
    const double distance = momentMs - series.lastMs;
    constexpr double LeastMs = 1000;
    if (distance > LeastMs && series.sweeps > 0 && distance > longestHold(tracked.again.ms()) &&
        tracked.blocks.open().row.sweeps > 0 && m_credit >= static_cast<double>(tracked.blocks.allBytes())) {
        settle(map);
        m_credit -= static_cast<double>(tracked.blocks.endAll());
    }
}

void SweepTracker::begin(const TrackedSweep& sweep)
{
    KnownSeries& known = m_type.series[m_current];
    Tracked& tracked = *m_series[m_current];
    if (m_type.sweeps > 0) {
        m_series[m_type.lastSeries]->toNext.add(sweep.momentMs - m_type.lastMs);
        notePause(sweep.momentMs);
    }
    if (known.series.sweeps > 0) {
        tracked.again.add(sweep.momentMs - known.series.lastMs);
    }
    m_type.firstMs = m_type.sweeps == 0 ? sweep.momentMs : m_type.firstMs;
    known.series.firstMs = known.series.sweeps == 0 ? sweep.momentMs : known.series.firstMs;
    m_type.lastMs = known.series.lastMs = sweep.momentMs;
    m_type.lastSeries = m_current;
    ++m_type.sweeps;
    ++known.series.sweeps;
    BlockRow& row = tracked.blocks.open().row;
    if (row.sweeps == 0) {
        row.firstMs = sweep.momentMs;
        row.position = sweep.position;
    }
    row.lastMs = sweep.momentMs;
    ++row.sweeps;
}

void SweepTracker::end(const TrackedSweep& sweep, const LevelMap* map)
{
    LevelBlocks& blocks = m_series[m_current]->blocks;
    m_credit += static_cast<double>(sweep.bytes) * ShareOfRecords;
    m_bytesOfRow += sweep.bytes;
    // Ending a row costs a look at every cell, which its sweeps must be worth.
    constexpr std::size_t CellsPerByte = 4;
    const bool isWorthIt = m_bytesOfRow * CellsPerByte >= m_units->channels();
    if (isWorthIt && blocks.open().row.sweeps >= BlockLayout::LeastSweeps &&
        m_credit >= static_cast<double>(blocks.rowBytes())) {
        if (m_streak > 0) {
            settle(map);
        }
        m_credit -= static_cast<double>(blocks.endRow(m_credit));
        m_bytesOfRow = 0;
    }
}

void SweepTracker::notePause(double momentMs)
{
    if (momentMs - m_type.lastMs <= m_leastPauseMs) {
        return;
    }
    m_type.pauses.push_back({m_type.lastMs, momentMs, m_type.lastSeries, 0});
    while (m_type.pauses.size() > MostPauses) {
        m_leastPauseMs *= 2;
        std::erase_if(m_type.pauses, [&](const Pause& pause) { return pause.toMs - pause.fromMs <= m_leastPauseMs; });
    }
}

void SweepTracker::useRange(const values::ChannelRange& range, double momentMs)
{
    if (m_units != nullptr && range == m_range) {
        return;
    }
    const std::uint32_t before = m_current;
    const bool isFirst = m_units == nullptr;
    m_current = seriesOf(range);
    m_range = range;
    const Series& series = m_type.series[m_current].series;
    m_units = series.isMixed ? std::make_unique<Units>(range, series.range) : std::make_unique<Units>(range);
    if ((isFirst || before != m_current) && m_limits.changes > 0) {
        --m_limits.changes;
        m_type.changes.push_back({momentMs, m_current, 0});
    }
}

std::uint32_t SweepTracker::seriesOf(const values::ChannelRange& range)
{
    for (const KnownSeries& known : m_type.series) {
        if (!known.series.isMixed && known.series.range == range) {
            return known.series.number;
        }
    }
    const std::size_t units = Units(range).count();
    const bool isLongList = range.isList() && range.size() > Units::MostUnits;
    if (m_limits.series == 0 || units > m_limits.units || isLongList) {
        return mixedSeries(range);
    }
    --m_limits.series;
    m_limits.units -= units;
    return newSeries(range, false);
}

std::uint32_t SweepTracker::newSeries(const values::ChannelRange& range, bool isMixed)
{
    const auto number = static_cast<std::uint32_t>(m_series.size());
    m_series.push_back(std::make_unique<Tracked>(m_store, m_code, number, Units(range)));
    m_type.series.push_back({{m_code, number, range, isMixed, wholeSpan(range), 0, 0, 0, 0}, 0});
    return number;
}

/// The newest mixed series, or a wider one where the range does not lie in it.
std::uint32_t SweepTracker::mixedSeries(const values::ChannelRange& range)
{
    const auto newest = std::find_if(m_type.series.rbegin(), m_type.series.rend(),
                                     [](const KnownSeries& known) { return known.series.isMixed; });
    const RecTool::FrequencySpan wanted = wholeSpan(range);
    if (newest == m_type.series.rend()) {
        return newSeries(gridAround(wanted, wanted), true);
    }
    const RecTool::FrequencySpan span = newest->series.span;
    if ((span.lowHz <= wanted.lowHz && wanted.highHz <= span.highHz) || m_limits.mixed == 0) {
        return newest->series.number;
    }
    --m_limits.mixed;
    return newSeries(gridAround(span, wanted), true);
}

void SweepTracker::enter(std::span<const float> levels, double times)
{
    OpenBlock& block = m_series[m_current]->blocks.open().block;
    for (std::size_t channel = 0; channel < levels.size(); ++channel) {
        const auto [unit, behind] = m_units->of(channel);
        for (std::size_t i = unit; i < behind; ++i) {
            block.take(i, levels[channel], times);
        }
    }
}

}  // namespace RecView
