// What "occupancy" takes and finds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "occupancy.h"
#include "replay/recordings.h"
#include "replay/spectra.h"

namespace RecTool {

struct OccupancyOptions : RecordingsOptions {
    std::vector<std::string> types;  ///< keywords or numbers; empty: the RF spectrum
    double thresholdDb = 0;          ///< what is on has at least this level
    bool hasThreshold = false;       ///< otherwise:
    double aboveDb = 10;             ///< so much above the noise floor
    double lowHz = 0;                ///< only channels from here on
    double highHz = 0;               ///< and up to here; 0: to the last one
    double rasterHz = 0;             ///< width of channels; 0: those of the sweeps
    std::string channels;            ///< a file that names them; empty: none
    std::vector<std::string> bands;  ///< "430M-440M"
    bool byHour = false;             ///< of the day
    std::string time = "utc";        ///< whose hours, or "local"
    double accuracy = 0;             ///< percentage points that are wanted to either side; 0: any
    double confidence = 95;          ///< percent
    bool csv = false;
    bool json = false;
};

/// The occupancy of one type.
struct TypeOccupancy {
    std::string device;
    std::string keyword;
    std::int32_t code = 0;
    std::uint64_t sweeps = 0;
    std::vector<ChannelOccupancy> channels;
    std::vector<BandOccupancy> bands;
};

/// Walks the recordings once or, with a noise floor, twice.
/// @param names of channels, may be empty
/// @return those with sweeps; nothing when there are more channels than can be counted
[[nodiscard]] std::optional<std::vector<TypeOccupancy>> countOccupancy(const OccupancyOptions& options,
                                                                       Recordings& recordings,
                                                                       const std::vector<Spectrum>& spectra,
                                                                       const std::vector<NamedChannel>& names,
                                                                       const std::vector<FrequencySpan>& bands);

}  // namespace RecTool
