// Recognising times and frequencies in the names of files.
#include "sources/iq/recordername.h"

#include <QDateTime>
#include <QRegularExpression>

namespace RecStation {

namespace {

constexpr double Kilo = 1e3;
constexpr double Mega = 1e6;
constexpr double Giga = 1e9;

std::optional<unsigned long long> timeIn(const QString& name)
{
    static const QRegularExpression form(QStringLiteral("(?:^|[_-])(\\d{8})[_-](\\d{6})(?:Z|[_.-]|$)"));
    const auto match = form.match(name);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    QDateTime time = QDateTime::fromString(match.captured(1) + match.captured(2), QStringLiteral("yyyyMMddHHmmss"));
    time.setTimeSpec(Qt::UTC);
    if (!time.isValid() || time.toMSecsSinceEpoch() <= 0) {
        return std::nullopt;
    }
    constexpr unsigned long long MicrosecondsPerMillisecond = 1000;
    return static_cast<unsigned long long>(time.toMSecsSinceEpoch()) * MicrosecondsPerMillisecond;
}

double unitOf(const QString& prefix)
{
    const QString lower = prefix.toLower();
    if (lower == QLatin1String("k")) {
        return Kilo;
    }
    if (lower == QLatin1String("m")) {
        return Mega;
    }
    return lower == QLatin1String("g") ? Giga : 1;
}

}  // namespace

KnownSamples knownByName(const QString& name)
{
    static const QRegularExpression withUnit(QStringLiteral("_(\\d{1,12}(?:\\.\\d{1,9})?)([kMG]?)Hz(?:[_.-]|$)"),
                                             QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression inHertz(QStringLiteral("^gqrx_\\d{8}_\\d{6}_(\\d{1,15})_(\\d{1,12})_fc$"));
    static const QRegularExpression withRate(
        QStringLiteral("_(\\d{1,6}(?:\\.\\d{1,9})?)M_(\\d{1,6}(?:\\.\\d{1,9})?)k$"));
    KnownSamples known;
    KnownCapture& capture = known.captures.front();
    capture.startTime = timeIn(name);
    if (const auto unit = withUnit.match(name); unit.hasMatch()) {
        capture.centreHz = unit.captured(1).toDouble() * unitOf(unit.captured(2));
    } else if (const auto hertz = inHertz.match(name); hertz.hasMatch()) {
        capture.centreHz = hertz.captured(1).toDouble();
        known.rateHz = hertz.captured(2).toDouble();
        known.format = "cf32_le";
    } else if (const auto both = withRate.match(name); both.hasMatch()) {
        capture.centreHz = both.captured(1).toDouble() * Mega;
        known.rateHz = both.captured(2).toDouble() * Kilo;
    }
    if (known.rateHz && !(*known.rateHz > 0)) {
        known.rateHz.reset();
    }
    return known;
}

}  // namespace RecStation
