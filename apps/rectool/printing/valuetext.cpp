// Keywords of types, and what is measured of a value, in words.
#include "valuetext.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <values/value.h>
#include <QString>

#include "output.h"
#include "text.h"

namespace RecTool {

using Recording2::Inspection::TypeEntry;
using values::Bearing;
using values::BearingHandler;
using values::CellMap;
using values::ChannelRange;
using values::ValueBase;
using values::ValueType;

namespace {

std::string text(const MeasuredSpan& span, int digits)
{
    return "min " + number(span.lowest, digits) + ", max " + number(span.highest, digits);
}

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
    const std::string channels = counted(range.size(), "channel");
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
    return levels.count == 0 ? range + ", no level" : range + ", " + text(levels, Digits);
}

std::string describeBearings(const CellMap<Bearing, BearingHandler>& map)
{
    MeasuredSpan azimuths;
    for (const Bearing& bearing : map.GetCells()) {
        azimuths.add(bearing.azimuthDeg);
    }
    const std::string range = describeRange(map.GetChannelRange());
    if (azimuths.count == 0) {
        return range + ", no bearing";
    }
    const std::string bearings = counted(azimuths.count, "bearing");
    return range + ", " + bearings + ", " + text(azimuths, 6) + " degrees";
}

}  // namespace

TypeNames::TypeNames(const std::vector<TypeEntry>& types)
{
    for (const TypeEntry& type : types) {
        m_types.emplace(type.typeNumber, &type);  // the first entry of a number counts
    }
}

const TypeEntry* TypeNames::find(std::int32_t number) const
{
    const auto found = m_types.find(number);
    return found == m_types.end() ? nullptr : found->second;
}

std::string TypeNames::label(std::int32_t number) const
{
    const TypeEntry* type = find(number);
    if (type == nullptr || type->keyword.empty()) {
        return "type " + std::to_string(number);
    }
    constexpr std::size_t Longest = 100;  // it may stand before every record
    const bool isLong = type->keyword.size() > Longest;
    return oneLine(fromLatin1(type->keyword.substr(0, Longest))) + (isLong ? "..." : "");
}

std::optional<std::int32_t> TypeNames::numberOf(const std::string& keywordOrNumber) const
{
    std::int32_t number = 0;
    const char* end = keywordOrNumber.data() + keywordOrNumber.size();
    const auto [last, error] = std::from_chars(keywordOrNumber.data(), end, number);
    if (error == std::errc() && last == end) {
        return number;
    }
    const QString wanted = QString::fromStdString(keywordOrNumber);
    for (const auto& [typeNumber, type] : m_types) {
        if (wanted.compare(QString::fromStdString(fromLatin1(type->keyword)), Qt::CaseInsensitive) == 0) {
            return typeNumber;
        }
    }
    return std::nullopt;
}

std::string TypeNames::allKeywords() const
{
    std::string all;
    for (const auto& [number, type] : m_types) {
        all += (all.empty() ? "" : ", ") + label(number);
    }
    return all;
}

std::size_t TypeNames::longestLabel() const
{
    std::size_t longest = 0;
    for (const auto& [number, type] : m_types) {
        longest = std::max(longest, width(label(number)));
    }
    return longest;
}

void MeasuredSpan::add(double number)
{
    if (!std::isnan(number)) {
        lowest = count == 0 ? number : std::min(lowest, number);
        highest = count == 0 ? number : std::max(highest, number);
        ++count;
    }
}

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

std::optional<double> plainNumber(const ValueBase* value)
{
    const bool isNumber = value != nullptr &&
                          (value->GetType() == ValueType::Numeric || value->GetType() == ValueType::NumericWithOffset);
    return isNumber ? std::optional(static_cast<const values::ValueNumeric<double>*>(value)->GetValue()) : std::nullopt;
}

bool isEmpty(const Bearing& bearing)
{
    return std::isnan(bearing.azimuthDeg) && std::isnan(bearing.elevationDeg) && std::isnan(bearing.levelDb) &&
           std::isnan(bearing.quality);
}

}  // namespace RecTool
