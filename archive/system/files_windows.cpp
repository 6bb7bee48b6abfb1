// Copying, flushing, renaming and locking the archive's files on Windows.
#include <algorithm>
#include <system_error>
#include <vector>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <windows.h>

#include "files.h"

namespace Zelvo {

namespace {

constexpr std::size_t PieceBytes = 1U << 18U;

FileError::Kind kindOf(DWORD code)
{
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return FileError::Kind::Missing;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS:
            return FileError::Kind::Exists;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            return FileError::Kind::Full;
        case ERROR_WRITE_PROTECT:
        case ERROR_NOT_READY:
        case ERROR_IO_DEVICE:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
        case ERROR_NETNAME_DELETED:
        case ERROR_NETWORK_UNREACHABLE:
        case ERROR_UNEXP_NET_ERR:
        case ERROR_SEM_TIMEOUT:
            return FileError::Kind::Away;
        default:
            return FileError::Kind::Other;
    }
}

[[noreturn]] void fail(const char* what, const QString& path, DWORD code = GetLastError())
{
    const QString reason =
        QString::fromLocal8Bit(std::system_category().message(static_cast<int>(code)).c_str()).trimmed();
    throw FileError(kindOf(code), QStringLiteral("cannot %1 %2: %3").arg(QLatin1String(what), path, reason));
}

std::wstring nativeName(const QString& path)
{
    return QDir::toNativeSeparators(path).toStdWString();
}

class Handle {
public:
    Handle(const QString& path, DWORD access, DWORD share, DWORD disposition, DWORD flags = 0)
        : m_handle(CreateFileW(nativeName(path).c_str(), access, share, nullptr, disposition,
                               FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT | flags, nullptr))
    {
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle()
    {
        if (good()) {
            CloseHandle(m_handle);
        }
    }
    [[nodiscard]] HANDLE get() const { return m_handle; }
    [[nodiscard]] bool good() const { return m_handle != INVALID_HANDLE_VALUE; }

private:
    HANDLE m_handle;
};

constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

FileIdentity identityOf(const Handle& file, const QString& path)
{
    BY_HANDLE_FILE_INFORMATION info = {};
    if (GetFileInformationByHandle(file.get(), &info) == 0) {
        fail("look at", path);
    }
    if ((info.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0) {
        throw FileError(FileError::Kind::NotAFile, QStringLiteral("%1 is no ordinary file").arg(path));
    }
    const auto joined = [](DWORD high, DWORD low) { return (std::uint64_t{high} << 32U) | low; };
    const auto nanosecondsOf = [&joined](const FILETIME& time) {
        constexpr std::int64_t NanosecondsPerTick = 100;
        constexpr std::int64_t Ticks1601To1970 = 116'444'736'000'000'000;
        const auto ticks = static_cast<std::int64_t>(joined(time.dwHighDateTime, time.dwLowDateTime));
        return (ticks - Ticks1601To1970) * NanosecondsPerTick;
    };
    return {info.dwVolumeSerialNumber, joined(info.nFileIndexHigh, info.nFileIndexLow),
            static_cast<std::int64_t>(joined(info.nFileSizeHigh, info.nFileSizeLow)),
            nanosecondsOf(info.ftLastWriteTime), nanosecondsOf(info.ftCreationTime)};
}

void writeAll(const Handle& file, const char* bytes, std::size_t size, const QString& path)
{
    while (size > 0) {
        DWORD written = 0;
        if (WriteFile(file.get(), bytes, static_cast<DWORD>(std::min(size, PieceBytes)), &written, nullptr) == 0) {
            fail("write", path);
        }
        bytes += written;
        size -= written;
    }
}

// Gives every piece to a taker. The file must be the same before and after.
Digest readAll(const Handle& file, const QString& path, const StopWish& stop,
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
        DWORD count = 0;
        if (ReadFile(file.get(), piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr) == 0) {
            fail("read", path);
        }
        if (count == 0) {
            break;
        }
        hash.addData(piece.data(), static_cast<int>(count));
        take(piece.data(), count);
        result.bytes += count;
    }
    if (result.bytes != result.identity.bytes || identityOf(file, path) != result.identity) {
        throw FileError(FileError::Kind::Changed, QStringLiteral("%1 changed while it was read").arg(path));
    }
    result.sha256 = hash.result().toHex();
    return result;
}

void flush(const Handle& file, const QString& path)
{
    if (FlushFileBuffers(file.get()) == 0) {
        fail("flush", path);
    }
}

// Far behind the end of every file, so that nobody who reads or writes meets the lock.
OVERLAPPED lockedPlace()
{
    OVERLAPPED place = {};
    place.OffsetHigh = 0x40000000;
    return place;
}

bool lockAt(const Handle& file, DWORD flags)
{
    OVERLAPPED place = lockedPlace();
    return LockFileEx(file.get(), flags | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place) != 0;
}

}  // namespace

Files::~Files() = default;

FileKind Files::kind(const QString& path) const
{
    const DWORD attributes = GetFileAttributesW(nativeName(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD code = GetLastError();
        if (kindOf(code) == FileError::Kind::Missing) {
            return FileKind::Missing;
        }
        fail("look at", path, code);
    }
    if ((attributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE)) != 0) {
        return FileKind::Other;
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileKind::Directory : FileKind::File;
}

FileIdentity Files::identity(const QString& path) const
{
    const Handle file(path, FILE_READ_ATTRIBUTES, ShareAll, OPEN_EXISTING);
    if (!file.good()) {
        fail("look at", path);
    }
    return identityOf(file, path);
}

// Permissions are those that the directory above hands down.
void Files::makeDirectory(const QString& path, unsigned /*mode*/)
{
    if (CreateDirectoryW(nativeName(path).c_str(), nullptr) == 0) {
        const DWORD code = GetLastError();
        if (code != ERROR_ALREADY_EXISTS || kind(path) != FileKind::Directory) {
            fail("make the directory", path, code);
        }
    }
}

Digest Files::copy(const QString& from, const QString& to, unsigned /*mode*/, const StopWish& stop)
{
    const Handle source(from, GENERIC_READ, ShareAll, OPEN_EXISTING);
    if (!source.good()) {
        fail("open", from);
    }
    try {
        const Handle target(to, GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW);
        if (!target.good()) {
            fail("make", to);
        }
        const Digest result = readAll(source, from, stop, [&target, &to](const char* bytes, std::size_t size) {
            writeAll(target, bytes, size, to);
        });
        flush(target, to);
        return result;
    } catch (const FileError& error) {
        if (error.kind() != FileError::Kind::Exists) {
            DeleteFileW(nativeName(to).c_str());
        }
        throw;
    } catch (const Interrupted&) {
        DeleteFileW(nativeName(to).c_str());
        throw;
    }
}

Digest Files::digest(const QString& path, const StopWish& stop) const
{
    const Handle file(path, GENERIC_READ, ShareAll, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    if (!file.good()) {
        fail("open", path);
    }
    return readAll(file, path, stop, [](const char* /*bytes*/, std::size_t /*size*/) {});
}

void Files::rename(const QString& from, const QString& to)
{
    if (MoveFileExW(nativeName(from).c_str(), nativeName(to).c_str(), MOVEFILE_WRITE_THROUGH) == 0) {
        fail("rename to", to);
    }
}

// Names are written through by rename().
void Files::syncDirectory(const QString& /*path*/)
{
}

void Files::remove(const QString& path)
{
    if (DeleteFileW(nativeName(path).c_str()) == 0) {
        const DWORD code = GetLastError();
        if (kindOf(code) != FileError::Kind::Missing) {
            fail("remove", path, code);
        }
    }
}

void Files::touch(const QString& path)
{
    const Handle file(path, FILE_WRITE_ATTRIBUTES, ShareAll, OPEN_EXISTING);
    FILETIME now = {};
    GetSystemTimePreciseAsFileTime(&now);
    SetFileTime(file.get(), nullptr, nullptr, &now);
}

void Files::write(const QString& path, const QByteArray& bytes, unsigned /*mode*/)
{
    const QString temporary = path + QLatin1Char('.') + QUuid::createUuid().toString(QUuid::Id128);
    {
        const Handle file(temporary, GENERIC_WRITE, 0, CREATE_NEW);
        if (!file.good()) {
            fail("make", temporary);
        }
        writeAll(file, bytes.constData(), static_cast<std::size_t>(bytes.size()), temporary);
        flush(file, temporary);
    }
    if (MoveFileExW(nativeName(temporary).c_str(), nativeName(path).c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
        fail("write", path);
    }
}

struct FileLock::Private {
    explicit Private(const QString& file)
        : path(file), handle(file, GENERIC_READ | GENERIC_WRITE | DELETE, ShareAll, OPEN_ALWAYS)
    {
    }

    // Whoever held the lock last may have removed the file under it.
    [[nodiscard]] bool stillNamed() const
    {
        const Handle named(path, FILE_READ_ATTRIBUTES, ShareAll, OPEN_EXISTING);
        return named.good() && identityOf(named, path).number == identityOf(handle, path).number;
    }

    QString path;
    Handle handle;
};

std::unique_ptr<FileLock> FileLock::tryLock(const QString& path, Mode mode, unsigned /*fileMode*/)
{
    // Who gives a lock up holds it alone for a moment.
    constexpr int Patience = 5;
    for (int refusals = 0;;) {
        auto own = std::make_unique<Private>(path);
        if (own->handle.good() && lockAt(own->handle, mode == Mode::Exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0)) {
            if (own->stillNamed()) {
                return std::unique_ptr<FileLock>(new FileLock(std::move(own)));
            }
            continue;
        }
        const DWORD code = GetLastError();
        // A file that is being removed cannot be opened until the last one closes it.
        if (code != ERROR_LOCK_VIOLATION && code != ERROR_ACCESS_DENIED) {
            fail("lock", path, code);
        }
        if (++refusals == Patience) {
            return nullptr;
        }
        Sleep(1);
    }
}

bool FileLock::isHeld(const QString& path)
{
    const Handle file(path, GENERIC_READ | GENERIC_WRITE, ShareAll, OPEN_EXISTING);
    if (!file.good()) {
        const DWORD code = GetLastError();
        if (kindOf(code) == FileError::Kind::Missing) {
            return false;
        }
        fail("open", path, code);
    }
    return !lockAt(file, LOCKFILE_EXCLUSIVE_LOCK);
}

// Qt looks there only in processes with an application object, which rectool and hosts of the library may not have.
void createEmpty(const QString& path, unsigned /*mode*/)
{
    const Handle file(path, GENERIC_WRITE, ShareAll, CREATE_NEW);
    const DWORD code = GetLastError();
    if (!file.good() && kindOf(code) != FileError::Kind::Exists) {
        fail("make", path, code);
    }
}

bool isOpenHere(const FileIdentity& /*file*/)
{
    return false;
}

QString ownPluginFolder()
{
    constexpr DWORD Most = 32'768;
    std::wstring path(Most, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), Most));
    const QString program = QDir::fromNativeSeparators(QString::fromStdWString(path));
    return program.left(program.lastIndexOf(QLatin1Char('/')));
}

FileLock::FileLock(std::unique_ptr<Private> own) : d(std::move(own))
{
}

FileLock::~FileLock()
{
    OVERLAPPED place = lockedPlace();
    UnlockFileEx(d->handle.get(), 0, 1, 0, &place);
    if (lockAt(d->handle, LOCKFILE_EXCLUSIVE_LOCK) && d->stillNamed()) {
        DeleteFileW(nativeName(d->path).c_str());
    }
}

}  // namespace Zelvo
