// The options that all sources share, those of "sim" and "feed", and the help texts.
#include "commandline.h"

#include <algorithm>
#include <iostream>

#include <QString>

#include <CLI/CLI.hpp>

#include "input/fields.h"
#include "input/isotime.h"
#include "input/optionchecks.h"
#include "wrongarguments.h"

namespace recstation {

using TerminalText::acceptedIf;
using TerminalText::inSeconds;
using TerminalText::inUnit;
using TerminalText::parseSeconds;

namespace {

constexpr auto mainExamples = R"(
Sources run together when several are named; without one the simulator runs.

Examples:
  recstation -o recordings                          three simulated minutes, as fast as possible
  recstation -o recordings --speed 1 sim            the same in real time
  recstation -o recordings feed changes.jsonl       changes made by another program
  receiver-driver | recstation -o recordings feed   the same, live
  recstation -o recordings iq capture.cu8 --rate 2M --centre 1090M
  recstation -o recordings bearings log.csv         a direction finder's log
  recstation -o recordings sweep night.csv          spectra as rtl_power and hackrf_sweep write them
  recstation -o recordings sweep night.csv nmea drive.log    the same with positions, merged by time
  recstation --config station.toml --record receiver sim --seed 7
  receiver-driver | recstation -o recordings --journal power feed     outlives a power cut
  recstation -o recordings --no-recover sim         unfinished recordings there stay as they are
  recstation -o night --make-output --split-on-gap nmea drives.log   every drive in a recording of its own

Recordings that an earlier run left unfinished in the directory are recovered first; the originals go into its folder
"recovered".

Exit codes: 0 all is well, 1 wrong arguments, 2 nothing could be recorded or the run broke off,
3 it ran, but input was bad or a file was not properly written.)";

constexpr auto simExamples = R"(
A receiver that scans a band and monitors single frequencies, and a direction finder in a moving vehicle.
The same seed, duration and start give the same recordings on every machine.

Examples:
  recstation -o recordings sim
  recstation -o recordings sim --seed 7 --duration 10min --start 2026-03-01T08:00:00Z)";

constexpr auto feedExamples = R"(
One JSON object per line, one change of a value per object, "at" in milliseconds (doc/feed.md has it all):
  {"at": 0, "path": "/LEVEL", "create": "number", "value": -30, "lower": -150, "upper": 50}
  {"at": 0, "record": "On"}
  {"at": 1500, "path": "/LEVEL", "set": -31.5}

Examples:
  recstation -o recordings feed changes.jsonl
  receiver-driver | recstation -o recordings feed)";

// Takes the text of a time option and gives microseconds to a setter.
CLI::Option* addTimeOption(CLI::App& app, const std::string& description,
                           const std::function<void(unsigned long long)>& set)
{
    return app
        .add_option_function<std::string>(
            "--start", [set](const std::string& text) { set(parseIsoTime(text).value()); }, description)
        ->type_name("TIME")
        ->check(aTime());
}

// The parser would take a negative number as a huge one, and one that is too large as the largest.
bool isSeed(const std::string& text)
{
    return parseNumber<std::uint64_t>(text).has_value();
}

CLI::App* addSim(CLI::App& app, SimOptions& options)
{
    CLI::App* sim = app.add_subcommand("sim", "Simulated receiver and direction finder");
    sim->footer(simExamples);
    sim->add_option("--seed", options.seed, "Number that all chance follows from")
        ->capture_default_str()
        ->check(acceptedIf(isSeed, "a whole number from 0 to 18446744073709551615"));
    constexpr double longest = 1e9;
    sim->add_option("--duration", options.durationSeconds, "Recorded time, such as 90s, 3min, 1h (default: 3min)")
        ->type_name("TIME")
        ->transform(inSeconds(0, longest));
    addTimeOption(*sim, "Recorded time of the first change (default: 2026-01-01T00:00:00Z)",
                  [&options](unsigned long long time) { options.startTime = time; });
    return sim;
}

CLI::App* addFeed(CLI::App& app, FeedOptions& options)
{
    CLI::App* feed = app.add_subcommand("feed", "Changes as JSON Lines from a file or another program");
    feed->footer(feedExamples);
    feed->add_option("FILE", options.file, "File to read; - is the standard input")
        ->check(noRecording())
        ->capture_default_str();
    addTimeOption(*feed, "Recorded time of \"at\": 0 (default: the current time)",
                  [&options](unsigned long long time) { options.startTime = time; });
    feed->add_flag("--strict", options.strict, "The first bad line ends the run");
    feed->add_flag("--keep-at", options.keepAt,
                   "Record every plain value at its own \"at\", not at the \"time\" of the map before it");
    return feed;
}

constexpr double longestGapSeconds = 1e9;

void addGapOptions(CLI::App& app, Options& options)
{
    app.add_flag("--allow-gap", options.allowGap,
                 "Record sources together although more than 10 minutes lie between them");
    app.add_flag("--split-on-gap{10min}", options.splitOnGap,
                 "Begin a new recording where the times of the input leap by more than 10 minutes, forward or back; "
                 "--split-on-gap=TIME by more than that time")
        ->check(inSeconds(0, longestGapSeconds));
}

// Refuses what a script passes when it has forgotten to set a variable.
CLI::Validator aName()
{
    return acceptedIf([](const std::string& text) { return !text.empty(); }, "a name");
}

void addCommonOptions(CLI::App& app, Options& options)
{
    app.add_option("-o,--output", options.output, "Directory for the recordings (default: as configured)")
        ->type_name("DIR")
        ->check(aName());
    app.add_flag("--make-output", options.makeOutput, "Make that directory where it does not exist")
        ->needs(app.get_option("--output"));
    CLI::Option* config =
        app.add_option("--config", options.config, "TOML file with one table per recorder (default: built in)")
            ->type_name("FILE")
            ->check(aName());
    app.add_option("--plugin", options.plugin, "Recorder plug-in (default: the one beside this program)")
        ->type_name("FILE")
        ->check(aName());
    app.add_option("--record", options.recorders,
                   "Recorder to switch on, may be given repeatedly (default: those that suit the sources)")
        ->type_name("NAME")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    constexpr double slowest = 1e-3;
    constexpr double fastest = 1e9;
    app.add_option("--speed", options.speed, "Recorded seconds per second (default: as fast as possible)")
        ->type_name("NUMBER")
        ->transform(inUnit({"x"}, slowest, fastest));
    addGapOptions(app, options);
    constexpr double longestWait = 1e6;
    app.add_option("--archive-wait", options.archiveWaitSeconds,
                   "At the end, wait so long for the archive to take the recordings over; what it has not then stays "
                   "where it is and is taken over later")
        ->type_name("TIME")
        ->transform(inSeconds(0, longestWait))
        ->capture_default_str();
    app.add_option(
           "--journal", options.journal,
           "What a recording outlives: process: the end of this program, however it ends; power: that of the "
           "computer too, but for the last second; off: nothing. With --config, the key Journal of a recorder's "
           "table says it (default: process)")
        ->type_name("KIND")
        ->check(TerminalText::oneOf({"process", "power", "off"}))
        ->excludes(config);
    app.add_flag_callback(
        "--no-recover", [&options] { options.recover = false; },
        "Leave recordings alone that earlier runs left unfinished in the directory");
    app.add_flag("--json", options.json, "Write the closing summary as JSON");
    app.add_flag("-q,--quiet", options.quiet, "Show no progress");
    app.add_flag("--trace", options.trace, "Show the recorder's own traces");
}

CommandLine refused(const std::string& why)
{
    std::cerr << "recstation: " << why << "\nrecstation --help tells more.\n";
    return {std::nullopt, ExitCode::Usage};
}

// Nothing when there is something to run.
std::optional<CommandLine> parsedTo(CLI::App& app, const std::vector<std::string>& arguments)
{
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success& success) {  // help was asked for
        app.exit(success);
        return CommandLine{std::nullopt, ExitCode::Success};
    } catch (const CLI::ParseError& error) {
        return refused(whatIsWrong(app, error, arguments));
    }
    const std::string twice = namedTwice(app);
    return twice.empty() ? std::nullopt : std::optional(refused(twice));
}

}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments)
{
    Options options;
    SimOptions sim;
    FeedOptions feed;
    CLI::App app("Records a receiver through the recorder plug-in.", "recstation");
    app.footer(mainExamples);
    app.allow_windows_style_options(false);  // the same arguments everywhere, paths that begin with "/" among them
    app.set_version_flag("--version", "recstation " RECSTATION_VERSION);
    app.fallthrough();
    app.require_subcommand(0, 0);
    addCommonOptions(app, options);
    const CLI::App* simCommand = addSim(app, sim);
    const CLI::App* feedCommand = addFeed(app, feed);
    BearingsOptions bearings;
    SweepOptions sweep;
    CLI::App* sweepCommand = app.add_subcommand("sweep", "Spectra of a sweeping receiver as CSV");
    addSweepOptions(*sweepCommand, sweep);
    CLI::App* bearingsCommand = app.add_subcommand("bearings", "A direction finder's log as CSV");
    addBearingsOptions(*bearingsCommand, bearings);
    NmeaOptions nmea;
    CLI::App* nmeaCommand = app.add_subcommand("nmea", "Position, heading and attitude from NMEA 0183");
    addNmeaOptions(*nmeaCommand, nmea);
#if defined(RECSTATION_HAS_IQ)
    IqOptions iq;
    CLI::App* iqCommand = app.add_subcommand("iq", "IQ samples from a file");
    addIqOptions(*iqCommand, iq);
#endif
    if (const auto ended = parsedTo(app, arguments)) {
        return *ended;
    }
    if (const auto seconds = parseSeconds(options.splitOnGap)) {
        options.splitGapUs = static_cast<unsigned long long>(*seconds * 1e6);
    }
    if (*feedCommand) {
        options.feed = feed;
    }
    if (*sweepCommand) {
        options.sweep = sweep;
    }
    if (*bearingsCommand) {
        options.bearings = bearings;
    }
    if (*nmeaCommand) {
        options.nmea = nmea;
    }
#if defined(RECSTATION_HAS_IQ)
    if (*iqCommand) {
        options.iq = iq;
    }
#endif
    if (*simCommand || app.get_subcommands().empty()) {
        options.sim = sim;
    }
    return {options, ExitCode::Success};
}

}  // namespace recstation
