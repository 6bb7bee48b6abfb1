// The "nmea" source: where the station is and how it lies, from NMEA 0183 in a file or on standard input.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <QString>

#include "input/badlines.h"
#include "sources/source.h"

namespace RecStation {

/// What the command line says.
struct NmeaOptions {
    std::string file;                    ///< UTF-8; "-" is standard input
    std::optional<long long> firstDay;   ///< since 1970-01-01, of the first time, instead of the dates in the input
    bool arrival = false;                ///< times are those at which the lines are read
    std::optional<double> variationDeg;  ///< east is positive; where no sentence with the heading tells it
    bool fixWeekRollover = false;        ///< add 1,024 weeks to dates that a receiver may have rolled back
    bool strict = false;                 ///< the first bad line ends the run
    std::optional<unsigned long long> splitGapUs;  ///< longer gaps part recordings, and times go back after them
    QString valuePath;                             ///< of a device to be named after the file; empty: none
};

/// Publishes /LOCATIONLATITUDE and /LOCATIONLONGITUDE (degrees, north and east positive), /ALTITUDE (metres above mean
/// sea level), /VELOCITY (metres a second), /TRUEHEADING, /PITCH and /ROLL (degrees). Values that nobody else made are
/// not a number until a sentence gives them. With a value path also Adm/DRIVERNAME and Adm/DEVICE_TYPE below it.
///
/// Sentences without a time lie between the timed sentences around them, see NmeaLog. nextTime throws when a file
/// holds no time or no date, and with strict at the first bad line. Memory is bounded.
std::unique_ptr<Source> makeNmeaSource(const NmeaOptions& options, InputReport report);

}  // namespace RecStation
