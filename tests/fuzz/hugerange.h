// A map takes the memory of the channels that a text names, up to 512 MiB: fuzzing would do nothing but fill memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace Fuzzing {

/// Whether an even channel range ("34;start,step,count") may have more than 99,999 channels.
[[nodiscard]] inline bool mentionsHugeRange(std::string_view text)
{
    constexpr std::string_view Range = "34;";
    constexpr std::size_t MostDigits = 5;
    for (std::size_t at = text.find(Range); at != std::string_view::npos; at = text.find(Range, at + 1)) {
        if (at > 0 && text[at - 1] == '1') {
            continue;  // "134;" names its channels one by one
        }
        std::string_view fields = text.substr(at + Range.size());
        for (int comma = 0; comma < 2; ++comma) {
            fields.remove_prefix(std::min(fields.size(), fields.find(',')));
            fields.remove_prefix(std::min<std::size_t>(fields.size(), 1));
        }
        if (std::min(fields.size(), fields.find_first_not_of("0123456789")) > MostDigits) {
            return true;
        }
    }
    return false;
}

}  // namespace Fuzzing
