// Requesting files from the archive under a lock, and giving them back, changed or not.
#include "archivedfiles.h"

#include <map>
#include <memory>
#include <utility>

#include <zelvo/zelvo.h>
#include <QFile>
#include <QString>

#include "printing/output.h"

namespace RecTool {

bool isArchiveAddress(const std::string& name)
{
    return name.starts_with("zelvo:");  // also one with mistakes, of which the archive tells
}

namespace {

/// Files of the archive, locked and at hand while this exists. What was changed is stored by giveBack only. One thread.
class ArchivedFiles {
public:
    /// @param change the files are to be changed, and nobody else may use them meanwhile
    explicit ArchivedFiles(bool change) : m_change(change) {}
    ArchivedFiles(const ArchivedFiles&) = delete;
    ArchivedFiles& operator=(const ArchivedFiles&) = delete;
    ~ArchivedFiles() = default;

    /// Puts the local path in the place of an address; another name stays.
    /// @return false, told, when the archive does not give the file
    bool take(std::string& name)
    {
        if (!isArchiveAddress(name)) {
            return true;
        }
        const auto known = m_paths.find(name);
        if (known != m_paths.end()) {
            name = known->second;
            return true;
        }
        if (m_client == nullptr) {
            m_client = std::make_unique<Zelvo::ZelvoClient>();
        }
        if (!m_client->IsConnected()) {
            complain(name, Zelvo::ZelvoClient::IsZelvoAvailable()
                               ? "The archive cannot be reached."
                               : "There is no archive: name its configuration with --archive-config or ZELVO_CONFIG.");
            return false;
        }
        const Zelvo::ZelvoUrl url(QString::fromStdString(name));
        if (!url.isZelvoUrl() || !m_client->IsValidURL(url)) {
            complain(name, "This is no address of the archive; one has the form zelvo:///GROUP/FILE.");
            return false;
        }
        const QString path =
            m_client->RequestFile(url, m_change ? Zelvo::LockState::Exclusive : Zelvo::LockState::Shared);
        if (m_client->GetError() != Zelvo::ZelvoError::None || path.isEmpty()) {
            complain(name, m_client->GetErrorString().toStdString());
            return false;
        }
        const std::string local = QFile::encodeName(path).toStdString();
        m_paths[name] = local;
        setShownName(local, name);
        name = local;
        return true;
    }
    /// Gives the files back after a verb. A change is stored only where the verb was Fine.
    /// @return the result, or, told, CannotRead when the change could not be stored
    [[nodiscard]] ExitCode giveBack(ExitCode result)
    {
        if (m_change && result != ExitCode::Fine) {
            return result;  // the end of the client drops what was changed
        }
        for (const auto& [address, path] : m_paths) {
            m_client->CloseFile(Zelvo::ZelvoUrl(QString::fromStdString(address)));
            if (m_change && m_client->GetError() != Zelvo::ZelvoError::None) {
                complain(address,
                         "The change could not be stored in the archive: " + m_client->GetErrorString().toStdString());
                result = ExitCode::CannotRead;
            }
        }
        m_paths.clear();
        return result;
    }

private:
    bool m_change;
    std::unique_ptr<Zelvo::ZelvoClient> m_client;
    std::map<std::string, std::string> m_paths;  // by address
};

/// @return CannotRead, told, where the archive does not give one of them
ExitCode takeList(ArchivedFiles& files, const NamedFiles& named)
{
    ExitCode result = ExitCode::Fine;
    std::vector<std::string> shown;
    for (std::string& file : *named.list) {
        const bool taken = files.take(file);
        result = taken ? result : ExitCode::CannotRead;
        if (taken || named.listsAll) {
            shown.push_back(std::move(file));
        }
    }
    *named.list = std::move(shown);
    return result;
}

}  // namespace

ExitCode runOnLocalFiles(const NamedFiles& files, const std::function<ExitCode()>& verb)
{
    ArchivedFiles archived(files.change);
    if (files.file != nullptr && !archived.take(*files.file)) {
        return ExitCode::CannotRead;
    }
    const ExitCode taken = files.list == nullptr ? ExitCode::Fine : takeList(archived, files);
    if (files.list != nullptr && ((files.needsAll && taken != ExitCode::Fine) || files.list->empty())) {
        return ExitCode::CannotRead;  // it was told why
    }
    return worse(taken, archived.giveBack(verb()));
}

}  // namespace RecTool
