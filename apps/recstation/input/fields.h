// Fields and numbers of a line of text, without copies.
#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "input/badlines.h"

namespace RecStation {

/// What some programs write before UTF-8.
constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

/// Without the spaces, tabs and line ends around it, or other characters.
[[nodiscard]] inline std::string_view trimmed(std::string_view text, std::string_view blanks = " \t\r\n")
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

[[nodiscard]] inline bool areDigits(std::string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// Takes the text up to the next comma out of a line, and the comma; nothing behind the last field.
class CommaFields {
public:
    explicit CommaFields(std::string_view line) : m_rest(line) {}

    [[nodiscard]] std::optional<std::string_view> next()
    {
        if (m_ended) {
            return std::nullopt;
        }
        const std::size_t comma = m_rest.find(',');
        const std::string_view field = m_rest.substr(0, comma);
        m_ended = comma == std::string_view::npos;
        m_rest = m_ended ? std::string_view() : m_rest.substr(comma + 1);
        return field;
    }

    /// All that follow, at most so many, without the blanks around them.
    [[nodiscard]] std::vector<std::string_view> rest(std::size_t most = std::string_view::npos)
    {
        std::vector<std::string_view> fields;
        for (auto field = next(); field && fields.size() < most; field = next()) {
            fields.push_back(trimmed(*field));
        }
        return fields;
    }

private:
    std::string_view m_rest;
    bool m_ended = false;
};

/// A decimal number that takes all of the text; a plus sign in front is allowed. Also "inf" and "nan".
template <typename Number>
[[nodiscard]] std::optional<Number> parseNumber(std::string_view text)
{
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && !text.empty() ? std::optional(number) : std::nullopt;
}

/// A field as a message may show it: short, and without control characters.
[[nodiscard]] inline std::string shown(std::string_view field)
{
    constexpr std::size_t Most = 40;
    std::string text = "\"";
    for (const char c : field.substr(0, Most)) {
        const auto code = static_cast<unsigned char>(c);
        text += code < ' ' || code > '~' ? '?' : c;
    }
    text += field.size() > Most ? "...\"" : "\"";
    return text;
}

/// A finite number. @param name for the message @throws LineError
[[nodiscard]] inline double requireNumber(std::string_view text, const char* name)
{
    const auto number = parseNumber<double>(text);
    if (!number || !std::isfinite(*number)) {
        throw LineError(std::string("the ") + name + " " + shown(text) + " is no number");
    }
    return *number;
}

}  // namespace RecStation
