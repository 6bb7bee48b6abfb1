// Binning levels into pixels: the maximum or the mean over channels and time.
#include "spectrumgrid.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace RecTool {

namespace {

constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();

}  // namespace

SpectrumGrid::SpectrumGrid(std::size_t columns, std::size_t rows, const FrequencySpan& frequencies,
                           const TimeSpan& times, Mode mode)
    : m_columns(columns),
      m_rows(rows),
      m_frequencies(frequencies),
      m_times(times),
      m_mode(mode),
      m_rowMs(times.width() / static_cast<double>(rows)),
      m_map({}, frequencies, columns),
      m_inForce(columns, None),
      m_highestOfRow(columns, None),
      m_sum(columns, 0),
      m_weight(columns, 0),
      m_since(columns, times.fromMs),
      m_grid(columns * rows, NotANumber),
      m_now(times.fromMs)
{
}

void SpectrumGrid::update(const values::ChannelRange& range, std::span<const float> cells, double timeMs)
{
    const bool isNothingYet =
        m_cells.empty() && std::none_of(cells.begin(), cells.end(), [](float level) { return std::isfinite(level); });
    if (isNothingYet) {
        return;  // the state that a recording begins with may be filed after what was measured first
    }
    if (timeMs > m_times.fromMs) {
        begin();
        advanceTo(std::max(timeMs, m_now));
    }
    replace(range, cells);
    if (m_begun && m_now == beginOf(m_row)) {
        m_highestOfRow = m_inForce;  // what was before is over where the row begins
    }
}

void SpectrumGrid::replace(const values::ChannelRange& range, std::span<const float> cells)
{
    if (range == m_range) {
        takeCells(cells);
        return;
    }
    m_range = range;
    m_map = ColumnMap(range, m_frequencies, m_columns);
    m_isSeen = m_map.hasChannels();
    m_cells.assign(cells.size(), NotANumber);
    m_levels.assign(cells.size(), None);
    for (std::size_t column = 0; column < m_columns; ++column) {
        refresh(column);  // nothing of the range before is left
    }
    takeCells(cells);
}

void SpectrumGrid::finish()
{
    begin();
    advanceTo(m_times.toMs);
    endRow();
}

/// Finds what changed by comparing blocks of bytes: NaN is then like itself.
void SpectrumGrid::takeCells(std::span<const float> cells)
{
    constexpr std::size_t Block = 64;
    if (!m_isSeen) {
        return;
    }
    for (std::size_t first = 0; first < cells.size(); first += Block) {
        const std::size_t count = std::min(Block, cells.size() - first);
        if (std::memcmp(&cells[first], &m_cells[first], count * sizeof(float)) != 0) {
            std::copy_n(&cells[first], count, &m_cells[first]);
            changed(first, first + count);
        }
    }
}

void SpectrumGrid::changed(std::size_t first, std::size_t end)
{
    for (std::size_t channel = first; channel < end; ++channel) {
        const std::size_t rank = m_map.rankOf(channel);
        m_levels[rank] = std::isfinite(m_cells[channel]) ? m_cells[channel] : None;
        countLevel(rank);
    }
    // Neighbours share columns: where channels ascend, each column is done once.
    const bool isAscending = m_map.ranks().empty();
    std::uint32_t done = 0;
    for (std::size_t channel = first; channel < end; ++channel) {
        const ColumnMap::Interval& columns = m_map.columnsOf(m_map.rankOf(channel));
        for (std::uint32_t column = std::max(columns.begin, done); column < columns.end; ++column) {
            refresh(column);
        }
        done = isAscending ? std::max(done, columns.end) : 0;
    }
}

void SpectrumGrid::countLevel(std::size_t rank)
{
    const float level = m_levels[rank];
    const ColumnMap::Interval& columns = m_map.columnsOf(rank);
    if (level == None || columns.begin == columns.end) {
        return;
    }
    // False for the NaN of the beginning, so that the first level is taken.
    m_lowest = level >= m_lowest ? m_lowest : level;
    m_highest = level <= m_highest ? m_highest : level;
}

/// A column's level has changed.
void SpectrumGrid::refresh(std::size_t column)
{
    if (m_mode == Mode::Mean && m_begun) {
        spend(column, m_now);
    }
    const float level = combined(m_map.channelsOf(column));
    m_inForce[column] = level;
    m_highestOfRow[column] = std::max(m_highestOfRow[column], level);
}

float SpectrumGrid::combined(const ColumnMap::Interval& channels) const
{
    const float* begin = m_levels.data() + channels.begin;
    const float* end = m_levels.data() + channels.end;
    if (m_mode == Mode::Max) {
        float highest = None;
        for (const float* level = begin; level != end; ++level) {
            highest = std::max(highest, *level);
        }
        return highest;
    }
    double sum = 0;
    double count = 0;
    for (const float* level = begin; level != end; ++level) {
        if (*level != None) {
            sum += double{*level};
            ++count;
        }
    }
    return count > 0 ? static_cast<float>(sum / count) : None;
}

/// The span begins with what is in force then.
void SpectrumGrid::begin()
{
    if (m_begun) {
        return;
    }
    m_begun = true;
    m_highestOfRow = m_inForce;
    m_lowest = NotANumber;
    m_highest = NotANumber;
    for (std::size_t rank = 0; rank < m_levels.size(); ++rank) {
        countLevel(rank);
    }
}

void SpectrumGrid::advanceTo(double timeMs)
{
    while (m_row + 1 < m_rows && beginOf(m_row + 1) <= timeMs) {
        m_now = beginOf(m_row + 1);
        endRow();
        ++m_row;
        m_highestOfRow = m_inForce;
    }
    m_now = timeMs;
}

double SpectrumGrid::beginOf(std::size_t row) const
{
    return m_times.fromMs + m_rowMs * static_cast<double>(row);
}

void SpectrumGrid::endRow()
{
    float* row = m_grid.data() + m_row * m_columns;
    if (m_mode == Mode::Max) {
        std::transform(m_highestOfRow.begin(), m_highestOfRow.end(), row,
                       [](float level) { return level == None ? NotANumber : level; });
        return;
    }
    for (std::size_t column = 0; column < m_columns; ++column) {
        spend(column, m_now);
        row[column] = m_weight[column] > 0 ? static_cast<float>(m_sum[column] / m_weight[column]) : NotANumber;
        m_sum[column] = 0;
        m_weight[column] = 0;
    }
}

/// Adds what was in force in a column up to a time to the row's mean.
void SpectrumGrid::spend(std::size_t column, double timeMs)
{
    const double duration = timeMs - m_since[column];
    m_since[column] = timeMs;
    if (m_inForce[column] != None) {
        m_sum[column] += double{m_inForce[column]} * duration;
        m_weight[column] += duration;
    }
}

}  // namespace RecTool
