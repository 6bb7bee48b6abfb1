// What rectool does from its arguments to its exit code.
#include "rectool.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <utility>

#include <CLI/CLI.hpp>

#include <terminaltext/commandtree.h>

#include "commandline/verb.h"
#include "implied.h"
#include "printing/output.h"
#include "printing/style.h"
#include "printing/text.h"
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
