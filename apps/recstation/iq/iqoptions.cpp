#include "iq/iqsource.h"

#include <CLI/CLI.hpp>

namespace recstation {

namespace {

constexpr auto examples = R"(
Examples:
  recstation -o recordings iq capture.cu8 --rate 2000000 --centre 1090e6
  recstation -o recordings iq capture.sigmf-data
  rtl-driver | recstation -o recordings iq - --format cu8 --rate 2048000 --centre 98.5e6)";

}  // namespace

void addIqOptions(CLI::App& command, IqOptions& options)
{
    command.footer(examples);
    command.add_option("FILE", options.file, "IQ samples, I and Q interleaved; - reads standard input")->required();
    command.add_option("--format", options.format, "cu8, ci16_le or cf32_le (default: SigMF metadata or suffix)");
    command.add_option("--rate", options.rateHz, "samples a second (default: SigMF metadata)");
    command.add_option("--centre,--center", options.centreHz, "centre frequency in Hz (default: SigMF metadata)");
    command.add_option("--start", options.start,
                       "time of the first sample, as 2026-11-21T08:30:00.25Z (default: SigMF metadata, otherwise now)");
    command.add_option("--fft", options.fftSize, "FFT size, even, 16 to 1048576")->capture_default_str();
    command
        .add_option("--window", options.window,
                    "flattop (true levels), hann (fine resolution) or blackman-harris (in between)")
        ->capture_default_str();
    command.add_option("--overlap", options.overlapPercent, "overlap of consecutive FFTs in percent, 0 to 95")
        ->capture_default_str();
    command
        .add_option("--average", options.average,
                    "FFTs averaged to one spectrum; 0: as many as last 4 ms, so that record times stay true")
        ->capture_default_str();
    command
        .add_option("--as", options.spectrum,
                    "rf: RF spectrum of a panorama scan; if: IF spectrum of a fixed frequency")
        ->capture_default_str();
}

}  // namespace recstation
