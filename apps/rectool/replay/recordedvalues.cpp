// Rebuilding values record by record within bounded memory, and describing them in words.
#include "recordedvalues.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <utility>

#include <values/recordingtext.h>

#include "printing/text.h"

namespace RecTool {

using values::Bearing;
using values::BearingHandler;
using values::CellMap;
using values::ChannelRange;
using values::ValueBase;
using values::ValueType;

const ValueBase* RecordedValues::apply(const Recording2::Inspection::Record& record)
{
    const ValueType kind = values::RecordedKind(record.data);
    const bool hasRange = values::CarriesChannelRange(record.data);
    const bool rangeOnly = kind == ValueType::Unknown && hasRange;
    if ((kind == ValueType::Unknown && !rangeOnly) || (hasRange && isTooMuch(record.data.size()))) {
        return nullptr;
    }
    std::unique_ptr<ValueBase>& value = m_values[record.code];
    if (!rangeOnly && (value == nullptr || value->GetType() != kind)) {
        value = values::MakeValue(kind);
    }
    const bool isApplied = value != nullptr && value->ApplyRecordedState(record.data, 0, false);
    if (const auto* map = hasRange ? dynamic_cast<const values::MappingBase*>(value.get()) : nullptr) {
        m_load.channels += map->size();
    }
    return isApplied ? value.get() : nullptr;
}

const ValueBase* RecordedValues::applyAlone(const Recording2::Inspection::Record& record)
{
    const auto before = m_values.find(record.code);
    auto* const map =
        before == m_values.end() ? nullptr : dynamic_cast<CellMap<float, values::levelHandler>*>(before->second.get());
    if (map != nullptr) {
        m_blank.resize(std::max(m_blank.size(), map->size()), std::numeric_limits<float>::quiet_NaN());
        map->SetCells(0, std::span(m_blank).first(map->size()), map->GetTimeStamp());
    }
    return apply(record);
}

bool RecordedValues::isTooMuch(std::size_t textBytes)
{
    constexpr std::uint64_t Most = std::uint64_t{1} << 25U;  // two maps of the largest range
    constexpr std::uint64_t PerByte = 16;                    // a channel whose cell is written takes a byte at least
    m_load.textBytes += textBytes;
    return m_load.channels > Most + PerByte * m_load.textBytes;
}

const ValueBase* RecordedValues::find(std::int32_t code) const
{
    const auto found = m_values.find(code);
    return found == m_values.end() ? nullptr : found->second.get();
}

namespace {

/// The lowest and highest number, those that are none left out.
class MeasuredSpan {
public:
    void add(double number)
    {
        if (std::isnan(number)) {
            return;
        }
        m_lowest = m_count == 0 ? number : std::min(m_lowest, number);
        m_highest = m_count == 0 ? number : std::max(m_highest, number);
        ++m_count;
    }
    [[nodiscard]] std::size_t count() const { return m_count; }
    [[nodiscard]] std::string text(int digits) const
    {
        return "min " + number(m_lowest, digits) + ", max " + number(m_highest, digits);
    }

private:
    double m_lowest = 0;
    double m_highest = 0;
    std::size_t m_count = 0;
};

std::string describeRange(const ChannelRange& range)
{
    if (range.size() == 0) {
        return "no channels";
    }
    double lowest = range.frequencyHz(0);
    double highest = range.frequencyHz(range.size() - 1);
    if (range.isList()) {
        const auto [low, high] = std::minmax_element(range.channelsHz.begin(), range.channelsHz.end());
        lowest = *low;
        highest = *high;
    }
    const std::string from = frequency(lowest);
    const std::string channels = grouped(range.size()) + (range.size() == 1 ? " channel" : " channels");
    return (range.size() == 1 ? from : from + " to " + frequency(highest)) + ", " + channels;
}

std::string describeLevels(const CellMap<float, values::levelHandler>& map)
{
    constexpr int Digits = 5;  // hundredths of a decibel
    MeasuredSpan levels;
    for (const float level : map.GetCells()) {
        levels.add(level);
    }
    const std::string range = describeRange(map.GetChannelRange());
    return levels.count() == 0 ? range + ", no level" : range + ", " + levels.text(Digits);
}

std::string describeBearings(const CellMap<Bearing, BearingHandler>& map)
{
    MeasuredSpan azimuths;
    for (const Bearing& bearing : map.GetCells()) {
        azimuths.add(bearing.azimuthDeg);
    }
    const std::string range = describeRange(map.GetChannelRange());
    if (azimuths.count() == 0) {
        return range + ", no bearing";
    }
    const std::string bearings = grouped(azimuths.count()) + (azimuths.count() == 1 ? " bearing" : " bearings");
    return range + ", " + bearings + ", " + azimuths.text(6) + " degrees";
}

}  // namespace

std::string describe(const ValueBase& value)
{
    switch (value.GetType()) {
        case ValueType::LevelMap:
            return describeLevels(static_cast<const CellMap<float, values::levelHandler>&>(value));
        case ValueType::BearingMap:
        case ValueType::FastBearingMap:
            return describeBearings(static_cast<const CellMap<Bearing, BearingHandler>&>(value));
        default:
            return oneLine(value.GetText().toStdString());
    }
}

std::string describe(const Recording2::Inspection::Record& record, const ValueBase* value)
{
    constexpr std::size_t MostBytes = 64;
    return value != nullptr ? describe(*value) : escaped(record.data, MostBytes);
}

bool isEmpty(const Bearing& bearing)
{
    return std::isnan(bearing.azimuthDeg) && std::isnan(bearing.elevationDeg) && std::isnan(bearing.levelDb) &&
           std::isnan(bearing.quality);
}

}  // namespace RecTool
