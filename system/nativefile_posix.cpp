// Open files, locks and mappings as Linux and other POSIX systems give them.
#include "nativefile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#if defined(__linux__)
#include <linux/magic.h>
#include <sys/vfs.h>
#endif

#include <cerrno>
#include <memory>

#include "calls_posix.h"

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

int flagsOf(Access access)
{
    switch (access) {
        case Access::Create:
            return O_RDWR | O_CREAT | O_TRUNC;
        case Access::New:
            return O_RDWR | O_CREAT | O_EXCL;
        case Access::Update:
            return O_RDWR | O_NONBLOCK;
        case Access::UpdateOrNew:
            return O_RDWR | O_CREAT | O_NOFOLLOW;
        case Access::ReadItself:
            return O_RDONLY | O_NONBLOCK | O_NOFOLLOW;
        case Access::Read:
            break;
    }
    return O_RDONLY | O_NONBLOCK;
}

Error requireOrdinary(const struct stat& status)
{
    if (S_ISREG(status.st_mode)) {
        return 0;
    }
    return S_ISDIR(status.st_mode) ? EISDIR : NoOrdinaryFile;
}

using Look = int (*)(const char* path, struct stat* status);

bool isSeenBy(Look look, const std::filesystem::path& path, int file)
{
    struct stat there {};
    struct stat here {};
    return look(path.c_str(), &there) == 0 && ::fstat(file, &here) == 0 && here.st_dev == there.st_dev &&
           here.st_ino == there.st_ino;
}

}  // namespace

NativeFile::~NativeFile()
{
    close();
}

// Opening a pipe waits for its other end, and opening a device may do anything, so what is there is looked at first;
// and again when it is open, for it may have been another thing by then.
Error NativeFile::open(const std::filesystem::path& path, Access access, FileMode mode)
{
    const bool itself = access == Access::ReadItself;
    const bool existing = itself || access == Access::Update || access == Access::Read;
    struct stat status {};
    if (existing) {
        const int known = itself ? ::lstat(path.c_str(), &status) : ::stat(path.c_str(), &status);
        const Error error = known == 0 ? requireOrdinary(status) : errno;
        if (error != 0) {
            return error;
        }
    }
    const int opened =
        untilNotInterrupted([&] { return ::open(path.c_str(), flagsOf(access) | O_CLOEXEC | O_NOCTTY, mode); });
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

Error NativeFile::readAt(std::int64_t position, char* bytes, std::size_t size, std::size_t& read) const
{
    read = 0;
    while (read < size) {
        const ssize_t part = untilNotInterrupted([&] {
            return ::pread(descriptor(m_handle), bytes + read, size - read, position + static_cast<off_t>(read));
        });
        if (part <= 0) {
            return part == 0 ? 0 : errno;
        }
        read += static_cast<std::size_t>(part);
    }
    return 0;
}

// Only advice: pages that are still in memory would hide what the device kept.
void NativeFile::forgetCached() const
{
#if defined(POSIX_FADV_DONTNEED)
    static_cast<void>(::posix_fadvise(descriptor(m_handle), 0, 0, POSIX_FADV_DONTNEED));
#endif
}

std::int64_t NativeFile::size() const
{
    struct stat status {};
    return ::fstat(descriptor(m_handle), &status) == 0 ? status.st_size : 0;
}

Error NativeFile::setSize(std::int64_t size)
{
    return resultOf(untilNotInterrupted([&] { return ::ftruncate(descriptor(m_handle), size); }));
}

Error NativeFile::allocate(std::int64_t position, std::int64_t bytes)
{
    Error error = EINTR;
    while (error == EINTR) {
        error = ::posix_fallocate(descriptor(m_handle), position, bytes);
    }
    return error;
}

// Elsewhere it would cost: XFS does as much itself, btrfs would not compress what comes there, a file system in memory
// would clear it first.
void NativeFile::allocateAhead([[maybe_unused]] std::int64_t position, [[maybe_unused]] std::int64_t bytes)
{
#if defined(__linux__)
    struct statfs there {};
    if (::fstatfs(descriptor(m_handle), &there) == 0 && there.f_type == EXT4_SUPER_MAGIC) {
        static_cast<void>(::fallocate(descriptor(m_handle), FALLOC_FL_KEEP_SIZE, position, bytes));
    }
#endif
}

// The file is whole without it: what stays allocated costs space only.
void NativeFile::giveBackAhead()
{
    struct stat status {};
    if (::fstat(descriptor(m_handle), &status) == 0) {
        static_cast<void>(setSize(status.st_size));
    }
}

Error NativeFile::fsync()
{
    return resultOf(untilNotInterrupted([&] { return ::fdatasync(descriptor(m_handle)); }));
}

Error NativeFile::lock(LockMode mode)
{
    const int how = (mode == LockMode::Shared ? LOCK_SH : LOCK_EX) | LOCK_NB;
    return resultOf(untilNotInterrupted([&] { return ::flock(descriptor(m_handle), how); }));
}

Error NativeFile::identity(FileIdentity& identity) const
{
    return statusOf(descriptor(m_handle), "", identity);
}

bool NativeFile::isAt(const std::filesystem::path& path) const
{
    return isSeenBy(::lstat, path, descriptor(m_handle));
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
    return isSeenBy(::stat, path, descriptor(m_handle));
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

Error Mapping::fsync()
{
    return resultOf(::msync(m_data, m_bytes, MS_SYNC));
}

void expectUse([[maybe_unused]] std::span<std::byte> memory)
{
#if defined(MADV_HUGEPAGE)
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    void* begin = memory.data();
    std::size_t size = memory.size();
    if (std::align(page, page, begin, size) != nullptr) {
        static_cast<void>(::madvise(begin, size - size % page, MADV_HUGEPAGE));
    }
#endif
}

}  // namespace System
