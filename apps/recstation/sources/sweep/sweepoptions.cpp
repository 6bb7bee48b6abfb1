// The options of the source "sweep" and the examples in its help.
#include "sources/sweep/sweepsource.h"

#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "sources/offeredsource.h"

namespace RecStation {

namespace {

constexpr auto SweepExample = R"(
Every line is a row: date, time, lowest Hz, highest Hz, bin width in Hz, samples, and a level in dB for every bin.
The rows of a sweep are put together to one RF spectrum. rtl_power, hackrf_sweep and others write this.

Examples:
  recstation -o recordings sweep night.csv --utc-offset +01:00
  recstation -o recordings sweep night*.csv         in the order of their times
  hackrf_sweep -f 2400:2500 | recstation -o recordings sweep -)";

void addSweepOptions(CLI::App& command, SweepOptions& options)
{
    command.footer(SweepExample);
    addInputFile(command, options.files, "Rows as CSV, one file or several; - is the standard input");
    addUtcOffset(command, options.utcOffsetUs, "How far the rows' times are ahead of UTC, as -05:00");
    command
        .add_option("--bin-frequency", options.binFrequency,
                    "centre or lower: a value's channel is the middle or the lower edge of its bin")
        ->check(TerminalText::oneOf({"centre", "lower"}))
        ->capture_default_str();
    addStrict(command, options.strict);
}

}  // namespace

std::shared_ptr<OfferedSource> offerSweep()
{
    const auto make = [](SweepOptions options, const SourceRun& run) {
        options.splitGapUs = run.splitGapUs;
        options.live = run.live;
        options.valuePath = receiverOf(run.configuration).valuePath;
        return makeSweepSource(options, run.hooks.report);
    };
    return std::make_shared<SourceWith<SweepOptions>>(
        SourceTraits{
            .name = "sweep", .description = "Spectra of a sweeping receiver as CSV", .turn = 2, .receives = true},
        addSweepOptions, make);
}

}  // namespace RecStation
