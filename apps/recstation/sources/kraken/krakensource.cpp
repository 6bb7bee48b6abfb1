// Asking a KrakenSDR again and again, and showing what is new.
#include "sources/kraken/krakensource.h"

#include <chrono>
#include <deque>
#include <limits>
#include <map>
#include <utility>

#include "clock.h"
#include "live/peersource.h"
#include "sources/bearings/bearingsvalues.h"
#include "sources/kraken/krakenanswer.h"

namespace RecStation {

namespace {

constexpr std::size_t MostChannels = 4096;
constexpr std::chrono::milliseconds AnswerPatience{4'000};  // a check waits for 5 s

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

    void prepare() override;
    [[nodiscard]] QStringList spectra() const override { return {QStringLiteral("/DfSpectrum")}; }

protected:
    void connect() override { m_connection.open(m_options.url.address); }
    [[nodiscard]] Received receive() override;
    void disconnect() noexcept override
    {
        m_connection.close();
        m_answered = false;
    }
    void apply() override;
    void forget() override { m_values->forget(stationTimeUs()); }
    [[nodiscard]] SourceReport counts() const override;

private:
    void ask();
    void takeNew(std::vector<LoggedBearing> bearings);

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

void KrakenSource::prepare()
{
    m_values =
        std::make_unique<BearingsValues>(!m_options.noPosition, m_options.headingDeg,
                                         QString::fromStdString(m_options.url.address.host), m_options.valuePath);
}

Received KrakenSource::receive()
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

void KrakenSource::ask()
{
    m_nextAsk = in(m_interval);
    if (!m_connection.isOpen()) {
        m_connection.open(m_options.url.address);
    }
    const std::string body = fetch(m_connection, m_options.url, AnswerPatience);
    m_arrivalUs = systemTimeUs();
    takeNew(m_answers.parse(body));
    if (m_answers.foundMirrored() && !std::exchange(m_mirrorTold, true)) {
        say(KrakenMirrored);
    }
}

// The document stays as it is until something is heard again: in the first one there may be what is long over, which
// would be recorded as of now.
void KrakenSource::takeNew(std::vector<LoggedBearing> bearings)
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

void KrakenSource::apply()
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

SourceReport KrakenSource::counts() const
{
    return {.used = m_shown, .skipped = m_same, .lost = m_answers.broken() + m_tooMany};
}

}  // namespace

std::unique_ptr<Source> makeKrakenSource(const KrakenOptions& options, const SourceRun& run)
{
    return std::make_unique<KrakenSource>(options, run);
}

}  // namespace RecStation
