// rectool: looks into recording files and edits what was noted in them.
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "plot/plot.h"
#include "recordingtime.h"

namespace {

using RecTool::ExitCode;

constexpr const char* ExitCodes =
    "Exit codes: 0 fine, 1 wrong usage or not confirmed, 2 a file cannot be read or written, 3 a file is damaged.";

/// What the arguments ask for.
using Action = std::function<ExitCode()>;

/// A verb whose options live as long as it does; when it is given, they become the action.
template <typename Options>
class Verb {
public:
    Verb(CLI::App& parent, const char* name, const char* description, ExitCode (*run)(const Options&), Action& action)
        : m_options(std::make_shared<Options>()), m_app(*parent.add_subcommand(name, description))
    {
        m_app.add_option("FILE", m_options->file, "Recording")->required();
        m_app.callback([options = m_options, run, &action] { action = [options, run] { return run(*options); }; });
    }
    [[nodiscard]] Options& options() { return *m_options; }
    [[nodiscard]] CLI::App& app() { return m_app; }
    CLI::Option* addTime(const char* name, std::string& time, const std::string& description)
    {
        return m_app.add_option(name, time, description)->type_name("TIME");
    }
    void addTypes(const char* description)
    {
        m_app.add_option("--type", m_options->types, description)
            ->type_name("TYPE")
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->allow_extra_args(false);  // what follows one is the recording
    }
    void addJson(const char* description) { m_app.add_flag("--json", m_options->json, description); }
    void addYes() { m_app.add_flag("--yes", m_options->yes, "Change the file without asking"); }

private:
    std::shared_ptr<Options> m_options;
    CLI::App& m_app;
};

const std::string Time = std::string("TIME: ") + RecTool::TimeForms;

void addInfo(CLI::App& app, Action& action)
{
    auto options = std::make_shared<RecTool::InfoOptions>();
    CLI::App* verb = app.add_subcommand("info", "Show the header, the tables and the number of records of recordings");
    verb->add_option("FILE", options->files, "Recordings")->required();
    verb->add_flag("--json", options->json, "Print one JSON document");
    verb->footer(
        "Examples:\n"
        "  rectool info recording.rec\n"
        "  rectool info --json *.rec");
    verb->callback([options, &action] { action = [options] { return RecTool::info(*options); }; });
}

void addTypes(CLI::App& app, Action& action)
{
    Verb<RecTool::TypesOptions> verb(
        app, "types", "Show what can be recorded: numbers, keywords, kinds and value paths", RecTool::types, action);
    verb.addJson("Print one JSON document");
    verb.app().footer(
        "Example:\n"
        "  rectool types recording.rec");
}

void addCat(CLI::App& app, Action& action)
{
    Verb<RecTool::CatOptions> verb(app, "cat", "Show the records, one a line: time in milliseconds, keyword, value",
                                   RecTool::cat, action);
    verb.addTime("--from", verb.options().from, "Begin at this time. " + Time);
    verb.addTime("--to", verb.options().to, "End at this time, which is shown too");
    verb.addTypes("Only this keyword or type number; may be given several times");
    verb.addJson("Print one JSON object a line");
    verb.app().footer(
        "Examples:\n"
        "  rectool cat recording.rec\n"
        "  rectool cat recording.rec --from 60000 --to 65000 --type LEVEL --type FREQUENCY\n"
        "  rectool cat --json recording.rec");
}

void addBookmark(CLI::App& app, Action& action)
{
    CLI::App& bookmark = *app.add_subcommand("bookmark", "Add, remove and list bookmarks");
    bookmark.require_subcommand(1);
    Verb<RecTool::BookmarkAddOptions> add(bookmark, "add", "Store a bookmark in the recording", RecTool::addBookmark,
                                          action);
    add.addTime("TIME", add.options().time, Time)->required();
    add.app().add_option("TEXT", add.options().text, "What to call it")->required();
    add.addYes();
    add.app().footer(
        "Examples:\n"
        "  rectool bookmark add recording.rec 61500 alarm\n"
        "  rectool bookmark add recording.rec bookmark:alarm-500 \"before the alarm\" --yes");
    Verb<RecTool::BookmarkRemoveOptions> rm(bookmark, "rm", "Remove a bookmark from the recording",
                                            RecTool::removeBookmark, action);
    rm.addTime("TIME", rm.options().time, Time)->required();
    rm.addYes();
    rm.app().footer(
        "Examples:\n"
        "  rectool bookmark rm recording.rec 61500\n"
        "  rectool bookmark rm recording.rec bookmark:alarm --yes");
    Verb<RecTool::ListOptions> list(bookmark, "list", "Show the bookmarks", RecTool::listBookmarks, action);
    list.addJson("Print one JSON document");
    list.app().footer(
        "Example:\n"
        "  rectool bookmark list recording.rec");
}

void addRange(CLI::App& app, Action& action)
{
    CLI::App& range = *app.add_subcommand("range", "List, clear and rebuild the table of channel ranges");
    range.require_subcommand(1);
    Verb<RecTool::ListOptions> list(range, "list", "Show the records that the table names", RecTool::listRanges,
                                    action);
    list.addJson("Print one JSON document");
    list.app().footer(
        "Example:\n"
        "  rectool range list recording.rec");
    Verb<RecTool::RangeClearOptions> clear(range, "clear", "Empty the table", RecTool::clearRanges, action);
    clear.addYes();
    clear.app().footer(
        "Example:\n"
        "  rectool range clear recording.rec");
    Verb<RecTool::RangeRebuildOptions> rebuild(range, "rebuild", "Enter every record that carries a channel range",
                                               RecTool::rebuildRanges, action);
    rebuild.addTypes("Records of this keyword or type number, instead of DFSPECTRUM; may be given several times");
    rebuild.addYes();
    rebuild.app().footer(
        "Examples:\n"
        "  rectool range rebuild recording.rec\n"
        "  rectool range rebuild recording.rec --type DFSPECTRUM --type RFSPECTRUM --yes");
}

void addState(CLI::App& app, Action& action)
{
    Verb<RecTool::StateOptions> verb(app, "state", "Show the value of everything recorded at a moment", RecTool::state,
                                     action);
    verb.addTime("--at", verb.options().at, Time)->required();
    verb.addJson("Print one JSON document");
    verb.app().footer(
        "Examples:\n"
        "  rectool state recording.rec --at 61500\n"
        "  rectool state recording.rec --at \"2023-11-14 22:13:21 UTC\" --json");
}

/// Unlike the parser's own check, refuses "nan".
CLI::Validator within(double least, double most)
{
    const std::string range = "[" + CLI::detail::to_string(least) + " - " + CLI::detail::to_string(most) + "]";
    return {[=](const std::string& text) {
                double value = 0;
                const bool fits = CLI::detail::lexical_cast(text, value) && value >= least && value <= most;
                return fits ? std::string() : "expected a number in " + range + ", found " + text;
            },
            ""};
}

void addGeoJson(CLI::App& app, RecTool::MapOptions& options)
{
    const std::map<std::string, double> units = {{"s", 1}, {"min", 60}, {"h", 3600}};
    CLI::Option* geoJson = app.add_flag(
        "--geojson", options.geoJson, "Print every bearing of the span as a line on the earth, and fixes, as GeoJSON");
    geoJson->excludes(app.get_option("--json"));
    app.add_option("-o,--output", options.output, "With --geojson: write to this file")
        ->type_name("FILE")
        ->needs(geoJson);
    app.add_option("--length", options.lengthKm,
                   "With --geojson: kilometres of the lines (default: beyond the fixes, or 10)")
        ->type_name("KM")
        ->check(within(0.001, 20'000))
        ->needs(geoJson);
    app.add_option("--sigma", options.sigmaDeg, "With --geojson: standard deviation of a bearing in degrees")
        ->type_name("DEG")
        ->check(within(0.001, 45))
        ->capture_default_str()
        ->needs(geoJson);
    app.add_option("--window", options.windowSeconds,
                   "With --geojson: bearings of one fix come within this time, such as 30s, 10min, 2h (default: 10min)")
        ->type_name("DURATION")
        ->transform(CLI::AsNumberWithUnit(units, CLI::AsNumberWithUnit::CASE_INSENSITIVE))
        ->check(within(0.001, 1e9))
        ->needs(geoJson);
}

void addOutput(CLI::App& verb, std::string& output, bool& force)
{
    verb.add_option("-o,--output", output, "The new recording")->type_name("FILE")->required();
    verb.add_flag("--force", force, "Replace an existing file");
}

void addMap(CLI::App& app, Action& action)
{
    Verb<RecTool::MapOptions> verb(app, "map", "Show the bearing of every channel", RecTool::map, action);
    verb.addTime("--from", verb.options().from, "Only channels whose bearing changed since this time. " + Time);
    verb.addTime("--to", verb.options().to, "The bearings as they are at this time, instead of at the end");
    verb.addJson("Print one JSON document");
    addGeoJson(verb.app(), verb.options());
    verb.app().footer(
        "Examples:\n"
        "  rectool map recording.rec\n"
        "  rectool map recording.rec --from bookmark:alarm --to bookmark:alarm+5000 --json\n"
        "  rectool map recording.rec --geojson -o bearings.geojson\n"
        "  rectool map recording.rec --geojson --sigma 1.5 --window 30s --length 5 --from 60000");
}

/// What all pictures take.
template <typename Options>
void addPicture(Verb<Options>& verb)
{
    constexpr int Smallest = 400;  // in less the texts have no room
    constexpr int Largest = 5000;
    Options& options = verb.options();
    verb.app()
        .add_option("-o,--output", options.output, "Picture to write: .png, .jpg or .pdf")
        ->type_name("PICTURE")
        ->required();
    verb.addTime("--from", options.from, "Begin at this time. " + Time);
    verb.addTime("--to", options.to, "End at this time");
    verb.app()
        .add_option("--width", options.width, "Width in pixels")
        ->check(CLI::Range(Smallest, Largest))
        ->capture_default_str();
    verb.app()
        .add_option("--height", options.height, "Height in pixels")
        ->check(CLI::Range(Smallest, Largest))
        ->capture_default_str();
    verb.addJson("Print what was drawn as one JSON document");
}

void addPlot(CLI::App& app, Action& action)
{
    CLI::App& plot = *app.add_subcommand("plot", "Draw spectra, levels and bearings");
    plot.require_subcommand(1);
    Verb<RecTool::PlotSpectrumOptions> spectrum(plot, "spectrum", "Draw spectra over time as a waterfall",
                                                RecTool::plotSpectrum, action);
    addPicture(spectrum);
    CLI::Option* rf = spectrum.app().add_flag("--rf", spectrum.options().onlyRf, "Only the RF spectrum");
    CLI::Option* intermediate = spectrum.app().add_flag("--if", spectrum.options().onlyIf, "Only the IF spectrum");
    rf->excludes(intermediate);
    spectrum.addTypes("The spectra of this keyword or type number; may be given several times");
    CLI::Option* highest = spectrum.app().add_flag("--max", spectrum.options().max,
                                                   "A pixel is the highest of its levels (as without options)");
    spectrum.app()
        .add_flag("--mean", spectrum.options().mean, "A pixel is the mean of its levels in decibels, over their time")
        ->excludes(highest);
    spectrum.app().add_flag("--continuous", spectrum.options().continuous,
                            "Do not break the frequency axis at wide gaps");
    spectrum.app()
        .add_option("--unit", spectrum.options().unit, "What levels are in, such as dBm; recordings do not tell")
        ->capture_default_str();
    spectrum.app().footer(
        "Examples:\n"
        "  rectool plot spectrum recording.rec -o waterfall.png\n"
        "  rectool plot spectrum recording.rec -o alarm.png --rf --from bookmark:alarm-5000 --to bookmark:alarm+5000\n"
        "  rectool plot spectrum recording.rec -o waterfall.pdf --mean --unit dBm");
    Verb<RecTool::PlotLevelOptions> level(plot, "level", "Draw levels or other numbers over time", RecTool::plotLevel,
                                          action);
    addPicture(level);
    level.addTypes("This keyword or type number instead of LEVEL; may be given several times");
    level.app().add_option("--unit", level.options().unit, "What the numbers are in, where it is not as usual");
    level.app().footer(
        "Examples:\n"
        "  rectool plot level recording.rec -o level.png\n"
        "  rectool plot level recording.rec -o drive.png --type ALTITUDE --type TRUEHEADING --height 600");
    Verb<RecTool::PlotBearingsOptions> bearings(plot, "bearings", "Draw bearings over time and as seen from above",
                                                RecTool::plotBearings, action);
    addPicture(bearings);
    bearings.app().add_flag("--relative", bearings.options().relative,
                            "Azimuths relative to the antenna, also where TRUEHEADING is recorded");
    bearings.app().footer(
        "Examples:\n"
        "  rectool plot bearings recording.rec -o bearings.png\n"
        "  rectool plot bearings recording.rec -o bearings.png --relative --from 60000 --json");
}

void addDiff(CLI::App& app, Action& action)
{
    Verb<RecTool::DiffOptions> verb(app, "diff", "Show what is different between two moments", RecTool::diff, action);
    verb.addTime("--from", verb.options().from, "The first moment. " + Time)->required();
    verb.addTime("--to", verb.options().to, "The second moment")->required();
    verb.app().add_flag("--all", verb.options().all, "Show what is the same as well");
    verb.addJson("Print one JSON document");
    verb.app().footer(
        "Examples:\n"
        "  rectool diff recording.rec --from 60000 --to 65000\n"
        "  rectool diff recording.rec --from bookmark:alarm-5000 --to bookmark:alarm --json");
}

void addCut(CLI::App& app, Action& action)
{
    Verb<RecTool::CutOptions> verb(app, "cut", "Store a part of a recording as a recording of its own", RecTool::cut,
                                   action);
    verb.addTime("--from", verb.options().from, "Begin with the state at this time. " + Time);
    verb.addTime("--to", verb.options().to, "End at this time, which is kept too");
    addOutput(verb.app(), verb.options().output, verb.options().force);
    verb.addJson("Print a summary as JSON");
    verb.app().footer(
        "Examples:\n"
        "  rectool cut recording.rec --from 60000 --to 65000 -o part.rec\n"
        "  rectool cut recording.rec --from bookmark:alarm-5000 -o alarm.rec");
}

void addMerge(CLI::App& app, Action& action)
{
    auto options = std::make_shared<RecTool::MergeOptions>();
    CLI::App* verb = app.add_subcommand("merge", "Make one recording of several, by clock time");
    verb->add_option("FILE", options->files, "Recordings, in any order")->required();
    addOutput(*verb, options->output, options->force);
    verb->add_flag("--separate", options->separate,
                   "Keep values apart that several files recorded at the same time, instead of refusing them");
    verb->add_flag("--json", options->json, "Print a summary as JSON");
    verb->footer(
        "Examples:\n"
        "  rectool merge first.rec second.rec -o whole.rec\n"
        "  rectool merge receiver.rec df.rec -o station.rec --separate");
    verb->callback([options, &action] { action = [options] { return RecTool::merge(*options); }; });
}

ExitCode run(int argc, char** argv)
{
    CLI::App app("Looks into recordings of receivers and direction finders.", "rectool");
    app.set_version_flag("--version", "rectool " RECTOOL_VERSION);
    app.require_subcommand(1);
    app.footer(std::string("rectool VERB --help tells more about a verb.\n\n") + ExitCodes);

    Action action;
    for (const auto add :
         {addInfo, addTypes, addCat, addBookmark, addRange, addState, addMap, addPlot, addDiff, addCut, addMerge}) {
        add(app, action);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? ExitCode::Fine : ExitCode::Usage;
    }
    return action();
}

}  // namespace

int main(int argc, char** argv)
{
    std::ios::sync_with_stdio(false);
    try {
        return static_cast<int>(run(argc, argv));
    } catch (const std::exception& error) {
        std::cerr << "rectool: " << error.what() << '\n';
        return static_cast<int>(ExitCode::CannotRead);
    }
}
