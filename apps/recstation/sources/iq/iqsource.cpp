// Playing IQ samples frame by frame, each at the time of its first sample.
#include "sources/iq/iqsource.h"

#include <cmath>
#include <utility>

#include <QFileInfo>
#include <QLoggingCategory>

#include "iqspectra/spectrumvalues.h"
#include "sources/iq/iqplan.h"

namespace RecStation {

namespace {

Q_LOGGING_CATEGORY(iqLog, "recstation.iq")

QString deviceName(const IqPlan& plan)
{
    return plan.file == QLatin1String("-") ? QStringLiteral("IQ input") : QFileInfo(plan.file).completeBaseName();
}

class IqSource final : public Source {
public:
    IqSource(IqOptions options, IqReport report) : m_options(std::move(options)), m_report(std::move(report)) {}

    [[nodiscard]] QString name() const override { return QStringLiteral("iq"); }
    void prepare() override;
    [[nodiscard]] std::optional<unsigned long long> nextTime() override;
    void step() override;
    [[nodiscard]] std::optional<unsigned long long> lastTime() override;
    [[nodiscard]] QStringList spectra() const override
    {
        return {m_options.valuePath + QStringLiteral("/Scn/RfSpectrum"), QStringLiteral("/IfMapping")};
    }
    [[nodiscard]] SourceReport report() const override;

private:
    [[nodiscard]] unsigned long long timeOf(const IqFrame& frame) const { return timeOf(frame.firstSample); }
    [[nodiscard]] unsigned long long timeOf(std::uint64_t sample) const;

    IqOptions m_options;
    IqReport m_report;
    IqPlan m_plan;
    std::unique_ptr<FrameReader> m_frames;
    std::unique_ptr<SpectrumValues> m_values;
    std::optional<IqFrame> m_pending;  // read, not yet shown
    std::uint64_t m_shown = 0;
};

void IqSource::prepare()
{
    m_plan = makeIqPlan(m_options);
    m_frames = std::make_unique<FrameReader>(m_plan, m_plan.format, openInput(m_plan.file.toStdString()), m_report);
    m_pending = m_frames->next();
    if (!m_pending) {
        throw std::runtime_error("iq: " + inputName(m_plan.file.toStdString()) +
                                 (m_frames->samplesRead() == 0 ? " holds no samples" : " holds no whole spectrum"));
    }
    m_values = std::make_unique<SpectrumValues>(
        SpectrumDevice{.name = deviceName(m_plan),
                       .type = QStringLiteral("IQ samples %1").arg(QLatin1String(sampleFormatName(m_plan.format))),
                       .valuePath = m_options.valuePath,
                       .ifSpectrum = m_plan.ifSpectrum});
    m_values->setBand(m_plan.centreHz, m_plan.rateHz, m_plan.fftSize);
}

std::optional<unsigned long long> IqSource::nextTime()
{
    if (!m_pending) {
        m_pending = m_frames->next();
    }
    return m_pending ? std::optional(timeOf(*m_pending)) : std::nullopt;
}

void IqSource::step()
{
    m_values->show(*m_pending, timeOf(*m_pending));
    m_pending.reset();
    ++m_shown;
}

SourceReport IqSource::report() const
{
    if (m_frames == nullptr) {
        return {};
    }
    return {m_shown, m_frames->skipped(), m_frames->bad()};
}

std::optional<unsigned long long> IqSource::lastTime()
{
    if (m_plan.file == QLatin1String("-")) {
        return std::nullopt;
    }
    return timeOf(static_cast<std::uint64_t>(QFileInfo(m_plan.file).size()) / sampleBytes(m_plan.format));
}

unsigned long long IqSource::timeOf(std::uint64_t sample) const
{
    constexpr double MicrosecondsPerSecond = 1e6;
    const double sinceStart = static_cast<double>(sample) / m_plan.rateHz * MicrosecondsPerSecond;
    return m_plan.startTime + static_cast<unsigned long long>(std::llround(sinceStart));
}

}  // namespace

void logIqReport(const QString& sentence)
{
    qCWarning(iqLog).noquote() << sentence;
}

std::unique_ptr<Source> makeIqSource(const IqOptions& options, IqReport report)
{
    return std::make_unique<IqSource>(options, std::move(report));
}

}  // namespace RecStation
