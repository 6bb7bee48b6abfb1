// Trace output: messages go to Qt's logging, one category per source name.
#pragma once

#include <cstdint>

#include <QString>

#include <vkbase/export.h>

/// Process-wide switch board of the trace output.
class VKBASE_EXPORT ErrorHandler {
public:
    /// Bit of the trace mask that enables the traces of the recording library.
    static constexpr std::uint32_t RecordingTraces = 0x20;

    static ErrorHandler& Instance();

    [[nodiscard]] std::uint32_t TraceMask() const noexcept;  ///< initially 0: nothing is traced
    void SetTraceMask(std::uint32_t mask) noexcept;

private:
    ErrorHandler() = default;
    std::uint32_t m_traceMask = 0;
};

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the station's.
/// Emits one message of level "info" under the category named like the source (backslashes kept). Does not look at the
/// trace mask: callers do, before they build the message. Any thread may call it.
VKBASE_EXPORT void _Q_Trace(const QString& message, const QString& source, std::uint16_t line);

/// The older form: every "%s" in the format is replaced by the text, category "trace".
/// @param text UTF-8, may be null (then empty)
VKBASE_EXPORT void _Q_TraceOld(const char* format, const char* text);
// NOLINTEND(bugprone-reserved-identifier)
