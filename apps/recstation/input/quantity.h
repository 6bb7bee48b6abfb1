// Numbers with units, as options take them.
#pragma once

#include <initializer_list>
#include <optional>
#include <string_view>

namespace recstation {

/// "48k", "145.5M", "2.4 GHz", "1090e6": a number with one of the prefixes k, M, G and one of the units (both may be
/// missing, and upper and lower case of the units and of k are alike).
[[nodiscard]] std::optional<double> parseQuantity(std::string_view text, std::initializer_list<std::string_view> units);

/// Seconds of "90", "90s", "250ms", "3min" or "1h".
[[nodiscard]] std::optional<double> parseSeconds(std::string_view text);

}  // namespace recstation
