// Counting bearings by frequency, and keeping one point for each pixel.
#include "bearingpoints.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace RecTool {

namespace {

constexpr double Circle = 360;

}  // namespace

std::vector<double> BearingCount::most(std::size_t number) const
{
    std::vector<std::pair<double, std::uint64_t>> channels(m_bearings.begin(), m_bearings.end());
    std::stable_sort(channels.begin(), channels.end(),
                     [](const auto& a, const auto& b) { return a.second > b.second; });
    channels.resize(std::min(number, channels.size()));
    std::vector<double> frequencies;
    frequencies.reserve(channels.size());
    for (const auto& [frequency, count] : channels) {
        frequencies.push_back(frequency);
    }
    std::sort(frequencies.begin(), frequencies.end());
    return frequencies;
}

std::uint64_t BearingCount::of(double frequencyHz) const
{
    const auto found = m_bearings.find(frequencyHz);
    return found == m_bearings.end() ? 0 : found->second;
}

BearingPoints::BearingPoints(const TimeSpan& times, std::size_t columns, std::size_t rows)
    : m_times(times), m_columns(columns), m_rows(rows), m_taken(columns * rows)
{
}

void BearingPoints::add(double timeMs, double azimuthDeg)
{
    const std::size_t column = m_times.partOf(timeMs, m_columns);
    const double part = azimuthDeg / Circle * static_cast<double>(m_rows);
    const std::size_t row = std::min(static_cast<std::size_t>(std::max(0.0, part)), m_rows - 1);
    if (!m_taken[row * m_columns + column]) {
        m_taken[row * m_columns + column] = true;
        m_points.push_back({timeMs, azimuthDeg});
    }
}

double wrapped(double degrees)
{
    const double rest = std::fmod(degrees, Circle);
    const double positive = rest < 0 ? rest + Circle : rest;
    return positive < Circle ? positive : 0;  // a tiny negative rest rounds up to the whole circle
}

}  // namespace RecTool
