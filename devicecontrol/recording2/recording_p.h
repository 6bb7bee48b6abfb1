// Shared by the recorder's sources: how it traces and which failures it throws.
#pragma once

#include <cstdint>
#include <exception>

#include <QString>

#include <vkbase/trace.h>
#include <vkbase/vkexception.h>

namespace Recording2::RecordingErrors {

constexpr const char* Source = "devicecontrol\\recording2\\recording";

inline void trace(const QString& message, std::uint16_t line)
{
    if ((ErrorHandler::Instance().TraceMask() & ErrorHandler::RecordingTraces) != 0) {
        _Q_Trace(message, QString::fromLatin1(Source), line);
    }
}

/// Line numbers that operators know the recorder's failures by.
enum Line : std::int32_t { InitialStates = 590, Start = 1006, Stop = 1103 };

/// What the recorder throws for a failure: its own exceptions pass as they are.
[[noreturn]] inline void rethrow(const std::exception& cause, std::int32_t line)
{
    const auto* own = dynamic_cast<const VKException*>(&cause);
    if (own != nullptr && own->Source() == Source) {
        throw;
    }
    throw VKException(cause.what(), Source, "CRecording", line);
}

}  // namespace Recording2::RecordingErrors
