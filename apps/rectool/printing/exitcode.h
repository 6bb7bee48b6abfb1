// What rectool tells whoever started it.
#pragma once

namespace RecTool {

enum class ExitCode : int {
    Fine = 0,
    Usage = 1,       ///< wrong arguments, or a change that was not confirmed
    CannotRead = 2,  ///< or not written
    Damaged = 3,     ///< read, but not all of the file is sound
};

}  // namespace RecTool
