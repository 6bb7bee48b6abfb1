// Following mode, frequency, IF span and levels as a recorder does for its header.
#include "headerfields.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include <values/selection.h>
#include <values/value.h>

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

// Truncated; a number that no level field can hold gives the nearest it can.
std::int32_t truncated(double number)
{
    constexpr double Low = std::numeric_limits<std::int32_t>::min();
    constexpr double High = std::numeric_limits<std::int32_t>::max();
    return std::isnan(number) ? 0 : static_cast<std::int32_t>(std::clamp(number, Low, High));
}

std::optional<float> numberOf(const values::ValueBase& value)
{
    const auto* number = dynamic_cast<const values::ValueNumeric<double>*>(&value);
    return number == nullptr ? std::nullopt : std::optional(static_cast<float>(number->GetValue()));
}

}  // namespace

HeaderFields::Field HeaderFields::fieldOf(std::int32_t code) const
{
    constexpr std::array<std::pair<const char*, Field>, 8> Keywords = {{{"DRVCOMMANDS", Field::Mode},
                                                                        {"FREQUENCY", Field::Frequency},
                                                                        {"IFSPAN", Field::IfSpan},
                                                                        {"RFYLIMIT", Field::RfYLimit},
                                                                        {"STARTFREQ", Field::StartFreq},
                                                                        {"STARTLEVEL", Field::StartLevel},
                                                                        {"STOPFREQ", Field::StopFreq},
                                                                        {"STOPLEVEL", Field::StopLevel}}};
    const Inspection::TypeEntry* type = m_names.find(code);
    const auto* found = std::find_if(Keywords.begin(), Keywords.end(), [&](const auto& keyword) {
        return type != nullptr && type->keyword == keyword.first;
    });
    return found == Keywords.end() ? Field::None : found->second;
}

void HeaderFields::follow(const Inspection::Record& record)
{
    const Field field = fieldOf(record.code);
    const values::ValueBase* value = field == Field::None ? nullptr : m_recorded.apply(record);
    if (value != nullptr) {
        take(field, *value);
    }
}

void HeaderFields::take(Field field, const values::ValueBase& value)
{
    const std::optional<float> number = numberOf(value);
    switch (field) {
        case Field::StartFreq:
            m_startFreq = number && m_startFreq ? std::min(*number, *m_startFreq) : number ? number : m_startFreq;
            break;
        case Field::StopFreq:
            m_stopFreq = number && m_stopFreq ? std::max(*number, *m_stopFreq) : number ? number : m_stopFreq;
            break;
        case Field::Frequency:
            if (takeFrequency(value) && m_ifSpan != 0 && modeHasIfRange()) {
                computeRange();
            }
            break;
        case Field::Mode:
            if (const auto* mode = dynamic_cast<const values::ValueSelection*>(&value)) {
                m_mode = mode->GetCurrentKey();
            }
            break;
        case Field::IfSpan:
            if (takeIfSpan(value)) {
                computeRange();
            }
            break;
        default:
            takeLevels(field, value);
    }
}

bool HeaderFields::takeFrequency(const values::ValueBase& value)
{
    const auto* frequency = dynamic_cast<const values::ValueNumericWithOffset<double>*>(&value);
    if (frequency == nullptr) {
        return false;
    }
    m_frequency = static_cast<float>(frequency->GetValue());
    m_frequencyOffset = frequency->GetOffset();
    return true;
}

bool HeaderFields::takeIfSpan(const values::ValueBase& value)
{
    const auto* span = dynamic_cast<const values::ValueSelection*>(&value);
    if (span == nullptr || m_frequency == 0 || !modeHasIfRange()) {
        return false;
    }
    m_ifSpan = static_cast<float>(span->GetCurrentValue());
    return m_ifSpan >= 1;
}

void HeaderFields::takeLevels(Field field, const values::ValueBase& value)
{
    const auto* number = dynamic_cast<const values::ValueNumeric<double>*>(&value);
    if (number == nullptr) {
        return;
    }
    if (field == Field::StartLevel) {
        m_minLevel = truncated(number->GetValue());
    } else if (field == Field::StopLevel) {
        m_maxLevel = truncated(number->GetValue());
    } else if (field == Field::RfYLimit) {
        m_minLevel = truncated(number->GetLowerLimit());
        m_maxLevel = truncated(number->GetUpperLimit());
    }
}

/// Whether the recorder lets the range follow frequency and IF span. In one mode that depends on the antenna's mode,
/// which is not recorded: the range cannot be told from there on.
bool HeaderFields::modeHasIfRange()
{
    constexpr std::array<std::int32_t, 4> Modes = {3, 23, 27, 42};
    constexpr std::int32_t DependsOnAntenna = 24;
    m_rangeIsUncertain = m_rangeIsUncertain || m_mode == DependsOnAntenna;
    return std::find(Modes.begin(), Modes.end(), m_mode) != Modes.end();
}

void HeaderFields::computeRange()
{
    const double centre = static_cast<double>(m_frequency) + m_frequencyOffset;
    const double half = static_cast<double>(m_ifSpan) / 2;
    m_startFreq = static_cast<float>(centre - half);
    m_stopFreq = static_cast<float>(centre + half);
}

void HeaderFields::restart(const InForce& state)
{
    std::map<Field, const values::ValueBase*> fields;
    for (const auto& [code, entry] : state.entries()) {
        const Field field = fieldOf(code);
        if (field != Field::None && entry.value != nullptr) {
            fields.emplace(field, entry.value);
        }
    }
    const auto assign = [&](Field field) {
        if (const auto found = fields.find(field); found != fields.end()) {
            take(field, *found->second);
        }
    };
    m_startFreq.reset();
    m_stopFreq.reset();
    // In the order in which a recorder looks at its values when it starts.
    assign(Field::Mode);
    if (const auto found = fields.find(Field::Frequency); found != fields.end()) {
        takeFrequency(*found->second);
    }
    assign(Field::IfSpan);
    const bool followsSpan = m_startFreq.has_value();  // the device's own range does then, too
    assign(Field::RfYLimit);
    if (!followsSpan) {
        assign(Field::StartFreq);
        assign(Field::StopFreq);
    }
    assign(Field::StartLevel);
    assign(Field::StopLevel);
}

void HeaderFields::put(Inspection::Header& header) const
{
    if (!m_rangeIsUncertain) {
        header.startFrequencyHz = m_startFreq.value_or(header.startFrequencyHz);
        header.stopFrequencyHz = m_stopFreq.value_or(header.stopFrequencyHz);
    }
    header.minLevel = m_minLevel.value_or(header.minLevel);
    header.maxLevel = m_maxLevel.value_or(header.maxLevel);
}

}  // namespace RecTool
