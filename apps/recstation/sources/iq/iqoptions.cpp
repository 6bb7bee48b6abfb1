// The options of the source "iq" and the examples in its help.
#include "sources/iq/iqsource.h"

#include <cmath>

#include <CLI/CLI.hpp>

#include "input/fields.h"
#include "input/optionchecks.h"
#include "sources/iq/iqplan.h"
#include "sources/offeredsource.h"

namespace RecStation {

using TerminalText::acceptedIf;
using TerminalText::inHertz;
using TerminalText::inUnit;

namespace {

constexpr auto Examples = R"(
Examples:
  recstation -o recordings iq capture.cu8 --rate 2M --centre 1090M
  recstation -o recordings iq capture.sigmf-data
  rtl-driver | recstation -o recordings iq - --format cu8 --rate 2.048M --centre 98.5M)";

bool isFftSize(const std::string& text)
{
    const auto size = parseNumber<std::size_t>(text);
    return size && *size >= SmallestFft && *size <= LargestFft && *size % 2 == 0;
}

bool isAverage(const std::string& text)
{
    return parseNumber<std::size_t>(text).value_or(LargestAverage + 1) <= LargestAverage;
}

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
    command.add_option("--format", options.format, "cu8, ci16_le or cf32_le (default: SigMF metadata or suffix)")
        ->check(acceptedIf([](const std::string& text) { return sampleFormatByName(text).has_value(); },
                           "cu8, ci16_le or cf32_le"));
    command.add_option("--rate", options.rateHz, "samples a second, as 48k or 2.4M (default: SigMF metadata)")
        ->transform(inHertz(std::nextafter(0.0, 1.0), HighestRateHz, "more than 0 and at most 1e12"));
    command
        .add_option("--centre,--center", options.centreHz,
                    "centre frequency in Hz, as 145.5M (default: SigMF metadata)")
        ->transform(centreFrequency(options));
    command
        .add_option("--start", options.start,
                    "time of the first sample, as 2026-11-21T08:30:00.25Z (default: SigMF metadata, otherwise now)")
        ->check(aTime());
    command.add_option("--fft", options.fftSize, "FFT size, even, 16 to 1048576")
        ->check(acceptedIf(isFftSize, "an even number from 16 to 1048576"))
        ->capture_default_str();
    command
        .add_option("--window", options.window,
                    "flattop (true levels), hann (fine resolution) or blackman-harris (in between)")
        ->check(TerminalText::oneOf({"flattop", "hann", "blackman-harris"}))
        ->capture_default_str();
    command.add_option("--overlap", options.overlapPercent, "overlap of consecutive FFTs in percent, 0 to 95")
        ->transform(inUnit({"%"}, 0, LargestOverlapPercent))
        ->capture_default_str();
    command
        .add_option("--average", options.average,
                    "FFTs averaged to one spectrum; 0: as many as last 4 ms, so that record times stay true")
        ->check(acceptedIf(isAverage, "a whole number from 0 to 1000000"))
        ->capture_default_str();
    command
        .add_option("--as", options.spectrum,
                    "rf: RF spectrum of a panorama scan; if: IF spectrum of a fixed frequency")
        ->check(TerminalText::oneOf({"rf", "if"}))
        ->capture_default_str();
}

}  // namespace

std::shared_ptr<OfferedSource> offerIq()
{
    const auto make = [](IqOptions options, const SourceRun& run) {
        options.valuePath = receiverOf(run.configuration).valuePath;
        const InputReport report = run.hooks.report;
        return makeIqSource(options, [report](const QString& sentence) { report(QStringLiteral("iq: ") + sentence); });
    };
    return std::make_shared<SourceWith<IqOptions>>(
        SourceTraits{.name = "iq", .description = "IQ samples from a file", .turn = 1, .receives = true}, addIqOptions,
        make);
}

}  // namespace RecStation
