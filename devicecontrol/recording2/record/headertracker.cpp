// Following mode, frequency, IF span and levels, by the type id of each value.
#include "headertracker.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <values/selection.h>
#include <values/value.h>

#include "recordtypetable.h"

namespace Recording2 {

namespace {

// What is not known yet, or too large for a header that readers take, is no frequency.
bool isFrequency(double number)
{
    return std::abs(number) <= static_cast<double>(std::numeric_limits<float>::max());
}

// A number that is none, and 0, give no range.
float known(double number)
{
    return isFrequency(number) ? static_cast<float>(number) : 0.0F;
}

// Truncated; a number that no level field can hold gives the nearest it can.
std::int32_t truncated(double number)
{
    constexpr double Low = std::numeric_limits<std::int32_t>::min();
    constexpr double High = std::numeric_limits<std::int32_t>::max();
    return std::isnan(number) ? 0 : static_cast<std::int32_t>(std::clamp(number, Low, High));
}

}  // namespace

void HeaderRange::putInto(Format::HeaderRecord& header) const
{
    header.startFrequencyHz = startFreq.value_or(header.startFrequencyHz);
    header.stopFrequencyHz = stopFreq.value_or(header.stopFrequencyHz);
    header.minLevel = minLevel.value_or(header.minLevel);
    header.maxLevel = maxLevel.value_or(header.maxLevel);
}

IfMode ifModeOf(std::int32_t modeKey)
{
    switch (modeKey) {
        case 3:
        case 23:
        case 27:
        case 42:
            return IfMode::Yes;
        case 24:
            return IfMode::DependsOnAntenna;
        default:
            return IfMode::No;
    }
}

bool HeaderTracker::take(std::int32_t typeId, const values::ValueBase& value, bool anew)
{
    switch (typeId) {
        case StartFreq:
        case StopFreq:
            takeScan(typeId, value, anew);
            return false;
        case Frequency:
            if (takeFrequency(value) && !anew && m_ifSpan != 0 && m_hasIfRange(m_modeKey)) {
                computeRange();
            }
            return false;
        case DrvCommands:
            return takeModeKey(value);
        case IfSpan:
            if (takeIfSpan(value)) {
                computeRange();
                return true;
            }
            return false;
        case StartLevel:
        case StopLevel:
        case RfYLimit:
            takeLevels(typeId, value);
            return false;
        default:
            return false;
    }
}

void HeaderTracker::forgetFrequencies()
{
    m_range.startFreq.reset();
    m_range.stopFreq.reset();
}

void HeaderTracker::takeScan(std::int32_t typeId, const values::ValueBase& value, bool anew)
{
    if (const auto* numeric = dynamic_cast<const values::ValueNumeric<double>*>(&value)) {
        std::optional<float>& limit = typeId == StartFreq ? m_range.startFreq : m_range.stopFreq;
        if (anew) {
            limit.reset();
        }
        if (isFrequency(numeric->GetValue())) {
            const auto number = static_cast<float>(numeric->GetValue());
            const float before = limit.value_or(number);
            limit = typeId == StartFreq ? std::min(before, number) : std::max(before, number);
        }
    }
}

bool HeaderTracker::takeFrequency(const values::ValueBase& value)
{
    const auto* frequency = dynamic_cast<const values::ValueNumericWithOffset<double>*>(&value);
    if (frequency == nullptr) {
        return false;
    }
    m_frequency = known(frequency->GetValue());
    m_frequencyOffset = isFrequency(frequency->GetOffset()) ? frequency->GetOffset() : 0;
    return isFrequency(frequency->GetValue());
}

bool HeaderTracker::takeModeKey(const values::ValueBase& value)
{
    const auto* commands = dynamic_cast<const values::ValueSelection*>(&value);
    if (commands == nullptr) {
        return false;
    }
    m_modeKey = commands->GetCurrentKey();
    return true;
}

// True when the range is to follow the span.
bool HeaderTracker::takeIfSpan(const values::ValueBase& value)
{
    const auto* span = dynamic_cast<const values::ValueSelection*>(&value);
    if (span == nullptr || m_frequency == 0 || !m_hasIfRange(m_modeKey)) {
        return false;
    }
    m_ifSpan = known(span->GetCurrentValue());
    return m_ifSpan >= 1;
}

void HeaderTracker::takeLevels(std::int32_t typeId, const values::ValueBase& value)
{
    const auto* number = dynamic_cast<const values::ValueNumeric<double>*>(&value);
    if (number == nullptr) {
        return;
    }
    if (typeId == StartLevel) {
        m_range.minLevel = truncated(number->GetValue());
    } else if (typeId == StopLevel) {
        m_range.maxLevel = truncated(number->GetValue());
    } else {
        m_range.minLevel = truncated(number->GetLowerLimit());
        m_range.maxLevel = truncated(number->GetUpperLimit());
    }
}

void HeaderTracker::computeRange()
{
    const double centre = static_cast<double>(m_frequency) + m_frequencyOffset;
    const double half = static_cast<double>(m_ifSpan) / 2;
    m_range.startFreq = known(centre - half);
    m_range.stopFreq = known(centre + half);
}

}  // namespace Recording2
