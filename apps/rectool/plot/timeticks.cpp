// Choosing a step of time that people count in, and labelling its multiples.
#include "timeticks.h"

#include <array>
#include <cmath>
#include <limits>

#include <QDateTime>
#include <QString>

namespace RecTool {

namespace {

constexpr double Second = 1000;
constexpr double Minute = 60 * Second;
constexpr double Hour = 60 * Minute;
constexpr double Day = 24 * Hour;

/// The smallest step that people count in and that gives no more ticks than wanted.
double tickStep(double span, std::size_t most)
{
    constexpr std::array<double, 39> Steps{
        1,          2,          5,           10,          20,          50,          100,         200,
        500,        Second,     2 * Second,  5 * Second,  10 * Second, 15 * Second, 30 * Second, Minute,
        2 * Minute, 5 * Minute, 10 * Minute, 15 * Minute, 30 * Minute, Hour,        2 * Hour,    3 * Hour,
        6 * Hour,   12 * Hour,  Day,         2 * Day,     5 * Day,     10 * Day,    20 * Day,    50 * Day,
        100 * Day,  200 * Day,  500 * Day,   1000 * Day,  2000 * Day,  5000 * Day,  10000 * Day};
    const double least = span / static_cast<double>(most);
    for (const double step : Steps) {
        if (step >= least) {
            return step;
        }
    }
    return std::pow(10, std::ceil(std::log10(least / Day))) * Day;
}

// A damaged file may have any time, and as a number with a point the last one is after the last whole one.
quint64 wholeMs(double ms)
{
    constexpr quint64 Last = std::numeric_limits<quint64>::max();
    return ms < static_cast<double>(Last) ? static_cast<quint64>(ms) : Last;
}

QDateTime clock(double ms)
{
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(ms), Qt::UTC);
}

/// The multiples of a step in a span that is counted from an origin.
template <typename Label>
std::vector<TimeTick> ticks(const TimeSpan& span, double origin, double step, const Label& label)
{
    const double from = span.fromMs + origin;
    const double to = span.toMs + origin;
    std::vector<TimeTick> ticks;
    const double first = std::ceil(from / step);
    for (double i = 0; (first + i) * step <= to; ++i) {
        const double time = (first + i) * step;
        // So far out that a number with a point has no place for a step, several would be the same.
        if (ticks.empty() || time - origin > ticks.back().timeMs) {
            ticks.push_back({time - origin, label(time)});
        }
    }
    return ticks;
}

}  // namespace

bool isClockTime(std::uint64_t startMs, const TimeSpan& span)
{
    constexpr std::uint64_t EndOfYear9999 = 253'402'300'799'999;
    return startMs > 0 && startMs <= EndOfYear9999 && span.toMs <= static_cast<double>(EndOfYear9999 - startMs);
}

std::string onlyDay(const TimeSpan& span, std::uint64_t startMs)
{
    const QDate day = clock(static_cast<double>(startMs) + span.fromMs).date();
    return day == clock(static_cast<double>(startMs) + span.toMs).date() ? day.toString(Qt::ISODate).toStdString() : "";
}

std::vector<TimeTick> clockTicks(const TimeSpan& span, std::uint64_t startMs, std::size_t most)
{
    const double step = tickStep(span.width(), most);
    const QString format = step >= Day      ? QString()
                           : step >= Minute ? QStringLiteral("HH:mm")
                           : step >= Second ? QStringLiteral("HH:mm:ss")
                                            : QStringLiteral("HH:mm:ss.zzz");
    const bool oneDay = !onlyDay(span, startMs).empty();
    QDate day;
    return ticks(span, static_cast<double>(startMs), step, [&](double time) {
        const QDateTime moment = clock(time);
        QString text = format.isEmpty() ? QString() : moment.toString(format);
        if (!oneDay && moment.date() != day) {
            day = moment.date();
            text += (text.isEmpty() ? "" : "\n") + day.toString(Qt::ISODate);
        } else if (text.isEmpty()) {
            text = moment.date().toString(Qt::ISODate);
        }
        return text.toStdString();
    });
}

std::vector<TimeTick> elapsedTicks(const TimeSpan& span, std::size_t most)
{
    const double step = tickStep(span.width(), most);
    return ticks(span, 0, step, [&](double time) {
        if (std::abs(span.fromMs) < Minute && std::abs(span.toMs) < Minute) {
            const int digits = step >= Second ? 0 : step >= Second / 10 ? 1 : step >= Second / 100 ? 2 : 3;
            return QString::number(time / Second, 'f', digits).toStdString() + " s";
        }
        const quint64 ms = wholeMs(std::abs(time));
        const quint64 seconds = ms / static_cast<quint64>(Second);
        constexpr quint64 Sixty = 60;
        QString text = QStringLiteral("%1:%2:%3")
                           .arg(seconds / Sixty / Sixty)
                           .arg(seconds / Sixty % Sixty, 2, 10, QLatin1Char('0'))
                           .arg(seconds % Sixty, 2, 10, QLatin1Char('0'));
        if (time < 0) {
            text.prepend(QLatin1Char('-'));
        }
        if (step < Second) {
            text += QStringLiteral(".%1").arg(ms % static_cast<quint64>(Second), 3, 10, QLatin1Char('0'));
        }
        return text.toStdString();
    });
}

}  // namespace RecTool
