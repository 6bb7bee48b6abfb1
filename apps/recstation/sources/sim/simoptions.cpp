// The options of the source "sim" and the examples in its help.
#include <CLI/CLI.hpp>

#include "input/fields.h"
#include "input/optionchecks.h"
#include "sources/offeredsource.h"
#include "sources/sim/simsource.h"

namespace RecStation {

namespace {

constexpr auto SimExamples = R"(
A receiver that scans a band and monitors single frequencies, and a direction finder in a moving vehicle.
The same seed, duration and start give the same recordings on every machine.

Examples:
  recstation -o recordings sim
  recstation -o recordings sim --seed 7 --duration 10min --start 2026-03-01T08:00:00Z)";

// The parser would take a negative number as a huge one, and one that is too large as the largest.
bool isSeed(const std::string& text)
{
    return parseNumber<std::uint64_t>(text).has_value();
}

void addSimOptions(CLI::App& command, SimOptions& options)
{
    command.footer(SimExamples);
    command.add_option("--seed", options.seed, "Number that all chance follows from")
        ->capture_default_str()
        ->check(TerminalText::acceptedIf(isSeed, "a whole number from 0 to 18446744073709551615"));
    constexpr double Longest = 1e9;
    command.add_option("--duration", options.durationSeconds, "Recorded time, such as 90s, 3min, 1h (default: 3min)")
        ->type_name("TIME")
        ->transform(TerminalText::inSeconds(0, Longest));
    addStart(command, options.startTime, "Recorded time of the first change (default: 2026-01-01T00:00:00Z)")
        ->type_name("TIME");
}

}  // namespace

std::shared_ptr<OfferedSource> offerSim()
{
    const auto make = [](SimOptions options, const SourceRun& run) {
        return makeSimSource(options, run.configuration.instances);
    };
    return std::make_shared<SourceWith<SimOptions>>(
        SourceTraits{.name = "sim",
                     .description = "Simulated receiver and direction finder",
                     .turn = 0,
                     .receives = true,
                     .findsDirections = true},
        addSimOptions, make);
}

}  // namespace RecStation
