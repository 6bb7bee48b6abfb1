// Playing the fixes of an NMEA log, also those still held at a stop.
#include "sources/nmea/nmeasource.h"

#include <algorithm>
#include <utility>

#include "published/attachedvalue.h"
#include "published/positionvalues.h"
#include "sources/nmea/nmealog.h"

namespace RecStation {

namespace {

class NmeaSource final : public Source {
public:
    NmeaSource(NmeaOptions options, InputReport report) : m_options(std::move(options)), m_report(std::move(report)) {}

    [[nodiscard]] QString name() const override { return QStringLiteral("nmea"); }
    void prepare() override;
    [[nodiscard]] std::optional<unsigned long long> nextTime() override;
    void step() override;
    [[nodiscard]] std::optional<unsigned long long> unfinishedTime() override;
    [[nodiscard]] std::optional<unsigned long long> lastTime() override;
    [[nodiscard]] SourceReport report() const override;

private:
    NmeaOptions m_options;
    InputReport m_report;
    std::unique_ptr<NmeaLog> m_log;
    std::unique_ptr<PositionValues> m_values;
    std::optional<TimedFix> m_pending;  // read, not yet shown
    std::uint64_t m_shown = 0;
    bool m_stopping = false;
};

void NmeaSource::prepare()
{
    m_log = std::make_unique<NmeaLog>(m_options, m_report);
    m_values = std::make_unique<PositionValues>();
    if (!m_options.valuePath.isEmpty()) {
        const QString device = m_options.file == "-" ? QStringLiteral("NMEA input") : textBaseName(m_options.file);
        setDevice(m_options.valuePath, forFileNames(device), QStringLiteral("NMEA 0183"));
    }
}

std::optional<unsigned long long> NmeaSource::nextTime()
{
    if (!m_pending) {
        m_pending = m_log->next();
    }
    return m_pending ? std::optional(m_pending->time) : std::nullopt;
}

void NmeaSource::step()
{
    m_values->show(m_pending->fix);
    m_pending.reset();
    ++m_shown;
}

std::optional<unsigned long long> NmeaSource::unfinishedTime()
{
    // What was not due yet lies ahead of the stop.
    if (!m_stopping && (m_pending || !m_log->waitsForInput())) {
        return std::nullopt;
    }
    m_stopping = true;
    m_pending = m_log->nextUnfinished();
    return m_pending ? std::optional(m_pending->time) : std::nullopt;
}

std::optional<unsigned long long> NmeaSource::lastTime()
{
    if (isStream(m_options.file) || m_options.arrival) {
        return std::nullopt;
    }
    NmeaOptions options = m_options;
    options.strict = false;
    NmeaLog log(options, [](const QString&) {});  // what is bad is told when it is played
    std::optional<unsigned long long> last;
    while (const auto fix = log.next()) {
        last = std::max(last.value_or(0), fix->time);
    }
    return last;
}

SourceReport NmeaSource::report() const
{
    if (m_log == nullptr) {
        return {};
    }
    return {m_shown, m_log->skipped(), m_log->bad(), true};
}

}  // namespace

std::unique_ptr<Source> makeNmeaSource(const NmeaOptions& options, InputReport report)
{
    return std::make_unique<NmeaSource>(options, std::move(report));
}

}  // namespace RecStation
