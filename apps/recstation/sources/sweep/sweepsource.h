// The "sweep" source: the CSV that sweep programs of receivers write, from files or standard input.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QString>

#include "input/badlines.h"
#include "sources/source.h"

namespace RecStation {

/// What the command line says.
struct SweepOptions {
    std::vector<std::string> files;                ///< UTF-8; "-", which stands alone, is standard input
    long long utcOffsetUs = 0;                     ///< local time minus UTC, microseconds
    std::string binFrequency = "centre";           ///< centre or lower: where in its bin a value's channel lies
    bool strict = false;                           ///< the first bad line ends the run
    std::optional<unsigned long long> splitGapUs;  ///< longer gaps part recordings, and times go back after them
    QString valuePath = "/Devices/Rx1";
    bool live = false;  ///< maps have the time of the step, not one of their own
};

/// Publishes, below the value path:
/// - Scn/RfSpectrum, one change a sweep, with the time of the sweep's first row as the map's time stamp, and the mode
///   key 5 (panorama scan) in Gen/DRVCOMMANDS
/// - Scn/StartFreq, Scn/StopFreq (edges of the sweep), Scn/StepFreq (width of its first row's bins), which change with
///   the range of the sweeps; Scn/StartLevel, Scn/StopLevel, Adm/DRIVERNAME, Adm/DEVICE_TYPE
///
/// A sweep ends where a row covers again what one of its rows covered, where a row of another time lies below all of
/// them, at the end of a file, or, once two sweeps in a row had the same rows, with the last of these. A stop of the
/// process leaves what was read of a sweep as unfinished.
///
/// Several files are read in the order of the times of their first rows (SweepFiles); where one begins before the one
/// before it ends, that is told.
///
/// nextTime throws when the input holds no sweep, and with strict at the first bad line. Where times go back, nextTime
/// and the map's time stamp stay at the latest time so far. Memory depends on the values of one sweep only.
std::unique_ptr<Source> makeSweepSource(const SweepOptions& options, InputReport report);

}  // namespace RecStation
