// Which bearings make one fix: those of one transmitter, taken at about one time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace RecTool::Geo {

struct Sighting {
    std::int64_t transmitter = 0;   ///< any number that tells transmitters apart
    unsigned long long timeUs = 0;  ///< when the bearing was taken
};

/// The numbers of the sightings that belong together, by time. A group begins with the first sighting that is in none
/// and takes all of its transmitter that come less than the window later. Groups stand in the order of their
/// transmitters, then of their times.
[[nodiscard]] std::vector<std::vector<std::size_t>> groupSightings(const std::vector<Sighting>& sightings,
                                                                   unsigned long long windowUs);

}  // namespace RecTool::Geo
