// The bearings of recordings as a heat map: where they say that a transmitter is.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "geo/heatgrid.h"
#include "geofixes.h"
#include "mapoptions.h"
#include "replay/recordings.h"

namespace RecTool {

/// A place where bearings were taken. Moments in milliseconds since the start of the first recording.
struct HeatStation {
    Geo::Position position;
    std::uint64_t bearings = 0;
    double firstMs = 0;
    double lastMs = 0;
};

struct Heat {
    static constexpr std::size_t MostFixed = 100'000;    ///< of so many bearings fixes are worked out
    static constexpr std::size_t MostStations = 10'000;  ///< that are kept

    Geo::HeatSettings settings;
    std::unique_ptr<Geo::HeatGrid> grid;
    std::vector<HeatStation> stations;   ///< in the order of their first bearing
    bool areMoreStations = false;        ///< than are kept
    std::vector<TakenBearing> bearings;  ///< those of the fixes, none where there are too many
    std::vector<BearingGroup> groups;    ///< of them
    std::uint64_t used = 0;              ///< bearings, all with a position
    std::uint64_t withoutPosition = 0;   ///< bearings that are left out
    std::uint64_t ofOtherChannels = 0;   ///< and because of their frequency
    std::uint64_t passedOver = 0;        ///< DFSPECTRUM records that are no bearings
    double firstMs = 0;                  ///< when the first of those used was taken
    double lastMs = 0;

    [[nodiscard]] double highest() const;  ///< evidence of a cell
};

/// Takes the bearings of the span in two passes. @return Fine, or, told, why there is no heat map
[[nodiscard]] ExitCode collectHeat(const MapOptions& options, Recordings& recordings, Heat& heat);

}  // namespace RecTool
