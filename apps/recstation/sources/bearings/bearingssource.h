// The "bearings" source: a direction finder's log, as CSV from a file or standard input.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <QString>

#include "input/badlines.h"
#include "input/timetext.h"
#include "sources/bearings/krakenrow.h"
#include "sources/source.h"

namespace RecStation {

/// What the command line says. Columns are found by their names in the first line, upper and lower case alike. A
/// column of the type std::optional may be missing while nobody names it.
struct BearingsOptions {
    std::string file;                               ///< UTF-8; "-" is standard input
    static constexpr char GuessedSeparator = '\0';  ///< the one of ; , and tab that the first line has most of
    char separator = GuessedSeparator;
    bool decimalComma = false;  ///< numbers have one; then a comma is no separator that is guessed
    /// Names with commas between, of a log without a first line that names them; empty: it has one.
    std::string columns;
    std::optional<std::string> timestampColumn;  ///< date and time in one
    std::string dateColumn = "date";
    std::string timeColumn = "time";
    LogDateFormat dateFormat{"yyyy-MM-dd"};
    long long utcOffsetUs = 0;  ///< local time minus UTC, microseconds
    std::optional<std::string> stationColumn;
    std::string station;  ///< only this station's bearings; empty: all
    /// Degrees, or degrees, minutes and seconds in two or three columns named with commas between.
    std::optional<std::string> latitudeColumns;
    std::optional<std::string> longitudeColumns;
    bool noPosition = false;                    ///< leave positions and altitudes out
    bool positionElsewhere = false;             ///< another source of the run tells them: none in the log is no oddity
    bool south = false;                         ///< latitudes have no sign and are south
    bool west = false;                          ///< longitudes have no sign and are west
    std::optional<std::string> altitudeColumn;  ///< metres
    std::string frequencyColumn = "frequency";
    std::optional<double> hzPerUnit;  ///< of the frequency; nothing: as the column's name tells, else MHz
    std::string azimuthColumn = "azimuth";
    std::optional<std::string> elevationColumn;  ///< degrees
    std::optional<std::string> levelColumn;      ///< dB
    std::optional<std::string> qualityColumn;    ///< 0 to 100
    std::string headingColumn;                   ///< true heading of azimuth 0; empty: none
    /// -360 to 360, true heading of azimuth 0: the declination of a compass, a vehicle's heading. Nothing: as the log
    /// tells, otherwise 0.
    std::optional<double> headingDeg;
    Mirror mirror = Mirror::Auto;                  ///< of the angles of a KrakenSDR's log
    bool strict = false;                           ///< refuse a log with bad rows before anything is recorded
    std::optional<unsigned long long> splitGapUs;  ///< longer gaps part recordings, and times go back after them
    QString valuePath = "/Devices/Df1";
    bool live = false;  ///< maps have the time of the step, not one of their own
};

/// Publishes, below the value path where no "/" stands in front:
/// - /DfSpectrum, a ValueMap of bearings whose channels are the frequencies in the log, ascending; every row with an
///   azimuth is one change of one channel, with the row's time as the map's time stamp
/// - before it /FREQUENCY and, where the log has them, /LOCATIONLATITUDE, /LOCATIONLONGITUDE (degrees), /ALTITUDE
///   (metres; not a number where the row has none)
/// - once /TRUEHEADING, Scn/StartFreq, Scn/StopFreq (lowest and highest channel), Adm/DEVICE_TYPE and Adm/DRIVERNAME
///   (the station if all bearings are of one, otherwise the file's name)
///
/// The map is recorded only by a recorder whose REC_DF is true when it is switched on: whoever runs the source chooses
/// a recorder for direction finding, or sets REC_DF below its status path, and gives the source its value path.
///
/// Rows are played in their order. Where their times go back, nextTime and the map's time stamp stay at the latest time
/// so far: a recorder takes the time stamp of a map for its clock, and where that runs back a recording ends in front
/// of its last records.
///
/// Rows whose azimuth is empty, NA or NaN and rows of other stations are skipped. Rows with a field that cannot be
/// used are bad: reported (the first twenty one by one) and counted. prepare reads the whole log to find channels and
/// bad rows; it throws what is wrong with the options or the columns, when there is no bearing, and with strict when
/// there is a bad row. step throws when the file has changed since. Memory depends on the number of channels only,
/// unless the log comes through a pipe (see LogInput).
std::unique_ptr<Source> makeBearingsSource(const BearingsOptions& options, InputReport report);

}  // namespace RecStation
