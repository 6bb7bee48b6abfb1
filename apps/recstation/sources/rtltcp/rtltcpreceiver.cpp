// The options of the source "rtltcp"; commanding an rtl_tcp server and taking its samples.
#include "sources/rtltcp/rtltcpreceiver.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "sources/offeredsource.h"

namespace RecStation {

namespace {

// What the server gathers before it sends. When it is tuned, one such buffer may be on its way and another half full.
constexpr std::uint64_t ServerBufferSamples = 131'072;
constexpr std::uint64_t BuffersOfBefore = 2;
constexpr double SettlingSeconds = 0.01;  // of the tuner
constexpr std::chrono::milliseconds MostSilence{5000};

class RtlTcpReceiver final : public IqReceiver {
public:
    explicit RtlTcpReceiver(const Address& address) : m_address(address) {}

    [[nodiscard]] SampleFormat format() const override { return SampleFormat::UnsignedByte; }
    void open(const ReceiverOptions& options) override
    {
        constexpr double TenthsPerDb = 10;
        m_rateHz = options.rateHz;
        m_connection.open(m_address);
        readGreeting();
        command(RtlTcpCommand::SampleRate, options.rateHz);
        command(RtlTcpCommand::GainMode, options.gainDb ? 1 : 0);
        if (options.gainDb) {
            command(RtlTcpCommand::Gain, *options.gainDb * TenthsPerDb);
        }
    }
    void close() noexcept override { m_connection.close(); }
    std::uint64_t tune(double centreHz) override
    {
        drain();
        command(RtlTcpCommand::Frequency, centreHz);
        return BuffersOfBefore * ServerBufferSamples + static_cast<std::uint64_t>(SettlingSeconds * m_rateHz);
    }
    std::size_t read(char* buffer, std::size_t size) override
    {
        const std::size_t count = m_connection.read(buffer, size, in(MostSilence));
        if (count == 0) {
            throw ConnectionError("connection lost: no samples for 5 s");
        }
        return count;
    }
    [[nodiscard]] std::uint64_t overruns() const override { return 0; }  // the server does not tell

private:
    void readGreeting()
    {
        std::array<char, RtlTcpGreetingBytes> bytes{};
        std::size_t have = 0;
        const Deadline deadline = in(MostSilence);
        while (have < bytes.size()) {
            const std::size_t count = m_connection.read(bytes.data() + have, bytes.size() - have, deadline);
            if (count == 0) {
                throw ConnectionError("it is no rtl_tcp server: it says nothing");
            }
            have += count;
        }
        if (!isRtlTcpGreeting({bytes.data(), bytes.size()})) {
            throw ConnectionError("it is no rtl_tcp server: it does not begin with RTL0");
        }
    }
    void command(RtlTcpCommand command, double value)
    {
        // A gain below 0 dB is sent as two's complement.
        const auto bytes = rtlTcpBytes(command, static_cast<std::uint32_t>(std::llround(value)));
        m_connection.send({bytes.data(), bytes.size()});
    }

    // What is on its way is of the frequency before: until there is a pause, as the server sends what it gathered at
    // once.
    void drain()
    {
        constexpr std::chrono::milliseconds Pause{2};
        const Deadline latest = in(std::chrono::milliseconds{200});
        std::array<char, 65'536> piece{};
        std::size_t drained = 0;
        std::size_t count = 0;
        do {
            count = m_connection.read(piece.data(), piece.size(), in(Pause));
            drained += count;
        } while (count > 0 && std::chrono::steady_clock::now() < latest);
        if (drained % 2 == 1) {
            static_cast<void>(read(piece.data(), 1));
        }
    }

    Address m_address;
    Connection m_connection;
    double m_rateHz = 0;
};

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

std::unique_ptr<Source> makeRtlTcpSource(const RtlTcpOptions& options, const SourceRun& run)
{
    const bool tooHigh =
        options.rateHz > RtlTcpHighestHz || options.centreHz.value_or(0) > RtlTcpHighestHz ||
        std::any_of(options.hopHz.begin(), options.hopHz.end(), [](double hz) { return hz > RtlTcpHighestHz; });
    if (tooHigh) {
        throw UsageError("rtltcp: the protocol knows no rate and no frequency above 4.294967295 GHz");
    }
    return makeReceiverSource({.source = "rtltcp",
                               .peer = addressText(options.address),
                               .name = QStringLiteral("rtltcp ") + QString::fromStdString(options.address.host),
                               .type = QStringLiteral("IQ samples over rtl_tcp")},
                              options, std::make_unique<RtlTcpReceiver>(options.address), run);
}

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
