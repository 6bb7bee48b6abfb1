// The options of the source "gpsd" and the examples in its help.
#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "sources/gpsd/gpsdsource.h"

namespace RecStation {

namespace {

constexpr auto GpsdExamples = R"(
Position, altitude and speed from TPV reports, heading, pitch and roll from ATT reports of a running gpsd. Of several
devices the first that has a fix counts until it is silent for 5 s; so it is with attitudes. While gpsd is not there, or
its device has no fix, the values are unknown.

Examples:
  recstation -o recordings gpsd localhost
  recstation -o recordings gpsd 192.168.1.20:2947 --device /dev/ttyACM0 --source-time
  recstation -o recordings gpsd localhost feed -)";

void addGpsdOptions(CLI::App& command, GpsdOptions& options)
{
    command.footer(GpsdExamples);
    constexpr std::uint16_t GpsdPort = 2947;
    addParsed(command, "address", options.address, "Where gpsd listens; port 2947 unless it is told",
              addressWith(GpsdPort), "HOST, HOST:PORT or [ADDRESS]:PORT")
        ->option_text("HOST[:PORT]")
        ->required();
    command.add_option("--device", options.device, "Only this device, as gpsd names it (default: as above)")
        ->type_name("PATH");
    command
        .add_option("--variation", options.variationDeg,
                    "Degrees from magnetic to true north, east positive, for compasses (default: as gpsd tells)")
        ->type_name("DEG")
        ->transform(TerminalText::inUnit({"deg", "°"}, -180, 180));
}

}  // namespace

std::shared_ptr<OfferedSource> offerGpsd()
{
    const auto make = [](GpsdOptions options, const SourceRun& run) {
        // Other sources name their devices themselves.
        options.valuePath = run.alone ? receiverOf(run.configuration).valuePath : QString();
        return makeGpsdSource(options, run);
    };
    return std::make_shared<SourceWith<GpsdOptions>>(
        SourceTraits{.name = "gpsd",
                     .description = "Position, heading and attitude from a running gpsd",
                     .turn = 4,
                     .tellsPositions = true,
                     .live = true},
        addGpsdOptions, make);
}

}  // namespace RecStation
