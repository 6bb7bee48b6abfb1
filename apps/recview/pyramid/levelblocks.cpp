// Sweeps gathered unit by unit, written as blocks in hundredths of a decibel.
#include "levelblocks.h"

#include <algorithm>
#include <cmath>

namespace RecView {

namespace {

constexpr float Infinite = std::numeric_limits<float>::infinity();
constexpr float NoBlockLevel = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t Planes = 3;

/// Levels as hundredths. @return false when one of them is not exactly that: only means may be rounded
bool toHundredths(std::span<const float> levels, std::span<std::int16_t> hundredths, bool mayRound)
{
    constexpr float PerDb = 100;
    constexpr float Most = 32'767;
    bool isExact = true;
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const float steps = levels[i] * PerDb;
        const bool isNone = std::isnan(steps);
        const bool fits = steps >= -Most && steps <= Most;
        const auto rounded = static_cast<std::int32_t>(fits ? steps + (steps < 0 ? -0.5F : 0.5F) : 0.0F);
        const bool isSame = mayRound || static_cast<float>(rounded) / PerDb == levels[i];
        isExact = isExact && (isNone || (fits && isSame));
        hundredths[i] = isNone ? NoHundredths : static_cast<std::int16_t>(rounded);
    }
    return isExact;
}

}  // namespace

void OpenBlock::clear()
{
    std::fill(m_max.begin(), m_max.end(), -Infinite);
    std::fill(m_min.begin(), m_min.end(), Infinite);
    std::fill(m_sum.begin(), m_sum.end(), 0.0);
    m_count.clear();
    m_everywhere = 0;
}

void OpenBlock::makeCounts()
{
    if (m_count.empty()) {
        m_count.assign(units(), 0);
    }
}

void OpenBlock::takeMeasured(std::span<const float> levels, double times)
{
    float* max = m_max.data();
    float* min = m_min.data();
    double* sum = m_sum.data();
    const float* level = levels.data();
    const std::size_t count = levels.size();
    for (std::size_t i = 0; i < count; ++i) {
        max[i] = level[i] > max[i] ? level[i] : max[i];
        min[i] = level[i] < min[i] ? level[i] : min[i];
    }
    for (std::size_t i = 0; i < count; ++i) {
        sum[i] += double{level[i]} * times;
    }
    m_everywhere += times;
}

void OpenBlock::take(std::size_t unit, float level, double times)
{
    touch(unit, level);
    addToSum(unit, level, times);
}

void OpenBlock::touch(std::size_t unit, float level)
{
    m_max[unit] = level > m_max[unit] ? level : m_max[unit];
    m_min[unit] = level < m_min[unit] ? level : m_min[unit];
}

void OpenBlock::addToSum(std::size_t unit, float level, double times)
{
    if (std::isfinite(level)) {
        makeCounts();
        m_sum[unit] += double{level} * times;
        m_count[unit] += times;
    }
}

void OpenBlock::merge(const OpenBlock& other)
{
    for (std::size_t i = 0; i < units(); ++i) {
        m_max[i] = std::max(m_max[i], other.m_max[i]);
        m_min[i] = std::min(m_min[i], other.m_min[i]);
        m_sum[i] += other.m_sum[i];
    }
    if (!other.m_count.empty()) {
        makeCounts();
        for (std::size_t i = 0; i < units(); ++i) {
            m_count[i] += other.m_count[i];
        }
    }
    m_everywhere += other.m_everywhere;
}

std::array<float, 3> OpenBlock::levels(std::size_t first, std::size_t end) const
{
    float max = -Infinite;
    float min = Infinite;
    double sum = 0;
    double count = m_everywhere * static_cast<double>(end - first);
    for (std::size_t i = first; i < end; ++i) {
        max = std::max(max, m_max[i]);
        min = std::min(min, m_min[i]);
        sum += m_sum[i];
        count += m_count.empty() ? 0 : m_count[i];
    }
    constexpr double Least = 0.5;  // less than one level is what rounding left
    const float mean = count > Least ? static_cast<float>(sum / count) : NoBlockLevel;
    return min <= max ? std::array{max, min, mean} : std::array{NoBlockLevel, NoBlockLevel, NoBlockLevel};
}

LevelBlocks::LevelBlocks(Store& store, std::int32_t code, std::uint32_t series, std::size_t units)
    : m_store(store), m_code(code), m_series(series), m_units(units)
{
    m_open.emplace_back().block = OpenBlock(units);
}

std::uint64_t LevelBlocks::rowBytes(std::size_t time) const
{
    std::uint64_t bytes = sizeof(BlockRow);
    for (std::size_t frequency = 0; frequency < BlockLayout::Groups.size(); ++frequency) {
        if (BlockLayout::has(time, frequency, m_units)) {
            bytes += Planes * sizeof(std::int16_t) * BlockLayout::groups(frequency, m_units);
        }
    }
    return bytes;
}

std::uint64_t LevelBlocks::allBytes() const
{
    std::uint64_t bytes = 0;
    for (std::size_t time = 0; time < std::max(m_open.size(), BlockLayout::FirstFineTime + 1); ++time) {
        bytes += rowBytes(time);
    }
    return bytes;
}

std::uint64_t LevelBlocks::endRow(double credit)
{
    std::uint64_t bytes = close(0);
    for (std::size_t time = 1; time < m_open.size() && m_open[time].children >= BlockLayout::RowsPerRow; ++time) {
        if (credit < static_cast<double>(bytes + rowBytes(time))) {
            break;
        }
        bytes += close(time);
    }
    return bytes;
}

std::uint64_t LevelBlocks::endAll()
{
    std::uint64_t bytes = m_open.front().row.sweeps > 0 ? close(0) : 0;
    for (std::size_t time = 1; time < m_open.size() && m_open[time].children > 0; ++time) {
        // A level whose first row this would be shows no more than those below it.
        const bool isFirst = time + 1 == m_open.size() && time + 1 < BlockLayout::TimeLevels;
        if (isFirst && time > BlockLayout::FirstFineTime) {
            break;
        }
        bytes += close(time);
    }
    return bytes;
}

void LevelBlocks::fill(const OpenBlock& block, std::size_t frequency)
{
    const std::size_t groups = BlockLayout::groups(frequency, m_units);
    const std::size_t units = BlockLayout::Groups[frequency];
    for (std::vector<float>& plane : m_planes) {
        plane.resize(groups);
    }
    for (std::size_t group = 0; group < groups; ++group) {
        const auto levels = block.levels(group * units, std::min((group + 1) * units, m_units));
        for (std::size_t plane = 0; plane < Planes; ++plane) {
            m_planes[plane][group] = levels[plane];
        }
    }
}

/// Writes a level's open row, enters it into the one above, and begins a new one.
std::uint64_t LevelBlocks::close(std::size_t time)
{
    if (time + 1 == m_open.size() && m_open.size() < BlockLayout::TimeLevels) {
        m_open.emplace_back().block = OpenBlock(m_units);
    }
    OpenRow& open = m_open[time];
    std::array<std::array<std::vector<std::int16_t>, Planes>, BlockLayout::Groups.size()> hundredths;
    bool areHundredths = true;
    for (std::size_t frequency = 0; frequency < hundredths.size(); ++frequency) {
        if (!BlockLayout::has(time, frequency, m_units)) {
            continue;
        }
        fill(open.block, frequency);
        for (std::size_t plane = 0; plane < Planes; ++plane) {
            hundredths[frequency][plane].resize(m_planes[plane].size());
            areHundredths &= toHundredths(m_planes[plane], hundredths[frequency][plane],
                                          plane == static_cast<std::size_t>(Combine::Mean));
        }
    }
    std::uint64_t bytes = sizeof(BlockRow);
    for (std::size_t frequency = 0; frequency < hundredths.size(); ++frequency) {
        for (std::size_t plane = 0; plane < Planes && !hundredths[frequency][plane].empty(); ++plane) {
            const std::span<const std::int16_t> row = hundredths[frequency][plane];
            m_store.column(BlockLayout::keyOf(BlockKind::Levels, m_code, m_series, time, frequency, plane)).append(row);
            bytes += row.size_bytes();
        }
        if (!areHundredths && !hundredths[frequency][0].empty()) {
            bytes += writeFloats(open.block, time, frequency);
        }
    }
    open.row.floats = areHundredths ? BlockRow::NoFloats : m_floats[time]++;
    Column& rows = m_store.column(BlockLayout::keyOf(BlockKind::Rows, m_code, m_series, time));
    rows.append(open.row);
    if (time + 1 < m_open.size()) {
        enter(open, m_open[time + 1], static_cast<std::uint32_t>(rows.count<BlockRow>()));
    }
    open.row = {};
    open.children = 0;
    open.block.clear();
    return bytes;
}

std::uint64_t LevelBlocks::writeFloats(const OpenBlock& block, std::size_t time, std::size_t frequency)
{
    std::uint64_t bytes = 0;
    fill(block, frequency);
    for (std::size_t plane = 0; plane < Planes; ++plane) {
        const std::span<const float> row = m_planes[plane];
        m_store.column(BlockLayout::keyOf(BlockKind::Floats, m_code, m_series, time, frequency, plane)).append(row);
        bytes += row.size_bytes();
    }
    return bytes;
}

void LevelBlocks::enter(const OpenRow& closed, OpenRow& above, std::uint32_t childEnd)
{
    if (above.row.sweeps == 0) {
        above.row.firstMs = closed.row.firstMs;
        above.row.position = closed.row.position;
    }
    above.row.lastMs = closed.row.lastMs;
    above.row.sweeps += closed.row.sweeps;
    above.row.childEnd = childEnd;
    above.block.merge(closed.block);
    ++above.children;
}

}  // namespace RecView
