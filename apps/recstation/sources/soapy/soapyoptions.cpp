// The options of the source "soapy" and the examples in its help.
#include <string>

#include <CLI/CLI.hpp>

#include <terminaltext/optionvalues.h>

#include "sources/offeredsource.h"
#include "sources/soapy/soapyreceiver.h"

namespace RecStation {

namespace {

struct SoapyOptions : ReceiverOptions {
    std::string args;
};

constexpr auto SoapyExamples = R"(
Any receiver with a SoapySDR driver, here or behind a SoapyRemote server; SoapySDRUtil --find lists those that there are.
Its samples become the spectra that the source iq makes of a file. What the driver loses is counted, and told at the end.

Examples:
  recstation -o recordings soapy driver=rtlsdr --centre 433.92M --rate 2M
  recstation -o recordings soapy driver=airspy --centre 98.5M --rate 2.5M --gain 12
  recstation -o recordings soapy driver=hackrf --rate 10M --hop 410M,419M,428M
  recstation -o recordings soapy driver=remote,remote=tcp://192.168.1.20:55132,remote:driver=rtlsdr --centre 145M --rate 1M)";

void addSoapyOptions(CLI::App& command, SoapyOptions& options)
{
    command.footer(SoapyExamples);
    command.add_option("ARGS", options.args, "Which receiver: KEY=VALUE,KEY=VALUE as SoapySDRUtil --find shows them")
        ->required()
        ->check(TerminalText::acceptedIf(isSoapyArgs, "a receiver such as driver=rtlsdr,serial=1"));
    addReceiverOptions(command, options);
}

}  // namespace

std::shared_ptr<OfferedSource> offerSoapy()
{
    const auto make = [](SoapyOptions options, const SourceRun& run) {
        options.valuePath = receiverOf(run.configuration).valuePath;
        return makeReceiverSource({.source = "soapy",
                                   .peer = options.args,
                                   .name = soapyName(options.args),
                                   .type = QStringLiteral("SoapySDR receiver")},
                                  options, makeSoapyReceiver(options.args), run);
    };
    return std::make_shared<SourceWith<SoapyOptions>>(SourceTraits{.name = "soapy",
                                                                   .description = "A receiver with a SoapySDR driver",
                                                                   .turn = 1,
                                                                   .receives = true,
                                                                   .live = true},
                                                      addSoapyOptions, make);
}

}  // namespace RecStation
