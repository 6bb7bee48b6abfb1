// The fixes of a recording: its bearings grouped by frequency and time, and what each group gives.
#pragma once

#include <cstddef>
#include <variant>
#include <vector>

#include "geo/fix.h"
#include "replay/linesofbearing.h"

namespace RecTool {

struct BearingGroup {
    std::vector<std::size_t> bearings;  ///< their numbers, by time
    std::variant<Geo::Fix, Geo::NoFix> result;
    [[nodiscard]] const Geo::Fix* fix() const { return std::get_if<Geo::Fix>(&result); }
};

/// @param windowUs the longest time between the first and the last bearing of a fix
[[nodiscard]] std::vector<BearingGroup> findFixes(const std::vector<TakenBearing>& bearings,
                                                  const Geo::FixSettings& settings, unsigned long long windowUs);

}  // namespace RecTool
