// The source "gpsd": its options, and watching gpsd: lines of JSON in, the newest position and attitude out.
#include <utility>

#include <CLI/CLI.hpp>

#include "input/optionchecks.h"
#include "live/lines.h"
#include "live/peersource.h"
#include "published/attachedvalue.h"
#include "published/positionvalues.h"
#include "sources/gpsd/gpsdreport.h"
#include "sources/gpsd/gpsdstate.h"

namespace RecStation {

namespace {

/// What the command line says.
struct GpsdOptions {
    Address address;
    std::string device;                  ///< as gpsd names it; empty: the first that tells something
    std::optional<double> variationDeg;  ///< of compasses; east is positive
    QString valuePath;                   ///< of a device to be named after the peer; empty: none
};

constexpr std::size_t LongestGpsdReport = 65'536;
constexpr std::chrono::milliseconds GpsdGreeting{4'000};  // it greets at once; a check waits for 5 s
// gpsd tells of a device that is asked for or that fails; a fix a second is usual.
constexpr std::chrono::seconds LongestGpsdQuiet{3600};

using GpsdClock = std::chrono::steady_clock;

// No receiver tells so much in a second: of a peer that does, many changes are made one. Each is several records, of
// which a recording holds a thousand a second.
class GpsdFlood {
public:
    [[nodiscard]] bool isFlood(GpsdClock::time_point now)
    {
        constexpr int MostASecond = 100;
        if (now - m_begin >= std::chrono::seconds(1)) {
            m_begin = now;
            m_count = 0;
        }
        return ++m_count > MostASecond;
    }

private:
    GpsdClock::time_point m_begin;
    int m_count = 0;
};

/// Publishes what the source "nmea" does. It lives until the process is asked to stop.
class GpsdSource final : public PeerSource {
public:
    GpsdSource(GpsdOptions options, const SourceRun& run)
        : PeerSource("gpsd", addressText(options.address), run),
          m_options(std::move(options)),
          m_sourceTime(run.sourceTime),
          m_lines(LongestGpsdReport),
          m_state(m_options.device, m_options.variationDeg)
    {
    }

    void prepare() override
    {
        m_values = std::make_unique<PositionValues>();
        if (!m_options.valuePath.isEmpty()) {
            const QString device = QStringLiteral("gpsd ") + QString::fromStdString(m_options.address.host);
            setDevice(m_options.valuePath, forFileNames(device), QStringLiteral("gpsd"));
        }
    }

private:
    void connect() override
    {
        m_state.forget();
        m_lines.open(m_options.address);
        const auto greeting = m_lines.next(in(GpsdGreeting));
        const auto report = greeting ? parseGpsdReport(*greeting) : std::nullopt;
        if (!report || report->kind != GpsdReport::Kind::Version) {
            throw ConnectionError(greeting ? "what answers there is no gpsd" : "no greeting of gpsd comes");
        }
        m_lines.send("?WATCH={\"enable\":true,\"json\":true};\n");
        // It is there, also when none of its devices has a fix. But of its times the first must be one.
        m_greeted = !m_sourceTime;
    }
    [[nodiscard]] Received receive() override
    {
        constexpr int MostAStep = 10'000;
        m_received = {systemTimeUs(), std::nullopt};
        if (std::exchange(m_greeted, false)) {
            m_change = {};
            return m_received;
        }
        for (int lines = 0; !m_state.hasChange() || (m_lines.holdsLine() && lines < MostAStep); ++lines) {
            const auto line = m_lines.next(m_state.silentAt().value_or(GpsdClock::now() + LongestGpsdQuiet));
            const auto now = GpsdClock::now();
            if (line) {
                takeLine(*line, now);
            } else {
                m_state.passTime(now);
                m_received = {systemTimeUs(), std::nullopt};
            }
            tellNews();
            if (m_state.hasChange() && !m_gate.isFlood(now)) {
                break;
            }
        }
        m_change = m_state.takeChange();
        return m_received;
    }
    void disconnect() noexcept override { m_lines.close(); }
    void apply() override { m_values->show(m_change); }
    void forget() override { m_values->forget(); }
    [[nodiscard]] SourceReport counts() const override
    {
        return {.used = m_used, .skipped = m_skipped, .lines = true, .lost = m_broken + m_lines.tooLong()};
    }

    void takeLine(std::string_view line, GpsdClock::time_point now)
    {
        const auto report = parseGpsdReport(line);
        if (!report) {
            ++m_broken;
            return;
        }
        if (m_state.take(*report, now)) {
            ++m_used;
            m_received = {systemTimeUs(), report->timeUs};
        } else {
            ++m_skipped;
        }
    }
    void tellNews()
    {
        for (const std::string& news : m_state.takeNews()) {
            if (m_tellRate.take(GpsdClock::now())) {
                say(news);
            }
        }
    }

    GpsdOptions m_options;
    bool m_sourceTime;
    LineConnection m_lines;
    GpsdState m_state;
    GpsdFlood m_gate;
    TellRate m_tellRate;  // of news
    bool m_greeted = false;
    Received m_received;
    Fix m_change;
    std::unique_ptr<PositionValues> m_values;
    std::uint64_t m_used = 0;
    std::uint64_t m_skipped = 0;
    std::uint64_t m_broken = 0;
};

constexpr auto GpsdExamples = R"(
Position, altitude and speed from TPV reports, heading, pitch and roll from ATT reports of a running gpsd. Of several
devices the first that has a fix counts until it is silent for 5 s; so it is with attitudes. While gpsd is not there, or
its device has no fix, the values are unknown.

Examples:
  recstation -o recordings gpsd localhost
  recstation -o recordings gpsd 192.168.1.20:2947 --device /dev/ttyACM0 --source-time
  recstation -o recordings gpsd localhost feed -)";

void addGpsdOptions(CLI::App& command, GpsdOptions& options)
{
    command.footer(GpsdExamples);
    constexpr std::uint16_t GpsdPort = 2947;
    addParsed(command, "address", options.address, "Where gpsd listens; port 2947 unless it is told",
              addressWith(GpsdPort), "HOST, HOST:PORT or [ADDRESS]:PORT")
        ->option_text("HOST[:PORT]")
        ->required();
    command.add_option("--device", options.device, "Only this device, as gpsd names it (default: as above)")
        ->type_name("PATH");
    command
        .add_option("--variation", options.variationDeg,
                    "Degrees from magnetic to true north, east positive, for compasses (default: as gpsd tells)")
        ->type_name("DEG")
        ->transform(TerminalText::inUnit({"deg", "°"}, -180, 180));
}

}  // namespace

std::shared_ptr<OfferedSource> offerGpsd()
{
    const auto make = [](GpsdOptions options, const SourceRun& run) -> std::unique_ptr<Source> {
        // Other sources name their devices themselves.
        options.valuePath = run.alone ? receiverOf(run.configuration).valuePath : QString();
        return std::make_unique<GpsdSource>(std::move(options), run);
    };
    return std::make_shared<SourceWith<GpsdOptions>>(
        SourceTraits{.name = "gpsd",
                     .description = "Position, heading and attitude from a running gpsd",
                     .turn = 4,
                     .tellsPositions = true,
                     .live = true},
        addGpsdOptions, make);
}

}  // namespace RecStation
