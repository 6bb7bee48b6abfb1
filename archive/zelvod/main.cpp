// zelvod: moves finished recordings to the archive's storage until it is told to stop. Its options, its help, and the
// exit codes that it explains.

#include <cmath>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include <QCoreApplication>

#include <CLI/CLI.hpp>

#include <system/program.h>
#include <terminaltext/commandtree.h>
#include <terminaltext/qtnames.h>
#include <terminaltext/wrongarguments.h>

#include "service.h"

namespace Zelvod {

namespace {

struct CommandLine {
    std::optional<Options> options;  ///< nothing: the program ends with the exit code, all is said already
    ExitCode exitCode = ExitCode::Success;
};

constexpr auto Examples = R"(
The configuration is a TOML file; doc/archive.md has all of its keys:
  [archive]
  Directory = "/var/lib/recording2/archive"     this station's own, on a local disk
  Storage = "/mnt/nas/recordings"               a mounted share

Examples:
  zelvod --config archive.toml --set-up     once, with the share mounted
  zelvod --config archive.toml              moves recordings until it is told to stop (SIGTERM)
  zelvod --config archive.toml --once       moves what is due and ends, for cron
  zelvod --config archive.toml --json       one JSON object a line for each run that did something

A shared registry's password comes from PGPASSWORD, PGPASSFILE or ~/.pgpass, never from here.

Exit codes: 0 all is well, 1 wrong arguments, 2 it cannot run (configuration, set-up, or another zelvod runs),
3 with --once: not all that was due could be moved.)";

/// Writes help to the standard output and complaints to the standard error.
/// @param arguments without the program's name, UTF-8
CommandLine parseCommandLine(const std::vector<std::string>& arguments)
{
    constexpr double MillisecondsPerSecond = 1e3;
    constexpr double Least = 0.1;
    constexpr double Most = 86'400;
    Options options;
    std::string config;
    double everySeconds = static_cast<double>(options.everyMs) / MillisecondsPerSecond;
    CLI::App app("Moves finished recordings to the archive's storage.", "zelvod");
    app.footer(Examples);
    app.set_version_flag("--version", "zelvod " ZELVOD_VERSION);
    app.add_option("--config", config, "TOML file with the table [archive] (default: $ZELVO_CONFIG)")
        ->envname("ZELVO_CONFIG")
        ->type_name("FILE")
        ->required();
    CLI::Option* setUp =
        app.add_flag("--set-up", options.setUp, "Make directories, registry and storage ready, and end");
    app.add_flag("--once", options.once, "Move what is due, and end")->excludes(setUp);
    app.add_option("--every", everySeconds, "Seconds between two looks for new recordings")
        ->type_name("SECONDS")
        ->capture_default_str()
        ->check(CLI::Range(Least, Most))
        ->excludes(setUp);
    app.add_flag("--json", options.json, "Write JSON, one object a line")->excludes(setUp);
    app.add_flag("-q,--quiet", options.quiet, "Write failures only");
    if (TerminalText::printedCommandTree(app, arguments)) {
        return {std::nullopt, ExitCode::Success};
    }
    try {
        // The parser takes them from the end.
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        app.parse(std::move(reversed));
    } catch (const CLI::Success& success) {  // help was asked for
        app.exit(success);
        return {std::nullopt, ExitCode::Success};
    } catch (const CLI::ParseError& error) {
        std::cerr << "zelvod: " << TerminalText::whatIsWrong(app, error) << "\nzelvod --help tells more.\n";
        return {std::nullopt, ExitCode::WrongArguments};
    }
    options.config = QString::fromStdString(config);
    options.everyMs = std::llround(everySeconds * MillisecondsPerSecond);
    return {options, ExitCode::Success};
}

}  // namespace

}  // namespace Zelvod

int main(int argc, char* argv[])
{
    System::prepareStandardStreams(System::ClosedStream::RefusesAll);
    TerminalText::takeFileNamesInUtf8();
    const QCoreApplication application(argc, argv);
    const Zelvod::CommandLine commandLine = Zelvod::parseCommandLine(System::argumentsOf(argc, argv));
    return static_cast<int>(commandLine.options ? Zelvod::runService(*commandLine.options) : commandLine.exitCode);
}
