// What the terminal can show.
#pragma once

namespace RecTool {

/// Whether standard output is a terminal that shows colours, and the user wants them (NO_COLOR is not set).
[[nodiscard]] bool outputHasColours();

}  // namespace RecTool
