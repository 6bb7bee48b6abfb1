// Numbers, frequencies, clock times and durations as text, and parsed; bytes escaped; the codes of colours.
#include "text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <terminaltext/quantity.h>
#include <QDateTime>
#include <QString>

namespace RecTool {

namespace {

constexpr std::uint64_t MsPerSecond = 1000;
constexpr std::size_t FirstDigitOfMs = 20;  // in "2023-11-14T22:13:21.500Z"

std::string isoTime(std::uint64_t msSince1970, TimeForm form)
{
    const auto ms = static_cast<qint64>(msSince1970);
    if (form == TimeForm::Utc) {
        return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(Qt::ISODateWithMs).toStdString();
    }
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(ms);  // its text does not tell the zone
    return local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODateWithMs).toStdString();
}

bool stylesAreUsed = false;

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

std::optional<double> parseHertz(const std::string& text)
{
    const std::optional<double> hertz = TerminalText::parseQuantity(text, {"Hz"});
    return hertz && *hertz > 0 ? hertz : std::nullopt;
}

std::optional<std::uint64_t> parseMilliseconds(const std::string& text)
{
    std::uint64_t plain = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, plain);
    if (error == std::errc() && last == end) {
        return plain;
    }
    constexpr double Most = 1e15;  // some thirty thousand years; exact as a double
    const std::optional<double> ms =
        TerminalText::parseInUnits(text, {{"ms", 1}, {"s", 1e3}, {"min", 60e3}, {"h", 3600e3}, {"d", 24 * 3600e3}});
    if (!ms || *ms < 0 || *ms > Most) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(std::llround(*ms));
}

std::string unitOfKeyword(const std::string& keyword)
{
    static const std::vector<std::pair<const char*, std::set<std::string>>> units{
        {"dB",
         {"LEVEL", "FIELDSTRENGTH", "ATTENUATION", "SQUELCHVALUE", "RFYLIMIT", "STARTLEVEL", "STOPLEVEL",
          "IFSTARTLEVEL", "IFSTOPLEVEL", "IFLEVELTHRESHOLD"}},
        {"Hz",
         {"FREQUENCY", "FREQOFFSET", "STARTFREQ", "STOPFREQ", "STEPFREQ", "BANDWIDTH", "DFBANDWIDTH", "AFBANDWIDTH",
          "IFSPAN"}},
        {"\u00b0",
         {"ELEVATION", "ELEVATIONSTART", "ELEVATIONSTOP", "RFELEVATIONRULER", "PITCH", "ROLL", "LOCATIONLATITUDE",
          "LOCATIONLONGITUDE", "TRUEHEADING", "AZIMUTH", "AZIMUTHSTART", "AZIMUTHSTOP", "RFAZIMUTHRULER"}},
        {"m", {"ALTITUDE"}},
        {"m/s", {"VELOCITY"}},
        {"%", {"QUALITY"}}};
    const auto found =
        std::find_if(units.begin(), units.end(), [&](const auto& unit) { return unit.second.contains(keyword); });
    return found == units.end() ? "" : found->first;
}

TimeForm timeFormOf(const std::string& name)
{
    return name == "utc" ? TimeForm::Utc : name == "local" ? TimeForm::Local : TimeForm::Offset;
}

const std::string& ClockText::of(std::uint64_t timeMs)
{
    const bool isClock = timeMs != 0 && m_form != TimeForm::Offset && m_startMs <= EndOfYear9999Ms &&
                         timeMs <= EndOfYear9999Ms - m_startMs;
    if (!isClock) {
        m_second.reset();
        return m_text = timeMs == 0 ? "?" : std::to_string(timeMs);
    }
    const std::uint64_t moment = m_startMs + timeMs;
    if (moment / MsPerSecond != m_second) {
        m_second = moment / MsPerSecond;
        return m_text = isoTime(moment, m_form);
    }
    auto ms = static_cast<unsigned>(moment % MsPerSecond);
    for (std::size_t i = 3; i > 0; --i, ms /= 10) {
        m_text[FirstDigitOfMs + i - 1] = static_cast<char>('0' + ms % 10);
    }
    return m_text;
}

std::string momentText(ClockText& clock, double momentMs)
{
    const auto ms = std::llround(momentMs);
    return ms > 0 ? clock.of(static_cast<std::uint64_t>(ms)) : std::to_string(ms);
}

void useStyles(bool on)
{
    stylesAreUsed = on;
}

std::string styled(const std::string& text, Style style)
{
    if (!stylesAreUsed || text.empty()) {
        return text;
    }
    return "\x1b[" + std::to_string(static_cast<int>(style)) + 'm' + text + "\x1b[0m";
}

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
