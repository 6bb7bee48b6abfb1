// The options of the source "nmea" and the examples in its help.
#include "sources/nmea/nmeasource.h"

#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "input/timetext.h"
#include "sources/offeredsource.h"

namespace RecStation {

using TerminalText::inUnit;

namespace {

constexpr auto NmeaExample = R"(
Position, altitude, speed, heading, pitch and roll from GGA, GNS, GLL, RMC, VTG, HDT, THS, HDG and HDM (both with a
variation), XDR and PASHR of any talker. Other sentences are skipped. Times are those of the sentences, dates those of
RMC and ZDA; what arrives live without a date has the time of its arrival.

Examples:
  recstation -o recordings nmea drive.log
  recstation -o recordings nmea compass.log --date 2026-11-21
  recstation -o recordings nmea /dev/ttyUSB0 --arrival --variation -14.5
  recstation -o recordings sweep night.csv nmea drive.log --fix-week-rollover)";

void addNmeaOptions(CLI::App& command, NmeaOptions& options)
{
    command.footer(NmeaExample);
    addInputFile(command, options.file, "NMEA 0183 sentences; - is the standard input");
    const auto parseDay = [](const std::string& text) {
        const auto day = LogDateFormat("yyyy-MM-dd").parse(text);
        return day.value_or(-1) >= 0 ? day : std::nullopt;
    };
    addParsed(command, "--date", options.firstDay,
              "Day of the first time, as 2026-11-21; the dates in RMC and ZDA do not count", parseDay,
              "a day from 1970 on such as 2026-11-21")
        ->type_name("DATE");
    command.add_flag(
        "--arrival", options.arrival,
        "Times are those in front of the lines of a file, or at which they are read, whatever the sentences tell");
    command
        .add_option(
            "--variation", options.variationDeg,
            "Degrees from magnetic to true north, east positive, for HDM, and HDG that tells none (default: as in RMC)")
        ->type_name("DEG")
        ->transform(inUnit({"deg", "°"}, -180, 180));
    command.add_flag("--fix-week-rollover", options.fixWeekRollover,
                     "Add 1,024 weeks to dates that a receiver may have rolled back");
    addStrict(command, options.strict);
}

}  // namespace

std::shared_ptr<OfferedSource> offerNmea()
{
    const auto make = [](NmeaOptions options, const SourceRun& run) {
        options.splitGapUs = run.splitGapUs;
        options.arrival = options.arrival || (run.live && !run.sourceTime);  // at once, not with the next second
        // Other sources name their devices themselves.
        options.valuePath = run.alone ? receiverOf(run.configuration).valuePath : QString();
        return makeNmeaSource(options, run.hooks.report);
    };
    return std::make_shared<SourceWith<NmeaOptions>>(
        SourceTraits{.name = "nmea",
                     .description = "Position, heading and attitude from NMEA 0183",
                     .turn = 4,  // after the bearings, whose heading is only the first
                     .tellsPositions = true},
        addNmeaOptions, make);
}

}  // namespace RecStation
