// The archive beside the recorders: moves finished recordings to the network storage while the run goes on.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include <QString>
#include <QStringList>

namespace RecStation {

/// What the archive says of one recording.
struct ArchivedFile {
    bool moved = false;  ///< the storage has a verified copy
    QString storedPath;  ///< of that copy
    QString why;         ///< it waits; may be empty
};

/// What became of the recordings of a run.
struct ArchiveReport {
    std::vector<ArchivedFile> files;  ///< in the order of the addresses asked for; empty where it could not be learned
    QString problem;                  ///< one sentence; empty when the archive works
};

/// Owns a thread of its own, in which everything happens that waits for registry or storage: recording waits for
/// neither. While it exists its archive is the one of the process, so that recorders made meanwhile register with it.
class ArchiveService {
public:
    ArchiveService() = default;
    ArchiveService(const ArchiveService&) = delete;
    ArchiveService& operator=(const ArchiveService&) = delete;
    virtual ~ArchiveService() = default;

    /// Waits for the archive to be set up, for a while only.
    /// @return why it is not yet; empty when it is. Recordings go on without it, and it is tried again
    [[nodiscard]] virtual QString waitUntilSetUp(std::chrono::milliseconds limit) = 0;

    /// Moves what can be moved, and then tells of the recordings with these addresses. To be called once, when all are
    /// closed. What could not be moved waits for the next run, or for the archive's own service.
    /// @param stop asked now and then in this thread; true ends the moving early
    [[nodiscard]] virtual ArchiveReport finish(const QStringList& addresses, std::chrono::milliseconds limit,
                                               const std::function<bool()>& stop) = 0;

    /// Whether a thread had to be left waiting for a registry or storage that does not answer. The process must then
    /// end without tidying up.
    [[nodiscard]] static bool leftThreadBehind();
};

/// @param configurationFile with a table [archive]; empty: the one that the environment names, if it names one
/// @return null when there is no archive
/// @throws std::runtime_error when the configuration is wrong, or this build has no archive
[[nodiscard]] std::unique_ptr<ArchiveService> makeArchiveService(const QString& configurationFile);

}  // namespace RecStation
