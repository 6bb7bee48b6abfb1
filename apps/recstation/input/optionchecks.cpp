// What sources share on the command line: the input file, times, strictness.
#include "input/optionchecks.h"

#include "input/timetext.h"

namespace RecStation {

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

void addUtcOffset(CLI::App& command, long long& offsetUs, const char* description)
{
    addParsed(command, "--utc-offset", offsetUs, description, parseUtcOffset, "an offset such as -05:00 or UTC")
        ->default_str("UTC");
}

void addStrict(CLI::App& command, bool& strict, const char* description)
{
    command.add_flag("--strict", strict, description);
}

}  // namespace RecStation
