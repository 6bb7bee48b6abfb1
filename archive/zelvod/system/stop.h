// The wish to stop, and waiting that it ends.
#pragma once

#include <cstdint>

namespace zelvod {

/// Turns SIGINT, SIGTERM and SIGHUP (Windows: Ctrl-C, Ctrl-Break, the closing of the console) into a wish to stop. A
/// second signal ends the process at once. SIGHUP stays ignored where it was. @throws std::system_error
void watchForStop();
/// Lets the standard streams take bytes as they are: no carriage returns.
void useBinaryStreams();
[[nodiscard]] bool stopRequested() noexcept;
/// Returns after the time or when the process is to stop.
void waitForStop(std::int64_t milliseconds);

}  // namespace zelvod
