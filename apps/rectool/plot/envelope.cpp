#include "envelope.h"

#include <cmath>

namespace RecTool {

Envelope::Envelope(std::size_t columns, const TimeSpan& times) : m_times(times), m_columns(columns)
{
}

void Envelope::add(std::uint64_t timeMs, double value)
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
    const std::size_t column = m_times.partOf(point.timeMs, m_columns.size());
    if (m_begun) {
        // The value before is in force up to here, so in this column too.
        keepInForceTo(column);
    }
    m_begun = true;
    m_column = column;
    m_inForce = point.value;
    count(column);
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
}

}  // namespace RecTool
