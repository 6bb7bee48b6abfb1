// Guessing the verb that was left out, and the one that was meant.
#include "implied.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <terminaltext/nearestword.h>

#include "archive/archivedfiles.h"
#include "printing/text.h"
#include "system/filenames.h"

namespace RecTool::CommandLine {

namespace {

const CLI::App* findVerb(const CLI::App& app, const std::string& name)
{
    const auto verbs = app.get_subcommands([&](const CLI::App* verb) { return verb->get_name() == name; });
    return verbs.empty() ? nullptr : verbs.front();
}

std::vector<std::string> verbNames(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(verb->get_name());
    }
    return names;
}

/// Without the program's name: "plot level".
std::string callOf(const CLI::App& verb)
{
    const CLI::App* parent = verb.get_parent();
    const bool isOuter = parent == nullptr || parent->get_parent() == nullptr;
    return isOuter ? verb.get_name() : callOf(*parent) + ' ' + verb.get_name();
}

/// "plot needs to know what: spectrum, level, bearings or timeline"
std::string needsToKnowWhat(const CLI::App& verb)
{
    std::string list;
    const std::vector<std::string> names = verbNames(verb);
    for (const std::string& name : names) {
        list += (list.empty() ? "" : &name == &names.back() ? " or " : ", ") + name;
    }
    return verb.get_name() + " needs to know what: " + list;
}

/// The innermost verb that was given, or the program.
const CLI::App& verbOf(const CLI::App& app)
{
    const CLI::App* verb = &app;
    while (!verb->get_subcommands().empty()) {
        verb = verb->get_subcommands().front();
    }
    return *verb;
}

std::string unknownOption(const CLI::App& verb, const std::string& argument)
{
    const std::string name = argument.substr(0, argument.find('='));
    std::vector<std::string> known;
    for (const CLI::Option* option : verb.get_options()) {
        for (const std::string& own : option->get_lnames()) {
            known.push_back("--" + own);
        }
    }
    return (verb.get_parent() == nullptr ? "there" : callOf(verb) + ": there") + " is no option " + oneLine(name) +
           TerminalText::didYouMean(name, known);
}

bool isFile(const std::string& name)
{
    std::error_code error;
    return isArchiveAddress(name) || name.ends_with(".rec") || name.ends_with(".tmp") ||
           std::filesystem::exists(native(name), error);
}

bool isOption(const std::string& argument)
{
    return argument.size() > 1 && argument.front() == '-';
}

}  // namespace

void addImpliedVerb(const CLI::App& app, std::vector<std::string>& arguments)
{
    if (arguments.empty() || isOption(arguments.front()) || findVerb(app, arguments.front()) != nullptr ||
        !isFile(arguments.front())) {
        return;
    }
    const auto files = std::count_if(arguments.begin(), arguments.end(), isFile);
    const bool isJson = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
    if (files > 1 && !isJson) {
        arguments.insert(arguments.begin(), "--table");
    }
    arguments.insert(arguments.begin(), "info");
}

std::string unknownVerb(const CLI::App& app, const std::vector<std::string>& arguments)
{
    if (arguments.empty() || isOption(arguments.front())) {
        return "";
    }
    const std::string& word = arguments.front();
    if (const CLI::App* verb = findVerb(app, word)) {
        const bool hasVerbs = verb->get_require_subcommand_min() > 0;
        return hasVerbs ? unknownVerb(*verb, {arguments.begin() + 1, arguments.end()}) : "";
    }
    const bool isTop = app.get_parent() == nullptr;
    if (!isTop && isFile(word)) {
        return needsToKnowWhat(app) + ", and the file behind it";
    }
    const std::string problem = "there is no " + (isTop ? "" : app.get_name() + ' ') + "verb \"" + oneLine(word) + '"';
    if (const auto nearest = TerminalText::nearestWord(word, verbNames(app))) {
        return problem + ": did you mean " + *nearest + "?";
    }
    return problem + (isTop ? ", nor such a file" : ": " + needsToKnowWhat(app));
}

std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error)
{
    const CLI::App& verb = verbOf(app);
    if (const std::vector<std::string> rest = app.remaining(true); !rest.empty()) {
        const auto option = std::find_if(rest.begin(), rest.end(), isOption);
        return option != rest.end() ? unknownOption(verb, *option)
                                    : callOf(verb) + ": \"" + oneLine(rest.front()) + "\" is one word too many";
    }
    if (verb.get_require_subcommand_min() > 0 && verb.get_subcommands().empty()) {
        return verb.get_parent() == nullptr ? "a verb is missing" : needsToKnowWhat(verb);
    }
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
        for (const CLI::Option* option : verb.get_options()) {
            if (option->get_required() && option->count() == 0) {
                return callOf(verb) + " needs " + option->get_name();
            }
        }
    }
    return oneLine(error.what());
}

std::string whereHelpIs(const CLI::App& app)
{
    const CLI::App& verb = verbOf(app);
    return app.get_name() + (&verb == &app ? "" : ' ' + callOf(verb)) + " --help tells more.";
}

}  // namespace RecTool::CommandLine
