// The source "rig": its options, and polling a receiver behind Hamlib's rigctld, with its packets in between.
#include <utility>

#include <arpa/inet.h>

#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "live/peersource.h"
#include "sources/rig/rigclient.h"
#include "sources/rig/rigspectrum.h"
#include "sources/rig/rigvalues.h"

namespace RecStation {

namespace {

constexpr std::uint16_t RigPort = 4532;

/// What the command line says.
struct RigOptions {
    Address address{"localhost", RigPort};  ///< of rigctld
    double intervalSeconds = 0.5;           ///< from an answer to the next question
    std::optional<double> s9Dbm;            ///< what S9 is in dBm; nothing: levels are dB over S9
    std::string multicast;                  ///< group and port of rigctld's packets; empty: none are listened to
};

// A scope draws several times a second: what it drew longer ago is no news of now.
constexpr std::chrono::seconds SpectrumHolds{5};

/// Publishes /FREQUENCY (Hz), Mon/DEMODULATION, Mon/BANDWIDTH (Hz) and /LEVEL of the receiver of the configuration;
/// with multicast also Scn/RfSpectrum and its limits.
class RigSource final : public PeerSource {
public:
    RigSource(RigOptions options, const SourceRun& run)
        : PeerSource("rig", addressText(options.address), run),
          m_options(std::move(options)),
          m_valuePath(receiverOf(run.configuration).valuePath),
          m_deviceName(QStringLiteral("rig ") + QString::fromStdString(addressText(m_options.address))),
          m_client(m_options.address, m_options.s9Dbm, [this](const std::string& clause) { say(clause); })
    {
    }

    void prepare() override
    {
        m_values.emplace(m_deviceName, m_valuePath, !m_options.multicast.empty(), m_options.s9Dbm.value_or(0));
    }
    [[nodiscard]] QStringList spectra() const override
    {
        return m_options.multicast.empty() ? QStringList()
                                           : QStringList(m_valuePath + QStringLiteral("/Scn/RfSpectrum"));
    }

protected:
    void connect() override
    {
        m_client.connect();
        if (!m_options.multicast.empty()) {
            m_datagrams.open(parseAddress(m_options.multicast, RigPort).value());
            m_followed.clear();
            m_seq = 0;
        }
        m_nextPoll = Deadline::min();
    }
    [[nodiscard]] Received receive() override
    {
        const auto now = std::chrono::steady_clock::now;
        while (now() < m_nextPoll) {
            if (m_options.multicast.empty()) {
                pauseUntil(m_nextPoll);
            } else if (now() >= m_spectrumEnds) {
                m_spectrumIsOld = true;
                m_spectrumEnds = Deadline::max();
                return {systemTimeUs(), std::nullopt};
            } else if (takePacket(m_datagrams.read(std::min(m_nextPoll, m_spectrumEnds)))) {
                return {m_arrivalUs, std::nullopt};
            }
        }
        m_answers = m_client.ask();
        m_arrivalUs = systemTimeUs();
        // From the answers on, so that there is time for packets however slow they come.
        m_nextPoll = now() + std::chrono::microseconds(static_cast<std::int64_t>(m_options.intervalSeconds * 1e6));
        return {m_arrivalUs, std::nullopt};
    }
    void disconnect() noexcept override
    {
        m_client.disconnect();
        m_datagrams.close();
    }
    void apply() override
    {
        if (m_answers) {
            m_values->show(*std::exchange(m_answers, std::nullopt));
        }
        if (m_spectrum) {
            m_values->show(*std::exchange(m_spectrum, std::nullopt), stationTimeUs());
            ++m_spectra;
            m_spectrumEnds = in(SpectrumHolds);
        } else if (std::exchange(m_spectrumIsOld, false)) {
            m_values->forgetSpectrum(stationTimeUs());
        }
    }
    void forget() override
    {
        m_answers.reset();
        m_spectrum.reset();
        m_values->forget();
        if (m_spectrumEnds != Deadline::max()) {
            m_values->forgetSpectrum(stationTimeUs());
            m_spectrumEnds = Deadline::max();
        }
    }
    [[nodiscard]] SourceReport counts() const override
    {
        return {.used = m_client.used() + m_spectra,
                .skipped = m_others,
                .lost = m_client.lost() + m_lostPackets + m_badPackets};
    }

private:
    // False when there is nothing to show.
    [[nodiscard]] bool takePacket(std::string_view bytes)
    {
        if (bytes.empty()) {
            return false;
        }
        m_arrivalUs = systemTimeUs();
        try {
            RigPacket packet = parseRigPacket(bytes);
            if (m_followed.empty()) {
                m_followed = packet.rig;
            }
            if (packet.rig != m_followed) {
                ++m_others;
                return false;
            }
            countSeq(packet.seq);
            m_others += packet.spectrum ? 0U : 1U;
            m_spectrum = std::move(packet.spectrum);
        } catch (const RigPacketError& error) {
            if (m_badPackets++ == 0) {
                say(std::string(error.what()) + " (others like that are only counted)");
            }
            return false;
        }
        return m_spectrum.has_value();
    }

    // Packets are numbered from 1 on, and the number after the largest is 1 again.
    void countSeq(std::uint32_t seq)
    {
        constexpr std::uint32_t Most = 1'000'000;  // more is no loss, but another beginning
        const std::uint32_t step = seq - m_seq;
        if (m_seq != 0 && seq != 0 && step > 1 && step < Most) {
            m_lostPackets += step - 1;
        }
        m_seq = seq;
    }

    RigOptions m_options;
    QString m_valuePath;
    QString m_deviceName;
    RigClient m_client;
    Datagrams m_datagrams;
    std::optional<RigValues> m_values;
    Deadline m_nextPoll;
    Deadline m_spectrumEnds = Deadline::max();
    unsigned long long m_arrivalUs = 0;
    std::optional<RigAnswers> m_answers;  // to be shown
    std::optional<RigSpectrum> m_spectrum;
    bool m_spectrumIsOld = false;
    std::string m_followed;  // the receiver whose packets are taken
    std::uint32_t m_seq = 0;
    std::uint64_t m_spectra = 0;
    std::uint64_t m_others = 0;  // packets of other receivers, and without spectrum
    std::uint64_t m_lostPackets = 0;
    std::uint64_t m_badPackets = 0;
};

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
    const auto make = [](RigOptions options, const SourceRun& run) -> std::unique_ptr<Source> {
        return std::make_unique<RigSource>(std::move(options), run);
    };
    return std::make_shared<SourceWith<RigOptions>>(SourceTraits{.name = "rig",
                                                                 .description = "A receiver behind Hamlib's rigctld",
                                                                 .turn = 6,
                                                                 .receives = true,
                                                                 .live = true},
                                                    addRigOptions, make);
}

}  // namespace RecStation
