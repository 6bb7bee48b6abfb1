// rectool: looks into recording files and edits what was noted in them.
#include <algorithm>
#include <array>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "commandline/implied.h"
#include "commandline/verbs.h"
#include "printing/output.h"
#include "printing/style.h"
#include "printing/text.h"
#include "system/filenames.h"
#include "system/pager.h"
#include "system/terminal.h"
#include "verbs/commands.h"

namespace {

using RecTool::ExitCode;
namespace CommandLine = RecTool::CommandLine;

constexpr const char* ExitCodes =
    "Exit codes: 0 fine, 1 wrong usage or not confirmed, 2 a file cannot be read or written, 3 a file is damaged.\n"
    "A recording in the archive is named by its address, zelvo:///GROUP/FILE.";

/// Whether the verb's output may be long, and nobody is asked anything meanwhile.
bool isPaged(const CLI::App& app)
{
    constexpr std::array<std::string_view, 7> Verbs = {"info", "types", "cat", "state", "diff", "map", "verify"};
    const auto given = app.get_subcommands();
    return !given.empty() && std::find(Verbs.begin(), Verbs.end(), given.front()->get_name()) != Verbs.end();
}

ExitCode refuse(const CLI::App& app, const std::string& why)
{
    std::cerr << "rectool: " << why << '\n' << CommandLine::whereHelpIs(app) << '\n';
    return ExitCode::Usage;
}

ExitCode run(std::vector<std::string> arguments)
{
    CLI::App app("Looks into recordings of receivers and direction finders.", "rectool");
    app.set_version_flag("--version", "rectool " RECTOOL_VERSION);
    app.require_subcommand(1);
    bool noPager = std::erase(arguments, "--no-pager") > 0;
    app.add_flag("--no-pager", noPager, "Do not show long output a page at a time; also behind a verb");
    app.allow_windows_style_options(false);  // the same arguments everywhere, paths that begin with "/" among them
    app.footer(std::string("rectool VERB --help tells more about a verb.\n\n") + ExitCodes);

    CommandLine::Action action;
    CommandLine::addLookingVerbs(app, action);
    CommandLine::addMapVerb(app, action);
    CommandLine::addPlotVerbs(app, action);
    CommandLine::addEditingVerbs(app, action);
    CommandLine::addMakingVerbs(app, action);
    CommandLine::addArchiveVerbs(app, action);
    if (arguments.empty()) {
        std::cout << app.help() << "\nrectool FILE and rectool DIR show what is there.\n";
        return RecTool::finish(ExitCode::Usage);
    }
    CommandLine::addImpliedVerb(app, arguments);
    if (const std::string problem = CommandLine::unknownVerb(app, arguments); !problem.empty()) {
        return refuse(app, problem);
    }
    try {
        std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return error.get_exit_code() == 0 ? (app.exit(error), ExitCode::Fine)
                                          : refuse(app, CommandLine::whatIsWrong(app, error));
    }
    RecTool::useStyles(RecTool::outputHasColours());
    const RecTool::Pager pager(!noPager && isPaged(app));
    return action();
}

}  // namespace

int main(int argc, char** argv)
{
    RecTool::prepareOutput();
    std::ios::sync_with_stdio(false);
    try {
        return static_cast<int>(run(RecTool::argumentsOf(argc, argv)));
    } catch (const std::exception& error) {
        std::cerr << "rectool: " << RecTool::oneLine(error.what()) << '\n';
        return static_cast<int>(ExitCode::CannotRead);
    }
}
