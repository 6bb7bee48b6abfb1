// Groups, files and stations as a registry keeps them: the requests of clients, the steps of the mover, the questions
// of tools. Used by one thread. Everything throws ArchiveError when the registry does not answer.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <type_traits>
#include <vector>

#include <QString>
#include <QStringList>

#include <zelvo/archive.h>

#include "database.h"
#include "origins.h"
#include "storage/names.h"

namespace Zelvo {

inline const char* const StationsTable = "stations";

struct GroupRow : GroupInfo {
    QString owner;  ///< the lock of the process that records into it
    bool asked = false;
    bool abandoned = false;
    bool superseded = false;
    std::int64_t revision = 1;
};

struct FileRow : FileInfo {
    QString unfinished;  ///< the name it had while it was recorded; empty: the final one
    std::int64_t createdMs = 0;
    QString oldPath;  ///< relative to the storage: an older version that is still to be deleted
    QString writer;   ///< the owner that has it open for writing; empty: nobody
    QString writerStation;
    std::int64_t writerUntilMs = 0;
    Origin origin;  ///< of one that is added; the journal alone keeps it

    [[nodiscard]] Address where() const { return {guid, id}; }
};

/// Shows each column of a group with its name.
template <typename Group, typename Visitor>
void visitColumns(Group& group, Visitor&& visit) requires std::is_same_v<std::remove_const_t<Group>, GroupRow>
{
    visit("guid", group.data.guid);
    visit("version", group.version);
    visit("description", group.data.description);
    visit("title", group.title);
    visit("start_text", group.startText);
    visit("type", group.data.type);
    visit("max_bytes", group.data.maxBytes);
    visit("expires", group.data.expires);
    visit("user_name", group.data.user);
    visit("directory", group.directory);
    visit("station", group.station);
    visit("owner", group.owner);
    visit("created", group.createdMs);
    visit("asked", group.asked);
    visit("abandoned", group.abandoned);
    visit("superseded", group.superseded);
    visit("revision", group.revision);
}

/// Those of a file that are known when it is registered.
template <typename File, typename Visitor>
void visitFirstColumns(File& file, Visitor&& visit)
{
    visit("guid", file.guid);
    visit("id", file.id);
    visit("name", file.name);
    visit("station", file.station);
    visit("local_path", file.localPath);
    visit("unfinished", file.unfinished);
    visit("created", file.createdMs);
}

template <typename File, typename Visitor>
void visitColumns(File& file, Visitor&& visit) requires std::is_same_v<std::remove_const_t<File>, FileRow>
{
    visitFirstColumns(file, visit);
    visit("state", file.state);
    visit("version", file.version);
    visit("bytes", file.bytes);
    visit("sha256", file.sha256);
    visit("stored_path", file.storedPath);
    visit("old_path", file.oldPath);
    visit("attempts", file.attempts);
    visit("next_try", file.nextTryMs);
    visit("error", file.error);
    visit("moved", file.movedMs);
    visit("same_guid", file.sameGuid);
    visit("same_id", file.sameId);
    visit("writer", file.writer);
    visit("writer_station", file.writerStation);
    visit("writer_until", file.writerUntilMs);
}

template <typename Station, typename Visitor>
void visitColumns(Station& station, Visitor&& visit) requires std::is_same_v<std::remove_const_t<Station>, StationInfo>
{
    visit("name", station.name);
    visit("last_run", station.lastRunMs);
    visit("storage_error", station.storageError);
    visit("next_try", station.nextTryMs);
}

/// "f.guid, f.id, ...", as RowReader takes them.
template <typename Row>
[[nodiscard]] QString columnList(const char* table)
{
    QStringList columns;
    Row row;
    visitColumns(row, [&](const char* name, const auto& /*value*/) {
        columns += QStringLiteral("%1.%2").arg(QLatin1String(table), QLatin1String(name));
    });
    return columns.join(QStringLiteral(", "));
}

[[nodiscard]] inline Values valuesOf(const GroupRow& group)
{
    Values values;
    visitColumns(group, [&values](const char* name, const auto& value) { values.emplace_back(name, value); });
    return values;
}

/// Of what is known of a file when it is registered.
[[nodiscard]] inline Values firstValuesOf(const FileRow& file)
{
    Values values;
    visitFirstColumns(file, [&values](const char* name, const auto& value) { values.emplace_back(name, value); });
    return values;
}

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

// From a station's journal to the registry it shares with others.

/// How many groups and files of the journal the shared registry has not heard of.
[[nodiscard]] std::int64_t unpublished(Registry& journal);
void publish(Registry& journal, Registry& shared);
/// Forgets in the journal what needs no more of it.
void prune(Registry& journal, Registry& shared, const std::function<bool(const QString&)>& ownerLives);

}  // namespace Zelvo
