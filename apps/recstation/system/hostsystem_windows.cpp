// Console events that cancel a read and wait for the files, on Windows.
#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <stdexcept>

#include <QCoreApplication>
#include <QDir>

#include <windows.h>

#include "hostsystem.h"

namespace recstation {

namespace {

std::atomic<bool> stopRequested = false;
UINT codePageBefore = 0;
HANDLE stopped = nullptr;     // set when the host has closed its files
HANDLE mainThread = nullptr;  // the thread that reads input
std::function<void()>* wakeMain = nullptr;

// Only a read is ever cancelled, never the writing of a recording.
std::mutex readingMutex;
bool reading = false;

void cancelRead()
{
    const std::lock_guard<std::mutex> lock(readingMutex);
    if (reading) {
        CancelSynchronousIo(mainThread);
    }
}

BOOL WINAPI onConsoleEvent(DWORD /*event*/)
{
    constexpr DWORD retryMs = 50;
    if (stopRequested.exchange(true)) {
        return FALSE;
    }
    QMetaObject::invokeMethod(QCoreApplication::instance(), *wakeMain, Qt::QueuedConnection);
    // The process may end as soon as this returns (its console closes), so it waits for the files.
    do {
        cancelRead();
    } while (WaitForSingleObject(stopped, retryMs) == WAIT_TIMEOUT);
    return TRUE;
}

}  // namespace

struct StopSignal::Private {
    std::function<void()> wake;
};

StopSignal::StopSignal(std::function<void()> wake) : d(std::make_unique<Private>())
{
    stopRequested = false;
    d->wake = std::move(wake);
    wakeMain = &d->wake;
    stopped = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &mainThread, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

StopSignal::~StopSignal()
{
    SetEvent(stopped);  // first: a handler that waits for it holds what the next call needs
    SetConsoleCtrlHandler(onConsoleEvent, FALSE);
    CloseHandle(mainThread);
}

bool StopSignal::requested() noexcept
{
    return stopRequested;
}

struct InterruptibleInput::Private {
    HANDLE handle = INVALID_HANDLE_VALUE;
    bool owned = false;
    QString path;
};

InterruptibleInput::InterruptibleInput(const QString& path) : d(std::make_unique<Private>())
{
    d->path = path == QLatin1String("-") ? QStringLiteral("the standard input") : path;
    if (path == QLatin1String("-")) {
        d->handle = GetStdHandle(STD_INPUT_HANDLE);
        return;
    }
    const std::wstring native = QDir::toNativeSeparators(path).toStdWString();
    d->handle = CreateFileW(native.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
    if (d->handle == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("cannot open " + path.toStdString() + ": " +
                                 qt_error_string(static_cast<int>(GetLastError())).toStdString());
    }
    d->owned = true;
}

InterruptibleInput::~InterruptibleInput()
{
    if (d->owned) {
        CloseHandle(d->handle);
    }
}

std::size_t InterruptibleInput::read(char* buffer, std::size_t size)
{
    constexpr std::size_t largest = 1U << 20U;
    {
        const std::lock_guard<std::mutex> lock(readingMutex);
        reading = true;
    }
    DWORD count = 0;
    BOOL done = FALSE;
    DWORD error = ERROR_OPERATION_ABORTED;
    if (!StopSignal::requested()) {
        done = ReadFile(d->handle, buffer, static_cast<DWORD>(std::min(size, largest)), &count, nullptr);
        error = done != FALSE ? ERROR_SUCCESS : GetLastError();
    }
    {
        const std::lock_guard<std::mutex> lock(readingMutex);
        reading = false;
    }
    if (done != FALSE || error == ERROR_BROKEN_PIPE || error == ERROR_OPERATION_ABORTED) {
        return count;
    }
    throw std::runtime_error("cannot read " + d->path.toStdString() + ": " +
                             qt_error_string(static_cast<int>(error)).toStdString());
}

// A read there cannot wait for two things.
IdleWork::IdleWork(std::function<void()> /*work*/)
{
}

IdleWork::~IdleWork() = default;

bool standardErrorIsTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

// Handles are no small numbers here: no file takes the place of a missing stream. A console keeps its code page when
// the program ends.
void prepareStandardStreams()
{
    static_cast<void>(_setmode(_fileno(stdout), _O_BINARY));
    static_cast<void>(_setmode(_fileno(stderr), _O_BINARY));
    codePageBefore = GetConsoleOutputCP();
    if (codePageBefore != 0 && SetConsoleOutputCP(CP_UTF8) != FALSE) {
        static_cast<void>(std::atexit([] { SetConsoleOutputCP(codePageBefore); }));
    }
}

}  // namespace recstation
