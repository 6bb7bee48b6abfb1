// One copy under a temporary name, which gets its own when it has been read back.
#include "storing.h"

#include <QFileInfo>

namespace Zelvo {

namespace {

// Always the same, so that what a killed mover left is found.
QString temporaryPath(const QString& target, const FileRow& file)
{
    return QStringLiteral("%1/.%2.%3.part").arg(QFileInfo(target).path()).arg(file.id).arg(file.version);
}

bool isStoredAlready(const Original& original, const QString& target, const Files& files, Digest& digest,
                     const StopWish& stop)
{
    if (files.kind(target) == FileKind::Missing) {
        return false;
    }
    digest = files.digest(original.path, stop);
    if (files.kind(target) != FileKind::File || files.digest(target, stop).sha256 != digest.sha256) {
        throw FileError(FileError::Kind::Exists,
                        QStringLiteral("%1 exists already and is another file; it is not replaced").arg(target));
    }
    return true;
}

// @return why the copy is not to be stored; empty when it is
QString whyNotStored(const Original& original, const QString& temporary, const Digest& digest, const Files& files,
                     const StopWish& stop)
{
    if (digest.identity.lasting() != original.identity.lasting()) {
        return QStringLiteral("%1 became another file while it was moved").arg(original.path);
    }
    // One that was begun and finished meanwhile is told by the file's time.
    if (QString why = whyNotCopied(original.path, files); !why.isEmpty()) {
        return why;
    }
    return files.digest(temporary, stop).sha256 == digest.sha256
               ? QString()
               : QStringLiteral("%1 read back from the storage is not what was written").arg(temporary);
}

}  // namespace

Digest copyIntoStorage(const FileRow& file, const Original& original, const QString& storedPath,
                       const StoragePlace& place, const StopWish& stop)
{
    const QString target = place.storage.path(storedPath);
    place.storage.makeDirectories(storedPath);
    Digest digest;
    const QString temporary = temporaryPath(target, file);
    place.files.remove(temporary);
    if (!isStoredAlready(original, target, place.files, digest, stop)) {
        digest = place.files.copy(original.path, temporary, place.fileMode, stop);
        if (const QString why = whyNotStored(original, temporary, digest, place.files, stop); !why.isEmpty()) {
            place.files.remove(temporary);
            throw FileError(FileError::Kind::Other, why);
        }
        place.files.rename(temporary, target);
    }
    place.files.fsyncDirectory(QFileInfo(target).path());
    return digest;
}

}  // namespace Zelvo
