// The one thing about terminals that differs between platforms.
#pragma once

namespace RecTool {

/// Whether standard error is a terminal, so that a person watches.
[[nodiscard]] bool errorsGoToTerminal();
/// Whether standard input is a terminal, so that a person can answer.
[[nodiscard]] bool inputComesFromTerminal();

}  // namespace RecTool
