// The lowest and highest value of each column, in two bars where angles wrap around.
#include "envelope.h"

#include <algorithm>
#include <cmath>

namespace RecTool {

Envelope::Envelope(std::size_t columns, const TimeSpan& times, std::optional<double> middle)
    : m_times(times), m_middle(middle), m_columns(columns)
{
}

void Envelope::add(double timeMs, double value)
{
    if (timeMs < m_times.fromMs) {
        m_inForce = value;
        m_hasBefore = true;
        return;
    }
    ++m_records;
    if (!m_begun && m_hasBefore && timeMs > m_times.fromMs) {
        put({m_times.fromMs, m_inForce});
    }
    put({timeMs, value});
}

void Envelope::finish()
{
    if (!m_begun && m_hasBefore) {
        put({m_times.fromMs, m_inForce});
    }
    if (m_begun) {
        keepInForceTo(m_columns.size() - 1);
    }
}

void Envelope::put(const Point& point)
{
    const std::size_t column = std::max(m_column, m_times.partOf(point.timeMs, m_columns.size()));
    const double before = m_begun ? m_inForce : std::numeric_limits<double>::quiet_NaN();
    if (m_begun) {
        // The value before is in force up to here, so in this column too.
        keepInForceTo(column);
    }
    m_begun = true;
    m_column = column;
    m_inForce = point.value;
    count(column);
    join(column, before);
    if (++m_values <= m_columns.size()) {
        m_points.push_back(point);
    } else {
        m_points.clear();
    }
}

void Envelope::keepInForceTo(std::size_t column)
{
    for (; m_column < column; ++m_column) {
        count(m_column + 1);
    }
}

void Envelope::count(std::size_t column)
{
    if (!std::isfinite(m_inForce)) {
        return;
    }
    const auto widen = [this](double& lowest, double& highest) {
        lowest = m_inForce >= lowest ? lowest : m_inForce;  // false for NaN
        highest = m_inForce <= highest ? highest : m_inForce;
    };
    widen(m_columns[column].lowest, m_columns[column].highest);
    widen(m_lowest, m_highest);
    if (m_middle) {
        Bar& half = m_columns[column].halves[m_inForce >= *m_middle ? 1 : 0];
        widen(half.lowest, half.highest);
    }
}

void Envelope::join(std::size_t column, double before)
{
    const bool areNumbers = std::isfinite(before) && std::isfinite(m_inForce);
    if (m_middle && areNumbers && (before < *m_middle) != (m_inForce < *m_middle) && !passesSeam(before, m_inForce)) {
        m_columns[column].joined = true;
    }
}

bool Envelope::passesSeam(double before, double next) const
{
    constexpr double HalfCircle = 180;
    return m_middle && std::abs(next - before) > HalfCircle;
}

std::vector<Envelope::Bar> Envelope::bars(std::size_t column) const
{
    const Column& all = m_columns[column];
    std::vector<Bar> bars;
    if (!m_middle || all.joined) {
        bars.push_back(all);
    } else {
        bars.assign(all.halves.begin(), all.halves.end());
    }
    bars.erase(std::remove_if(bars.begin(), bars.end(), [](const Bar& bar) { return std::isnan(bar.lowest); }),
               bars.end());
    return bars;
}

}  // namespace RecTool
