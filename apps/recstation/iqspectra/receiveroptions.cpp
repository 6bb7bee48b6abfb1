// Checks and help of the options of receivers.
#include "iqspectra/receiver.h"

#include <string>

#include <CLI/CLI.hpp>

#include <terminaltext/optionvalues.h>
#include <terminaltext/quantity.h>

namespace RecStation {

namespace {

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
