// All fuzz targets by their names.
#include "target.h"

#include <array>

namespace Fuzzing {

std::span<const Target> targets()
{
    static constexpr std::array all = {
        Target{"bearings", runBearings, bearingsSeeds},
        Target{"configuration", runConfiguration, configurationSeeds},
        Target{"feed", runFeed, feedSeeds},
        Target{"gpsd", runGpsd, gpsdSeeds},
        Target{"journal", runJournal, journalSeeds},
        Target{"kraken", runKraken, krakenSeeds},
        Target{"maptext", runMapText, mapTextSeeds},
        Target{"nmea", runNmea, nmeaSeeds},
        Target{"plot", runPlot, plotSeeds},
        Target{"recording", runRecording, recordingSeeds},
        Target{"rectool", runRectool, recordingSeeds},
#if defined(FUZZ_REQUESTS)
        Target{"requests", runRequests, requestsSeeds},
#endif
        Target{"rig", runRig, rigSeeds},
#if defined(FUZZ_SAMPLES)
        Target{"samples", runSamples, samplesSeeds},
#endif
        Target{"sweep", runSweep, sweepSeeds},
        Target{"times", runTimes, timesSeeds},
    };
    return all;
}

const Target& targetOf(std::string_view name)
{
    const auto all = targets();
    const auto found = std::find_if(all.begin(), all.end(), [&](const Target& target) { return target.name == name; });
    if (found == all.end()) {
        throw std::invalid_argument("There is no fuzz target \"" + std::string(name) + "\".");
    }
    return *found;
}

}  // namespace Fuzzing
