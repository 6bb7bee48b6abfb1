// The files that recorders wrote: learned from their status values, checked on the disk.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include <QHash>
#include <QString>
#include <QStringList>

#include <values/tree.h>
#include <vkbase/observer.h>

namespace RecStation {

/// What became of one recording.
struct FileReport {
    enum class State : std::uint8_t {
        Finished,   ///< closed and renamed to .rec
        Temporary,  ///< still under its .tmp name
        Archived,   ///< only the archive has it
        Missing,    ///< neither name is on the disk
    };
    QString path;     ///< the file on the disk, or the one that should be there
    QString address;  ///< at the archive; empty when it is not registered there
    State state = State::Missing;
    std::int64_t bytes = 0;
    std::uint64_t records = 0;  ///< by the time table in the file
    QString problem;            ///< one sentence; empty when the file is sound
    bool ownName = true;        ///< cut at a dot, its finished name may be that of another recording
};

/// Looks at the disk for the recording that was opened under the .tmp name.
[[nodiscard]] FileReport examineRecording(const QString& temporaryPath);

/// The same for the archive's copy of it, whose address is known.
void examineArchived(FileReport& report, const QString& storedPath);

/// The same for a recording that is not where it was recorded.
[[nodiscard]] FileReport examineElsewhere(const QString& path);

/// The name that a closed recording gets: cut at the first dot of its file name.
[[nodiscard]] QString finishedPath(const QString& temporaryPath);

/// How much was recorded under a .tmp name, closed since or not. Of what is being written, what waits in the journal
/// counts too; 0 where the archive has moved it.
[[nodiscard]] std::int64_t bytesRecorded(const QString& temporaryPath);

/// Follows REC_FILENAME of one recorder and keeps every .tmp name that it shows, with the archive's address.
class FileNameWatch final : public IObserver {
public:
    /// @param statusPath where REC_FILENAME and REC_ZELVOFILEPATH stand
    explicit FileNameWatch(const QString& statusPath);

    void Update(void* subject, TChangeCode code) override;

    [[nodiscard]] const QStringList& temporaryPaths() const { return m_paths; }      ///< in order of opening
    void forget(const QString& temporaryPath) { m_paths.removeAll(temporaryPath); }  ///< there is no such file
    /// The recording is elsewhere now: its old name may come again.
    void rename(const QString& temporaryPath, const QString& path)
    {
        const int at = m_paths.indexOf(temporaryPath);
        if (at >= 0) {
            m_paths[at] = path;
        }
    }
    /// @param opened called with every .tmp name when it is published, right after the file was made
    /// @param closed called when the final name is published, right after it was closed
    void follow(std::function<void(const QString& temporaryPath)> opened, std::function<void()> closed)
    {
        m_opened = std::move(opened);
        m_closed = std::move(closed);
    }
    /// Empty when the file was not registered with the archive.
    [[nodiscard]] QString addressOf(const QString& temporaryPath) const { return m_addresses.value(temporaryPath); }

private:
    QStringList m_paths;
    std::function<void(const QString&)> m_opened;
    std::function<void()> m_closed;
    QHash<QString, QString> m_addresses;
    values::ValuePtr<values::Value<QString>> m_address;
    values::ValueObservingPtr<values::Value<QString>> m_fileName;
};

}  // namespace RecStation
