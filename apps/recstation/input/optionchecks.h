// Checks of options' values that only recstation has.
#pragma once

#include <CLI/CLI.hpp>

#include <terminaltext/optionvalues.h>

namespace recstation {

/// For the FILE of a source: a recording is none, whatever the source would make of its bytes.
[[nodiscard]] CLI::Validator noRecording();
/// "an offset such as -05:00", for --utc-offset.
[[nodiscard]] CLI::Validator anUtcOffset();
/// "a time such as ...", for --start.
[[nodiscard]] CLI::Validator aTime();

}  // namespace recstation
