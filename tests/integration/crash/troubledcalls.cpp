// The functions that the linker puts in place of the calls of the system.
#include "troubledcalls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>

namespace CrashTests {

Trouble trouble;
std::vector<std::string>* callsMade = nullptr;
std::function<void()> beforeLocking;

namespace {

void note(const char* call, const std::string& path)
{
    if (callsMade != nullptr) {
        callsMade->push_back(std::string(call) + ' ' + path.substr(path.rfind('/') + 1));
    }
}

void note(const char* call, int file)
{
    char path[4'096];
    const ssize_t size = readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path);
    note(call, std::string(path, static_cast<std::size_t>(std::max(ssize_t{0}, size))));
}

/// @param half what the call may have done before
template <typename Result, typename Call, typename Half>
Result troubled(Call call, Half half)
{
    if (!trouble.now()) {
        return call();
    }
    half();
    if (trouble.kill) {
        raise(SIGKILL);
    }
    errno = trouble.error;
    return -1;
}

template <typename Call>
int troubled(Call call)
{
    return troubled<int>(call, [] {});
}

}  // namespace
}  // namespace CrashTests

using namespace CrashTests;

// Names that the linker makes, not we.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl50-cpp)
#pragma GCC visibility push(default)  // libraries that are loaded make these calls too
extern "C" {
int __real_open(const char* path, int flags, ...);
int __real_close(int file);
ssize_t __real_pread(int file, void* bytes, size_t size, off_t position);
ssize_t __real_pwrite(int file, const void* bytes, size_t size, off_t position);
int __real_ftruncate(int file, off_t size);
int __real_fdatasync(int file);
int __real_fsync(int file);
int __real_unlink(const char* path);
int __real_fchown(int file, uid_t owner, gid_t group);
int __real_fchmod(int file, mode_t mode);
int __real_flock(int file, int operation);

int __wrap_open(const char* path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return troubled([&] { return __real_open(path, flags, mode); });
}
int __wrap_close(int file)
{
    return troubled<int>([&] { return __real_close(file); }, [&] { __real_close(file); });
}
ssize_t __wrap_pread(int file, void* bytes, size_t size, off_t position)
{
    return troubled<ssize_t>([&] { return __real_pread(file, bytes, size, position); }, [] {});
}
ssize_t __wrap_pwrite(int file, const void* bytes, size_t size, off_t position)
{
    note("write", file);
    return troubled<ssize_t>([&] { return __real_pwrite(file, bytes, size, position); },
                             [&] { static_cast<void>(!__real_pwrite(file, bytes, size / 2, position)); });
}
int __wrap_ftruncate(int file, off_t size)
{
    note("write", file);
    return troubled([&] { return __real_ftruncate(file, size); });
}
int __wrap_fdatasync(int file)
{
    note("fsync", file);
    return troubled([&] { return __real_fdatasync(file); });
}
int __wrap_fsync(int file)
{
    note("fsync", file);
    return troubled([&] { return __real_fsync(file); });
}
int __wrap_unlink(const char* path)
{
    note("remove", path);
    return troubled([&] { return __real_unlink(path); });
}
int __wrap_fchown(int file, uid_t owner, gid_t group)
{
    return troubled([&] { return __real_fchown(file, owner, group); });
}
int __wrap_fchmod(int file, mode_t mode)
{
    return troubled([&] { return __real_fchmod(file, mode); });
}
int __wrap_flock(int file, int operation)
{
    if (const auto first = std::exchange(beforeLocking, nullptr)) {
        first();
    }
    return troubled([&] { return __real_flock(file, operation); });
}
}
#pragma GCC visibility pop
// NOLINTEND(bugprone-reserved-identifier,cert-dcl50-cpp)
