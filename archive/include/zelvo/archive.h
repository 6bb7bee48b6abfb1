// The archive behind the client: its configuration, what services and tools need of it, and the mover.
//
// Where nothing else is said a failure throws ArchiveError and leaves the archive as it was. Times are milliseconds
// since 1970-01-01 00:00:00 UTC. An object is used by the thread that makes its first call.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

#include <QString>
#include <QStringList>

#include <zelvo/export.h>
#include <zelvo/zelvo.h>

namespace Zelvo {

/// What went wrong, in one sentence for an operator. Never carries a password.
class ZELVO_EXPORT ArchiveError : public std::runtime_error {
public:
    explicit ArchiveError(const QString& sentence, ZelvoError code = ZelvoError::Failed);
    ~ArchiveError() override;
    ArchiveError(const ArchiveError&) = default;
    ArchiveError& operator=(const ArchiveError&) = default;
    [[nodiscard]] ZelvoError code() const { return m_code; }
    [[nodiscard]] QString text() const { return QString::fromUtf8(what()); }

private:
    ZelvoError m_code;
};

/// Where the archive is and how it behaves.
struct ArchiveConfiguration {
    QString directory;  ///< of this station's own: registry or journal, cache, locks; on a local disk; absolute
    QString storage;    ///< where recordings go, a mounted share; absolute; not inside `directory`
    QString registry;  ///< empty: an SQLite file in `directory`; else postgresql://USER@HOST:PORT/DATABASE, no password
    QString station;   ///< unique among those that share a registry; empty: the host's name
    std::uint64_t cacheBytes = 4'000'000'000;  ///< of fetched files; files in use may exceed it
    unsigned fileMode = 0640;                  ///< permissions of files that the archive makes, less the umask
    unsigned directoryMode = 0750;             ///< likewise of directories
    bool removeExpired = false;                ///< whether recordings whose time is over are deleted from the storage
    std::int64_t firstPauseMs = 5'000;         ///< before a failed move is tried again; doubles each time
    std::int64_t longestPauseMs = 600'000;     ///< what it grows to
};

/// Reads the table [archive] of a TOML file; other tables are left alone. Keys: Directory, Storage, Registry, Station,
/// CacheBytes, FileMode and DirectoryMode (octal, as text), RemoveExpired, FirstPauseSeconds, LongestPauseSeconds.
/// @throws ArchiveError with file and key: a missing Directory or Storage, an unknown key, a wrong type or value
[[nodiscard]] ZELVO_EXPORT ArchiveConfiguration LoadArchiveConfiguration(const QString& path);
/// The same from text; fileName is for messages.
[[nodiscard]] ZELVO_EXPORT ArchiveConfiguration ParseArchiveConfiguration(const QString& text, const QString& fileName);
/// The file that the environment variable ZELVO_CONFIG names, nothing where it names none.
[[nodiscard]] ZELVO_EXPORT std::optional<ArchiveConfiguration> ArchiveConfigurationOfEnvironment();

/// Whether this build has an archive at all (RECORDING2_ARCHIVE). Without one every call but this one throws
/// ArchiveError.
[[nodiscard]] ZELVO_EXPORT bool ArchiveIsBuiltIn();

/// What clients constructed from now on without a configuration use, in the whole process; nothing: what the
/// environment says. May be called from any thread.
ZELVO_EXPORT void SetProcessArchive(const std::optional<ArchiveConfiguration>& configuration);
/// What they would use. Never throws: a file of the environment that cannot be read counts as none.
[[nodiscard]] ZELVO_EXPORT std::optional<ArchiveConfiguration> ProcessArchive();

/// Makes directories and registry, writes the mark into the storage that tells it from an empty mount point, and notes
/// it in the registry. What was set up before is checked only; then a storage that is away is no error.
ZELVO_EXPORT void SetUpArchive(const ArchiveConfiguration& configuration);

/// Where a file is on its way.
enum class FileState : std::int32_t {
    Waiting = 0,  ///< lies at its station: still recorded, not yet asked for, or not yet moved
    Stored = 1,   ///< the storage has a verified copy and the registry says so; the original still has to be deleted
    Moved = 2,    ///< only the storage has it
    Edited = 3,   ///< the storage has it, and its station has a newer version that still has to be stored
    Removed = 4,  ///< its time was over; nobody has it
    Same = 5,     ///< another registration of a file that is a member of another group too; that one is moved
};

struct FileInfo {
    QString guid;
    std::uint32_t id = 0;
    QString name;        ///< such as "a.rec"
    QString station;     ///< which has the original or a newer version
    QString localPath;   ///< at that station
    QString storedPath;  ///< relative to the storage; empty while it has no copy
    FileState state = FileState::Waiting;
    std::int64_t version = 1;
    std::int64_t bytes = -1;    ///< of the copy in the storage, -1 without one
    QString sha256;             ///< likewise, 64 hexadecimal digits
    std::int64_t attempts = 0;  ///< failed ones since the last success
    std::int64_t nextTryMs = 0;
    QString error;             ///< of the last attempt, or what is waited for; empty when neither
    std::int64_t movedMs = 0;  ///< when the copy was registered, 0 without one
    QString sameGuid;          ///< FileState::Same: which registration counts
    std::uint32_t sameId = 0;

    [[nodiscard]] QString address() const { return QStringLiteral("zelvo:///%1/%2").arg(guid).arg(id); }
};

/// Why the members of a group may be moved, or why not yet.
enum class GroupState : std::int32_t {
    Open = 0,        ///< its recorder may still add files
    Asked = 1,       ///< MoveToNas was called
    Abandoned = 2,   ///< its process ended without asking
    Superseded = 3,  ///< its process went on with another group without asking
};

struct GroupInfo {
    FileGroupData data;
    QString title;
    QString startText;
    QString version;
    QString station;
    QString directory;
    std::int64_t createdMs = 0;
    GroupState state = GroupState::Open;
    std::int64_t files = 0;
    std::int64_t moved = 0;   ///< of these in the storage or removed
    std::int64_t failed = 0;  ///< of these whose last attempt failed
};

struct StationInfo {
    QString name;
    std::int64_t lastRunMs = 0;  ///< of its mover; 0: never
    QString storageError;        ///< why it cannot use the storage; empty when it can
    std::int64_t nextTryMs = 0;  ///< when it looks again
};

struct ArchiveStatus {
    QString registry;  ///< for people, without a password
    QString storage;
    bool storageUsable = false;
    QString storageError;  ///< why it is not
    std::int64_t groups = 0;
    std::int64_t waiting = 0;  ///< files, Waiting and Edited
    std::int64_t failed = 0;   ///< of these whose last attempt failed
    std::int64_t moved = 0;    ///< Stored and Moved
    std::int64_t removed = 0;
    std::int64_t bytesMoved = 0;
    std::int64_t unpublished = 0;  ///< requests that the shared registry has not heard of yet; this station's
    std::vector<StationInfo> stations;
    std::vector<FileInfo> notMoved;  ///< what waits, with why, oldest group first; at most 1,000
};

struct StorageProblem {
    enum class Kind { Missing, Altered, Unreadable };
    Kind kind = Kind::Missing;
    FileInfo file;
    QString sentence;
};

/// Read access for tools, with the few things that they may change.
class ZELVO_EXPORT Archive {
public:
    /// Opens the registry, and tells it first what this station could not tell it before.
    explicit Archive(const ArchiveConfiguration& configuration);
    Archive(const Archive&) = delete;
    Archive& operator=(const Archive&) = delete;
    ~Archive();

    [[nodiscard]] ArchiveStatus status();
    /// Newest first.
    /// @param limit at most so many, 0: all
    [[nodiscard]] std::vector<GroupInfo> groups(std::int64_t limit = 0);
    [[nodiscard]] std::optional<GroupInfo> group(const QString& guid);
    /// By id; empty for a group that is not there.
    [[nodiscard]] std::vector<FileInfo> files(const QString& guid);
    /// @return nothing when the archive does not know the address
    [[nodiscard]] std::optional<FileInfo> file(const ZelvoUrl& url);

    /// Copies the file of an address, checked against the registry's hash, to a path where no file is.
    void fetch(const ZelvoUrl& url, const QString& path);
    /// Reads every copy in the storage, in order of groups and ids.
    /// @param onProblem told of every missing, altered or unreadable copy; false ends the check
    /// @param onFile told before each file is read, may be empty
    /// @return how many were read and found good
    std::int64_t verify(const std::function<bool(const StorageProblem&)>& onProblem,
                        const std::function<void(const FileInfo&)>& onFile = {}, const QString& onlyGuid = {});
    /// Forgets the pauses of this station's failed moves, so that the next run tries them at once.
    /// @param guid of one group; empty: of all
    /// @return of how many files
    std::int64_t retry(const QString& guid = {});

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// What one run of the mover did.
struct MoverReport {
    std::int64_t moved = 0;
    std::int64_t bytes = 0;
    std::int64_t failed = 0;   ///< attempts
    std::int64_t waiting = 0;  ///< files that stay for now: being recorded, not asked for, paused, in use
    std::int64_t removed = 0;  ///< copies of expired groups
    bool otherMover = false;   ///< another mover of this station is at work; nothing was done
    bool interrupted = false;
    QString problem;              ///< why nothing could be moved at all (registry, storage); empty otherwise
    std::int64_t nextRunMs = -1;  ///< when a paused move is due; -1 when none is paused
    QStringList messages;         ///< a sentence for each failed attempt
};

/// Moves this station's recordings to the storage. Construct and use it in one thread; recorders of the same process
/// and other processes go on in theirs.
class ZELVO_EXPORT Mover {
public:
    /// Touches nothing yet.
    explicit Mover(const ArchiveConfiguration& configuration);
    Mover(const Mover&) = delete;
    Mover& operator=(const Mover&) = delete;
    ~Mover();

    /// Tells the shared registry what it has not heard, moves all that is due, deletes what has expired where the
    /// configuration says so, and makes room in the cache. Never throws: a registry or storage that cannot be used is
    /// the report's problem, and the next call tries again.
    /// @param stop asked between pieces of a file; true ends the run soon and cleanly. Called in this thread; may be
    ///        empty
    MoverReport runPending(const std::function<bool()>& stop = {});

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace Zelvo
