// The archive client. Without a configuration there is no archive: IsZelvoAvailable() is false and every request fails.
#pragma once

#include <cstdint>
#include <memory>

#include <QDateTime>
#include <QString>

#include <zelvo/export.h>

namespace Zelvo {

/// Result of the last request; 0 is success.
enum class ZelvoError : std::int32_t {
    None = 0,
    NotAvailable = 1,  ///< no archive is configured, or its directory cannot be used
    Unreachable = 2,   ///< the registry or the storage does not answer
    UnknownGroup = 3,
    UnknownFile = 4,
    BadName = 5,    ///< a name or an address that the archive does not take
    Locked = 6,     ///< another process uses the file, or it is being moved
    Elsewhere = 7,  ///< the file still lies at another station
    Damaged = 8,    ///< the storage's copy is not what was stored
    Failed = 9,     ///< anything else; the text says what
};

struct ArchiveConfiguration;

/// How a requested file is locked: for reading with others, or for writing alone.
enum class LockState : std::int32_t { None = 0, Shared = 2, Exclusive = 3 };

/// What kind of file a group holds.
enum class FileType : std::int32_t { Unknown = 0, Recording = 8 };

/// An archive address "zelvo:///GROUP/FILE", or any other text.
class ZELVO_EXPORT ZelvoUrl {
public:
    ZelvoUrl() = default;
    explicit ZelvoUrl(const QString& text);
    [[nodiscard]] bool isZelvoUrl() const;  ///< whether the text has the form of an archive address
    [[nodiscard]] const QString& toString() const;
    void clear();

private:
    QString m_text;
};

/// Description of a file group as the archive keeps it.
struct FileGroupData {
    QString guid;
    QString description;
    QString user;
    FileType type = FileType::Unknown;
    std::uint64_t maxBytes = 0;
    QDateTime expires;
};

/// One connection to the archive. Used by one thread. Requests never throw and never wait for storage or network, with
/// the exception of RequestFile, which fetches the file where this station does not have it.
class ZELVO_EXPORT ZelvoClient {
public:
    /// Of the archive that the process has configured (SetProcessArchive, or ZELVO_CONFIG in the environment).
    ZelvoClient();
    /// Of this archive.
    explicit ZelvoClient(const ArchiveConfiguration& configuration);
    ZelvoClient(const ZelvoClient&) = delete;
    ZelvoClient& operator=(const ZelvoClient&) = delete;
    /// Releases the files that were not closed; changes made to those requested for writing are dropped.
    ~ZelvoClient();

    /// Whether the process has an archive configured and its directory can be used.
    [[nodiscard]] static bool IsZelvoAvailable();
    /// Whether requests are taken. A shared registry may be down meanwhile: it is told later.
    [[nodiscard]] bool IsConnected() const;
    void SetUser(const QString& user);

    /// Creates a file group. @return its GUID, "ERROR" on failure: recorders take it for no group
    /// @param directory where its files are recorded; left as it is by the bundled archive, which takes them from there
    QString CreateFileGroup(const QString& version, const QDateTime& expires, const QString& startText,
                            const QString& description, FileType type, unsigned long long maxBytes,
                            const QString& title, QString& directory, const QString& reserved);
    /// Adds a file to a group. @return its file id in the group, counted from 1; 0 on failure
    /// @param name the final name, without a path; until the file is finished it has the suffix ".tmp" instead
    std::uint32_t AddFile(const QString& name, const QString& guid);
    /// Asks for a group's files to be moved to network storage. @return a text for people
    QString MoveToNas(const QString& guid);
    /// Locks the file until CloseFile, the end of the client or of the process.
    /// @return the local path to use, empty on failure
    QString RequestFile(const ZelvoUrl& url, LockState lock);
    /// Releases the lock; what was written to a file requested for writing becomes its new version.
    void CloseFile(const ZelvoUrl& url);
    /// Whether the text is an address that this archive could have given; whether the file is there RequestFile tells.
    [[nodiscard]] bool IsValidURL(const ZelvoUrl& url) const;

    [[nodiscard]] ZelvoError GetError() const;     ///< of the last request
    [[nodiscard]] QString GetErrorString() const;  ///< of the last request, for people

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace Zelvo
