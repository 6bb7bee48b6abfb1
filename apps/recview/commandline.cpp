// The options of recview.
#include "commandline.h"

#include <iostream>

#include <CLI/CLI.hpp>

#include <terminaltext/commandtree.h>
#include <terminaltext/nearestword.h>
#include <terminaltext/optionvalues.h>
#include <terminaltext/terminaltext.h>

namespace RecView {

using RecTool::ExitCode;
using TerminalText::acceptedIf;
using TerminalText::oneLine;

namespace {

constexpr auto Footer = R"(
It prints the page's address when it is ready, and runs until Ctrl-C. A directory is looked at again and again: what
is recorded there shows as it grows. Nothing is changed but, with --edit, the bookmarks of finished recordings.

Examples:
  recview recordings                       all recordings of a directory
  recview night.rec                        one file; its splits beside it belong to it when they are named, too
  recview zelvo:///2026/night.rec          one in the archive
  recview recordings --edit                bookmarks can be added, renamed and removed
  recview recordings --listen 192.168.1.20 for others, too: who has the printed address can look

Exit codes: 0 it ran until it was ended, 1 wrong arguments, 2 a file cannot be read, or nobody could connect.)";

// Refuses what a script passes when it has forgotten to set a variable.
CLI::Validator notEmpty()
{
    return acceptedIf([](const std::string& text) { return !text.empty(); }, "a name");
}

void addServerOptions(CLI::App& app, ProgramOptions& options)
{
    constexpr double HighestPort = 65535;
    app.add_option("--port", options.port, "Port of the page's address (default: one that is free)")
        ->type_name("NUMBER")
        ->transform(TerminalText::wholeNumber(0, HighestPort));
    app.add_option("--listen", options.listen,
                   "Address of this machine, in numbers, on which others may connect, too; the printed address has a "
                   "token that they need (default: only programs of this machine connect)")
        ->type_name("ADDRESS")
        ->check(notEmpty());
    app.add_flag("--until-input-ends", options.untilInputEnds, "")->group("");  // of programs that start this one
}

void addOptions(CLI::App& app, ProgramOptions& options)
{
    app.add_option("PATH", options.paths,
                   "Recordings: files, directories or archive addresses (with --open default: the working directory)")
        ->check(notEmpty());
    addServerOptions(app, options);
    app.add_flag("--open", options.open, "Open the page in the user's browser, too");
    app.add_flag("--edit", options.edit, "Bookmarks of finished recordings can be changed in the page");
    constexpr double MostBytes = 1e15;
    app.add_option("--cache-bytes", options.cacheBytes,
                   "How much may be kept for opening recordings quickly again; the oldest goes first")
        ->type_name("SIZE")
        ->transform(
            TerminalText::withUnit([](const std::string& text) { return TerminalText::parseQuantity(text, {"B"}); },
                                   "a size such as 500M or 4G", 0, MostBytes, "0 to 1000000G"))
        ->default_str("4G");
    app.add_option("--cache", options.cacheDirectory,
                   "Where that is kept (default: recview in XDG_CACHE_HOME or ~/.cache)")
        ->type_name("DIR")
        ->check(notEmpty());
    app.add_option("--archive-config", options.archiveConfiguration,
                   "Configuration of the archive (default: the file that ZELVO_CONFIG names)")
        ->type_name("FILE")
        ->check(notEmpty());
    app.add_flag("--json", options.json, "Print the address as JSON");
    app.add_flag("-q,--quiet", options.quiet, "Print nothing but the address");
}

std::string unknownOption(const CLI::App& app, const std::string& argument)
{
    std::vector<std::string> known;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            known.push_back("--" + name);
        }
    }
    const std::string name = argument.substr(0, argument.find('='));
    return "there is no option " + oneLine(name) + TerminalText::didYouMean(name, known);
}

std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error)
{
    if (const std::vector<std::string> rest = app.remaining(); !rest.empty()) {
        return unknownOption(app, rest.front());
    }
    return oneLine(error.what());
}

CommandLine refused(const std::string& why)
{
    std::cerr << "recview: " << why << "\nrecview --help tells more.\n";
    return {std::nullopt, ExitCode::Usage};
}

}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments)
{
    ProgramOptions options;
    CLI::App app("Shows recordings in the browser, finished or as they grow.", "recview");
    app.footer(Footer);
    app.allow_windows_style_options(false);  // the same arguments everywhere, paths that begin with "/" among them
    app.set_version_flag("--version", "recview " RECVIEW_VERSION);
    addOptions(app, options);
    if (TerminalText::printedCommandTree(app, arguments)) {
        return {std::nullopt, ExitCode::Fine};
    }
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success& success) {  // help was asked for
        app.exit(success);
        return {std::nullopt, ExitCode::Fine};
    } catch (const CLI::ParseError& error) {
        return refused(whatIsWrong(app, error));
    }
    if (options.paths.empty() && !options.open) {
        return refused("a file or directory with recordings is missing");
    }
    if (options.paths.empty()) {
        options.paths.emplace_back(".");
    }
    return {options, ExitCode::Fine};
}

}  // namespace RecView
