// Appending numbers, texts, channel ranges and cells of maps to JSON, without a document between.
#include "recordjson.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string_view>

#include <values/selection.h>
#include <values/value.h>

#include "json.h"
#include "text.h"

namespace RecTool {

using Recording2::Inspection::Record;
using Recording2::Inspection::TypeEntry;
using values::Bearing;
using values::BearingHandler;
using values::CellMap;
using values::ChannelRange;
using values::ValueBase;
using values::ValueType;

namespace {

template <typename Integer>
void appendInteger(std::string& out, Integer value)
{
    std::array<char, 24> digits{};
    out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr);
}

// The shortest decimal, with a point, as documents have it.
void appendReal(std::string& out, double value)
{
    constexpr double Least = 1e-4;  // outside of these bounds documents have an exponent
    constexpr double Most = 1e15;
    const double magnitude = std::fabs(value);
    if (!(value == 0 || (magnitude >= Least && magnitude < Most))) {
        out += std::isfinite(value) ? Json(value).dump() : "null";
        return;
    }
    std::array<char, 40> digits{};
    const char* const end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed).ptr;
    const std::string_view text(digits.data(), static_cast<std::size_t>(end - digits.data()));
    out += text;
    if (text.find('.') == std::string_view::npos) {
        out += ".0";
    }
}

void appendText(std::string& out, const std::string& utf8)
{
    out += Json(utf8).dump();
}

bool standsForItself(char character)
{
    constexpr char FirstPrintable = 0x20;
    return character >= FirstPrintable && character != '"' && character != '\\';
}

// Text without any special character but the backslash is what recording texts mostly are.
void appendAscii(std::string& out, const std::string& text)
{
    out += '"';
    std::size_t begin = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (standsForItself(text[i])) {
            continue;
        }
        out.append(text, begin, i - begin);
        begin = i + 1;
        if (text[i] == '\\') {
            out += "\\\\";
        } else {
            const std::string quoted = Json(std::string(1, text[i])).dump();
            out.append(quoted, 1, quoted.size() - 2);
        }
    }
    out.append(text, begin);
    out += '"';
}

void appendData(std::string& out, const std::string& data)
{
    if (!isAscii(data)) {
        out += dataToJson(data).dump();
        return;
    }
    out += "{\"text\":";
    appendAscii(out, data);
    out += '}';
}

}  // namespace

void appendJson(std::string& out, const ChannelRange& range)
{
    if (!range.isList()) {
        out += "{\"startHz\":";
        appendReal(out, range.startHz);
        out += ",\"stepHz\":";
        appendReal(out, range.stepHz);
        out += ",\"count\":";
        appendInteger(out, range.count);
        out += '}';
        return;
    }
    out += "{\"channelsHz\":[";
    for (const double channel : range.channelsHz) {
        appendReal(out, channel);
        out += ',';
    }
    out.back() = ']';
    out += '}';
}

// Levels are recorded in hundredths; more digits would come from the float alone.
void appendLevelJson(std::string& out, float level)
{
    constexpr double PerUnit = 100;
    constexpr double MostHundredths = 1e8;
    const double rounded = std::round(double{level} * PerUnit);
    if (!(std::fabs(rounded) < MostHundredths)) {
        appendReal(out, rounded / PerUnit);
        return;
    }
    const auto hundredths = static_cast<std::uint32_t>(std::fabs(rounded));
    std::array<char, 16> text{};
    char* end = text.data();
    if (std::signbit(rounded)) {
        *end++ = '-';
    }
    end = std::to_chars(end, text.data() + text.size(), hundredths / 100).ptr;
    *end++ = '.';
    *end++ = static_cast<char>('0' + hundredths / 10 % 10);
    if (hundredths % 10 != 0) {
        *end++ = static_cast<char>('0' + hundredths % 10);
    }
    out.append(text.data(), end);
}

namespace {

void appendCell(std::string& out, float level)
{
    appendLevelJson(out, level);
}

// What was not measured is NaN, which JSON has as null.
void appendCell(std::string& out, const Bearing& bearing)
{
    if (isEmpty(bearing)) {
        out += "null";
        return;
    }
    out += "{\"azimuthDeg\":";
    appendReal(out, bearing.azimuthDeg);
    out += ",\"elevationDeg\":";
    appendReal(out, bearing.elevationDeg);
    out += ",\"levelDb\":";
    appendReal(out, bearing.levelDb);
    out += ",\"quality\":";
    appendReal(out, bearing.quality);
    out += '}';
}

template <typename Entry, typename Handler>
void appendMap(std::string& out, const CellMap<Entry, Handler>& value)
{
    out += ",\"range\":";
    appendJson(out, value.GetChannelRange());
    out += ",\"timeStampUs\":";
    appendInteger(out, value.GetTimeStamp());
    out += ",\"cells\":[";
    for (const Entry& cell : value.GetCells()) {
        appendCell(out, cell);
        out += ',';
    }
    if (out.back() == ',') {
        out.pop_back();
    }
    out += ']';
}

template <typename Number>
void appendNumber(std::string& out, const Number& value)
{
    out += ",\"value\":";
    appendReal(out, value.GetValue());
    out += ",\"lowerLimit\":";
    appendReal(out, value.GetLowerLimit());
    out += ",\"upperLimit\":";
    appendReal(out, value.GetUpperLimit());
}

void appendSelection(std::string& out, const values::ValueSelection& value)
{
    const values::SelectionItem* item = value.GetCurrentItem();
    if (item == nullptr) {
        out += R"(,"value":null,"key":null,"number":null)";
        return;
    }
    out += ",\"value\":";
    appendText(out, item->GetName().toStdString());
    out += ",\"key\":";
    appendInteger(out, item->GetKey());
    out += ",\"number\":";
    appendReal(out, item->GetValue());
}

void appendContent(std::string& out, const ValueBase& value)
{
    switch (value.GetType()) {
        case ValueType::Bool:
            out += static_cast<const values::Value<bool>&>(value).GetValue() ? ",\"value\":true" : ",\"value\":false";
            return;
        case ValueType::String:
            out += ",\"value\":";
            appendText(out, static_cast<const values::Value<QString>&>(value).GetValue().toStdString());
            return;
        case ValueType::Numeric:
            appendNumber(out, static_cast<const values::ValueNumeric<double>&>(value));
            return;
        case ValueType::NumericWithOffset:
            appendNumber(out, static_cast<const values::ValueNumericWithOffset<double>&>(value));
            out += ",\"offset\":";
            appendReal(out, static_cast<const values::ValueNumericWithOffset<double>&>(value).GetOffset());
            return;
        case ValueType::Selection:
            appendSelection(out, static_cast<const values::ValueSelection&>(value));
            return;
        case ValueType::LevelMap:
            appendMap(out, static_cast<const CellMap<float, values::levelHandler>&>(value));
            return;
        case ValueType::BearingMap:
        case ValueType::FastBearingMap:
            appendMap(out, static_cast<const CellMap<Bearing, BearingHandler>&>(value));
            return;
        case ValueType::Unknown:
            return;
    }
}

std::string kindName(ValueType type)
{
    return values::ValueTypeName(type).toStdString();
}

}  // namespace

void appendJson(std::string& out, const ValueBase& value)
{
    out += "{\"kind\":\"";
    out += kindName(value.GetType());
    out += '"';
    appendContent(out, value);
    out += '}';
}

void RecordJson::append(std::string& out, const Record& record, const ValueBase* value)
{
    out += "{\"timeMs\":";
    if (record.timeMs != 0) {
        appendInteger(out, record.timeMs);
    } else {
        out += "null";
    }
    out += ",\"position\":";
    appendInteger(out, record.position);
    out += type(record.code);
    out += ",\"value\":";
    if (value != nullptr) {
        appendJson(out, *value);
    } else {
        out += "null";
    }
    out += ",\"data\":";
    appendData(out, record.data);
    out += '}';
}

const std::string& RecordJson::type(std::int32_t code)
{
    std::string& text = m_types[code];
    if (text.empty()) {
        const TypeEntry* entry = m_names.find(code);
        text = ",\"code\":" + std::to_string(code);
        text += ",\"keyword\":" + (entry != nullptr ? Json(fromLatin1(entry->keyword)).dump() : "null");
        text += ",\"path\":" + (entry != nullptr ? Json(fromLatin1(entry->valuePath)).dump() : "null");
    }
    return text;
}

}  // namespace RecTool
