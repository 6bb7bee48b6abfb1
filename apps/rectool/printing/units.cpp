// Parsing frequencies in Hz and times in ms, s, min, h and d; the units of keywords.
#include "units.h"

#include <charconv>
#include <cmath>
#include <map>
#include <system_error>

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
    static const std::map<std::string, const char*> units{{"LEVEL", "dB"},
                                                          {"FIELDSTRENGTH", "dB"},
                                                          {"ATTENUATION", "dB"},
                                                          {"SQUELCHVALUE", "dB"},
                                                          {"RFYLIMIT", "dB"},
                                                          {"STARTLEVEL", "dB"},
                                                          {"STOPLEVEL", "dB"},
                                                          {"IFSTARTLEVEL", "dB"},
                                                          {"IFSTOPLEVEL", "dB"},
                                                          {"IFLEVELTHRESHOLD", "dB"},
                                                          {"FREQUENCY", "Hz"},
                                                          {"FREQOFFSET", "Hz"},
                                                          {"STARTFREQ", "Hz"},
                                                          {"STOPFREQ", "Hz"},
                                                          {"STEPFREQ", "Hz"},
                                                          {"BANDWIDTH", "Hz"},
                                                          {"DFBANDWIDTH", "Hz"},
                                                          {"AFBANDWIDTH", "Hz"},
                                                          {"IFSPAN", "Hz"},
                                                          {"ELEVATION", "\u00b0"},
                                                          {"ELEVATIONSTART", "\u00b0"},
                                                          {"ELEVATIONSTOP", "\u00b0"},
                                                          {"RFELEVATIONRULER", "\u00b0"},
                                                          {"PITCH", "\u00b0"},
                                                          {"ROLL", "\u00b0"},
                                                          {"LOCATIONLATITUDE", "\u00b0"},
                                                          {"LOCATIONLONGITUDE", "\u00b0"},
                                                          {"TRUEHEADING", "\u00b0"},
                                                          {"AZIMUTH", "\u00b0"},
                                                          {"AZIMUTHSTART", "\u00b0"},
                                                          {"AZIMUTHSTOP", "\u00b0"},
                                                          {"RFAZIMUTHRULER", "\u00b0"},
                                                          {"ALTITUDE", "m"},
                                                          {"VELOCITY", "m/s"},
                                                          {"QUALITY", "%"}};
    const auto found = units.find(keyword);
    return found == units.end() ? "" : found->second;
}

}  // namespace RecTool
