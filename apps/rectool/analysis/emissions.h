// What "emissions" lists: the signals of recordings, where the station was and where they came from.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "emissiontracker.h"
#include "replay/recordings.h"
#include "replay/spectra.h"

namespace RecTool {

struct EmissionsOptions : RecordingsOptions {
    std::vector<std::string> types;  ///< keywords or numbers; empty: the RF and the IF spectrum
    double lowHz = 0;                ///< only channels from here on
    double highHz = 0;               ///< and up to here; 0: to the last one
    std::string threshold;           ///< a level in dB; empty: above the noise floor
    double aboveDb = 10;             ///< the noise floor
    double gapSeconds = 1;           ///< an emission may be off for so long
    double unseenSeconds = 60;       ///< nobody may measure its channels for so long
    double apartHz = 0;              ///< channels no further apart are one signal; 0: two widths of a channel
    double minDurationSeconds = 0;   ///< shorter ones are left out
    std::uint64_t minSweeps = 1;
    double belowDb = 0;           ///< the band is where levels are at most so much below the highest; 0: by power
    double percent = 99;          ///< of the power that the band holds
    std::string time = "offset";  ///< how times are shown; or "utc", "local"
    std::string unit = "dB";      ///< of the levels
    bool csv = false;
    bool json = false;
    bool geoJson = false;
    bool bookmark = false;  ///< write them into a copy
    std::string output;     ///< the copy, or the file of GeoJSON
};

/// The best bearing of an emission.
struct EmissionBearing {
    double azimuthDeg = 0;  ///< clockwise from true north where the heading was recorded, else from the antenna's zero
    bool isTrue = false;
    double quality = 0;  ///< 0 to 100; NaN: not measured
    double momentMs = 0;
    RecordName record;
    std::optional<Geo::Position> place;  ///< where it was taken
    std::uint64_t count = 0;             ///< of all its bearings
};

struct FoundEmission : Emission {
    std::size_t spectrum = 0;  ///< that shows it
    std::optional<EmissionBearing> bearing;
};

struct FoundEmissions {
    std::vector<FoundEmission> all;  ///< by their start, then by frequency
    std::string problem;             ///< why they cannot be listed, a sentence; empty if they can
    std::uint64_t sweeps = 0;        ///< with a level
};

/// Finds them in the span, with their bearings: two or three passes over the records, one less with a fixed threshold.
[[nodiscard]] FoundEmissions findEmissions(Recordings& recordings, const std::vector<Spectrum>& spectra,
                                           const EmissionsOptions& options);

void printEmissions(const EmissionsOptions& options, const Recordings& recordings, const std::vector<Spectrum>& spectra,
                    const FoundEmissions& found);

/// What is printed with --json.
void writeEmissionsJson(const EmissionsOptions& options, const Recordings& recordings,
                        const std::vector<Spectrum>& spectra, const FoundEmissions& found, std::ostream& out);

/// Those with a position, one feature a line. @return how many have none
std::size_t writeEmissionFeatures(const EmissionsOptions& options, const Recordings& recordings,
                                  const std::vector<Spectrum>& spectra, const FoundEmissions& found,
                                  const std::function<void(const std::string&)>& write);

}  // namespace RecTool
