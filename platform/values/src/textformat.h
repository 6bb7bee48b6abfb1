// The grammar of recording texts (doc/recording-text.md): what writers append and readers take apart.
#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

#include <QString>

#include <values/valuebase.h>

namespace values::Text {

/// Stands between a payload and the next command. It is no digit, so a payload never runs into a command number.
constexpr char Separator = '|';
constexpr char CommandEnd = ';';
constexpr char FieldEnd = ',';

/// Command numbers beside the kind tags, which are the type codes. Only the two ranges may end in 34.
constexpr std::int32_t EvenRange = 34;
constexpr std::int32_t ListRange = 134;
constexpr std::int32_t AllCells = 50;
constexpr std::int32_t CellRun = 51;

/// Appends "number;", after a separator unless it is the first command of the text.
void appendCommand(std::string& text, std::int32_t number);
/// Appends the shortest decimal that reads back as the same number; every NaN is "nan".
template <typename Number>
void appendNumber(std::string& text, Number number)
{
    if constexpr (std::is_floating_point_v<Number>) {
        if (std::isnan(number)) {
            text += "nan";
            return;
        }
    }
    std::array<char, 32> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    text.append(digits.data(), result.ptr);
}
/// Appends printable ASCII as it is, every other UTF-16 unit and the characters of the grammar as \uXXXX.
void appendEscaped(std::string& text, const QString& string);

/// Reads all of a field; false when it is not exactly a number.
template <typename Number>
bool readNumber(std::string_view field, Number& number)
{
    const char* end = field.data() + field.size();
    const auto result = std::from_chars(field.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}
bool readEscaped(std::string_view field, QString& string);
/// Cuts the next field off the front of a list of fields, with the comma after it.
std::string_view takeField(std::string_view& fields);

struct Command {
    std::int32_t number = 0;
    std::string_view payload;
};

/// Cuts the next command off the front of a text that is not empty; false when it is malformed.
bool takeCommand(std::string_view& text, Command& command);

/// A text taken apart by its structure; payloads are not looked into.
struct Parts {
    ValueType kind = ValueType::Unknown;
    std::string_view value;  ///< payload of the kind tag
    std::optional<Command> range;
    std::string_view cells;  ///< the cell commands
};

/// Nothing when the text is malformed or empty.
std::optional<Parts> parse(std::string_view text);

/// What a plain value finds in a text.
enum class Match : std::uint8_t { Own, NotOwn, Malformed };

/// Gives the payload of a text of the kind; an empty text is NotOwn.
Match matchPlain(std::string_view text, ValueType kind, std::string_view& payload);

}  // namespace values::Text
