// Copying, flushing, renaming and locking the archive's files, with what the system says when it refuses.
#include "files.h"

#include <vector>

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

namespace Zelvo {

namespace {

using System::NativeFile;

std::filesystem::path native(const QString& path)
{
    std::filesystem::path name;
    if constexpr (std::is_same_v<std::filesystem::path::value_type, char>) {
        name = QFile::encodeName(path).toStdString();
    } else {
        name = path.toStdWString();
    }
    return name.make_preferred();
}

void require(System::Error error, const char* what, const QString& path)
{
    if (error == 0) {
        return;
    }
    if (System::kindOf(error) == System::ErrorKind::NotAFile) {
        throw FileError(FileError::Kind::NotAFile, QStringLiteral("%1 is no ordinary file").arg(path));
    }
    const QString reason = QString::fromStdString(System::errorText(error));
    throw FileError(System::kindOf(error), QStringLiteral("cannot %1 %2: %3").arg(QLatin1String(what), path, reason));
}

FileIdentity identityOf(const NativeFile& file, const QString& path)
{
    FileIdentity identity;
    require(file.identity(identity), "look at", path);
    return identity;
}

void writeAll(NativeFile& file, std::int64_t position, const char* bytes, std::size_t size, const QString& path)
{
    std::size_t written = 0;
    require(file.writeAt(position, bytes, size, written), "write", path);
}

using Taker = std::function<void(std::int64_t position, const char* bytes, std::size_t size)>;

// Gives every piece to a taker. The file must be the same before and after.
Digest readAll(const NativeFile& file, const QString& path, const StopWish& stop, const Taker& take)
{
    constexpr std::size_t PieceBytes = 1U << 18U;
    Digest result;
    result.identity = identityOf(file, path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    std::vector<char> piece(PieceBytes);
    while (true) {
        if (stop && stop()) {
            throw Interrupted();
        }
        std::size_t count = 0;
        require(file.readAt(result.bytes, piece.data(), piece.size(), count), "read", path);
        if (count == 0) {
            break;
        }
        hash.addData(piece.data(), static_cast<int>(count));
        take(result.bytes, piece.data(), count);
        result.bytes += static_cast<std::int64_t>(count);
    }
    if (result.bytes != result.identity.bytes || identityOf(file, path) != result.identity) {
        throw FileError(FileError::Kind::Other, QStringLiteral("%1 changed while it was read").arg(path));
    }
    result.sha256 = hash.result().toHex();
    return result;
}

}  // namespace

Files::~Files() = default;

FileKind Files::kind(const QString& path) const
{
    FileKind kind = FileKind::Missing;
    require(System::lookAt(native(path), kind), "look at", path);
    return kind;
}

FileIdentity Files::identity(const QString& path) const
{
    FileIdentity identity;
    require(System::identityOf(native(path), identity), "look at", path);
    return identity;
}

void Files::makeDirectory(const QString& path, unsigned mode)
{
    const System::Error error = System::makeDirectory(native(path), mode);
    if (error != System::NameTaken || kind(path) != FileKind::Directory) {
        require(error, "make the directory", path);
    }
}

Digest Files::copy(const QString& from, const QString& to, unsigned mode, const StopWish& stop)
{
    NativeFile source;
    NativeFile target;
    require(source.open(native(from), System::Access::ReadItself), "open", from);
    require(target.open(native(to), System::Access::New, mode), "make", to);
    try {
        Digest result =
            readAll(source, from, stop, [&target, &to](std::int64_t position, const char* bytes, std::size_t size) {
                writeAll(target, position, bytes, size, to);
            });
        require(target.fsync(), "flush", to);
        require(target.close(), "write", to);  // where a network file system may tell of a failed write
        return result;
    } catch (...) {
        target.close();
        System::removeFile(native(to));
        throw;
    }
}

Digest Files::digest(const QString& path, const StopWish& stop) const
{
    NativeFile file;
    require(file.open(native(path), System::Access::ReadItself), "open", path);
    file.forgetCached();
    return readAll(file, path, stop, [](std::int64_t /*position*/, const char* /*bytes*/, std::size_t /*size*/) {});
}

void Files::rename(const QString& from, const QString& to)
{
    require(System::renameToNew(native(from), native(to)), "rename to", to);
}

void Files::fsyncDirectory(const QString& path)
{
    require(System::fsyncDirectory(native(path)), "flush", path);
}

void Files::remove(const QString& path)
{
    const System::Error error = System::removeFile(native(path));
    if (System::kindOf(error) != System::ErrorKind::Missing) {
        require(error, "remove", path);
    }
}

void Files::touch(const QString& path)
{
    static_cast<void>(System::touch(native(path)));
}

void Files::write(const QString& path, const QByteArray& bytes, unsigned mode)
{
    const QString temporary = path + QLatin1Char('.') + QUuid::createUuid().toString(QUuid::Id128);
    NativeFile file;
    require(file.open(native(temporary), System::Access::New, mode), "make", temporary);
    writeAll(file, 0, bytes.constData(), static_cast<std::size_t>(bytes.size()), temporary);
    require(file.fsync(), "flush", temporary);
    require(file.close(), "write", path);
    require(System::renameReplacing(native(temporary), native(path)), "write", path);
    Files::fsyncDirectory(QFileInfo(path).path());
}

void createEmpty(const QString& path, unsigned mode)
{
    const System::Error error = NativeFile().open(native(path), System::Access::New, mode);
    if (error != System::NameTaken) {
        require(error, "make", path);
    }
}

std::unique_ptr<FileLock> FileLock::tryLock(const QString& path, Mode mode, unsigned fileMode)
{
    auto lock = std::make_unique<FileLock>();
    const System::Error error = lock->m_lock.tryLock(native(path), mode, fileMode);
    if (error == System::LockHeld) {
        return nullptr;
    }
    require(error, "lock", path);
    return lock;
}

bool FileLock::isHeld(const QString& path)
{
    bool held = false;
    require(System::LockFile::look(native(path), held), "open", path);
    return held;
}

}  // namespace Zelvo
