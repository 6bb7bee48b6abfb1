// The options of the source "bearings" and the example in its help.
#include "sources/bearings/bearingssource.h"

#include <stdexcept>

#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "input/timetext.h"
#include "sources/offeredsource.h"

namespace RecStation {

using TerminalText::inUnit;

namespace {

constexpr auto BearingsExample = R"(
Columns are found by their names in the first line, upper and lower case alike. Every row with an azimuth becomes a
bearing on the channel of its frequency, with the row's own time; rows whose azimuth is empty, NA or NaN are skipped.

Example, for a log that begins with
  Date;Time;GID;Station;Gradosx;minx;segx;Northing;Gradosy;miny;segy;Easting;altitude;frec;channel;dial;Azimuth;species
  01/14/17;5:31;1;E1;4;38;24.2;4.640055556;75;32;50;-74.45277778;1942;150.015;A;1;163;Myadestes ralloides
with local times of Colombia and longitudes that are west without a sign:
  recstation -o recordings bearings telemetria.csv --date-format MM/dd/yy --utc-offset -05:00
    --latitude-column Gradosx,minx,segx --longitude-column Gradosy,miny,segy --west --frequency-column frec
A log without that line, and the lines of a KrakenSDR, which are known as such:
  recstation -o recordings bearings bare.csv --columns timestamp,frequency,azimuth,
  recstation -o recordings bearings kraken.csv)";

std::optional<char> parseSeparator(const std::string& text)
{
    if (text == "auto" || text == "tab") {
        return text == "tab" ? '\t' : BearingsOptions::GuessedSeparator;
    }
    return text.size() == 1 && text.find_first_of("\"\r\n") == std::string::npos ? std::optional(text.front())
                                                                                 : std::nullopt;
}

std::optional<LogDateFormat> parseDateFormat(const std::string& text)
{
    try {
        return LogDateFormat(text);
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

void addColumns(CLI::App& command, BearingsOptions& options)
{
    command
        .add_option("--columns", options.columns,
                    "The log has no line with names: those of its columns, in order; empty for one of no use")
        ->type_name("NAME,NAME,...");
    command.add_option("--timestamp-column", options.timestampColumn,
                       "Column of date and time in one, ISO 8601 or (milli)seconds since 1970 (default: timestamp, or "
                       "time, if there is no date apart)");
    command.add_option("--date-column", options.dateColumn, "Column of the date")->capture_default_str();
    command.add_option("--time-column", options.timeColumn, "Column of the time of day (5:31, 05:31:07.25)")
        ->capture_default_str();
    command.add_option("--station-column", options.stationColumn, "Column of the station (default: station, if any)");
    command
        .add_option("--latitude-column", options.latitudeColumns,
                    "Column of the latitude in degrees, or DEGREES,MINUTES,SECONDS (default: latitude, if any)")
        ->type_name("NAME[,NAME[,NAME]]");
    command
        .add_option("--longitude-column", options.longitudeColumns,
                    "Column of the longitude, in the same way (default: longitude, if any)")
        ->type_name("NAME[,NAME[,NAME]]");
    command.add_option("--altitude-column", options.altitudeColumn,
                       "Column of the altitude in metres (default: altitude, if any)");
    command.add_option("--frequency-column", options.frequencyColumn, "Column of the frequency")->capture_default_str();
    command.add_option("--azimuth-column", options.azimuthColumn, "Column of the azimuth, 0 to 360 degrees")
        ->capture_default_str();
    command.add_option("--elevation-column", options.elevationColumn,
                       "Column of the elevation, -90 to 90 degrees (default: elevation, if any; \"\" is none)");
    command.add_option("--level-column", options.levelColumn, "Column of the level in dB (default: level, if any)");
    command.add_option("--quality-column", options.qualityColumn,
                       "Column of the quality, 0 to 100 (default: quality, if any)");
    command.add_option("--heading-column", options.headingColumn,
                       "Column of the true heading of azimuth 0 in degrees, where azimuths are relative to it");
}

void addBearingsOptions(CLI::App& command, BearingsOptions& options)
{
    command.footer(BearingsExample);
    addInputFile(command, options.file, "Log as CSV; - is the standard input");
    addParsed(command, "--separator", options.separator, "A character, tab or auto (one of ; , and tab)",
              parseSeparator, "one character, tab or auto")
        ->default_str("auto");
    command.add_flag("--decimal-comma", options.decimalComma, "Numbers have a decimal comma: 433,92");
    addColumns(command, options);
    addParsed(command, "--date-format", options.dateFormat, "d, dd, M, MM, yy (1970 to 2069) and yyyy, as in MM/dd/yy",
              parseDateFormat, "one day, month and year, as in MM/dd/yy")
        ->default_str(options.dateFormat.text());
    addUtcOffset(command, options.utcOffsetUs, "How far the log's times are ahead of UTC, as -05:00");
    command.add_option("--station", options.station, "Only the bearings of this station");
    command.add_flag("--no-position", options.noPosition,
                     "Leave positions and altitudes out, because nmea or another source tells them");
    command.add_flag("--south", options.south, "Latitudes have no sign and are south");
    command.add_flag("--west", options.west, "Longitudes have no sign and are west");
    command
        .add_option_function<std::string>(
            "--frequency-unit",
            [&options](const std::string& unit) {
                options.hzPerUnit = TerminalText::parseQuantity('1' + unit, {"Hz"});
            },
            "Hz, kHz, MHz or GHz (default: as the column's name tells, otherwise MHz)")
        ->check(TerminalText::oneOf({"Hz", "kHz", "MHz", "GHz"}));
    command
        .add_option("--heading", options.headingDeg,
                    "True heading of azimuth 0 in degrees, such as a compass's declination (default: as the log tells, "
                    "otherwise 0)")
        ->transform(inUnit({"deg", "°"}, -360, 360));
    command.add_flag_callback(
        "--mirror", [&options] { options.mirror = Mirror::Yes; },
        "A KrakenSDR's angles are counter-clockwise (default: as its 360 values tell)");
    command.add_flag_callback(
        "--no-mirror", [&options] { options.mirror = Mirror::No; }, "They are clockwise: take them as they are");
    addStrict(command, options.strict, "Record nothing when a row is bad");
}

}  // namespace

std::shared_ptr<OfferedSource> offerBearings()
{
    const auto make = [](BearingsOptions options, const SourceRun& run) {
        options.splitGapUs = run.splitGapUs;
        options.live = run.live;
        options.valuePath = finderOf(run.configuration).valuePath;
        options.positionElsewhere = run.positionElsewhere;
        return makeBearingsSource(options, run.hooks.report);
    };
    return std::make_shared<SourceWith<BearingsOptions>>(SourceTraits{.name = "bearings",
                                                                      .description = "A direction finder's log as CSV",
                                                                      .turn = 3,
                                                                      .findsDirections = true,
                                                                      .readsAhead = true},
                                                         addBearingsOptions, make);
}

}  // namespace RecStation
