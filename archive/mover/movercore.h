// The mover, with the file system and the clock as a test wants them.
#pragma once

#include <memory>
#include <vector>

#include "client/originals.h"
#include "station/station.h"
#include "storage/files.h"
#include "storage/storage.h"

namespace Zelvo {

using Clock = std::function<std::int64_t()>;

class MoverCore {
public:
    MoverCore(const ArchiveConfiguration& configuration, Files& files, Clock clock = currentMs);

    MoverReport run(const StopWish& stop);

private:
    using Group = std::vector<PendingFile>;
    enum class Outcome { Moved, Waits, Failed, StorageAway };

    void runLocked(const StopWish& stop);
    void moveDue(const StopWish& stop);
    [[nodiscard]] std::vector<Group> pendingGroups();
    [[nodiscard]] bool storageIsThere();
    bool moveGroup(Group& group, const StopWish& stop);
    [[nodiscard]] bool isFinished(Group& group);
    [[nodiscard]] bool moveOne(FileRow& file, std::int64_t createdMs, const StopWish& stop);
    Outcome attempt(FileRow& file, std::int64_t createdMs, const StopWish& stop);
    Outcome store(FileRow& file, std::int64_t createdMs, const StopWish& stop);
    [[nodiscard]] Original originalOf(const FileRow& file);
    Outcome originalIsMissing(const FileRow& file, const QString& why);
    Outcome finish(std::unique_ptr<FileLock> alone, const FileRow& file, const QString& original,
                   const FileIdentity* known, const StopWish& stop);
    [[nodiscard]] bool isTheStoredOne(const FileRow& file, const QString& original, const StopWish& stop);
    Outcome fail(const FileRow& file, const QString& sentence);
    void tell(const FileRow& file, const QString& failure);
    void note(FileRow& file, const QString& text);
    bool isBeingChanged(FileRow& file, const QString& path);
    void storageFailed(const QString& sentence);
    [[nodiscard]] std::int64_t pause(std::int64_t attempts) const;
    void due(std::int64_t timeMs);

    ArchiveConfiguration m_configuration;
    Files& m_files;
    Clock m_clock;
    Storage m_storage;
    std::unique_ptr<Station> m_station;
    MoverReport m_report;
    std::int64_t m_registryFailures = 0;
    std::int64_t m_registryNextTryMs = 0;
    QString m_registryProblem;
    std::int64_t m_storageAttempts = 0;
    std::int64_t m_fullFromBytes = 0;  ///< in this run no file of this size or larger is tried; 0: all are
    std::int64_t m_triedBytes = 0;     ///< of the last one
    std::int64_t m_heartbeatMs = 0;
};

}  // namespace Zelvo
