// Names in the directories of Linux and other POSIX systems.
#include "names.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <string>

#include "calls_posix.h"

namespace System {

namespace {

Error linkAndUnlink(const char* from, const char* to)
{
    if (::link(from, to) == 0) {
        return resultOf(::unlink(from));
    }
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK) {
        return errno;
    }
    struct stat status {};
    return ::lstat(to, &status) == 0 ? NameTaken : resultOf(::rename(from, to));
}

}  // namespace

Error statusOf(int descriptor, const char* name, FileIdentity& identity)
{
    struct statx info {};
    const int flags = AT_SYMLINK_NOFOLLOW | (*name == '\0' ? AT_EMPTY_PATH : 0);
    if (::statx(descriptor, name, flags, STATX_BASIC_STATS | STATX_BTIME, &info) != 0) {
        return errno;
    }
    if (!S_ISREG(info.stx_mode)) {
        return NoOrdinaryFile;
    }
    const auto nanosecondsOf = [](const struct statx_timestamp& time) {
        constexpr std::int64_t Nanoseconds = 1'000'000'000;
        return time.tv_sec * Nanoseconds + time.tv_nsec;
    };
    identity = {makedev(info.stx_dev_major, info.stx_dev_minor), info.stx_ino, static_cast<std::int64_t>(info.stx_size),
                nanosecondsOf(info.stx_mtime), (info.stx_mask & STATX_BTIME) != 0 ? nanosecondsOf(info.stx_btime) : 0};
    return 0;
}

Error lookAt(const std::filesystem::path& path, NameKind& kind)
{
    struct stat status {};
    kind = NameKind::Missing;
    if (::lstat(path.c_str(), &status) != 0) {
        return kindOf(errno) == ErrorKind::Missing ? 0 : errno;
    }
    kind = S_ISREG(status.st_mode) ? NameKind::File : S_ISDIR(status.st_mode) ? NameKind::Directory : NameKind::Other;
    return 0;
}

Error identityOf(const std::filesystem::path& path, FileIdentity& identity)
{
    return statusOf(AT_FDCWD, path.c_str(), identity);
}

std::int64_t touchedNs(const std::filesystem::path& path)
{
    constexpr std::int64_t Nanoseconds = 1'000'000'000;
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_ctim.tv_sec * Nanoseconds + status.st_ctim.tv_nsec : 0;
}

bool isOpenHere(const FileIdentity& file)
{
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", none)) {
        struct stat status {};
        if (::fstat(std::stoi(entry.path().filename()), &status) == 0 && status.st_dev == file.device &&
            status.st_ino == file.number) {
            return true;
        }
    }
    return false;
}

Error makeDirectory(const std::filesystem::path& path, FileMode mode)
{
    constexpr mode_t OnlyOwner = 0700;
    return ::mkdir(path.c_str(), OnlyOwner) == 0 ? resultOf(::chmod(path.c_str(), mode)) : errno;
}

Error fsyncDirectory(const std::filesystem::path& directory)
{
    const int opened = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened == -1) {
        return errno;
    }
    const Error error = resultOf(::fsync(opened));
    ::close(opened);
    return error == EINVAL ? 0 : error;
}

Error removeFile(const std::filesystem::path& path)
{
    return resultOf(::unlink(path.c_str()));
}

Error renameToNew(const std::filesystem::path& from, const std::filesystem::path& to)
{
#if defined(RENAME_NOREPLACE)
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
#endif
    return linkAndUnlink(from.c_str(), to.c_str());
}

Error renameReplacing(const std::filesystem::path& from, const std::filesystem::path& to)
{
    return resultOf(::rename(from.c_str(), to.c_str()));
}

Error touch(const std::filesystem::path& path)
{
    // The system's own idea of now is too coarse to tell two uses apart.
    std::array<timespec, 2> now{};
    ::clock_gettime(CLOCK_REALTIME, now.data());
    now[1] = now[0];
    return resultOf(::utimensat(AT_FDCWD, path.c_str(), now.data(), AT_SYMLINK_NOFOLLOW));
}

std::filesystem::path programFolder()
{
    return {};
}

}  // namespace System
