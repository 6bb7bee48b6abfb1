// The verb map, as a table and on the earth.
#include <string>

#include <terminaltext/optionvalues.h>

#include "verb.h"

namespace RecTool::CommandLine {

namespace {

CLI::Validator inKilometres(double lowest, double highest)
{
    return TerminalText::withUnit(
        [](const std::string& text) {
            return TerminalText::parseInUnits(text, {{"", 1}, {"km", 1}, {"m", 1e-3}});
        },
        "a length such as 5, 5km or 500m", lowest, highest, "1m to 20000km");
}

void addGeoJson(Verb<MapOptions>& verb)
{
    CLI::App& app = verb.app();
    MapOptions& options = verb.options();
    CLI::Option* geoJson = app.add_flag(
        "--geojson", options.geoJson, "Print every bearing of the span as a line on the earth, and fixes, as GeoJSON");
    geoJson->excludes(app.get_option("--json"));
    verb.addOutput("FILE", "With --geojson: write to this file")->needs(geoJson);
    app.add_option(
           "--length", options.lengthKm,
           "With --geojson: how long the lines are, in kilometres or as 500m (default: beyond the fixes, or 10)")
        ->type_name("KM")
        ->transform(inKilometres(0.001, 20'000))
        ->needs(geoJson);
    app.add_option("--sigma", options.sigmaDeg, "With --geojson: standard deviation of a bearing in degrees")
        ->type_name("DEG")
        ->transform(TerminalText::inUnit({"deg", "°"}, 0.001, 45))
        ->capture_default_str()
        ->needs(geoJson);
    app.add_option("--window", options.windowSeconds,
                   "With --geojson: bearings of one fix come within this time, such as 30s, 10min, 2h (default: 10min)")
        ->type_name("DURATION")
        ->transform(TerminalText::inSeconds(0.001, 1e9))
        ->needs(geoJson);
}

}  // namespace

void addMapVerb(CLI::App& app, Action& action)
{
    Verb<MapOptions> verb(app, "map", "Show the bearing of every channel", map, action);
    verb.addSpan("Only channels whose bearing changed since this time",
                 "The bearings as they are at this time, instead of at the end");
    verb.addJson();
    addGeoJson(verb);
    verb.addExamples({"map recording.rec", "map recording.rec --from bookmark:alarm --to bookmark:alarm+5000 --json",
                      "map recording.rec --geojson -o bearings.geojson",
                      "map recording.rec --geojson --sigma 1.5 --window 30s --length 5 --from 60000"});
}

}  // namespace RecTool::CommandLine
