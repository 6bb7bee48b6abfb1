// The options of a run, from the command line and a station's file, and the sources that were chosen.
#include <algorithm>
#include <iostream>
#include <iterator>

#include <QFile>

#include <terminaltext/commandtree.h>
#include <terminaltext/optionvalues.h>

#include "commandtree.h"
#include "program.h"
#include "progress.h"

namespace RecStation {

using TerminalText::acceptedIf;
using TerminalText::inSeconds;
using TerminalText::inUnit;
using TerminalText::parseSeconds;

namespace {

constexpr auto MainExamples = R"(
Sources run together when several are named; without one the simulator runs. A station's file names sources, options and
recorders, so that one word starts all of it; what the command line says counts before what the file says.

Examples:
  recstation -o recordings                          three simulated minutes, as fast as possible
  recstation -o recordings --speed 1 sim            the same in real time
  recstation -o recordings feed changes.jsonl       changes made by another program
  receiver-driver | recstation -o recordings feed   the same, live
  receiver-driver | recstation -o recordings --view feed    and in the browser
  recstation -o recordings iq capture.cu8 --rate 2M --centre 1090M
  recstation -o recordings bearings log.csv         a direction finder's log
  recstation -o recordings sweep night.csv          spectra as rtl_power and hackrf_sweep write them
  recstation -o recordings sweep night.csv nmea drive.log    the same with positions, merged by time
  recstation -o recordings --view iq capture.cu8 --rate 2M --centre 1090M --print-config >station.toml
  recstation station.toml                           the same run again
  recstation check station.toml                     what it would record, and what is missing
  recstation station.toml --record receiver sim --seed 7    its recorders with another source
  receiver-driver | recstation -o recordings --journal power feed     outlives a power cut
  recstation -o recordings --no-recover sim         unfinished recordings there stay as they are
  recstation -o night --make-output --split-on-gap nmea drives.log   every drive in a recording of its own

Recordings that an earlier run left unfinished in the directory are recovered first; the originals go into its folder
"recovered".

With the word "check" before everything else nothing is recorded: it tells which sources can be reached, which values
and spectra they show, where recordings would go, and what is missing (exit code 3, or 2 where nothing would be recorded).

Exit codes: 0 all is well, 1 wrong arguments, 2 nothing could be recorded or the run broke off,
3 it ran, but input was bad or a file was not properly written.)";

// The word that stands before everything else where nothing is to be recorded.
constexpr auto CheckWord = "check";

constexpr double LongestGapSeconds = 1e9;

void addGapOptions(CLI::App& app, Options& options)
{
    app.add_flag("--allow-gap", options.allowGap,
                 "Record sources together although more than 10 minutes lie between them");
    app.add_flag("--split-on-gap{10min}", options.splitOnGap,
                 "Begin a new recording where the times of the input leap by more than 10 minutes, forward or back; "
                 "--split-on-gap=TIME by more than that time")
        ->check(inSeconds(0, LongestGapSeconds));
}

void addLiveOptions(CLI::App& app, Options& options)
{
    constexpr double Longest = 2e6;  // 23 days
    app.add_option("--duration", options.durationSeconds,
                   "End a run of live sources after that time, such as 90s or 8h (default: when it is stopped)")
        ->type_name("TIME")
        ->transform(inSeconds(0, Longest));
    app.add_flag("--source-time", options.sourceTime,
                 "Record what live sources give at the time that they tell, not at that of its arrival");
}

void addViewOptions(CLI::App& app, Options& options)
{
    constexpr double HighestPort = 65535;
    CLI::Option* view = app.add_flag("--view", options.view,
                                     "Show the recordings in the browser as they grow; the page's address is printed");
    app.add_option("--view-port", options.viewPort, "Port of the page's address (default: one that is free)")
        ->type_name("NUMBER")
        ->transform(TerminalText::wholeNumber(0, HighestPort))
        ->needs(view);
}

// Refuses what a script passes when it has forgotten to set a variable.
CLI::Validator aName()
{
    return acceptedIf([](const std::string& text) { return !text.empty(); }, "a name");
}

void addFileOptions(CLI::App& app, Options& options)
{
    CLI::Option* config = app.add_option("--config", options.file.path,
                                         "TOML file with sources, options and one table per recorder (default: built "
                                         "in)")
                              ->type_name("FILE")
                              ->check(aName());
    app.add_option("STATION", options.file.path, "The same, where its name ends with .toml")
        ->check(acceptedIf([](const std::string& text) { return text.ends_with(".toml"); }, "a name such as x.toml"))
        ->excludes(config);
    app.add_flag("--print-config", options.printConfig,
                 "Record nothing, but write the station's file that means the same as this command line");
}

void addCheckOptions(CLI::App& app, Options& options)
{
    constexpr double LongestWait = 86'400;
    app.add_option("--wait", options.checkSeconds, "How long a source may take to show something")
        ->type_name("TIME")
        ->transform(inSeconds(0, LongestWait))
        ->capture_default_str();
}

void addCommonOptions(CLI::App& app, Options& options)
{
    app.add_option("-o,--output", options.output, "Directory for the recordings (default: as configured)")
        ->type_name("DIR")
        ->check(aName());
    app.add_flag("--make-output", options.makeOutput, "Make that directory where it does not exist")
        ->needs(app.get_option("--output"));
    addFileOptions(app, options);
    app.add_option("--plugin", options.plugin, "Recorder plug-in (default: the one beside this program)")
        ->type_name("FILE")
        ->check(aName());
    app.add_option("--record", options.recorders,
                   "Recorder to switch on, may be given repeatedly (default: those that suit the sources)")
        ->type_name("NAME")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    constexpr double Slowest = 1e-3;
    constexpr double Fastest = 1e9;
    app.add_option("--speed", options.speed, "Recorded seconds per second (default: as fast as possible)")
        ->type_name("NUMBER")
        ->transform(inUnit({"x"}, Slowest, Fastest));
    addGapOptions(app, options);
    addLiveOptions(app, options);
    addViewOptions(app, options);
    constexpr double LongestWait = 1e6;
    app.add_option("--archive-wait", options.archiveWaitSeconds,
                   "At the end, wait so long for the archive to take the recordings over; what it has not then stays "
                   "where it is and is taken over later")
        ->type_name("TIME")
        ->transform(inSeconds(0, LongestWait))
        ->capture_default_str();
    app.add_option(
           "--journal", options.journal,
           "What a recording outlives: process: the end of this program, however it ends; power: that of the "
           "computer too, but for the last second; off: nothing (default: process, or the key Journal of a recorder's "
           "table)")
        ->type_name("KIND")
        ->check(TerminalText::oneOf({"process", "power", "off"}));
    app.add_flag_callback(
        "--no-recover", [&options] { options.recover = false; },
        "Leave recordings alone that earlier runs left unfinished in the directory");
    app.add_flag("--json", options.json, "Write the closing summary as JSON");
    app.add_flag("-q,--quiet", options.quiet, "Show no progress");
    app.add_flag("--trace", options.trace, "Show the recorder's own traces");
}

// Every option first learns how its value was given.
void noteTexts(CLI::App& app, GivenTexts& texts)
{
    for (CLI::Option* option : app.get_options([](const CLI::Option*) { return true; })) {
        if (option->get_name(true) != "STATION") {  // which the parser tries several words for
            option->transform(CLI::Validator(
                [&texts, option](std::string& text) {
                    texts[option].push_back(text);
                    return std::string();
                },
                ""));
        }
    }
}

CommandLine refused(const std::string& why)
{
    std::cerr << "recstation: " << why << "\nrecstation --help tells more.\n";
    return {std::nullopt, ExitCode::Usage};
}

/// What a first look at the command line gave.
struct Parsed {
    std::optional<CommandLine> ended;  ///< nothing when there is something to run
    std::string lacking;               ///< what a station's file may still give; else empty
};

Parsed parsedTo(CLI::App& app, const std::vector<std::string>& arguments)
{
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success& success) {  // help was asked for
        app.exit(success);
        return {CommandLine{std::nullopt, ExitCode::Success}, {}};
    } catch (const CLI::RequiresError& error) {  // one option needs another
        return {std::nullopt, error.what()};
    } catch (const CLI::ParseError& error) {
        return {refused(whatIsWrong(app, error, arguments)), {}};
    }
    const std::string twice = namedTwice(app);
    return {twice.empty() ? std::nullopt : std::optional(refused(twice)), {}};
}

// Nothing where it cannot be read: whoever loads the recorders tells why.
std::optional<std::string> contentOf(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return file.readAll().toStdString();
}

ChosenSources namedSources(const CommandTree& tree)
{
    ChosenSources named;
    std::copy_if(tree.offered.begin(), tree.offered.end(), std::back_inserter(named),
                 [&tree](const auto& source) { return tree.app.got_subcommand(source->traits().name); });
    return named;
}

void takeSources(CommandTree& tree)
{
    Options& options = tree.options;
    if (const auto seconds = parseSeconds(options.splitOnGap)) {
        options.splitGapUs = static_cast<unsigned long long>(*seconds * 1e6);
    }
    options.sources = namedSources(tree);
    if (options.sources.empty()) {
        options.sources.push_back(tree.offered.front());
    }
    std::sort(options.sources.begin(), options.sources.end(),
              [](const auto& a, const auto& b) { return a->traits().turn < b->traits().turn; });
}

// Which recorders the file and the option of the journal make.
void takeRecorders(const StationFile& file, bool journalGiven, Options& options)
{
    options.file.content = file.text;
    options.file.lines = file.lines;
    options.file.hasArchive = file.hasArchive;
    options.file.builtIn = !file.hasRecorders && file.startsSources;
    if (!options.file.builtIn && !options.journal.empty()) {
        options.file.tables = otherTables(file.text, journalGiven ? options.journal : std::string(), options.journal);
    }
}

std::string recordersText(const Options& options)
{
    std::string tables = options.file.tables;
    if (tables.empty() && options.file.content) {
        tables = otherTables(*options.file.content, {}, {});
    }
    return options.file.path.empty() || options.file.builtIn
               ? builtInRecorders(options.journal).toStdString() + '\n' + tables
               : tables;
}

CommandLine finished(CommandTree& tree)
{
    takeSources(tree);
    if (!tree.options.printConfig || !tree.options.file.problem.empty()) {
        return {tree.options, ExitCode::Success};
    }
    if (!writeToStandardOutput(stationFileText(tree, recordersText(tree.options)))) {
        std::cerr << "recstation: cannot write the configuration to the standard output\n";
        return {std::nullopt, ExitCode::CannotRun};
    }
    return {std::nullopt, ExitCode::Success};
}

/// Parses again, with the file's options in the place of those that were not given.
CommandLine withFile(const StationFile& file, const CommandTree& given, Task task, std::vector<std::string> arguments)
{
    CommandTree tree(task);
    applyStation(file, given.app, tree);
    if (namedSources(given).empty()) {
        const std::vector<std::string> names = applySources(file, tree);
        arguments.insert(arguments.end(), names.begin(), names.end());
    }
    try {
        tree.app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError& error) {
        const std::string sentence = whatIsWrong(tree.app, error, arguments);
        throw StationFileError(file.at(lineMeant(file, sentence)) + sentence);
    }
    takeRecorders(file, given.app.get_option("--journal")->count() > 0, tree.options);
    return finished(tree);
}

}  // namespace

CommandTree::CommandTree(Task task)
    : app(task == Task::Check ? "Tells what a run would record, and what is missing, and records nothing."
                              : "Records a receiver through the recorder plug-in.",
          task == Task::Check ? "recstation check" : "recstation"),
      offered(offeredSources())
{
    app.footer(MainExamples);
    app.allow_windows_style_options(false);  // the same arguments everywhere, paths that begin with "/" among them
    app.set_version_flag("--version", "recstation " RECSTATION_VERSION);
    app.fallthrough();
    app.require_subcommand(0, 0);
    options.task = task;
    addCommonOptions(app, options);
    if (task == Task::Check) {
        addCheckOptions(app, options);
    }
    for (const auto& source : offered) {
        CLI::App& command = *app.add_subcommand(source->traits().name, source->traits().description);
        source->addOptions(command);
        noteTexts(command, texts);
    }
    app.validate_positionals();  // of the program's own, and not of the sources
    noteTexts(app, texts);
}

CommandLine parseCommandLine(std::vector<std::string> arguments)
{
    const bool checks = !arguments.empty() && arguments.front() == CheckWord;
    const Task task = checks ? Task::Check : Task::Record;
    arguments.erase(arguments.begin(), arguments.begin() + (checks ? 1 : 0));
    CommandTree tree(task);
    if (TerminalText::printedCommandTree(tree.app, arguments)) {
        return {std::nullopt, ExitCode::Success};
    }
    const Parsed parsed = parsedTo(tree.app, arguments);
    if (parsed.ended) {
        return *parsed.ended;
    }
    const auto content = tree.options.file.path.empty() ? std::nullopt : contentOf(tree.options.file.path);
    try {
        if (content) {
            const StationFile file = readStationFile(tree.options.file.path, *content);
            if (file.startsSources) {
                return withFile(file, tree, task, arguments);
            }
            takeRecorders(file, true, tree.options);
        }
    } catch (const StationFileError& error) {
        tree.options.file.problem = error.what();
        return finished(tree);
    }
    return parsed.lacking.empty() ? finished(tree) : refused(parsed.lacking);
}

}  // namespace RecStation
