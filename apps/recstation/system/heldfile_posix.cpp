// A held file by its descriptor, and new memory where a mapped journal was cut.
#include "heldfile.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <sstream>
#include <string>

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace RecStation {

namespace {

constexpr std::size_t RememberedBytes = 16;
using Remembered = std::array<char, RememberedBytes>;

bool isSame(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

std::string linkOf(int descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}

// What was cut off and written after again reads as 0.
bool hasHole([[maybe_unused]] int descriptor, [[maybe_unused]] std::int64_t size)
{
#if defined(SEEK_HOLE)
    const off_t hole = lseek(descriptor, 0, SEEK_HOLE);
    Remembered bytes{};
    return hole >= 0 && hole < size && pread(descriptor, bytes.data(), bytes.size(), hole) > 0 &&
           std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte == 0; });
#else
    return false;
#endif
}

}  // namespace

struct HeldFile::Private {
    int descriptor = -1;
    std::int64_t size = 0;  // the largest seen, with the last bytes before it
    Remembered last{};

    [[nodiscard]] Remembered bytesBefore(std::int64_t end) const
    {
        Remembered bytes{};
        const auto wanted = std::min<std::int64_t>(end, RememberedBytes);
        [[maybe_unused]] const ssize_t read =
            pread(descriptor, bytes.data(), static_cast<std::size_t>(wanted), end - wanted);
        return bytes;
    }
};

HeldFile::HeldFile(const QString& path) : d(std::make_unique<Private>())
{
    d->descriptor = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

HeldFile::~HeldFile()
{
    if (isHeld()) {
        close(d->descriptor);
    }
}

bool HeldFile::isHeld() const
{
    return d->descriptor >= 0;
}

bool HeldFile::isAt(const QString& path) const
{
    struct stat own {};
    struct stat named {};
    return fstat(d->descriptor, &own) == 0 && lstat(QFile::encodeName(path).constData(), &named) == 0 &&
           isSame(own, named);
}

bool HeldFile::isDeleted() const
{
    struct stat own {};
    return fstat(d->descriptor, &own) == 0 && own.st_nlink == 0;
}

QString HeldFile::pathNow() const
{
    const QString path = QFile::symLinkTarget(readablePath());
    return isAt(path) ? path : QString();
}

QString HeldFile::readablePath() const
{
    return QString::fromStdString(linkOf(d->descriptor));
}

bool HeldFile::isCut()
{
    struct stat own {};
    if (fstat(d->descriptor, &own) != 0) {
        return false;
    }
    constexpr std::int64_t RewrittenBytes = 500;  // the header, when the file is closed
    const bool cut = own.st_size < d->size || hasHole(d->descriptor, own.st_size) ||
                     (d->size > RewrittenBytes && d->bytesBefore(d->size) != d->last);
    d->size = own.st_size;
    d->last = d->bytesBefore(d->size);
    return cut;
}

namespace {

// The handler sees nothing else. A slot is in use while its descriptor is not negative.
struct GuardedMemory {
    std::atomic<std::uintptr_t> begin = 0;
    std::atomic<std::uintptr_t> end = 0;
    std::atomic<int> descriptor = -1;
    std::atomic<bool> cut = false;
};
std::array<GuardedMemory, 64> guardedMemory;
static_assert(std::atomic<std::uintptr_t>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
              "used in a signal handler");

std::uintptr_t pageBytes()
{
    static const auto bytes = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    return bytes;
}

// Replaces what lies after the end of the file, and at least from an address on. Only calls that a handler may make.
void replaceLost(GuardedMemory& memory, std::uintptr_t atLeastFrom)
{
    struct stat status {};
    const std::uintptr_t begin = memory.begin;
    const std::uintptr_t end = memory.end;
    if (fstat(memory.descriptor, &status) != 0) {
        return;
    }
    const std::uintptr_t page = pageBytes();
    const auto size = std::min(static_cast<std::uintptr_t>(status.st_size), end - begin);
    const std::uintptr_t from = std::min(begin + (size + page - 1) / page * page, atLeastFrom / page * page);
    if (from < end && mmap(reinterpret_cast<void*>(from), end - from, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED) {
        memory.cut = true;
    }
}

extern "C" void onLostMemory(int signal, siginfo_t* information, void* /*context*/)
{
    const int savedErrno = errno;
    const auto address = reinterpret_cast<std::uintptr_t>(information->si_addr);
    for (GuardedMemory& memory : guardedMemory) {
        if (memory.descriptor >= 0 && memory.begin <= address && address < memory.end) {
            replaceLost(memory, address);
            errno = savedErrno;
            return;
        }
    }
    static_cast<void>(std::signal(signal, SIG_DFL));  // somebody else's: it comes again, and ends the process
    errno = savedErrno;
}

void catchLostMemory()
{
    static_cast<void>(pageBytes());
    struct sigaction action = {};
    action.sa_sigaction = onLostMemory;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    sigaction(SIGBUS, &action, nullptr);
}

// Finds the memory of a file among the mappings: "BEGIN-END rw-s OFFSET DEVICE INODE PATH", numbers in hexadecimal but
// for the inode.
bool findMapping(const struct stat& file, const std::string& path, GuardedMemory& memory)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::string range;
        std::string mode;
        std::string offset;
        std::string device;
        unsigned long long inode = 0;
        fields >> range >> mode >> offset >> device >> inode;
        const auto dash = range.find('-');
        std::string name;
        std::getline(fields >> std::ws, name);
        if ((inode != file.st_ino && name != path) || mode != "rw-s" || dash == std::string::npos) {
            continue;
        }
        memory.begin = std::stoull(range.substr(0, dash), nullptr, 16);
        memory.end = std::stoull(range.substr(dash + 1), nullptr, 16);
        return true;
    }
    return false;
}

}  // namespace

struct JournalGuard::Private {
    GuardedMemory* memory = nullptr;
};

JournalGuard::JournalGuard(const QString& journal) : d(std::make_unique<Private>())
{
    const auto free = std::find_if(guardedMemory.begin(), guardedMemory.end(),
                                   [](const GuardedMemory& memory) { return memory.descriptor < 0; });
    const int descriptor = open(QFile::encodeName(journal).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status {};
    if (free == guardedMemory.end() || descriptor < 0 || fstat(descriptor, &status) != 0 ||
        !findMapping(status, QFile::encodeName(QFileInfo(journal).canonicalFilePath()).toStdString(), *free)) {
        if (descriptor >= 0) {
            close(descriptor);
        }
        return;
    }
    free->cut = false;
    free->descriptor = descriptor;
    d->memory = &*free;
    catchLostMemory();
}

JournalGuard::~JournalGuard()
{
    if (d->memory != nullptr) {
        close(d->memory->descriptor.exchange(-1));
    }
}

bool JournalGuard::isCut()
{
    if (d->memory == nullptr) {
        return false;
    }
    struct stat status {};
    const std::uintptr_t bytes = d->memory->end - d->memory->begin;
    if (fstat(d->memory->descriptor, &status) == 0 && static_cast<std::uintptr_t>(status.st_size) < bytes) {
        replaceLost(*d->memory, d->memory->end);
    }
    return d->memory->cut;
}

}  // namespace RecStation
