// Console events that end a wait, on Windows, and binary output streams.
#include <atomic>
#include <cstdio>
#include <limits>
#include <system_error>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include "stop.h"

namespace zelvod {

namespace {

std::atomic<bool> requested = false;
HANDLE wake = nullptr;

BOOL WINAPI onConsoleEvent(DWORD /*event*/)
{
    // The second one takes its usual course.
    if (requested.exchange(true)) {
        return FALSE;
    }
    SetEvent(wake);
    return TRUE;
}

}  // namespace

void watchForStop()
{
    wake = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (wake == nullptr || SetConsoleCtrlHandler(onConsoleEvent, TRUE) == 0) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "cannot prepare for Ctrl-C");
    }
}

void useBinaryStreams()
{
    static_cast<void>(_setmode(_fileno(stdout), _O_BINARY));
    static_cast<void>(_setmode(_fileno(stderr), _O_BINARY));
}

bool stopRequested() noexcept
{
    return requested;
}

void waitForStop(std::int64_t milliseconds)
{
    const std::int64_t most = std::numeric_limits<std::int32_t>::max();
    WaitForSingleObject(wake, static_cast<DWORD>(milliseconds < 0 ? 0 : milliseconds < most ? milliseconds : most));
}

}  // namespace zelvod
