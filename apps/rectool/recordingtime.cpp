#include "recordingtime.h"

#include <charconv>

namespace RecTool {

std::optional<std::uint64_t> parseTime(const std::string& text)
{
    std::uint64_t milliseconds = 0;
    const char* end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, milliseconds);
    if (error != std::errc() || last != end) {
        return std::nullopt;
    }
    return milliseconds;
}

}  // namespace RecTool
