// The terminal and the standard streams, where they differ between platforms.
#pragma once

namespace RecTool {

/// Whether standard output is a terminal.
[[nodiscard]] bool outputGoesToTerminal();
/// Whether that terminal shows colours, and the user wants them (NO_COLOR is not set).
[[nodiscard]] bool outputHasColours();
/// Whether standard error is a terminal, so that a person watches.
[[nodiscard]] bool errorsGoToTerminal();
/// Whether standard input is a terminal, so that a person can answer.
[[nodiscard]] bool inputComesFromTerminal();
/// Lets output be the same bytes on every platform: lines end with "\n" alone, text is UTF-8. Called before any output.
void prepareOutput();

}  // namespace RecTool
