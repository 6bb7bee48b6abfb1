// The wish that the process ends, and waiting that it interrupts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace System {

/// Turns SIGINT, SIGTERM and, unless it is ignored when this is made, SIGHUP (Windows: Ctrl-C, Ctrl-Break, the closing
/// of the console, which then waits for the end of this object) into a wish to stop. At most one object at a time. A
/// second signal ends the process at once.
class StopSignal {
public:
    /// @param onStop called once, in another thread; Windows only, elsewhere wakeDescriptor() becomes readable
    /// @throws std::system_error
    explicit StopSignal(const std::function<void()>& onStop = {});
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;
    ~StopSignal();

    [[nodiscard]] static bool requested() noexcept;
    /// The same wish by the process itself, such as when the time of a run is over. From any thread.
    static void request() noexcept;
    /// Returns after the time or when the process is to stop.
    void wait(std::int64_t milliseconds) const;
    /// Can be read from as soon as the process is to stop; -1 on Windows.
    [[nodiscard]] static int wakeDescriptor() noexcept;

private:
    bool m_hangUpIgnored = false;
};

/// Bytes of a file, a pipe or the standard input; waiting for them ends when the process is to stop.
class InterruptibleInput {
public:
    /// @param path in UTF-8; "-" is the standard input
    /// @throws std::runtime_error when the file cannot be opened
    explicit InterruptibleInput(const std::string& path);
    InterruptibleInput(const InterruptibleInput&) = delete;
    InterruptibleInput& operator=(const InterruptibleInput&) = delete;
    ~InterruptibleInput();

    /// Waits for bytes, on Windows in the thread that made the StopSignal. @return how many came; 0 at the end and when
    /// the process is to stop @throws std::runtime_error when reading fails
    std::size_t read(char* buffer, std::size_t size);

private:
    std::string m_name;
    bool m_owned = false;
    std::intptr_t m_handle = -1;
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

}  // namespace System
