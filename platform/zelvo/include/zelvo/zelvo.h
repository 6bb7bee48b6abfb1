// The archive client. This one has no archive: IsZelvoAvailable() is false and every request fails.
#pragma once

#include <cstdint>

#include <QDateTime>
#include <QString>

#include <zelvo/export.h>

namespace Zelvo {

/// Result of the last request; 0 is success.
enum class ZelvoError : std::int32_t { None = 0, NotAvailable = 1 };

/// How a requested file is locked.
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

/// One connection to the archive. Used by one thread.
class ZELVO_EXPORT ZelvoClient {
public:
    ZelvoClient();
    ZelvoClient(const ZelvoClient&) = delete;
    ZelvoClient& operator=(const ZelvoClient&) = delete;
    ~ZelvoClient();  // NOLINT(performance-trivially-destructible): a real client has a connection to close

    /// Whether an archive can be used at all.
    [[nodiscard]] static bool IsZelvoAvailable();
    [[nodiscard]] bool IsConnected() const;
    void SetUser(const QString& user);

    /// Creates a file group. @return its GUID, empty on failure
    QString CreateFileGroup(const QString& version, const QDateTime& expires, const QString& startText,
                            const QString& description, FileType type, unsigned long long maxBytes,
                            const QString& title, QString& directory, const QString& reserved);
    /// Adds a file to a group. @return its file id, 0 on failure
    std::uint32_t AddFile(const QString& name, const QString& guid);
    /// Asks for a group's files to be moved to network storage. @return a text for people
    QString MoveToNas(const QString& guid);
    /// @return the local path to use, empty on failure
    QString RequestFile(const ZelvoUrl& url, LockState lock);
    void CloseFile(const ZelvoUrl& url);
    [[nodiscard]] bool IsValidURL(const ZelvoUrl& url) const;

    [[nodiscard]] ZelvoError GetError() const;     ///< of the last request
    [[nodiscard]] QString GetErrorString() const;  ///< of the last request, for people

private:
    ZelvoError m_error = ZelvoError::None;
};

}  // namespace Zelvo
