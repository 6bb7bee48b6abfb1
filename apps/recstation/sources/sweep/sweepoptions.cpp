// The options of the source "sweep" and the examples in its help.
#include "sources/sweep/sweepsource.h"

#include <CLI/CLI.hpp>

#include "input/optionchecks.h"

namespace recstation {

namespace {

constexpr auto sweepExample = R"(
Every line is a row: date, time, lowest Hz, highest Hz, bin width in Hz, samples, and a level in dB for every bin.
The rows of a sweep are put together to one RF spectrum. rtl_power, hackrf_sweep and others write this.

Examples:
  recstation -o recordings sweep night.csv --utc-offset +01:00
  hackrf_sweep -f 2400:2500 | recstation -o recordings sweep -)";

}  // namespace

void addSweepOptions(CLI::App& command, SweepOptions& options)
{
    command.footer(sweepExample);
    command.add_option("FILE", options.file, "Rows as CSV; - is the standard input")->required()->check(noRecording());
    command.add_option("--utc-offset", options.utcOffset, "How far the rows' times are ahead of UTC, as -05:00")
        ->check(anUtcOffset())
        ->capture_default_str();
    command
        .add_option("--bin-frequency", options.binFrequency,
                    "centre or lower: a value's channel is the middle or the lower edge of its bin")
        ->check(TerminalText::oneOf({"centre", "lower"}))
        ->capture_default_str();
    command.add_flag("--strict", options.strict, "The first bad line ends the run");
}

}  // namespace recstation
