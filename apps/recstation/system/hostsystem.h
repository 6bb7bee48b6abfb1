// What the host needs of the operating system: the wish to stop, input that this wish interrupts, the terminal.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include <QString>

namespace recstation {

/// Turns SIGINT, SIGTERM and, unless it is ignored when this is made, SIGHUP (Windows: Ctrl-C, Ctrl-Break, the closing
/// of the console) into a wish to stop. At most one object at a time. A second signal ends the process at once.
class StopSignal {
public:
    /// @param wake called once from the event loop of the constructing thread
    explicit StopSignal(std::function<void()> wake);
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;
    ~StopSignal();

    [[nodiscard]] static bool requested() noexcept;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// Bytes of a file, a pipe or the standard input; waiting for them ends when the process is to stop.
class InterruptibleInput {
public:
    /// @param path "-" is the standard input
    /// @throws std::runtime_error when the file cannot be opened
    explicit InterruptibleInput(const QString& path);
    InterruptibleInput(const InterruptibleInput&) = delete;
    InterruptibleInput& operator=(const InterruptibleInput&) = delete;
    ~InterruptibleInput();

    /// Waits for bytes. @return how many came; 0 at the end and when the process is to stop
    /// @throws std::runtime_error when reading fails
    std::size_t read(char* buffer, std::size_t size);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// What is to be done now and then also while the process waits for input: about four times a second, on the waiting
/// thread, from inside InterruptibleInput::read. At most one object at a time. Never on Windows.
class IdleWork {
public:
    explicit IdleWork(std::function<void()> work);
    IdleWork(const IdleWork&) = delete;
    IdleWork& operator=(const IdleWork&) = delete;
    ~IdleWork();
};

[[nodiscard]] bool standardErrorIsTerminal();

/// First thing in main: a stream that the caller closed becomes an empty one, so that no other file takes its number,
/// and what is printed is the same bytes on every platform (lines end with "\n" alone, text is UTF-8).
void prepareStandardStreams();

}  // namespace recstation
