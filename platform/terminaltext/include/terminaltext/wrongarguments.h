// What is wrong with arguments that a program does not know. Only for what parses a command line.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "terminaltext/nearestword.h"
#include "terminaltext/terminaltext.h"

namespace TerminalText {

/// "--port", "--listen"
[[nodiscard]] inline std::vector<std::string> optionNames(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

[[nodiscard]] inline bool isOption(const std::string& argument)
{
    return argument.size() > 1 && argument.front() == '-';
}

/// "there is no option --prot: did you mean --port?"
/// @param argument perhaps with its value
[[nodiscard]] inline std::string noSuchOption(const std::string& argument, const std::vector<std::string>& known)
{
    const std::string name = argument.substr(0, argument.find('='));
    return "there is no option " + oneLine(name) + didYouMean(name, known);
}

/// For programs without verbs.
[[nodiscard]] inline std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error)
{
    const std::vector<std::string> rest = app.remaining();
    if (rest.empty()) {
        return oneLine(error.what());
    }
    return isOption(rest.front()) ? noSuchOption(rest.front(), optionNames(app))
                                  : '"' + oneLine(rest.front()) + "\" is one word too many";
}

}  // namespace TerminalText
