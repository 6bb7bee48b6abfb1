// Numbers, changes and bearings of a stretch of time, out of what is kept of them and, where it is little, of the
// records.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "keptcolumns.h"

namespace RecView {

// Any thread. A stretch includes its ends; what is in force at its beginning belongs to it, under its own time. Times
// ascend.

struct NumberCurve {
    std::vector<double> ms;  ///< where each point begins
    std::vector<double> min;
    std::vector<double> max;
    std::vector<double> last;
    bool exact = true;  ///< every point is one record
};
/// @param points about as many are given at most, or every record where there are few
void appendNumbers(const Overview& overview, std::int32_t code, const Stretch& time, std::size_t points,
                   NumberCurve& curve);

struct TextChange {
    double ms = 0;
    std::string text;
};
/// @return how many there are besides, which are not kept
std::uint64_t appendChanges(const Overview& overview, std::int32_t code, const Stretch& time, std::size_t most,
                            std::vector<TextChange>& changes);

/// @param most of more than that so many, evenly
/// @return how many there are
double appendBearings(const Overview& overview, const std::vector<Recording2::Inspection::TypeEntry>& types,
                      const Stretch& time, std::size_t most, std::vector<KeptBearing>& bearings);
/// Where the station was.
void appendPositions(const Overview& overview, const Stretch& time, std::size_t most,
                     std::vector<KeptPosition>& positions);

/// What has records so far.
[[nodiscard]] std::vector<KeptKind> kindsOf(const Overview& overview);

/// Takes out items of which there are too many, evenly. @return how many
template <typename Item>
std::size_t thin(std::vector<Item>& items, std::size_t most)
{
    const std::size_t all = items.size();
    if (all <= most) {
        return 0;
    }
    for (std::size_t i = 0; i < most; ++i) {
        items[i] = std::move(items[i * all / most]);
    }
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(most), items.end());
    return all - most;
}

}  // namespace RecView
