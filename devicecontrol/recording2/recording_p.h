// Shared by the recorder's sources: which failures it throws.
#pragma once

#include <cstdint>
#include <exception>

#include <vkbase/vkexception.h>

#include "traces.h"

namespace Recording2::RecordingErrors {

/// Line numbers that operators know the recorder's failures by.
enum Line : std::int32_t { InitialStates = 590, Start = 1006, Stop = 1103 };

/// What the recorder throws for a failure: its own exceptions pass as they are.
[[noreturn]] inline void rethrow(const std::exception& cause, std::int32_t line)
{
    const auto* own = dynamic_cast<const VKException*>(&cause);
    if (own != nullptr && own->Source() == Traces::Recorder) {
        throw;
    }
    throw VKException(cause.what(), Traces::Recorder, "CRecording", line);
}

}  // namespace Recording2::RecordingErrors
