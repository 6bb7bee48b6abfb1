// Shared by the recorder's sources: which failures it throws.
#pragma once

#include <cstdint>

#include <vkbase/vkexception.h>

#include "traces.h"

namespace Recording2::RecordingErrors {

/// Line numbers that operators know the recorder's failures by.
enum Line : std::int32_t { InitialStates = 590, Start = 1006, Stop = 1103 };

/// What the recorder throws for the exception that is being handled: its own pass as they are.
[[noreturn]] inline void rethrow(std::int32_t line)
{
    try {
        throw;
    } catch (const VKException& own) {
        if (own.Source() == Traces::Recorder) {
            throw;
        }
    } catch (...) {  // told below
    }
    throw VKException(Traces::textOfException(), Traces::Recorder, "CRecording", line);
}

}  // namespace Recording2::RecordingErrors
