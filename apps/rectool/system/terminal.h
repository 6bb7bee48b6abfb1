// The one thing about terminals that differs between platforms.
#pragma once

namespace RecTool {

/// Whether standard error is a terminal, so that a person watches.
[[nodiscard]] bool errorsGoToTerminal();

}  // namespace RecTool
