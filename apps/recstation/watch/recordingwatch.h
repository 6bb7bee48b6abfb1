// Notices when the files of a recording are deleted, moved or cut while it is being written, and saves what it held.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include <QString>

#include "system/heldfile.h"

namespace RecStation {

/// What happened to the files of a recording.
enum class FileHarm : std::uint8_t { Gone, Cut, JournalGone, JournalCut };

/// What became of the recording then.
struct RescuedRecording {
    QString path;  ///< where it is now; empty: nowhere
    QString what;  ///< what happened, and what was lost: "/r/NAME.tmp was deleted ..."
};

/// One recording, from its opening on.
class RecordingWatch {
public:
    /// @param temporary the file, which was just opened
    explicit RecordingWatch(const QString& temporary);

    [[nodiscard]] const QString& path() const { return m_path; }
    /// While it is being written. @return nothing when all is well
    [[nodiscard]] std::optional<FileHarm> harm();
    /// Before the recorder closes it because of harm, or after that: the journal's memory is not its any more.
    void forgetJournal() { m_guard.reset(); }
    /// The same after it was closed without harm being seen.
    [[nodiscard]] std::optional<FileHarm> harmWhenClosed();
    /// After the recorder closed it: saves what can be.
    [[nodiscard]] RescuedRecording rescue(FileHarm harm);

private:
    [[nodiscard]] RescuedRecording rescueGone() const;
    [[nodiscard]] RescuedRecording rescueCut(const QString& what) const;
    [[nodiscard]] QString closedPath() const;

    QString m_path;
    HeldFile m_file;
    HeldFile m_journal;
    std::unique_ptr<JournalGuard> m_guard;
};

}  // namespace RecStation
