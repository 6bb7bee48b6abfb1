// Options that several sources have, and how an option becomes what a source works with.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include <terminaltext/optionvalues.h>

#include "input/timetext.h"

namespace RecStation {

/// FILE, which must be given, or FILE... where files are several, one at least. A recording is none, whatever the
/// source would make of its bytes.
template <typename File>
CLI::Option* addInputFile(CLI::App& command, File& file, const char* description)
{
    const auto refuseRecording = [](const std::string& name) {
        return name.ends_with(".rec") ? name + " is a recording; rectool shows it" : std::string();
    };
    return command.add_option("FILE", file, description)->required()->check(refuseRecording, "");
}
/// An option of whose text parse makes the value; a text of which it makes nothing is refused with what was expected.
template <typename Value, typename Parse>
CLI::Option* addParsed(CLI::App& command, const char* name, Value& value, const char* description, Parse parse,
                       const char* expected)
{
    return command
        .add_option_function<std::string>(
            name, [&value, parse](const std::string& text) { value = *parse(text); }, description)
        ->check(
            TerminalText::acceptedIf([parse](const std::string& text) { return parse(text).has_value(); }, expected));
}

/// --utc-offset, in microseconds
inline void addUtcOffset(CLI::App& command, long long& offsetUs, const char* description)
{
    addParsed(command, "--utc-offset", offsetUs, description, parseUtcOffset, "an offset such as -05:00 or UTC")
        ->default_str("UTC");
}
/// --start, in microseconds since 1970 UTC
template <typename Time>
CLI::Option* addStart(CLI::App& command, Time& startTime, const char* description)
{
    return addParsed(command, "--start", startTime, description, parseIsoTime,
                     "a time from 1970 to 2500 such as 2026-03-01T08:00:00Z");
}
/// --strict
inline void addStrict(CLI::App& command, bool& strict, const char* description = "The first bad line ends the run")
{
    command.add_flag("--strict", strict, description);
}

}  // namespace RecStation
