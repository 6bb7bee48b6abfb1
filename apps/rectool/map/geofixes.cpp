// Grouping bearings into time windows, and the fix of each.
#include "geofixes.h"

#include <cmath>
#include <utility>

namespace RecTool {

std::vector<BearingGroup> findFixes(const std::vector<TakenBearing>& bearings, const Geo::FixSettings& settings,
                                    unsigned long long windowUs)
{
    constexpr double PerHz = 1000;  // frequencies are the same to 0.001 Hz, whatever range they were computed from
    std::vector<Geo::Sighting> sightings;
    sightings.reserve(bearings.size());
    for (const TakenBearing& bearing : bearings) {
        sightings.push_back({std::llround(bearing.frequencyHz * PerHz), bearing.measuredUs});
    }
    std::vector<BearingGroup> groups;
    for (std::vector<std::size_t>& numbers : Geo::groupSightings(sightings, windowUs)) {
        std::vector<Geo::LineOfBearing> lines;
        lines.reserve(numbers.size());
        for (const std::size_t number : numbers) {
            lines.push_back(bearings[number].line);
        }
        groups.push_back({std::move(numbers), Geo::estimateFix(lines, settings)});
    }
    return groups;
}

}  // namespace RecTool
