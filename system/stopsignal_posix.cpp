// Stop signals that end every wait through a pipe, on POSIX systems.
#include "stopsignal.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace System {

namespace {

std::atomic<bool> stopRequested = false;
static_assert(std::atomic<bool>::is_always_lock_free, "set in a signal handler");

// The handler writes one byte that nobody takes out: from then on every wait ends at once.
std::array<int, 2> wakePipe = {-1, -1};

extern "C" void onStopSignal(int /*signal*/)
{
    const int savedErrno = errno;
    StopSignal::request();
    errno = savedErrno;
}

void setStopHandlers(void (*handler)(int), bool hangUpToo)
{
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
    if (hangUpToo) {
        ::sigaction(SIGHUP, &action, nullptr);
    }
}

// Whoever started the process with nohup wants it to outlive the terminal.
bool isIgnored(int signal)
{
    struct sigaction action {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

std::function<void()> idleWork;

[[noreturn]] void failInput(const char* what, const std::string& name)
{
    const std::string reason = std::generic_category().message(errno);
    throw std::runtime_error(std::string(what) + " " + name + ": " + reason);
}

// False when the process is to stop. Files are always ready.
bool waitForBytes(int descriptor, const std::string& name)
{
    std::array<pollfd, 2> waits = {{{descriptor, POLLIN, 0}, {wakePipe[0], POLLIN, 0}}};
    constexpr int IdleMs = 250;
    for (;;) {
        const int ready = ::poll(waits.data(), waits.size(), idleWork ? IdleMs : -1);
        if (ready < 0 && errno != EINTR) {
            failInput("cannot wait for", name);
        } else if (ready > 0) {
            return waits[1].revents == 0;
        } else if (ready == 0) {
            idleWork();
        }
    }
}

}  // namespace

StopSignal::StopSignal(const std::function<void()>& /*onStop*/) : m_hangUpIgnored(isIgnored(SIGHUP))
{
    stopRequested = false;
    if (::pipe2(wakePipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "cannot prepare for signals");
    }
    setStopHandlers(onStopSignal, !m_hangUpIgnored);
}

StopSignal::~StopSignal()
{
    setStopHandlers(SIG_DFL, !m_hangUpIgnored);
    for (int& end : wakePipe) {
        ::close(end);
        end = -1;
    }
}

bool StopSignal::requested() noexcept
{
    return stopRequested;
}

void StopSignal::request() noexcept
{
    stopRequested = true;
    const char byte = 's';
    [[maybe_unused]] const ssize_t written = ::write(wakePipe[1], &byte, 1);
}

void StopSignal::wait(std::int64_t milliseconds) const
{
    pollfd wake = {wakePipe[0], POLLIN, 0};
    const std::int64_t most = std::numeric_limits<int>::max();
    ::poll(&wake, 1, static_cast<int>(std::clamp<std::int64_t>(milliseconds, 0, most)));
}

int StopSignal::wakeDescriptor() noexcept
{
    return wakePipe[0];
}

InterruptibleInput::InterruptibleInput(const std::string& path)
    : m_name(path == "-" ? "the standard input" : path), m_owned(path != "-"), m_handle(STDIN_FILENO)
{
    if (m_owned) {
        // A pipe opens without waiting for its writer, so that a signal can end the wait.
        m_handle = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    }
    if (m_handle < 0) {
        failInput("cannot open", m_name);
    }
}

InterruptibleInput::~InterruptibleInput()
{
    if (m_owned) {
        ::close(static_cast<int>(m_handle));
    }
}

std::size_t InterruptibleInput::read(char* buffer, std::size_t size)
{
    const int descriptor = static_cast<int>(m_handle);
    while (!StopSignal::requested() && waitForBytes(descriptor, m_name)) {
        const ssize_t count = ::read(descriptor, buffer, size);
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR && errno != EAGAIN) {
            failInput("cannot read", m_name);
        }
    }
    return 0;
}

IdleWork::IdleWork(std::function<void()> work)
{
    idleWork = std::move(work);
}

IdleWork::~IdleWork()
{
    idleWork = nullptr;
}

}  // namespace System
