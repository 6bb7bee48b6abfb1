// The storage: a directory that is known by its mark, and paths that cannot leave it.
#pragma once

#include <QSet>
#include <QString>

#include "files.h"
#include "station/configuration.h"

namespace Zelvo {

class Storage {
public:
    Storage(const ArchiveConfiguration& checked, Files& files)
        : m_root(checked.storage), m_directoryMode(checked.directoryMode), m_fileMode(checked.fileMode), m_files(files)
    {
    }

    /// The mark's text; empty when there is none. @throws FileError
    [[nodiscard]] QString mark() const;
    void writeMark(const QString& id);
    /// @throws FileError of Kind::Away when this is not the storage of that mark
    void check(const QString& id) const;
    /// The full path of a stored name.
    /// @throws ArchiveError for a name that the archive does not give, or whose directories leave the storage
    [[nodiscard]] QString path(const QString& storedName) const;
    /// Makes the directories of a stored name, lasting.
    void makeDirectories(const QString& storedName);
    /// Another mount may lie there when the storage is used the next time.
    void forgetDirectories();

private:
    QString m_root;
    unsigned m_directoryMode;
    unsigned m_fileMode;
    Files& m_files;
    QSet<QString> m_lasting;
};

}  // namespace Zelvo
