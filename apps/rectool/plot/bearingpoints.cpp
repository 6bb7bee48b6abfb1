// Finding the busiest frequencies, and keeping one point for each pixel.
#include "bearingpoints.h"

#include <algorithm>
#include <cmath>

namespace RecTool {

namespace {

constexpr double Circle = 360;

}  // namespace

std::vector<double> busiest(const BearingCounts& counts, std::size_t number)
{
    std::vector<double> frequencies;
    frequencies.reserve(counts.size());
    for (const auto& [hz, count] : counts) {
        frequencies.push_back(hz);
    }
    std::stable_sort(frequencies.begin(), frequencies.end(),
                     [&](double a, double b) { return counts.at(a) > counts.at(b); });
    frequencies.resize(std::min(number, frequencies.size()));
    std::sort(frequencies.begin(), frequencies.end());
    return frequencies;
}

void BearingPoints::add(double timeMs, double azimuthDeg)
{
    const std::size_t row = TimeSpan{0, Circle}.partOf(azimuthDeg, m_rows);
    const std::size_t pixel = row * m_columns + m_times.partOf(timeMs, m_columns);
    if (!m_taken[pixel]) {
        m_taken[pixel] = true;
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
