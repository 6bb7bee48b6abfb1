// The options of the source "rtltcp" and the examples in its help.
#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "sources/offeredsource.h"
#include "sources/rtltcp/rtltcpreceiver.h"

namespace RecStation {

namespace {

constexpr auto RtlTcpExamples = R"(
Examples:
  recstation -o recordings rtltcp 192.168.1.5 --centre 98.5M --rate 2.048M
  recstation -o recordings rtltcp [::1]:1234 --centre 433.92M --rate 250k --gain 40 --as if
  recstation -o recordings rtltcp localhost --hop 88M,90M,92M --rate 2.4M --dwell 50ms)";

void addRtlTcpOptions(CLI::App& command, RtlTcpOptions& options)
{
    command.footer(RtlTcpExamples);
    constexpr std::uint16_t RtlTcpPort = 1234;
    addParsed(command, "ADDRESS", options.address, "HOST or HOST:PORT of an rtl_tcp server, whose port is 1234",
              addressWith(RtlTcpPort), "an address such as 192.168.1.5:1234")
        ->required();
    addReceiverOptions(command, options);
}

}  // namespace

std::shared_ptr<OfferedSource> offerRtlTcp()
{
    return std::make_shared<SourceWith<RtlTcpOptions>>(
        SourceTraits{.name = "rtltcp",
                     .description = "IQ samples of a receiver behind an rtl_tcp server, live",
                     .turn = 1,
                     .receives = true,
                     .live = true},
        addRtlTcpOptions, [](RtlTcpOptions options, const SourceRun& run) {
            options.valuePath = receiverOf(run.configuration).valuePath;
            return makeRtlTcpSource(options, run);
        });
}

}  // namespace RecStation
