// Stop signals that end a wait through a pipe, on POSIX systems.
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <limits>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "stop.h"

namespace zelvod {

namespace {

std::atomic<bool> requested = false;
static_assert(std::atomic<bool>::is_always_lock_free, "set in a signal handler");

// The handler writes one byte that nobody takes out: from then on every wait ends at once.
std::array<int, 2> wakePipe = {-1, -1};

extern "C" void onStopSignal(int /*signal*/)
{
    const int savedErrno = errno;
    requested = true;
    const char byte = 's';
    [[maybe_unused]] const ssize_t written = write(wakePipe[1], &byte, 1);
    errno = savedErrno;
}

}  // namespace

void watchForStop()
{
    if (pipe2(wakePipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot prepare for signals");
    }
    struct sigaction action = {};
    action.sa_handler = onStopSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction before = {};
    sigaction(SIGHUP, nullptr, &before);
    if (before.sa_handler != SIG_IGN) {  // else it was started to outlive its terminal, as under nohup
        sigaction(SIGHUP, &action, nullptr);
    }
}

void useBinaryStreams()
{
}

bool stopRequested() noexcept
{
    return requested;
}

void waitForStop(std::int64_t milliseconds)
{
    pollfd wake = {wakePipe[0], POLLIN, 0};
    const std::int64_t most = std::numeric_limits<int>::max();
    poll(&wake, 1, static_cast<int>(milliseconds < 0 ? 0 : milliseconds < most ? milliseconds : most));
}

}  // namespace zelvod
