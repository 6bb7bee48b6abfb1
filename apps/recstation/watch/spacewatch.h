// Tells in time that a disk fills up.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

#include <QElapsedTimer>
#include <QString>

#include "progress.h"
#include "recorders.h"

namespace RecStation {

/// Bytes that a directory still has room for; nothing when the system does not tell.
using FreeSpace = std::function<std::optional<std::int64_t>(const QString& directory)>;

/// Asks the system.
[[nodiscard]] std::optional<std::int64_t> freeSpaceOf(const QString& directory);

/// Warns of a directory once when less than 1 GB is free or less than 10 minutes are left at the rate of the last
/// seconds, again each time that half of what was told is gone, and anew after space was made.
class SpaceWatch {
public:
    explicit SpaceWatch(FreeSpace freeSpace) : m_freeSpace(std::move(freeSpace)) {}

    /// @param written bytes in the directory's recordings so far
    /// @param elapsedMs since the run began; never less than at the call before
    /// @return a sentence, empty when there is nothing to tell
    [[nodiscard]] QString check(const QString& directory, std::int64_t written, std::int64_t elapsedMs);

private:
    struct Level {
        std::int64_t bytes = 0;
        std::optional<std::int64_t> seconds;  // nothing: nothing is written now
    };
    struct Watched {
        std::int64_t sinceMs = 0;  // of the span that the rate is measured over
        std::int64_t sinceWritten = 0;
        bool begun = false;
        double bytesPerSecond = 0;
        std::optional<Level> told;
    };

    static void measure(Watched& watched, std::int64_t written, std::int64_t elapsedMs);
    [[nodiscard]] static bool isShort(const Level& level);
    [[nodiscard]] static bool isHalfOf(const Level& level, const Level& told);

    FreeSpace m_freeSpace;
    std::map<QString, Watched> m_watched;
};

/// Looks after the room that the disks of a run's recordings have, while it lasts.
class DiskWatch {
public:
    DiskWatch(const Recorders& recorders, Messages& messages) : m_recorders(recorders), m_messages(messages) {}

    void start();  ///< with the recording
    /// Warns where a disk fills up; asks the system once a second, however often this is called.
    void check();

private:
    const Recorders& m_recorders;
    Messages& m_messages;
    SpaceWatch m_space{freeSpaceOf};
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceCheck;
};

}  // namespace RecStation
