// The originals of recordings on this station's disk: which file closing really left for an address, and why there is
// none yet. A name alone never decides: a recording whose name is cut at a dot can find it taken by another one.
#pragma once

#include <vector>

#include <QString>

#include "registry/origins.h"
#include "station/station.h"
#include "storage/files.h"

namespace Zelvo {

/// What became of the file of a registration that waits.
struct Original {
    enum class State {
        Finished,    ///< closed, or recovered, under a name of its own
        Unfinished,  ///< recorded still, to be recovered, or without its final name
        Missing,
        Unusable,  ///< under its name is another recording, or what is no file, or the system does not tell
    };
    State state = State::Missing;
    QString path;           ///< of a finished one
    FileIdentity identity;  ///< likewise
    QString why;            ///< of every other, in one sentence
};

/// One that is not finished, with the reason.
[[nodiscard]] inline Original noOriginal(Original::State state, const QString& why)
{
    return {state, {}, {}, why};
}

/// Looks at the disk, and believes the station's journal alone. Never opens a file.
[[nodiscard]] Original findOriginal(const FileRow& file, Station& station, const Files& files);

/// @throws ArchiveError when it is another station's, of ZelvoError::Elsewhere, or not finished
[[nodiscard]] Original finishedOriginal(const FileRow& file, Station& station, const Files& files);
/// To be thrown for a file that is here and cannot be given.
[[nodiscard]] ArchiveError notToBeHad(const FileRow& file, const QString& why);
/// @throws ArchiveError for a file whose time was over
void requireNotRemoved(const FileRow& file);

/// Why a finished file cannot be copied as it lies. While its bookmarks or channel ranges are stored, and where that
/// was interrupted, it is whole only together with a journal beside it. @return empty when it can
[[nodiscard]] QString whyNotCopied(const QString& path, const Files& files);

/// A file that is being registered.
struct NewFile {
    QString directory;
    QString unfinished;  ///< empty: it bears its final name already, or is not there yet
    Origin origin;
};

/// Finds the file that a recorder of this process has just made.
/// @param directories where it may be, the group's own first
/// @param name its final one
[[nodiscard]] NewFile findNewFile(const std::vector<QString>& directories, const QString& name, Station& station,
                                  const Files& files);

}  // namespace Zelvo
