// Checks and help of the options of spectra.
#include "iqspectra/spectrum.h"

#include <CLI/CLI.hpp>

#include "input/fields.h"
#include "input/optionchecks.h"

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

}  // namespace RecStation
