// The options of the source "rig" and the examples in its help.
#include <arpa/inet.h>

#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "sources/rig/rigsource.h"

namespace RecStation {

namespace {

constexpr auto RigExamples = R"(
Frequency, mode, bandwidth and signal strength of a receiver that Hamlib's rigctld controls, asked for again and again.
Strengths are dB over S9. What the receiver does not tell is told once, and stays unknown.

Examples:
  rigctld -m 1 &                                  Hamlib's dummy; rigctl -l lists the real ones
  recstation -o recordings rig localhost:4532
  recstation -o recordings --duration 8h rig 192.168.1.20 --interval 200ms --s9 -73
  rigctld -m 3073 -r /dev/ttyUSB0 -M 224.0.1.1 &  which sends what the scope of the receiver shows to a group
  recstation -o recordings rig localhost --multicast=224.0.1.1:4532)";

bool isGroup(const std::string& text)
{
    const auto address = parseAddress(text, RigPort);
    in_addr group{};
    return address && ::inet_pton(AF_INET, address->host.c_str(), &group) == 1;
}

void addRigOptions(CLI::App& command, RigOptions& options)
{
    constexpr double Shortest = 0.01;
    constexpr double Longest = 3600;
    constexpr double LowestDbm = -200;
    constexpr double HighestDbm = 50;
    command.footer(RigExamples);
    addParsed(command, "ADDRESS", options.address, "HOST or HOST:PORT of rigctld, whose port is 4532",
              addressWith(RigPort), "an address such as localhost:4532")
        ->default_str("localhost");
    command
        .add_option("--interval", options.intervalSeconds, "Time from an answer to the next question, 10ms at least")
        ->type_name("TIME")
        ->transform(TerminalText::inSeconds(Shortest, Longest))
        ->default_str("500ms");
    command
        .add_option("--s9", options.s9Dbm,
                    "What S9 is at the receiver's input: levels are then dBm (-73 below 30 MHz, -93 above, as a rule)")
        ->type_name("DBM")
        ->transform(TerminalText::inUnit({"dBm"}, LowestDbm, HighestDbm));
    command
        .add_flag("--multicast{224.0.1.1:4532}", options.multicast,
                  "Record the spectra in rigctld's packets too; --multicast=ADDRESS where they do not go to "
                  "224.0.1.1:4532")
        ->check(TerminalText::acceptedIf(isGroup, "an address of IPv4 in digits such as 224.0.1.1:4532"));
}

}  // namespace

std::shared_ptr<OfferedSource> offerRig()
{
    return std::make_shared<SourceWith<RigOptions>>(SourceTraits{.name = "rig",
                                                                 .description = "A receiver behind Hamlib's rigctld",
                                                                 .turn = 6,
                                                                 .receives = true,
                                                                 .live = true},
                                                    addRigOptions, makeRigSource);
}

}  // namespace RecStation
