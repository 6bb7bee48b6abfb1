// Groups, files and stations as a registry keeps them: the requests of clients, the steps of the mover, the questions
// of tools. Used by one thread. Everything throws ArchiveError when the registry does not answer.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include <zelvo/archive.h>

#include "database.h"
#include "rows.h"

namespace Zelvo {

/// Of a file that another station has open for writing: longer than any pause between two runs of its mover.
inline constexpr std::int64_t WriterLeaseMs = 1'800'000;

/// A file that the mover has to look at, with what its group says.
struct PendingFile {
    FileRow file;
    GroupRow group;
};

struct StoredCopy {
    QString path;
    std::int64_t bytes = 0;
    QString sha256;
    std::int64_t version = 1;
};

class Registry {
public:
    explicit Registry(Database& database) : m_database(database) {}
    [[nodiscard]] Database& database() { return m_database; }

    [[nodiscard]] QString property(const QString& name);
    void setPropertyOnce(const QString& name, const QString& value);

    // Requests. A new group supersedes those that the same owner left unasked.
    void createGroup(const GroupRow& group);
    /// @return the file's id
    std::uint32_t addFile(const FileRow& file);
    /// @return false when there is no such group
    bool ask(const QString& guid, const QString& user);
    [[nodiscard]] std::vector<QString> directoriesOf(const QString& owner);

    // Questions.
    [[nodiscard]] std::optional<GroupRow> group(const QString& guid);
    [[nodiscard]] std::vector<GroupRow> groups(std::int64_t limit);
    [[nodiscard]] std::optional<FileRow> file(const Address& address);
    /// Of several registrations of a file the one that counts. @throws ArchiveError of ZelvoError::UnknownFile
    [[nodiscard]] FileRow fileOf(const Address& address);
    [[nodiscard]] std::vector<FileRow> files(const QString& guid);
    /// Those with a copy in the storage, after an address, in order; so many at a time.
    [[nodiscard]] std::vector<FileRow> storedAfter(const Address& address, const QString& onlyGuid, int limit);
    [[nodiscard]] std::vector<FileRow> notMoved(int limit);
    void count(ArchiveStatus& status);
    /// @param condition what follows "SELECT ... FROM group_files f"
    [[nodiscard]] std::vector<FileRow> selectFiles(const QString& condition, const Values& values = {});
    /// @param condition what follows "SELECT ... FROM file_groups g"
    [[nodiscard]] std::vector<GroupRow> selectGroups(const QString& condition, const Values& values = {});

    // The mover's steps, for files of one station.
    [[nodiscard]] std::vector<PendingFile> pending(const QString& station);
    [[nodiscard]] std::vector<QString> openOwners(const QString& station);
    void abandon(const QString& station, const QString& owner);
    /// The storage has this version now.
    /// @param same other registrations of the same original; they become FileState::Same
    /// @return false when the file is not any more what the mover knew
    bool recordStored(const FileRow& file, const StoredCopy& copy, std::int64_t nowMs,
                      const std::vector<Address>& same);
    void recordMoved(const FileRow& file);
    /// The storage does not have it any more, but the original is still there.
    void recordLost(const FileRow& file);
    void recordFailure(const FileRow& file, const QString& error, std::int64_t nextTryMs);
    void recordNote(const FileRow& file, const QString& note);
    /// When another registration of the same original was moved after this one was made.
    bool recordSame(const FileRow& file, const std::vector<Address>& same);
    std::int64_t forgetPauses(const QString& station, const QString& guid);
    /// Those of groups whose time is over, and removed ones whose copy is still to be deleted.
    [[nodiscard]] std::vector<FileRow> expired(const QString& station, std::int64_t nowMs);
    /// @return false when somebody has it open for writing or it is not expired any more
    bool recordRemoved(const FileRow& file, std::int64_t nowMs);
    /// The copy of a removed file is deleted.
    void recordGone(const FileRow& file);

    // The stations, and how the last run of each one's mover went.
    /// @return the home of the station of this name; the caller's when it is new
    QString claimStation(const QString& name, const QString& home);
    [[nodiscard]] std::vector<StationInfo> stations();
    /// @param attempts failed ones to use the storage, since the last success
    [[nodiscard]] StationInfo station(const QString& name, std::int64_t& attempts);
    void recordRun(const QString& name, std::int64_t nowMs, const QString& storageError, std::int64_t attempts,
                   std::int64_t nextTryMs);

    // Writers of files that are in the storage.
    bool takeForWriting(const FileRow& file, const QString& owner, const QString& station, std::int64_t untilMs,
                        const std::function<bool(const FileRow&)>& writerIsGone);
    void giveBack(const Address& address, const QString& owner);
    /// @return false when the version is not any more the one that was taken
    bool recordEdited(const FileRow& file, const QString& owner, const QString& station, const QString& path);
    [[nodiscard]] std::vector<FileRow> writtenBy(const QString& station);
    void prolong(const FileRow& file, std::int64_t untilMs);

private:
    /// @param was which values other columns must have @return whether the file was there like that
    bool updateFile(const Address& address, const Values& set, const Values& was = {}, const QString& more = {});
    bool markSame(const Address& address, const Address& counts);

    Database& m_database;
};

}  // namespace Zelvo
