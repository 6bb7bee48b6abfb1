// The source "kraken": its options, and asking a KrakenSDR direction finder over HTTP again and again for what is new.
#include <chrono>
#include <deque>
#include <limits>
#include <map>
#include <utility>

#include <CLI/CLI.hpp>

#include "clock.h"
#include "input/optionchecks.h"
#include "live/peersource.h"
#include "sources/bearings/bearingsvalues.h"
#include "sources/kraken/httpfetch.h"
#include "sources/kraken/krakenanswer.h"

namespace RecStation {

namespace {

/// What the command line says.
struct KrakenOptions {
    HttpUrl url;
    double intervalSeconds = 0.5;      ///< from asking to asking
    std::optional<double> headingDeg;  ///< true heading of azimuth 0; nothing: as the finder tells
    Mirror mirror = Mirror::Auto;
    bool noPosition = false;  ///< leave positions and headings out
    QString valuePath = "/Devices/Df1";
};

constexpr std::size_t MostChannels = 4096;
constexpr std::chrono::milliseconds FetchPatience{4'000};  // a check waits for 5 s

/// Publishes what "bearings" does (BearingsValues), bearing by bearing: each that has another time than the one before
/// of its frequency. Where the finder is away, the map is empty, and position and heading are unknown.
class KrakenSource final : public PeerSource {
public:
    KrakenSource(const KrakenOptions& options, const SourceRun& run)
        : PeerSource("kraken", urlText(options.url), run),
          m_options(options),
          m_sourceTime(run.sourceTime),
          m_interval(static_cast<long long>(options.intervalSeconds * 1000)),
          m_answers(options.mirror)
    {
    }

    void prepare() override
    {
        m_values =
            std::make_unique<BearingsValues>(!m_options.noPosition, m_options.headingDeg,
                                             QString::fromStdString(m_options.url.address.host), m_options.valuePath);
    }
    [[nodiscard]] QStringList spectra() const override { return {QStringLiteral("/DfSpectrum")}; }

protected:
    void connect() override { m_connection.open(m_options.url.address); }
    [[nodiscard]] Received receive() override
    {
        m_bearing.reset();
        while (m_new.empty()) {
            pauseUntil(m_nextAsk);
            ask();
            if (!std::exchange(m_answered, true) && m_new.empty()) {
                return {m_arrivalUs, std::nullopt};  // it is there, although it hears nothing
            }
        }
        m_answered = true;
        m_bearing = std::move(m_new.front());
        m_new.pop_front();
        return {m_arrivalUs, m_bearing->time};
    }
    void disconnect() noexcept override
    {
        m_connection.close();
        m_answered = false;
    }
    void apply() override
    {
        if (!m_bearing) {
            return;
        }
        constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();
        m_bearing->time = stationTimeUs();
        if (m_options.noPosition) {
            m_bearing->latitudeDeg = m_bearing->longitudeDeg = Unknown;
        }
        if (m_options.noPosition || m_options.headingDeg) {
            m_bearing->headingDeg = Unknown;
        }
        m_values->showLive(*m_bearing);
        ++m_shown;
    }
    void forget() override { m_values->forget(stationTimeUs()); }
    [[nodiscard]] SourceReport counts() const override
    {
        return {.used = m_shown, .skipped = m_same, .lost = m_answers.broken() + m_tooMany};
    }

private:
    void ask()
    {
        m_nextAsk = in(m_interval);
        if (!m_connection.isOpen()) {
            m_connection.open(m_options.url.address);
        }
        const std::string body = fetch(m_connection, m_options.url, FetchPatience);
        m_arrivalUs = systemTimeUs();
        takeNew(m_answers.parse(body));
        if (m_answers.foundMirrored() && !std::exchange(m_mirrorTold, true)) {
            say(KrakenMirrored);
        }
    }

    // The document stays as it is until something is heard again: in the first one there may be what is long over,
    // which would be recorded as of now.
    void takeNew(std::vector<LoggedBearing> bearings)
    {
        constexpr unsigned long long OldUs = 60'000'000;
        for (LoggedBearing& bearing : bearings) {
            if (m_times.size() >= MostChannels && m_times.count(bearing.frequencyHz) == 0) {
                ++m_tooMany;
                continue;
            }
            const unsigned long long before = std::exchange(m_times[bearing.frequencyHz], bearing.time);
            const bool isOld = !m_answered && !m_sourceTime && m_arrivalUs > bearing.time + OldUs;
            if (before == bearing.time || isOld) {
                ++m_same;
                continue;
            }
            m_new.push_back(std::move(bearing));
        }
    }

    KrakenOptions m_options;
    bool m_sourceTime;
    std::chrono::milliseconds m_interval;
    Connection m_connection;  // open: nothing was asked over it
    Deadline m_nextAsk{};
    KrakenAnswers m_answers;
    std::map<double, unsigned long long> m_times;  // of the latest bearing of each frequency
    std::deque<LoggedBearing> m_new;               // not yet shown
    unsigned long long m_arrivalUs = 0;
    std::optional<LoggedBearing> m_bearing;  // to be shown
    bool m_answered = false;                 // since it was connected
    std::unique_ptr<BearingsValues> m_values;
    bool m_mirrorTold = false;
    std::uint64_t m_shown = 0;
    std::uint64_t m_same = 0;
    std::uint64_t m_tooMany = 0;
};

constexpr auto KrakenExamples = R"(
Asks the direction finder for its CSV (format "Kraken App") or XML (format "DF Aggregator"), and records every bearing
that is new. The same CSV, collected in a file, is read by bearings.

Examples:
  recstation -o recordings kraken krakensdr
  recstation -o recordings kraken http://192.168.1.40:8081/doa.xml --interval 1s
  recstation -o recordings kraken krakensdr --no-position gpsd localhost)";

constexpr double ShortestInterval = 0.05;
constexpr double LongestInterval = 3600;
constexpr double FullTurnDeg = 360;

void addKrakenOptions(CLI::App& command, KrakenOptions& options)
{
    command.footer(KrakenExamples);
    addParsed(command, "URL", options.url,
              "http://HOST:PORT/PATH, or HOST for http://HOST:8081/DOA_value.html, as a KrakenSDR serves it",
              parseHttpUrl, "an address such as http://krakensdr:8081/DOA_value.html")
        ->required();
    command.add_option("--interval", options.intervalSeconds, "Time from one request to the next")
        ->type_name("TIME")
        ->transform(TerminalText::inSeconds(ShortestInterval, LongestInterval))
        ->capture_default_str();
    command
        .add_option("--heading", options.headingDeg,
                    "True heading of azimuth 0 in degrees (default: as the finder tells)")
        ->transform(TerminalText::inUnit({"deg", "°"}, -FullTurnDeg, FullTurnDeg));
    command.add_flag_callback(
        "--mirror", [&options] { options.mirror = Mirror::Yes; },
        "Its angles are counter-clockwise (default: those of XML, and those of CSV as its 360 values tell)");
    command.add_flag_callback(
        "--no-mirror", [&options] { options.mirror = Mirror::No; }, "They are clockwise: take them as they are");
    command.add_flag("--no-position", options.noPosition,
                     "Leave positions and headings out, because gpsd or another source tells them");
}

}  // namespace

std::shared_ptr<OfferedSource> offerKraken()
{
    const auto make = [](KrakenOptions options, const SourceRun& run) -> std::unique_ptr<Source> {
        options.valuePath = finderOf(run.configuration).valuePath;
        return std::make_unique<KrakenSource>(options, run);
    };
    return std::make_shared<SourceWith<KrakenOptions>>(SourceTraits{.name = "kraken",
                                                                    .description = "A KrakenSDR direction finder, live",
                                                                    .turn = 3,
                                                                    .findsDirections = true,
                                                                    .live = true},
                                                       addKrakenOptions, make);
}

}  // namespace RecStation
