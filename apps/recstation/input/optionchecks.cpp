// Validators: no recording as input, an offset from UTC, a time after 1970.
#include "input/optionchecks.h"

#include <string>

#include "input/isotime.h"
#include "input/logtime.h"

namespace recstation {

using TerminalText::acceptedIf;

CLI::Validator noRecording()
{
    return {[](const std::string& file) {
                const bool isRecording = file.ends_with(".rec");
                return isRecording ? file + " is a recording; rectool shows it" : std::string();
            },
            ""};
}

CLI::Validator anUtcOffset()
{
    return acceptedIf([](const std::string& text) { return parseUtcOffset(text).has_value(); },
                      "an offset such as -05:00 or UTC");
}

CLI::Validator aTime()
{
    return acceptedIf([](const std::string& text) { return parseIsoTime(text).has_value(); },
                      "a time after the start of 1970 such as 2026-03-01T08:00:00Z");
}

}  // namespace recstation
