// Clock times as UTC or local text, written anew only when the second changes.
#include "clocktext.h"

#include <QDateTime>
#include <QString>
#include <cmath>

#include "text.h"

namespace RecTool {

namespace {

constexpr std::uint64_t MsPerSecond = 1000;
constexpr std::size_t FirstDigitOfMs = 20;  // in "2023-11-14T22:13:21.500Z"

std::string isoTime(std::uint64_t msSince1970, TimeForm form)
{
    const auto ms = static_cast<qint64>(msSince1970);
    if (form == TimeForm::Utc) {
        return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC).toString(Qt::ISODateWithMs).toStdString();
    }
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(ms);  // its text does not tell the zone
    return local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODateWithMs).toStdString();
}

}  // namespace

TimeForm timeFormOf(const std::string& name)
{
    return name == "utc" ? TimeForm::Utc : name == "local" ? TimeForm::Local : TimeForm::Offset;
}

const std::string& ClockText::of(std::uint64_t timeMs)
{
    const bool isClock = timeMs != 0 && m_form != TimeForm::Offset && m_startMs <= EndOfYear9999Ms &&
                         timeMs <= EndOfYear9999Ms - m_startMs;
    if (!isClock) {
        m_second.reset();
        return m_text = timeMs == 0 ? "?" : std::to_string(timeMs);
    }
    const std::uint64_t moment = m_startMs + timeMs;
    if (moment / MsPerSecond != m_second) {
        m_second = moment / MsPerSecond;
        return m_text = isoTime(moment, m_form);
    }
    auto ms = static_cast<unsigned>(moment % MsPerSecond);
    for (std::size_t i = 3; i > 0; --i, ms /= 10) {
        m_text[FirstDigitOfMs + i - 1] = static_cast<char>('0' + ms % 10);
    }
    return m_text;
}

std::string momentText(ClockText& clock, double momentMs)
{
    const auto ms = std::llround(momentMs);
    return ms > 0 ? clock.of(static_cast<std::uint64_t>(ms)) : std::to_string(ms);
}

}  // namespace RecTool
