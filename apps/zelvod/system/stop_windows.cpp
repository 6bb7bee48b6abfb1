#include <atomic>
#include <limits>
#include <system_error>

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
