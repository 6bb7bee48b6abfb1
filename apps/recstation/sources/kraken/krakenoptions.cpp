// The options of the source "kraken" and the examples in its help.
#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "sources/kraken/krakensource.h"

namespace RecStation {

using TerminalText::inSeconds;
using TerminalText::inUnit;

namespace {

constexpr auto KrakenExamples = R"(
Asks the direction finder for its CSV (format "Kraken App") or XML (format "DF Aggregator"), and records every bearing
that is new. The same CSV, collected in a file, is read by bearings.

Examples:
  recstation -o recordings kraken krakensdr
  recstation -o recordings kraken http://192.168.1.40:8081/doa.xml --interval 1s
  recstation -o recordings kraken krakensdr --no-position gpsd localhost)";

constexpr double ShortestInterval = 0.05;
constexpr double LongestInterval = 3600;
constexpr double FullTurnDeg = 360;

void addKrakenOptions(CLI::App& command, KrakenOptions& options)
{
    command.footer(KrakenExamples);
    addParsed(command, "URL", options.url,
              "http://HOST:PORT/PATH, or HOST for http://HOST:8081/DOA_value.html, as a KrakenSDR serves it",
              parseHttpUrl, "an address such as http://krakensdr:8081/DOA_value.html")
        ->required();
    command.add_option("--interval", options.intervalSeconds, "Time from one request to the next")
        ->type_name("TIME")
        ->transform(inSeconds(ShortestInterval, LongestInterval))
        ->capture_default_str();
    command
        .add_option("--heading", options.headingDeg,
                    "True heading of azimuth 0 in degrees (default: as the finder tells)")
        ->transform(inUnit({"deg", "°"}, -FullTurnDeg, FullTurnDeg));
    command.add_flag_callback(
        "--mirror", [&options] { options.mirror = Mirror::Yes; },
        "Its angles are counter-clockwise (default: those of XML, and those of CSV as its 360 values tell)");
    command.add_flag_callback(
        "--no-mirror", [&options] { options.mirror = Mirror::No; }, "They are clockwise: take them as they are");
    command.add_flag("--no-position", options.noPosition,
                     "Leave positions and headings out, because gpsd or another source tells them");
}

}  // namespace

std::shared_ptr<OfferedSource> offerKraken()
{
    const auto make = [](KrakenOptions options, const SourceRun& run) {
        options.valuePath = finderOf(run.configuration).valuePath;
        return makeKrakenSource(options, run);
    };
    return std::make_shared<SourceWith<KrakenOptions>>(SourceTraits{.name = "kraken",
                                                                    .description = "A KrakenSDR direction finder, live",
                                                                    .turn = 3,
                                                                    .findsDirections = true,
                                                                    .live = true},
                                                       addKrakenOptions, make);
}

}  // namespace RecStation
