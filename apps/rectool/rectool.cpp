// What rectool does from its arguments to its exit code: the verb that they imply, and what is wrong with them.
#include "rectool.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>

#include <terminaltext/commandtree.h>
#include <terminaltext/nearestword.h>
#include <terminaltext/wrongarguments.h>
#include <CLI/CLI.hpp>

#include "archive/archivedfiles.h"
#include "commandline/verb.h"
#include "printing/output.h"
#include "printing/text.h"
#include "system/filenames.h"
#include "system/terminal.h"

namespace RecTool {

using AddVerb = void(const Syntax& program);  // each at the end of its verb's file
AddVerb addInfo, addTypes, addCat, addState, addDiff, addTrace, addEmissions, addOccupancy, addVerify;
AddVerb addMap, addPlotVerbs, addExportVerbs;
AddVerb addBookmarkVerbs, addRangeVerbs;
AddVerb addCut, addMerge, addRepair, addRecover, addSelfCheck;
AddVerb addArchiveVerbs;

}  // namespace RecTool

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
    return (verb.get_parent() == nullptr ? "" : callOf(verb) + ": ") +
           TerminalText::noSuchOption(argument, TerminalText::optionNames(verb));
}

bool isFile(const std::string& name)
{
    std::error_code error;
    return isArchiveAddress(name) || name.ends_with(".rec") || name.ends_with(".tmp") ||
           std::filesystem::exists(native(name), error);
}

/// Puts the verb in front that a user of files or directories alone hopes for: info, as a table of several files.
void addImpliedVerb(const CLI::App& app, std::vector<std::string>& arguments)
{
    if (arguments.empty() || TerminalText::isOption(arguments.front()) || findVerb(app, arguments.front()) != nullptr ||
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

/// A sentence about the first argument where it is none of the app's verbs, or about the second where a verb has
/// verbs of its own; empty where nothing is wrong. It names the verb that comes nearest.
std::string unknownVerb(const CLI::App& app, const std::vector<std::string>& arguments)
{
    if (arguments.empty() || TerminalText::isOption(arguments.front())) {
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

/// A sentence about arguments that could not be parsed.
std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error)
{
    const CLI::App& verb = verbOf(app);
    if (const std::vector<std::string> rest = app.remaining(true); !rest.empty()) {
        const auto option = std::find_if(rest.begin(), rest.end(), TerminalText::isOption);
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

/// "rectool cat --help tells more.", of the verb that was given.
std::string whereHelpIs(const CLI::App& app)
{
    const CLI::App& verb = verbOf(app);
    return app.get_name() + (&verb == &app ? "" : ' ' + callOf(verb)) + " --help tells more.";
}

constexpr const char* ExitCodes =
    "Exit codes: 0 fine, 1 wrong usage or not confirmed, 2 a file cannot be read or written, 3 a file is damaged.\n"
    "A recording in the archive is named by its address, zelvo:///GROUP/FILE.";

ExitCode refuse(const CLI::App& app, const std::string& why)
{
    std::cerr << "rectool: " << why << '\n' << whereHelpIs(app) << '\n';
    return ExitCode::Usage;
}

/// In the order of the help.
void addVerbs(const Syntax& program)
{
    for (AddVerb* const add :
         {addInfo,      addTypes,  addCat,    addState,     addDiff,        addTrace,         addEmissions,
          addOccupancy, addVerify, addMap,    addPlotVerbs, addExportVerbs, addBookmarkVerbs, addRangeVerbs,
          addCut,       addMerge,  addRepair, addRecover,   addSelfCheck,   addArchiveVerbs}) {
        add(program);
    }
}

ExitCode perform(std::vector<std::string> arguments)
{
    CLI::App app("Looks into recordings of receivers and direction finders.", "rectool");
    app.set_version_flag("--version", "rectool " RECTOOL_VERSION);
    app.require_subcommand(1);
    bool noPager = std::erase(arguments, "--no-pager") > 0;
    app.add_flag("--no-pager", noPager, "Do not show long output a page at a time; also behind a verb");
    app.allow_windows_style_options(false);  // the same arguments everywhere, paths that begin with "/" among them
    app.footer(std::string("rectool VERB --help tells more about a verb.\n\n") + ExitCodes);

    Action action;
    addVerbs(Syntax(app, action));
    if (TerminalText::printedCommandTree(app, arguments)) {
        return finish(ExitCode::Fine);
    }
    if (arguments.empty()) {
        std::cout << app.help() << "\nrectool FILE and rectool DIR show what is there.\n";
        return finish(ExitCode::Usage);
    }
    addImpliedVerb(app, arguments);
    if (const std::string problem = unknownVerb(app, arguments); !problem.empty()) {
        return refuse(app, problem);
    }
    try {
        std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return error.get_exit_code() == 0 ? (app.exit(error), ExitCode::Fine) : refuse(app, whatIsWrong(app, error));
    }
    useStyles(outputHasColours());
    const Pager pager(!noPager && action.isPaged);
    return action.run();
}

}  // namespace

int run(std::vector<std::string> arguments)
{
    try {
        return static_cast<int>(perform(std::move(arguments)));
    } catch (const std::exception& error) {
        std::cerr << "rectool: " << oneLine(error.what()) << '\n';
        return static_cast<int>(ExitCode::CannotRead);
    }
}

}  // namespace RecTool::CommandLine
