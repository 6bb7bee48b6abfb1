// Files, locks, mappings and renaming as Linux and other POSIX systems give them.
#include "nativefile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace System {

namespace {

int descriptor(std::intptr_t handle)
{
    return static_cast<int>(handle);
}

template <typename Call>
auto untilNotInterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

Error errorOf(int result)
{
    return result == 0 ? 0 : errno;
}

int flagsOf(Access access)
{
    switch (access) {
        case Access::Create:
            return O_RDWR | O_CREAT | O_TRUNC;
        case Access::New:
            return O_RDWR | O_CREAT | O_EXCL;
        case Access::Update:
            return O_RDWR;
        case Access::Read:
            break;
    }
    return O_RDONLY;
}

Error requireOrdinary(const struct stat& status)
{
    if (S_ISREG(status.st_mode)) {
        return 0;
    }
    return S_ISDIR(status.st_mode) ? EISDIR : NoOrdinaryFile;
}

bool isSame(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

}  // namespace

const Error InvalidPosition = EINVAL;
const Error CannotRead = EIO;
const Error NameTaken = EEXIST;
const Error LockHeld = EWOULDBLOCK;
const Error NoOrdinaryFile = -1;

std::string errorText(Error error)
{
    if (error == LockHeld) {
        return "Another program holds its lock";
    }
    if (error == NoOrdinaryFile) {
        return "It is no ordinary file";
    }
    return std::generic_category().message(error);
}

NativeFile::~NativeFile()
{
    close();
}

// Opening a pipe waits for its other end, and opening a device may do anything, so what is there is looked at first;
// and again when it is open, for it may have been another thing by then.
Error NativeFile::open(const std::filesystem::path& path, Access access, FileMode mode)
{
    const bool existing = access == Access::Update || access == Access::Read;
    struct stat status {};
    if (existing) {
        const Error error = ::stat(path.c_str(), &status) == 0 ? requireOrdinary(status) : errno;
        if (error != 0) {
            return error;
        }
    }
    const int how = flagsOf(access) | O_CLOEXEC | O_NOCTTY | (existing ? O_NONBLOCK : 0);
    const int opened = untilNotInterrupted([&] { return ::open(path.c_str(), how, mode); });
    if (opened == -1) {
        return errno;
    }
    const Error error = !existing ? 0 : ::fstat(opened, &status) == 0 ? requireOrdinary(status) : errno;
    if (error != 0) {
        ::close(opened);
        return error;
    }
    close();
    m_handle = opened;
    return 0;
}

Error NativeFile::close()
{
    if (!isOpen()) {
        return 0;
    }
    const int result = ::close(descriptor(m_handle));
    m_handle = NoHandle;
    return result == -1 && errno != EINTR ? errno : 0;
}

Error NativeFile::writeAt(std::int64_t position, const char* bytes, std::size_t size, std::size_t& written)
{
    written = 0;
    while (written < size) {
        const ssize_t part = untilNotInterrupted([&] {
            return ::pwrite(descriptor(m_handle), bytes + written, size - written,
                            position + static_cast<off_t>(written));
        });
        if (part == -1) {
            return errno;
        }
        if (part == 0) {
            return EIO;
        }
        written += static_cast<std::size_t>(part);
    }
    return 0;
}

std::size_t NativeFile::readAt(std::int64_t position, char* bytes, std::size_t size) const
{
    std::size_t read = 0;
    while (read < size) {
        const ssize_t part = untilNotInterrupted([&] {
            return ::pread(descriptor(m_handle), bytes + read, size - read, position + static_cast<off_t>(read));
        });
        if (part <= 0) {
            break;
        }
        read += static_cast<std::size_t>(part);
    }
    return read;
}

std::int64_t NativeFile::size() const
{
    struct stat status {};
    return ::fstat(descriptor(m_handle), &status) == 0 ? status.st_size : 0;
}

Error NativeFile::setSize(std::int64_t size)
{
    return errorOf(untilNotInterrupted([&] { return ::ftruncate(descriptor(m_handle), size); }));
}

Error NativeFile::allocate(std::int64_t position, std::int64_t bytes)
{
    Error error = EINTR;
    while (error == EINTR) {
        error = ::posix_fallocate(descriptor(m_handle), position, bytes);
    }
    return error;
}

Error NativeFile::sync()
{
    return errorOf(untilNotInterrupted([&] { return ::fdatasync(descriptor(m_handle)); }));
}

Error NativeFile::lock()
{
    return errorOf(untilNotInterrupted([&] { return ::flock(descriptor(m_handle), LOCK_EX | LOCK_NB); }));
}

bool NativeFile::isAt(const std::filesystem::path& path) const
{
    struct stat there {};
    struct stat here {};
    return ::lstat(path.c_str(), &there) == 0 && ::fstat(descriptor(m_handle), &here) == 0 && isSame(here, there);
}

FileMode NativeFile::mode() const
{
    constexpr mode_t Permissions = 0777;
    struct stat status {};
    return ::fstat(descriptor(m_handle), &status) == 0 ? status.st_mode & Permissions : DefaultFileMode;
}

void NativeFile::waitForLock()
{
    static_cast<void>(untilNotInterrupted([&] { return ::flock(descriptor(m_handle), LOCK_EX); }));
}

bool NativeFile::isReachedBy(const std::filesystem::path& path) const
{
    struct stat there {};
    struct stat here {};
    return ::stat(path.c_str(), &there) == 0 && ::fstat(descriptor(m_handle), &here) == 0 && isSame(here, there);
}

// Only the superuser may give a file away, and others only to a group of their own.
void NativeFile::takeAccessOf(const NativeFile& other)
{
    constexpr mode_t ReadAndWrite = 0666;
    struct stat status {};
    if (::fstat(descriptor(other.m_handle), &status) != 0) {
        return;
    }
    if (::fchown(descriptor(m_handle), status.st_uid, status.st_gid) != 0) {
        static_cast<void>(!::fchown(descriptor(m_handle), static_cast<uid_t>(-1), status.st_gid));
    }
    static_cast<void>(::fchmod(descriptor(m_handle), status.st_mode & ReadAndWrite));
}

std::int64_t NativeFile::lastWritten() const
{
    constexpr std::int64_t Nanoseconds = 1'000'000'000;
    struct stat status {};
    return ::fstat(descriptor(m_handle), &status) == 0 ? status.st_mtim.tv_sec * Nanoseconds + status.st_mtim.tv_nsec
                                                       : 0;
}

void Mapping::unmap()
{
    if (m_data != nullptr) {
        ::munmap(m_data, m_bytes);
        m_data = nullptr;
    }
}

Error Mapping::map(const NativeFile& file, std::size_t bytes)
{
    void* const data = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor(file.m_handle), 0);
    if (data == MAP_FAILED) {
        return errno;
    }
    m_data = static_cast<char*>(data);
    m_bytes = bytes;
    return 0;
}

Error Mapping::sync()
{
    return errorOf(::msync(m_data, m_bytes, MS_SYNC));
}

Error syncDirectory(const std::filesystem::path& directory)
{
    const int opened = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened == -1) {
        return errno;
    }
    const Error error = errorOf(::fsync(opened));
    ::close(opened);
    return error;
}

Error removeFile(const std::filesystem::path& path)
{
    return errorOf(::unlink(path.c_str()));
}

Error renameToNew(const std::filesystem::path& from, const std::filesystem::path& to)
{
#if defined(__linux__)
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
#endif
    // A file system that cannot rename so, as network ones: a second name is refused as well where it is taken.
    if (::link(from.c_str(), to.c_str()) == 0) {
        return removeFile(from);
    }
    if (errno == EEXIST) {
        return EEXIST;
    }
    // Without second names the look before the rename is all there is.
    struct stat status {};
    if (::lstat(to.c_str(), &status) == 0) {
        return EEXIST;
    }
    return errorOf(::rename(from.c_str(), to.c_str()));
}

}  // namespace System
