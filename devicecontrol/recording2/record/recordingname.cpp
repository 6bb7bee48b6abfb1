// Names of recordings: texts of the station, which may hold anything, and the time.
#include "recordingname.h"

#include <algorithm>
#include <cstdlib>

#include <QTextBoundaryFinder>

#include "../filenames.h"

namespace Recording2 {

namespace {

const QString BehindCaption = QStringLiteral("__");

// Of the 255 bytes that file systems give to a name: after this one come a number, ".tmp.journal" or
// "_recovered_2.rec.part", and before it the number that the archive gives it.
constexpr int MostBytes = 200;

int bytesOf(const QString& text)
{
    return static_cast<int>(FileNames::toBytes(text).size());
}

// By what people take for one character. No character takes less than a byte.
QString shortened(const QString& text, int room)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    int end = std::min(text.size(), room);
    finder.setPosition(end);
    if (!finder.isAtBoundary()) {
        end = finder.toPreviousBoundary();
    }
    while (end > 0 && bytesOf(text.left(end)) > room) {
        end = finder.toPreviousBoundary();
    }
    return text.left(std::max(end, 0));
}

// Free text: whatever of it a name cannot hold, or would take for a path, gets lost.
QString inName(const QString& text)
{
    QString name;
    for (const QChar character : text) {
        name += FileNames::fitsName(character) ? character : QLatin1Char('_');
    }
    return name;
}

QString timeInName(const QDateTime& utcNow, bool localTime)
{
    const QString format = QStringLiteral("yyyy-MM-dd__hh-mm-ss");
    if (localTime) {
        return utcNow.toLocalTime().toString(format);
    }
    const QDateTime readAsLocal(utcNow.date(), utcNow.time(), Qt::LocalTime);
    // In the hour that a summer time leaves out there is no such reading.
    const qint64 offset = readAsLocal.isValid() ? readAsLocal.secsTo(utcNow) : utcNow.toLocalTime().offsetFromUtc();
    return utcNow.toString(format) + QStringLiteral("_UTC") + UtcOffsetSuffix(offset);
}

}  // namespace

QString UtcOffsetSuffix(std::int64_t offsetSeconds)
{
    const std::int64_t magnitude = std::abs(offsetSeconds);
    return QStringLiteral("%1%2-%3")
        .arg(offsetSeconds > 0 ? QLatin1Char('+') : QLatin1Char('-'))
        .arg(magnitude / 3600, 2, 10, QLatin1Char('0'))
        .arg(magnitude / 60 % 60, 2, 10, QLatin1Char('0'));
}

// Where caption and device are too long together, each gets half of the room, and what the other leaves of its half.
QString RecordingFileName(const QString& prefix, const QString& deviceName, const QDateTime& utcNow, bool localTime)
{
    const QString behindCaption = prefix.endsWith(BehindCaption) ? BehindCaption : QString();
    const QString behindDevice = QStringLiteral("__") + timeInName(utcNow, localTime);
    const QString caption = inName(prefix.chopped(behindCaption.size()));
    const int room = MostBytes - bytesOf(behindCaption) - bytesOf(behindDevice);
    const QString device = shortened(inName(deviceName), std::max(room / 2, room - bytesOf(caption)));
    QString name = shortened(caption, room - bytesOf(device)) + behindCaption + device + behindDevice;
    name.replace(QLatin1Char(' '), QLatin1Char('_'));
    return FileNames::ordinary(name) + QStringLiteral(".tmp");
}

}  // namespace Recording2
