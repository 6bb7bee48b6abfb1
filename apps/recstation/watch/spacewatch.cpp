// Measuring how fast the disks of a run fill, and when that is worth a warning again.
#include "spacewatch.h"

#include <QStorageInfo>

namespace RecStation {

namespace {

constexpr std::int64_t FewBytes = 1'000'000'000;
constexpr std::int64_t FewSeconds = 600;

QString about(std::int64_t seconds)
{
    constexpr std::int64_t PerMinute = 60;
    return seconds < 2 * PerMinute ? QStringLiteral("about %1 seconds").arg(seconds)
                                   : QStringLiteral("about %1 minutes").arg(seconds / PerMinute);
}

}  // namespace

std::optional<std::int64_t> freeSpaceOf(const QString& directory)
{
    const QStorageInfo storage(directory);
    return storage.isValid() ? std::optional<std::int64_t>(storage.bytesAvailable()) : std::nullopt;
}

// Files grow in pieces: over less than some seconds the rate would jump.
void SpaceWatch::measure(Watched& watched, std::int64_t written, std::int64_t elapsedMs)
{
    constexpr std::int64_t SpanMs = 5'000;
    constexpr double MsPerSecond = 1'000;
    if (!watched.begun) {
        watched.begun = true;
        watched.sinceMs = elapsedMs;
        watched.sinceWritten = written;
        return;
    }
    const std::int64_t span = elapsedMs - watched.sinceMs;
    if (span >= SpanMs) {
        watched.bytesPerSecond =
            static_cast<double>(written - watched.sinceWritten) * MsPerSecond / static_cast<double>(span);
        watched.sinceMs = elapsedMs;
        watched.sinceWritten = written;
    }
}

bool SpaceWatch::isShort(const Level& level)
{
    return level.bytes < FewBytes || (level.seconds && *level.seconds < FewSeconds);
}

bool SpaceWatch::isHalfOf(const Level& level, const Level& told)
{
    const bool lessTime = level.seconds && told.seconds && *level.seconds <= *told.seconds / 2;
    const bool timeIsNew = level.seconds && *level.seconds < FewSeconds && !told.seconds;
    return level.bytes <= told.bytes / 2 || lessTime || timeIsNew;
}

QString SpaceWatch::check(const QString& directory, std::int64_t written, std::int64_t elapsedMs)
{
    Watched& watched = m_watched[directory];
    measure(watched, written, elapsedMs);
    const std::optional<std::int64_t> bytes = m_freeSpace(directory);
    if (!bytes) {
        return {};
    }
    Level level{*bytes, std::nullopt};
    if (watched.bytesPerSecond >= 1) {
        level.seconds = static_cast<std::int64_t>(static_cast<double>(*bytes) / watched.bytesPerSecond);
    }
    if (watched.told && level.bytes / 2 >= watched.told->bytes) {
        watched.told.reset();  // space was made; a rate that only went down for a while is no reason to tell it again
    }
    if (!isShort(level) || (watched.told && !isHalfOf(level, *watched.told))) {
        return {};
    }
    watched.told = level;
    QString sentence = QStringLiteral("warning: %1 are left in %2").arg(byteText(*bytes), directory);
    if (level.seconds) {
        sentence += QStringLiteral(", enough for %1 at the present rate").arg(about(*level.seconds));
    }
    return sentence;
}

void DiskWatch::start()
{
    m_sinceStart.start();
    m_sinceCheck.start();
}

void DiskWatch::check()
{
    constexpr qint64 CheckMs = 1'000;
    if (m_sinceCheck.elapsed() < CheckMs) {
        return;
    }
    m_sinceCheck.restart();
    std::map<QString, std::int64_t> written;
    for (const auto& recorder : m_recorders.all()) {
        if (recorder->isOn()) {
            written[recorder->directory()];
        }
        for (const QString& path : recorder->temporaryPaths()) {
            const auto found = written.find(recorder->directory());
            if (found != written.end()) {
                found->second += bytesRecorded(path);
            }
        }
    }
    for (const auto& [directory, bytes] : written) {
        const QString warning = m_space.check(directory, bytes, m_sinceStart.elapsed());
        if (!warning.isEmpty()) {
            m_messages.message(warning);
        }
    }
}

}  // namespace RecStation
