// Checks and help of the options of spectra, and of receivers.
#include <CLI/CLI.hpp>

#include <terminaltext/quantity.h>

#include "input/fields.h"
#include "input/optionchecks.h"
#include "iqspectra/receiver.h"

namespace RecStation {

namespace {

bool isFftSize(const std::string& text)
{
    const auto size = parseNumber<std::size_t>(text);
    return size && *size >= SmallestFft && *size <= LargestFft && *size % 2 == 0;
}

bool isAverage(const std::string& text)
{
    return parseNumber<std::size_t>(text).value_or(LargestAverage + 1) <= LargestAverage;
}

constexpr double HighestHz = 1e12;

/// A number without a unit may be one whose unit was forgotten; the rate shows what is likely.
CLI::Validator tunedTo(ReceiverOptions& options)
{
    return {[&options, check = TerminalText::inHertz(0, HighestHz)](std::string& text) {
                const auto bare = TerminalText::parseInUnits(text, {{"", 1}});
                if (bare) {
                    options.bareHz.push_back(*bare);
                }
                return check(text);
            },
            ""};
}

}  // namespace

void addSpectrumOptions(CLI::App& command, SpectrumOptions& options)
{
    command.add_option("--fft", options.fftSize, "FFT size, even, 16 to 1048576")
        ->check(TerminalText::acceptedIf(isFftSize, "an even number from 16 to 1048576"))
        ->capture_default_str();
    command
        .add_option_function<std::string>(
            "--window", [&options](const std::string& name) { options.window = *windowByName(name); },
            "flattop (true levels), hann (fine resolution) or blackman-harris (in between)")
        ->check(TerminalText::oneOf({"flattop", "hann", "blackman-harris"}))
        ->default_str("flattop");
    command.add_option("--overlap", options.overlapPercent, "overlap of consecutive FFTs in percent, 0 to 95")
        ->transform(TerminalText::inUnit({"%"}, 0, LargestOverlapPercent))
        ->capture_default_str();
    command
        .add_option("--average", options.average,
                    "FFTs averaged to one spectrum; 0: as many as last 4 ms, so that record times stay true")
        ->check(TerminalText::acceptedIf(isAverage, "a whole number from 0 to 1000000"))
        ->capture_default_str();
    command
        .add_option_function<std::string>(
            "--as", [&options](const std::string& kind) { options.ifSpectrum = kind == "if"; },
            "rf: RF spectrum of a panorama scan; if: IF spectrum of a fixed frequency")
        ->check(TerminalText::oneOf({"rf", "if"}))
        ->default_str("rf");
}

void addReceiverOptions(CLI::App& command, ReceiverOptions& options)
{
    constexpr double LowestRateHz = 1000;
    constexpr double HighestDb = 200;
    constexpr double LongestDwell = 3600;
    command.add_option("--centre,--center", options.centreHz, "centre frequency, as 145.5M")
        ->transform(tunedTo(options));
    command
        .add_option("--rate", options.rateHz, "samples a second, as 2.4M: what the receiver can; the width of the band")
        ->transform(TerminalText::inHertz(LowestRateHz, HighestHz, "1 kHz to 1e12 Hz"))
        ->required();
    command.add_option("--gain", options.gainDb, "gain in dB (default: the receiver's own control)")
        ->transform(TerminalText::inUnit({"dB"}, -HighestDb, HighestDb));
    command
        .add_option("--hop", options.hopHz,
                    "centre frequencies to receive in turn, as 100M,102M,104M: one panorama of all their bands")
        ->delimiter(',')
        ->allow_extra_args(false)  // what follows is the address, or another source
        ->transform(tunedTo(options));
    command
        .add_option("--dwell", options.dwellSeconds,
                    "how long each of them is received for a spectrum, as 20ms or 0.5s (default: 20 ms)")
        ->transform(TerminalText::inSeconds(0, LongestDwell));
    addSpectrumOptions(command, options);
}

}  // namespace RecStation
