// What "occupancy" takes, and how it prints what it found.
#pragma once

#include <string>
#include <vector>

#include "analysis/occupancy.h"
#include "replay/recordings.h"

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

/// @param names of channels, may be empty
void printOccupancy(const OccupancyOptions& options, const Recordings& recordings,
                    const std::vector<TypeOccupancy>& types, const std::vector<NamedChannel>& names);

}  // namespace RecTool
