// Parsing frequencies in Hz and times in ms, s, min, h and d; the units of keywords.
#include "units.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include <terminaltext/quantity.h>

namespace RecTool {

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

}  // namespace RecTool
