// Surveying a log of bearings first, then showing its rows at their times.
#include "sources/bearings/bearingssource.h"

#include <stdexcept>
#include <utility>

#include "clock.h"
#include "sources/bearings/bearinglog.h"
#include "sources/bearings/bearingsvalues.h"

namespace RecStation {

namespace {

class BearingsSource final : public Source {
public:
    BearingsSource(BearingsOptions options, InputReport report)
        : m_options(std::move(options)), m_report(std::move(report))
    {
    }

    [[nodiscard]] QString name() const override { return QStringLiteral("bearings"); }
    void prepare() override;
    [[nodiscard]] std::optional<unsigned long long> nextTime() override;
    void step() override;
    [[nodiscard]] std::optional<unsigned long long> lastTime() override
    {
        return m_options.file == "-" ? std::nullopt : std::optional(m_lastTime);
    }
    [[nodiscard]] QStringList spectra() const override { return {QStringLiteral("/DfSpectrum")}; }
    [[nodiscard]] SourceReport report() const override;

private:
    [[nodiscard]] LogSurvey survey(const LogInput& input) const;
    void reportOddities(const LogSurvey& survey) const;
    [[nodiscard]] QString deviceName(const LogSurvey& survey) const;
    void say(const std::string& sentence) const;

    BearingsOptions m_options;
    InputReport m_report;
    std::unique_ptr<BearingLog> m_log;
    std::unique_ptr<BearingsValues> m_values;
    std::optional<LoggedBearing> m_pending;  // read, not yet shown
    unsigned long long m_latest = 0;         // when the latest is recorded
    unsigned long long m_lastTime = 0;
    std::uint64_t m_shown = 0;
};

void BearingsSource::prepare()
{
    const LogInput input(m_options.file);
    const LogSurvey survey = this->survey(input);
    reportOddities(survey);
    m_lastTime = survey.lastTime;
    m_values = std::make_unique<BearingsValues>(survey, m_options.headingDeg, deviceName(survey), m_options.valuePath);
    // The bad rows have been reported.
    m_log = std::make_unique<BearingLog>(m_options, input, [](std::size_t, const std::string&) {});
}

LogSurvey BearingsSource::survey(const LogInput& input) const
{
    // Strict is about the whole log, so that all bad lines are told.
    constexpr bool EndAtTheFirst = false;
    BadLines bad("bearings", EndAtTheFirst, m_report);
    LogSurvey survey =
        surveyLog(m_options, input, [&bad](std::size_t line, const std::string& problem) { bad.add(line, problem); });
    bad.finish();
    if (m_options.strict && bad.count() > 0) {
        throw std::runtime_error("bearings: " + input.name() + " has " + std::to_string(bad.count()) +
                                 " bad lines, and --strict allows none");
    }
    if (m_options.strict && survey.order.rowsBack() > 0) {
        throw std::runtime_error("bearings: " + input.name() + ": " + survey.order.sentence() +
                                 "; --strict allows none");
    }
    return survey;
}

void BearingsSource::reportOddities(const LogSurvey& survey) const
{
    if (!survey.hasPosition && !m_options.noPosition && !m_options.positionElsewhere) {
        say("the log has no position: name its columns with --latitude-column and --longitude-column, if it has");
    }
    if (!survey.remark.empty()) {
        say(survey.remark);
    }
    if (survey.order.rowsBack() > 0) {
        say(survey.order.sentence() + "; sort the log, if its times are to stay");
    }
}

QString BearingsSource::deviceName(const LogSurvey& survey) const
{
    if (survey.oneStation && !survey.first.station.empty()) {
        return QString::fromStdString(survey.first.station);
    }
    return m_options.file == "-" ? QStringLiteral("Bearings") : textBaseName(m_options.file);
}

void BearingsSource::say(const std::string& sentence) const
{
    m_report(QStringLiteral("bearings: ") + QString::fromStdString(sentence));
}

std::optional<unsigned long long> BearingsSource::nextTime()
{
    while (!m_pending) {
        const auto row = m_log->next();
        if (!row) {
            return std::nullopt;
        }
        m_pending = row->bearing;
        if (m_pending) {
            m_latest = notBefore(m_latest, m_pending->time, m_options.splitGapUs);
            m_pending->time = m_latest;
        }
    }
    return m_latest;
}

void BearingsSource::step()
{
    if (m_options.live) {
        m_pending->time = stationTimeUs();
    }
    m_values->show(*m_pending);
    m_pending.reset();
    ++m_shown;
}

SourceReport BearingsSource::report() const
{
    if (m_log == nullptr) {
        return {};
    }
    return {m_shown, m_log->skipped(), m_log->bad(), true};
}

}  // namespace

std::unique_ptr<Source> makeBearingsSource(const BearingsOptions& options, InputReport report)
{
    return std::make_unique<BearingsSource>(options, std::move(report));
}

}  // namespace RecStation
