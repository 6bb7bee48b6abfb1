// Console events that cancel a read and wait for the files, on Windows.
#include "stopsignal.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "error.h"

namespace System {

namespace {

std::atomic<bool> stopRequested = false;
HANDLE wake = nullptr;        // set when the process is to stop
HANDLE stopped = nullptr;     // set when it has closed its files
HANDLE mainThread = nullptr;  // the thread that reads input
std::function<void()> tellStop;

// Only a read is ever cancelled, never the writing of a recording.
std::mutex readingMutex;
bool reading = false;

void setReading(bool now)
{
    const std::lock_guard<std::mutex> lock(readingMutex);
    reading = now;
}

BOOL WINAPI onConsoleEvent(DWORD /*event*/)
{
    constexpr DWORD RetryMs = 50;
    // The second one takes its usual course.
    if (stopRequested.exchange(true)) {
        return FALSE;
    }
    ::SetEvent(wake);
    if (tellStop) {
        tellStop();
    }
    // The process may end as soon as this returns (its console closes), so it waits for the files.
    do {
        const std::lock_guard<std::mutex> lock(readingMutex);
        if (reading) {
            ::CancelSynchronousIo(mainThread);
        }
    } while (::WaitForSingleObject(stopped, RetryMs) == WAIT_TIMEOUT);
    return TRUE;
}

[[noreturn]] void failInput(const char* what, const std::string& name, DWORD error)
{
    throw std::runtime_error(std::string(what) + " " + name + ": " + errorText(static_cast<Error>(error)));
}

}  // namespace

StopSignal::StopSignal(const std::function<void()>& onStop)
{
    stopRequested = false;
    tellStop = onStop;
    wake = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    stopped = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(), &mainThread, 0, FALSE,
                      DUPLICATE_SAME_ACCESS);
    if (wake == nullptr || stopped == nullptr || ::SetConsoleCtrlHandler(onConsoleEvent, TRUE) == FALSE) {
        throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(),
                                "cannot prepare for Ctrl-C");
    }
}

StopSignal::~StopSignal()
{
    ::SetEvent(stopped);  // first: a handler that waits for it holds what the next call needs
    ::SetConsoleCtrlHandler(onConsoleEvent, FALSE);
    ::CloseHandle(mainThread);
}

bool StopSignal::requested() noexcept
{
    return stopRequested;
}

void StopSignal::request() noexcept
{
    stopRequested = true;
    ::SetEvent(wake);
}

void StopSignal::wait(std::int64_t milliseconds) const
{
    const std::int64_t most = std::numeric_limits<std::int32_t>::max();
    ::WaitForSingleObject(wake, static_cast<DWORD>(std::clamp<std::int64_t>(milliseconds, 0, most)));
}

int StopSignal::wakeDescriptor() noexcept
{
    return -1;
}

InterruptibleInput::InterruptibleInput(const std::string& path)
    : m_name(path == "-" ? "the standard input" : path), m_owned(path != "-")
{
    HANDLE handle = ::GetStdHandle(STD_INPUT_HANDLE);
    if (m_owned) {
        const std::filesystem::path native(std::u8string(path.begin(), path.end()));
        handle = ::CreateFileW(native.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle == INVALID_HANDLE_VALUE) {
            failInput("cannot open", m_name, ::GetLastError());
        }
    }
    m_handle = reinterpret_cast<std::intptr_t>(handle);
}

InterruptibleInput::~InterruptibleInput()
{
    if (m_owned) {
        ::CloseHandle(reinterpret_cast<HANDLE>(m_handle));
    }
}

std::size_t InterruptibleInput::read(char* buffer, std::size_t size)
{
    constexpr std::size_t Largest = 1U << 20U;
    setReading(true);
    DWORD count = 0;
    DWORD error = ERROR_OPERATION_ABORTED;
    if (!StopSignal::requested()) {
        const BOOL done = ::ReadFile(reinterpret_cast<HANDLE>(m_handle), buffer,
                                     static_cast<DWORD>(std::min(size, Largest)), &count, nullptr);
        error = done != FALSE ? ERROR_SUCCESS : ::GetLastError();
    }
    setReading(false);
    if (error != ERROR_SUCCESS && error != ERROR_BROKEN_PIPE && error != ERROR_OPERATION_ABORTED) {
        failInput("cannot read", m_name, error);
    }
    return count;
}

// A read here cannot wait for two things.
IdleWork::IdleWork(std::function<void()> /*work*/)
{
}

IdleWork::~IdleWork() = default;

}  // namespace System
