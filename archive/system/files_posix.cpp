// Copying, flushing, renaming and locking the archive's files on Linux and other POSIX systems.
#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <system_error>
#include <vector>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "files.h"

namespace Zelvo {

namespace {

constexpr std::size_t PieceBytes = 1U << 18U;

FileError::Kind kindOf(int code)
{
    switch (code) {
        case ENOENT:
        case ENOTDIR:
            return FileError::Kind::Missing;
        case EEXIST:
        case ENOTEMPTY:
            return FileError::Kind::Exists;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return FileError::Kind::Full;
        case EROFS:
        case EIO:
        case ENOTCONN:
        case ESTALE:
        case ENODEV:
        case ENXIO:
        case EHOSTDOWN:
        case EHOSTUNREACH:
        case ETIMEDOUT:
            return FileError::Kind::Away;
        case ELOOP:
        case EISDIR:
            return FileError::Kind::NotAFile;
        default:
            return FileError::Kind::Other;
    }
}

[[noreturn]] void fail(const char* what, const QString& path, int code = errno)
{
    const QString reason = QString::fromStdString(std::generic_category().message(code));
    throw FileError(kindOf(code), QStringLiteral("cannot %1 %2: %3").arg(QLatin1String(what), path, reason));
}

QByteArray nativeName(const QString& path)
{
    return QFile::encodeName(path);
}

class Descriptor {
public:
    Descriptor(const QString& path, int flags, mode_t mode = 0)
        : m_number(::open(nativeName(path).constData(), flags | O_CLOEXEC | O_NOFOLLOW, mode))
    {
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_number >= 0) {
            ::close(m_number);
        }
    }
    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] bool good() const { return m_number >= 0; }
    /// Closing can be where a network file system tells of a failed write.
    [[nodiscard]] bool close()
    {
        const int number = m_number;
        m_number = -1;
        return ::close(number) == 0;
    }

private:
    int m_number;
};

std::int64_t nanosecondsOf(const struct statx_timestamp& time)
{
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    return time.tv_sec * nanoseconds + time.tv_nsec;
}

// Of an open file with an empty name, else of the name; a link is not followed.
FileIdentity identityAt(int descriptor, const QByteArray& name, const QString& path)
{
    struct statx info = {};
    const int flags = AT_SYMLINK_NOFOLLOW | (name.isEmpty() ? AT_EMPTY_PATH : 0);
    if (::statx(descriptor, name.constData(), flags, STATX_BASIC_STATS | STATX_BTIME, &info) != 0) {
        fail("look at", path);
    }
    if (!S_ISREG(info.stx_mode)) {
        throw FileError(FileError::Kind::NotAFile, QStringLiteral("%1 is no ordinary file").arg(path));
    }
    return {makedev(info.stx_dev_major, info.stx_dev_minor), info.stx_ino, static_cast<std::int64_t>(info.stx_size),
            nanosecondsOf(info.stx_mtime), (info.stx_mask & STATX_BTIME) != 0 ? nanosecondsOf(info.stx_btime) : 0};
}

FileIdentity identityOf(const Descriptor& file, const QString& path)
{
    return identityAt(file.number(), {}, path);
}

// Opening a pipe waits for who writes into it, and opening a device may do something, so the name is looked at before;
// whatever has taken its place since is not waited for, and refused when it is read.
class Source : public Descriptor {
public:
    explicit Source(const QString& path) : Descriptor(checked(path), O_RDONLY | O_NONBLOCK | O_NOCTTY)
    {
        if (!good()) {
            fail("open", path);
        }
    }

private:
    static const QString& checked(const QString& path)
    {
        static_cast<void>(identityAt(AT_FDCWD, nativeName(path), path));
        return path;
    }
};

void writeAll(const Descriptor& file, const char* bytes, std::size_t size, const QString& path)
{
    while (size > 0) {
        const ssize_t written = ::write(file.number(), bytes, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            fail("write", path);
        }
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
}

// Gives every piece to a taker. The file must be the same before and after.
Digest readAll(const Descriptor& file, const QString& path, const StopWish& stop,
               const std::function<void(const char*, std::size_t)>& take)
{
    Digest result;
    result.identity = identityOf(file, path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    std::vector<char> piece(PieceBytes);
    while (true) {
        if (stop && stop()) {
            throw Interrupted();
        }
        const ssize_t count = ::read(file.number(), piece.data(), piece.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            fail("read", path);
        }
        if (count == 0) {
            break;
        }
        hash.addData(piece.data(), static_cast<int>(count));
        take(piece.data(), static_cast<std::size_t>(count));
        result.bytes += count;
    }
    if (result.bytes != result.identity.bytes || identityOf(file, path) != result.identity) {
        throw FileError(FileError::Kind::Changed, QStringLiteral("%1 changed while it was read").arg(path));
    }
    result.sha256 = hash.result().toHex();
    return result;
}

void flush(const Descriptor& file, const QString& path)
{
    if (::fsync(file.number()) != 0) {
        fail("flush", path);
    }
}

// Where the file system cannot rename without replacing, a second name is given and the first taken away.
int linkAndUnlink(const char* from, const char* to)
{
    if (::link(from, to) == 0) {
        return ::unlink(from);
    }
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK) {
        return -1;
    }
    // No second names either, as on some shares. Nobody else writes under this name: only the file's station does.
    struct stat info = {};
    if (::lstat(to, &info) == 0) {
        errno = EEXIST;
        return -1;
    }
    return ::rename(from, to);
}

}  // namespace

Files::~Files() = default;

FileKind Files::kind(const QString& path) const
{
    struct stat info = {};
    if (::lstat(nativeName(path).constData(), &info) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) {
            return FileKind::Missing;
        }
        fail("look at", path);
    }
    return S_ISREG(info.st_mode) ? FileKind::File : S_ISDIR(info.st_mode) ? FileKind::Directory : FileKind::Other;
}

FileIdentity Files::identity(const QString& path) const
{
    return identityAt(AT_FDCWD, nativeName(path), path);
}

void Files::makeDirectory(const QString& path, unsigned mode)
{
    if (::mkdir(nativeName(path).constData(), 0700) != 0) {
        if (errno == EEXIST && kind(path) == FileKind::Directory) {
            return;
        }
        fail("make the directory", path);
    }
    // Not left to the mask that the process was started with.
    if (::chmod(nativeName(path).constData(), mode) != 0) {
        fail("set the permissions of", path);
    }
}

Digest Files::copy(const QString& from, const QString& to, unsigned mode, const StopWish& stop)
{
    const Source source(from);
    Descriptor target(to, O_WRONLY | O_CREAT | O_EXCL, mode);
    if (!target.good()) {
        fail("make", to);
    }
    try {
        Digest result = readAll(source, from, stop, [&target, &to](const char* bytes, std::size_t size) {
            writeAll(target, bytes, size, to);
        });
        flush(target, to);
        if (!target.close()) {
            fail("write", to);
        }
        return result;
    } catch (...) {
        ::unlink(nativeName(to).constData());
        throw;
    }
}

Digest Files::digest(const QString& path, const StopWish& stop) const
{
    const Source file(path);
#if defined(POSIX_FADV_DONTNEED)
    // Only advice: pages that are still in memory would hide what the device kept.
    static_cast<void>(::posix_fadvise(file.number(), 0, 0, POSIX_FADV_DONTNEED));
#endif
    return readAll(file, path, stop, [](const char* /*bytes*/, std::size_t /*size*/) {});
}

void Files::rename(const QString& from, const QString& to)
{
    const QByteArray source = nativeName(from);
    const QByteArray target = nativeName(to);
#if defined(RENAME_NOREPLACE)
    if (::renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), RENAME_NOREPLACE) == 0) {
        return;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        fail("rename to", to);
    }
#endif
    if (linkAndUnlink(source.constData(), target.constData()) != 0) {
        fail("rename to", to);
    }
}

void Files::syncDirectory(const QString& path)
{
    const Descriptor directory(path, O_RDONLY | O_DIRECTORY);
    if (!directory.good()) {
        // The recording directory itself may be a link; only names below it are of interest.
        const int number = ::open(nativeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (number < 0) {
            fail("open", path);
        }
        const int result = ::fsync(number);
        const int code = errno;
        ::close(number);
        if (result != 0 && code != EINVAL) {
            fail("flush", path, code);
        }
        return;
    }
    // Some shares cannot flush a directory and say so; their server then decides.
    if (::fsync(directory.number()) != 0 && errno != EINVAL) {
        fail("flush", path);
    }
}

void Files::remove(const QString& path)
{
    if (::unlink(nativeName(path).constData()) != 0 && errno != ENOENT) {
        fail("remove", path);
    }
}

void Files::touch(const QString& path)
{
    // The system's own idea of now is too coarse to tell two uses apart.
    std::array<timespec, 2> now{};
    ::clock_gettime(CLOCK_REALTIME, now.data());
    now[1] = now[0];
    static_cast<void>(::utimensat(AT_FDCWD, nativeName(path).constData(), now.data(), AT_SYMLINK_NOFOLLOW));
}

void Files::write(const QString& path, const QByteArray& bytes, unsigned mode)
{
    const QString temporary = path + QLatin1Char('.') + QUuid::createUuid().toString(QUuid::Id128);
    Descriptor file(temporary, O_WRONLY | O_CREAT | O_EXCL, mode);
    if (!file.good()) {
        fail("make", temporary);
    }
    writeAll(file, bytes.constData(), static_cast<std::size_t>(bytes.size()), temporary);
    flush(file, temporary);
    if (!file.close() || ::rename(nativeName(temporary).constData(), nativeName(path).constData()) != 0) {
        fail("write", path);
    }
    Files::syncDirectory(QFileInfo(path).path());
}

struct FileLock::Private {
    explicit Private(const QString& file, mode_t mode) : path(file), descriptor(file, O_RDWR | O_CREAT, mode) {}

    // Whoever held the lock last removed the file, and another may lie there now.
    [[nodiscard]] bool stillNamed() const
    {
        struct stat own = {};
        struct stat named = {};
        return ::fstat(descriptor.number(), &own) == 0 && ::lstat(nativeName(path).constData(), &named) == 0 &&
               own.st_dev == named.st_dev && own.st_ino == named.st_ino;
    }

    QString path;
    Descriptor descriptor;
};

std::unique_ptr<FileLock> FileLock::tryLock(const QString& path, Mode mode, unsigned fileMode)
{
    // Who gives a lock up holds it alone for a moment.
    constexpr int Patience = 5;
    constexpr useconds_t MomentUs = 1'000;
    for (int refusals = 0;;) {
        auto own = std::make_unique<Private>(path, fileMode);
        if (!own->descriptor.good()) {
            fail("make", path);
        }
        const int operation = (mode == Mode::Shared ? LOCK_SH : LOCK_EX) | LOCK_NB;
        if (::flock(own->descriptor.number(), operation) != 0) {
            if (errno != EWOULDBLOCK) {
                fail("lock", path);
            }
            if (++refusals == Patience) {
                return nullptr;
            }
            ::usleep(MomentUs);
            continue;
        }
        if (own->stillNamed()) {
            return std::unique_ptr<FileLock>(new FileLock(std::move(own)));
        }
    }
}

bool FileLock::isHeld(const QString& path)
{
    const Descriptor file(path, O_RDWR);
    if (!file.good()) {
        if (errno == ENOENT) {
            return false;
        }
        fail("open", path);
    }
    return ::flock(file.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

void createEmpty(const QString& path, unsigned mode)
{
    const Descriptor file(path, O_WRONLY | O_CREAT | O_EXCL, mode);
    if (!file.good() && errno != EEXIST) {
        fail("make", path);
    }
}

bool isOpenHere(const FileIdentity& file)
{
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    const QStringList numbers = descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    return std::any_of(numbers.begin(), numbers.end(), [&file](const QString& number) {
        struct stat info = {};
        return ::fstat(number.toInt(), &info) == 0 && info.st_dev == file.device && info.st_ino == file.number;
    });
}

QString ownPluginFolder()
{
    return {};
}

FileLock::FileLock(std::unique_ptr<Private> own) : d(std::move(own))
{
}

FileLock::~FileLock()
{
    if (::flock(d->descriptor.number(), LOCK_EX | LOCK_NB) == 0 && d->stillNamed()) {
        ::unlink(nativeName(d->path).constData());
    }
}

}  // namespace Zelvo
