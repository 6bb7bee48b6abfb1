// The archive's part in a recording file: files asked for by address, groups of files, and the move to the storage.
#pragma once

#include <string>

#include <QString>

#include <values/tree.h>
#include <values/value.h>
#include <zelvo/zelvo.h>

namespace Recording2 {

/// Without a client every operation does nothing. An archive that fails never stops a recording: what it says is traced
/// and the file is written all the same.
class ArchiveFile {
public:
    /// What stands for the group of a file that belongs to none.
    static const QString NoGroup;

    explicit ArchiveFile(Zelvo::ZelvoClient* client) : m_client(client) {}
    ArchiveFile(const ArchiveFile&) = delete;
    ArchiveFile& operator=(const ArchiveFile&) = delete;
    ~ArchiveFile();  ///< tells the archive that the file is not used any more

    /// Where the path is an archive address, asks for the file. @param path receives the local one
    /// @return false when the archive refused it, for the reason of error
    bool request(std::string& path, bool write);
    [[nodiscard]] Zelvo::ZelvoError error() const { return m_error; }
    /// @param prefix of the value that shows the file's address
    void showAt(const QString& prefix) { m_shown.Attach(prefix + QStringLiteral("/REC_ZELVOFILEPATH")); }

    /// Asks for a group. @param path of the file, which the archive may lay elsewhere
    QString newGroup(std::string& path);
    /// Adds the file under the name that it is to have. @return its number
    int add(const QString& path, const QString& guid, const QString& currentGuid);
    void move(const QString& guid);

private:
    void show(const QString& address) const;

    Zelvo::ZelvoClient* m_client;
    Zelvo::ZelvoUrl m_url;
    bool m_hold = false;  // the archive is told when the file is no longer used, where it has such an address
    Zelvo::ZelvoError m_error = Zelvo::ZelvoError::None;
    values::ValuePtr<values::Value<QString>> m_shown;
};

}  // namespace Recording2
