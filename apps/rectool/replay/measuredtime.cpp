// The time stamp in a map's text, and its moment counted from the recording's start.
#include "measuredtime.h"

#include <charconv>
#include <limits>

#include <values/recordingtext.h>

#include "printing/text.h"

namespace RecTool {

std::optional<std::uint64_t> measuredUs(const std::string& text)
{
    constexpr std::size_t Tag = 2;  // "6;" of a level map, "7;" of a bearing map
    const bool isMap = text.compare(0, Tag, "6;") == 0 || text.compare(0, Tag, "7;") == 0;
    if (!isMap) {
        return std::nullopt;
    }
    std::uint64_t stamp = 0;
    const char* end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data() + Tag, end, stamp);
    const bool isWhole = error == std::errc() && (last == end || *last == '|');
    return isWhole && stamp != 0 ? std::optional(stamp) : std::nullopt;
}

double momentMs(const Recording2::Inspection::Record& record, std::uint64_t startMs)
{
    constexpr double UsPerMs = 1000;
    constexpr double LongestBeforeMs = 24 * 3600 * 1000.0;  // what is older was stamped by a clock nobody had set
    const std::optional<std::uint64_t> measured = measuredUs(record.data);
    const auto filed = static_cast<double>(record.timeMs);
    if (!measured || startMs == 0 || startMs > EndOfYear9999Ms) {
        return filed;
    }
    const std::uint64_t startUs = startMs * 1000;
    if (*measured < startUs) {
        const double before = static_cast<double>(startUs - *measured) / UsPerMs;
        return before > LongestBeforeMs || values::CarriesChannelRange(record.data) ? filed : -before;
    }
    return static_cast<double>(*measured - startUs) / UsPerMs;
}

double firstMoment(std::uint64_t fromMs)
{
    return fromMs == 0 ? -std::numeric_limits<double>::infinity() : static_cast<double>(fromMs);
}

std::string utcExactly(std::uint64_t usSince1970)
{
    constexpr std::uint64_t UsPerMs = 1000;
    constexpr int Digits = 3;
    std::string text = utc(usSince1970 / UsPerMs);
    const std::uint64_t us = usSince1970 % UsPerMs;
    const std::size_t end = text.rfind(" UTC");
    if (us != 0 && end != std::string::npos) {
        const std::string digits = std::to_string(us);
        text.insert(end, std::string(Digits - digits.size(), '0') + digits);
    }
    return text;
}

}  // namespace RecTool
