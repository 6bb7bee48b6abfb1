// Line feeds in place of the carriage returns that end lines without one.
#pragma once

#include "input/byteinput.h"

namespace RecStation {

/// Makes a line feed of each carriage return behind which neither of the two follows. One that comes last so far waits
/// for the next byte.
[[nodiscard]] ByteInput withLineFeeds(ByteInput input);

}  // namespace RecStation
