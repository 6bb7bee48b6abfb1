// Reading and checking the storage's mark, and directories that no link leads out of.
#include "storage.h"

#include <QFile>
#include <QFileInfo>

#include "names.h"

namespace Zelvo {

namespace {

const QString MarkName = QStringLiteral("/.zelvo-storage");

}  // namespace

QString Storage::mark() const
{
    const FileKind kind = m_files.kind(m_root + MarkName);
    if (kind == FileKind::Missing) {
        return {};
    }
    if (kind != FileKind::File) {  // a pipe would be waited for
        throw FileError(FileError::Kind::Away, QStringLiteral("%1 is no ordinary file").arg(m_root + MarkName));
    }
    QFile file(m_root + MarkName);
    if (!file.open(QIODevice::ReadOnly)) {
        throw FileError(FileError::Kind::Away,
                        QStringLiteral("cannot read %1: %2").arg(file.fileName(), file.errorString()));
    }
    constexpr qint64 Most = 100;
    return QString::fromLatin1(file.read(Most)).trimmed();
}

void Storage::writeMark(const QString& id)
{
    if (!QFileInfo(m_root).isDir()) {
        throw FileError(FileError::Kind::Away, QStringLiteral("the storage %1 is no directory").arg(m_root));
    }
    m_files.write(m_root + MarkName, id.toLatin1() + '\n', m_fileMode);
}

void Storage::check(const QString& id) const
{
    if (id.isEmpty()) {
        throw FileError(FileError::Kind::Away, QStringLiteral("the storage was never set up (zelvod --set-up)"));
    }
    const QString found = mark();
    if (found.isEmpty()) {
        throw FileError(FileError::Kind::Away,
                        QStringLiteral("%1 does not carry the archive's mark; is the share mounted?").arg(m_root));
    }
    if (found != id) {
        throw FileError(FileError::Kind::Away, QStringLiteral("%1 is the storage of another archive").arg(m_root));
    }
}

QString Storage::path(const QString& storedName) const
{
    if (!isStoredName(storedName)) {
        throw ArchiveError(
            QStringLiteral("the registry names a path that the archive does not give: \"%1\"").arg(storedName),
            ZelvoError::BadName);
    }
    QString directory = m_root;
    const QStringList parts = storedName.split(QLatin1Char('/'));
    for (int i = 0; i + 1 < parts.size(); ++i) {
        directory += QLatin1Char('/') + parts[i];
        const FileKind kind = m_files.kind(directory);
        // A link planted in the share would lead elsewhere.
        if (kind != FileKind::Directory && kind != FileKind::Missing) {
            throw ArchiveError(QStringLiteral("%1 should be a directory of the storage and is none").arg(directory),
                               ZelvoError::BadName);
        }
    }
    return m_root + QLatin1Char('/') + storedName;
}

void Storage::makeDirectories(const QString& storedName)
{
    QString directory = m_root;
    const QStringList parts = storedName.split(QLatin1Char('/'));
    for (int i = 0; i + 1 < parts.size(); ++i) {
        const QString parent = directory;
        directory += QLatin1Char('/') + parts[i];
        if (m_lasting.contains(directory)) {
            continue;
        }
        m_files.makeDirectory(directory, m_directoryMode);
        // One that was there may have been made by a process that did not live to flush its name.
        m_files.fsyncDirectory(parent);
        m_lasting.insert(directory);
    }
}

void Storage::forgetDirectories()
{
    m_lasting.clear();
}

}  // namespace Zelvo
