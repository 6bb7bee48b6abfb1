// The options of the source "iq" and the examples in its help.
#include "sources/iq/iqsource.h"

#include <cmath>

#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "sources/offeredsource.h"

namespace RecStation {

using TerminalText::acceptedIf;
using TerminalText::inHertz;

namespace {

constexpr auto Examples = R"(
Examples:
  recstation -o recordings iq capture.cu8 --rate 2M --centre 1090M
  recstation -o recordings iq capture.sigmf-data
  recstation -o recordings iq HDSDR_20200102_030405Z_7100kHz_RF.wav
  recstation -o recordings iq capture.bin --format ci8 --rate 8M --centre 2437M
  rtl-driver | recstation -o recordings iq - --format cu8 --rate 2.048M --centre 98.5M)";

// A number without a unit may be one whose unit was forgotten; the plan knows what is likely.
CLI::Validator centreFrequency(IqOptions& options)
{
    return {[&options, check = inHertz(-HighestCentreHz, HighestCentreHz)](std::string& text) {
                options.centreHasUnit = !TerminalText::parseInUnits(text, {{"", 1}});
                return check(text);
            },
            ""};
}

void addIqOptions(CLI::App& command, IqOptions& options)
{
    command.footer(Examples);
    addInputFile(command, options.file, "IQ samples, I and Q interleaved; - reads standard input");
    command
        .add_option("--format", options.format,
                    std::string(SampleFormatNames) + " (default: SigMF metadata, WAV or suffix)")
        ->check(acceptedIf([](const std::string& text) { return sampleFormatByName(text).has_value(); },
                           SampleFormatNames));
    command
        .add_option("--rate", options.rateHz, "samples a second, as 48k or 2.4M (default: SigMF metadata, WAV or name)")
        ->transform(inHertz(std::nextafter(0.0, 1.0), HighestRateHz, "more than 0 and at most 1e12"));
    command
        .add_option("--centre,--center", options.centreHz,
                    "centre frequency in Hz, as 145.5M (default: SigMF metadata, WAV or name)")
        ->transform(centreFrequency(options));
    addStart(command, options.startTime,
             "time of the first sample, as 2026-11-21T08:30:00.25Z (default: SigMF metadata, WAV or name, otherwise "
             "now)");
    addSpectrumOptions(command, options);
}

}  // namespace

std::shared_ptr<OfferedSource> offerIq()
{
    const auto make = [](IqOptions options, const SourceRun& run) {
        options.valuePath = receiverOf(run.configuration).valuePath;
        options.live = run.live;
        const InputReport report = run.hooks.report;
        return makeIqSource(options, [report](const QString& sentence) { report(QStringLiteral("iq: ") + sentence); });
    };
    return std::make_shared<SourceWith<IqOptions>>(
        SourceTraits{.name = "iq", .description = "IQ samples from a file", .turn = 1, .receives = true}, addIqOptions,
        make);
}

}  // namespace RecStation
