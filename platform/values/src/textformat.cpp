// Commands, numbers and escaped strings of recording texts, written and taken apart.
#include "textformat.h"

namespace values::Text {

namespace {

constexpr std::string_view HexDigits = "0123456789ABCDEF";
constexpr std::size_t HexLength = 4;
constexpr std::size_t LongestCommandNumber = 3;

bool standsForItself(char16_t unit)
{
    return unit >= u' ' && unit <= u'~' && unit != u'\\' && unit != u'|' && unit != u';';
}

bool readEscape(std::string_view digits, char16_t& unit)
{
    std::uint16_t number = 0;
    const char* end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number, 16);
    unit = number;
    return digits.size() == HexLength && result.ec == std::errc() && result.ptr == end;
}

bool isPlain(ValueType kind)
{
    return kind >= ValueType::Bool && kind <= ValueType::Selection;
}

bool isKindTag(std::int32_t number)
{
    return number >= static_cast<std::int32_t>(ValueType::Bool) &&
           number <= static_cast<std::int32_t>(ValueType::BearingMap);
}

bool isRange(std::int32_t number)
{
    return number == EvenRange || number == ListRange;
}

bool onlyCellCommands(std::string_view text)
{
    Command command;
    while (!text.empty()) {
        if (!takeCommand(text, command) || (command.number != AllCells && command.number != CellRun)) {
            return false;
        }
    }
    return true;
}

}  // namespace

void appendCommand(std::string& text, std::int32_t number)
{
    if (!text.empty()) {
        text += Separator;
    }
    appendNumber(text, number);
    text += CommandEnd;
}

void appendEscaped(std::string& text, const QString& string)
{
    for (const QChar character : string) {
        const char16_t unit = character.unicode();
        if (standsForItself(unit)) {
            text += static_cast<char>(unit);
            continue;
        }
        text += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4) {
            text += HexDigits[static_cast<std::size_t>((unit >> shift) & 0xF)];
        }
    }
}

bool readEscaped(std::string_view field, QString& string)
{
    QString result;
    result.reserve(static_cast<int>(field.size()));
    while (!field.empty()) {
        const auto unit = static_cast<unsigned char>(field.front());
        if (standsForItself(unit)) {
            result += QChar(static_cast<char16_t>(unit));
            field.remove_prefix(1);
            continue;
        }
        char16_t escaped = 0;
        if (!field.starts_with("\\u") || !readEscape(field.substr(2, HexLength), escaped)) {
            return false;
        }
        result += QChar(escaped);
        field.remove_prefix(2 + HexLength);
    }
    string = result;
    return true;
}

std::string_view takeField(std::string_view& fields)
{
    const std::size_t end = fields.find(FieldEnd);
    const std::string_view field = fields.substr(0, end);
    fields.remove_prefix(end == std::string_view::npos ? fields.size() : end + 1);
    return field;
}

bool takeCommand(std::string_view& text, Command& command)
{
    const std::size_t digits = text.substr(0, LongestCommandNumber + 1).find(CommandEnd);
    if (digits == std::string_view::npos || text.front() == '0' || text.front() == '-' ||
        !readNumber(text.substr(0, digits), command.number)) {
        return false;
    }
    text.remove_prefix(digits + 1);
    const std::size_t end = text.find(Separator);
    command.payload = text.substr(0, end);
    if (end == std::string_view::npos) {
        text = {};
    } else {
        text.remove_prefix(end + 1);
        if (text.empty()) {
            return false;
        }
    }
    return command.payload.find(CommandEnd) == std::string_view::npos;
}

std::optional<Parts> parse(std::string_view text)
{
    Command command;
    if (text.empty() || !takeCommand(text, command)) {
        return std::nullopt;
    }
    Parts parts;
    if (isKindTag(command.number)) {
        parts.kind = static_cast<ValueType>(command.number);
        parts.value = command.payload;
        if (isPlain(parts.kind)) {
            return text.empty() ? std::optional(parts) : std::nullopt;
        }
        if (text.empty()) {
            return parts;
        }
        parts.cells = text;
        if (!takeCommand(text, command)) {
            return std::nullopt;
        }
    } else if (!isRange(command.number) || !text.empty()) {
        return std::nullopt;
    }
    if (isRange(command.number)) {
        parts.range = command;
        parts.cells = text;
    }
    return onlyCellCommands(parts.cells) ? std::optional(parts) : std::nullopt;
}

Match matchPlain(std::string_view text, ValueType kind, std::string_view& payload)
{
    if (text.empty()) {
        return Match::NotOwn;
    }
    const std::optional<Parts> parts = parse(text);
    if (!parts) {
        return Match::Malformed;
    }
    payload = parts->value;
    return parts->kind == kind ? Match::Own : Match::NotOwn;
}

}  // namespace values::Text
