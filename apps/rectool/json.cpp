#include "json.h"

#include <array>
#include <charconv>
#include <cmath>

#include <QByteArray>

#include <values/selection.h>
#include <values/value.h>

#include "recordedvalues.h"
#include "text.h"

namespace RecTool {

using Recording2::Inspection::Bookmark;
using Recording2::Inspection::Finding;
using Recording2::Inspection::Header;
using Recording2::Inspection::Readability;
using Recording2::Inspection::Record;
using Recording2::Inspection::TypeEntry;
using values::Bearing;
using values::BearingHandler;
using values::CellMap;
using values::ValueBase;
using values::ValueType;

namespace {

// The shortest decimal that gives the float again, not the digits that it gets as a double.
Json shortest(float value)
{
    std::array<char, 64> buffer{};
    char* end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    double number = 0;
    std::from_chars(buffer.data(), end, number);
    return number;
}

}  // namespace

Json toJson(const Header& header)
{
    return {{"version", {{"major", header.majorVersion}, {"minor", header.minorVersion}}},
            {"startFrequencyHz", shortest(header.startFrequencyHz)},
            {"stopFrequencyHz", shortest(header.stopFrequencyHz)},
            {"stepWidthHz", shortest(header.stepWidthHz)},
            {"minLevel", header.minLevel},
            {"maxLevel", header.maxLevel},
            {"startMs", header.startMs},
            {"stopMs", header.stopMs},
            {"jobId", fromLatin1(header.jobId)},
            {"deviceName", fromLatin1(header.deviceName)},
            {"deviceType", fromLatin1(header.deviceType)},
            {"automatic", header.automatic}};
}

Json toJson(const Finding& finding)
{
    return {{"offset", finding.offset}, {"text", finding.text}};
}

Json toJson(const Bookmark& bookmark)
{
    return {{"timeMs", bookmark.timeMs}, {"data", dataToJson(bookmark.text)}};
}

Json toJson(const Record& record, const ValueBase* value, const TypeNames& names)
{
    const TypeEntry* type = names.find(record.code);
    return {{"timeMs", record.timeMs != 0 ? Json(record.timeMs) : Json()},
            {"position", record.position},
            {"code", record.code},
            {"keyword", type != nullptr ? Json(fromLatin1(type->keyword)) : Json()},
            {"path", type != nullptr ? Json(fromLatin1(type->valuePath)) : Json()},
            {"value", value != nullptr ? toJson(*value) : Json()},
            {"data", dataToJson(record.data)}};
}

Json toJson(const values::ChannelRange& channels)
{
    if (channels.isList()) {
        return {{"channelsHz", channels.channelsHz}};
    }
    return {{"startHz", channels.startHz}, {"stepHz", channels.stepHz}, {"count", channels.count}};
}

// What was not measured is NaN, which JSON has as null.
Json toJson(const Bearing& bearing)
{
    return {{"azimuthDeg", bearing.azimuthDeg},
            {"elevationDeg", bearing.elevationDeg},
            {"levelDb", bearing.levelDb},
            {"quality", bearing.quality}};
}

namespace {

// Levels are recorded in hundredths; more digits would come from the float alone.
Json level(float value)
{
    constexpr double PerUnit = 100;
    return std::isfinite(value) ? Json(std::round(double{value} * PerUnit) / PerUnit) : Json();
}

Json map(const values::MappingBase& value, Json cells)
{
    return {
        {"range", toJson(value.GetChannelRange())}, {"timeStampUs", value.GetTimeStamp()}, {"cells", std::move(cells)}};
}

Json levelMap(const CellMap<float, values::levelHandler>& value)
{
    Json cells = Json::array();
    for (const float cell : value.GetCells()) {
        cells.push_back(level(cell));
    }
    return map(value, std::move(cells));
}

Json bearingMap(const CellMap<Bearing, BearingHandler>& value)
{
    Json cells = Json::array();
    for (const Bearing& cell : value.GetCells()) {
        cells.push_back(isEmpty(cell) ? Json() : toJson(cell));
    }
    return map(value, std::move(cells));
}

Json numeric(const values::ValueNumeric<double>& value)
{
    return {{"value", value.GetValue()}, {"lowerLimit", value.GetLowerLimit()}, {"upperLimit", value.GetUpperLimit()}};
}

Json numericWithOffset(const values::ValueNumericWithOffset<double>& value)
{
    Json json = numeric(value);
    json["offset"] = value.GetOffset();
    return json;
}

Json selection(const values::ValueSelection& value)
{
    const values::SelectionItem* item = value.GetCurrentItem();
    if (item == nullptr) {
        return {{"value", nullptr}, {"key", nullptr}, {"number", nullptr}};
    }
    return {{"value", item->GetName().toStdString()}, {"key", item->GetKey()}, {"number", item->GetValue()}};
}

Json content(const ValueBase& value)
{
    switch (value.GetType()) {
        case ValueType::Bool:
            return {{"value", static_cast<const values::Value<bool>&>(value).GetValue()}};
        case ValueType::String:
            return {{"value", static_cast<const values::Value<QString>&>(value).GetValue().toStdString()}};
        case ValueType::Numeric:
            return numeric(static_cast<const values::ValueNumeric<double>&>(value));
        case ValueType::NumericWithOffset:
            return numericWithOffset(static_cast<const values::ValueNumericWithOffset<double>&>(value));
        case ValueType::Selection:
            return selection(static_cast<const values::ValueSelection&>(value));
        case ValueType::LevelMap:
            return levelMap(static_cast<const CellMap<float, values::levelHandler>&>(value));
        case ValueType::BearingMap:
        case ValueType::FastBearingMap:
            return bearingMap(static_cast<const CellMap<Bearing, BearingHandler>&>(value));
        case ValueType::Unknown:
            break;
    }
    return Json::object();
}

}  // namespace

Json toJson(const ValueBase& value)
{
    Json json = {{"kind", values::ValueTypeName(value.GetType()).toStdString()}};
    json.update(content(value));
    return json;
}

const char* name(Readability readability)
{
    switch (readability) {
        case Readability::Ok:
            return "ok";
        case Readability::Missing:
            return "missing";
        case Readability::Unreadable:
            return "unreadable";
        case Readability::Empty:
            return "empty";
        case Readability::OldFormat:
            return "old-format";
        case Readability::NoRecording:
            return "no-recording";
        case Readability::Truncated:
            return "truncated";
        case Readability::NeverClosed:
            return "never-closed";
    }
    return "";
}

Json dataToJson(const std::string& bytes)
{
    if (isAscii(bytes)) {
        return {{"text", bytes}};
    }
    return {{"base64", QByteArray::fromStdString(bytes).toBase64().toStdString()}};
}

std::string dump(const Json& json, int indent)
{
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace RecTool
