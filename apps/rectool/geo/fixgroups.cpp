// Sorting sightings by transmitter and time, and parting them into windows.
#include "fixgroups.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace RecTool::Geo {

std::vector<std::vector<std::size_t>> groupSightings(const std::vector<Sighting>& sightings,
                                                     unsigned long long windowUs)
{
    std::vector<std::size_t> order(sightings.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return std::pair(sightings[a].transmitter, sightings[a].timeUs) <
               std::pair(sightings[b].transmitter, sightings[b].timeUs);
    });
    std::vector<std::vector<std::size_t>> groups;
    for (const std::size_t i : order) {
        const bool joins = !groups.empty() &&
                           sightings[groups.back().front()].transmitter == sightings[i].transmitter &&
                           sightings[i].timeUs - sightings[groups.back().front()].timeUs < windowUs;
        if (!joins) {
            groups.emplace_back();
        }
        groups.back().push_back(i);
    }
    return groups;
}

}  // namespace RecTool::Geo
