// Options that several sources have, and how an option becomes what a source works with.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <terminaltext/optionvalues.h>

#include "input/timetext.h"

namespace RecStation {

/// FILE, which must be given; a recording is none, whatever the source would make of its bytes.
CLI::Option* addInputFile(CLI::App& command, std::string& file, const char* description);
/// FILE..., one at least, of which none is a recording.
CLI::Option* addInputFiles(CLI::App& command, std::vector<std::string>& files, const char* description);
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
void addUtcOffset(CLI::App& command, long long& offsetUs, const char* description);
/// --start, in microseconds since 1970 UTC
template <typename Time>
CLI::Option* addStart(CLI::App& command, Time& startTime, const char* description)
{
    return addParsed(command, "--start", startTime, description, parseIsoTime,
                     "a time from 1970 to 2500 such as 2026-03-01T08:00:00Z");
}
/// --strict
void addStrict(CLI::App& command, bool& strict, const char* description = "The first bad line ends the run");

}  // namespace RecStation
