// What sources share on the command line: the input file, times, strictness.
#include "input/optionchecks.h"

#include <string>
#include <utility>

#include "input/isotime.h"
#include "input/logtime.h"

namespace RecStation {

using TerminalText::acceptedIf;

namespace {

std::string refuseRecording(const std::string& name)
{
    return name.ends_with(".rec") ? name + " is a recording; rectool shows it" : std::string();
}

}  // namespace

CLI::Option* addInputFile(CLI::App& command, std::string& file, const char* description)
{
    return command.add_option("FILE", file, description)->required()->check(refuseRecording, "");
}

CLI::Option* addInputFiles(CLI::App& command, std::vector<std::string>& files, const char* description)
{
    return command.add_option("FILE", files, description)->required()->check(refuseRecording, "");
}

void addUtcOffset(CLI::App& command, std::string& offset, const char* description)
{
    command.add_option("--utc-offset", offset, description)
        ->check(acceptedIf([](const std::string& text) { return parseUtcOffset(text).has_value(); },
                           "an offset such as -05:00 or UTC"))
        ->capture_default_str();
}

void addStart(CLI::App& command, const char* description, std::function<void(unsigned long long)> set)
{
    command
        .add_option_function<std::string>(
            "--start", [set = std::move(set)](const std::string& text) { set(parseIsoTime(text).value()); },
            description)
        ->type_name("TIME")
        ->check(aTime());
}

void addStrict(CLI::App& command, bool& strict, const char* description)
{
    command.add_flag("--strict", strict, description);
}

CLI::Validator aTime()
{
    return acceptedIf([](const std::string& text) { return parseIsoTime(text).has_value(); },
                      "a time from 1970 to 2500 such as 2026-03-01T08:00:00Z");
}

}  // namespace RecStation
