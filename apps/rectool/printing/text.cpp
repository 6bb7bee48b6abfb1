// Numbers, frequencies, clock times and durations as text; bytes escaped.
#include "text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <string_view>

#include <QDateTime>
#include <QString>

namespace RecTool {

namespace {

/// As it stands in quotes.
std::string escapedByte(char byte)
{
    constexpr std::string_view Named = "\n\r\t\"\\";
    constexpr std::string_view Names = "nrt\"\\";
    constexpr const char* Digits = "0123456789abcdef";
    if (const std::size_t i = Named.find(byte); i != std::string_view::npos) {
        return {'\\', Names[i]};
    }
    const auto code = static_cast<unsigned char>(byte);
    return byte >= ' ' && byte <= '~' ? std::string(1, byte)
                                      : std::string{'\\', 'x', Digits[code >> 4U], Digits[code & 0xfU]};
}

}  // namespace

std::string fromLatin1(const std::string& text)
{
    return QString::fromLatin1(text.data(), static_cast<int>(text.size())).toStdString();
}

std::string escaped(const std::string& bytes, std::size_t most)
{
    std::string text = "\"";
    for (const char byte : bytes.substr(0, most)) {
        text += escapedByte(byte);
    }
    text += '"';
    if (bytes.size() > most) {
        text += "... (" + grouped(bytes.size()) + " bytes)";
    }
    return text;
}

std::string csvText(const std::string& utf8)
{
    if (utf8.find_first_of(",\"\r\n") == std::string::npos) {
        return utf8;
    }
    std::string quoted = "\"";
    for (const char character : utf8) {
        quoted.append(character == '"' ? 2 : 1, character);
    }
    return quoted + '"';
}

bool isAscii(const std::string& bytes)
{
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char byte) { return (static_cast<unsigned char>(byte) & 0x80U) == 0; });
}

std::string number(double value, int digits)
{
    constexpr double Legible = 1e15;
    std::array<char, 400> buffer{};
    const bool plain = std::abs(value) < Legible && value == std::floor(value);
    const int length = plain ? std::snprintf(buffer.data(), buffer.size(), "%.0f", value)
                             : std::snprintf(buffer.data(), buffer.size(), "%.*g", digits, value);
    return {buffer.data(), static_cast<std::size_t>(std::max(length, 0))};
}

std::string fixed(double value, int digits)
{
    std::array<char, 400> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, digits);
    return {text.data(), written.ptr};
}

std::string grouped(std::uint64_t value)
{
    std::string digits = std::to_string(value);
    for (std::size_t at = digits.size(); at > 3; at -= 3) {
        digits.insert(at - 3, 1, ',');
    }
    return digits;
}

std::string counted(std::uint64_t number, const std::string& what)
{
    return grouped(number) + ' ' + what + (number == 1 ? "" : "s");
}

std::string frequency(double hz, int digits)
{
    struct Unit {
        double factor;
        const char* name;
    };
    for (const Unit unit : {Unit{1e9, " GHz"}, Unit{1e6, " MHz"}, Unit{1e3, " kHz"}}) {
        if (std::abs(hz) >= unit.factor) {
            return number(hz / unit.factor, digits) + unit.name;
        }
    }
    return number(hz, digits) + " Hz";
}

std::string utc(std::uint64_t msSince1970)
{
    if (msSince1970 == 0) {
        return "unknown";
    }
    if (msSince1970 > EndOfYear9999Ms) {
        return std::to_string(msSince1970) + " ms since 1970";
    }
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(msSince1970), Qt::UTC);
    return time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz")).toStdString() + " UTC";
}

std::string duration(std::uint64_t ms)
{
    constexpr std::uint64_t Second = 1000;
    constexpr std::uint64_t Minute = 60 * Second;
    constexpr std::uint64_t Hour = 60 * Minute;
    std::array<char, 64> buffer{};
    const int length =
        std::snprintf(buffer.data(), buffer.size(), "%llu:%02u:%02u.%03u", static_cast<unsigned long long>(ms / Hour),
                      static_cast<unsigned>(ms % Hour / Minute), static_cast<unsigned>(ms % Minute / Second),
                      static_cast<unsigned>(ms % Second));
    return {buffer.data(), static_cast<std::size_t>(std::max(length, 0))};
}

}  // namespace RecTool
