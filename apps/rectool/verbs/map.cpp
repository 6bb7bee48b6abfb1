// The verb "map": the bearing of every channel at the end of a span.
#include <cmath>
#include <iostream>
#include <map>
#include <optional>
#include <vector>

#include <terminaltext/quantity.h>

#include "commandline/verb.h"
#include "commands.h"
#include "map/mapoptions.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "printing/valuetext.h"
#include "replay/bearingreplay.h"
#include "replay/recordingtime.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
using values::Bearing;

namespace {

/// The bearing map at the end of a span, and when each of its bearings was measured.
class MapAtEnd {
public:
    MapAtEnd(const Inspection::Summary& summary, const Span& span)
        : m_code(TypeNames(summary.types).numberOf(DirectionFindingKeyword)),
          m_startMs(summary.header.startMs),
          m_from(firstMoment(span.from)),
          m_to(static_cast<double>(span.to))
    {
    }

    void apply(const Inspection::Record& record)
    {
        const bool timeIsKnown = record.timeMs != 0;
        if (m_code != record.code || !timeIsKnown) {
            return;
        }
        m_momentMs = momentMs(record, m_startMs);
        if (m_momentMs <= m_to) {
            m_replay.apply(record);
        }
    }
    [[nodiscard]] const BearingReplay& replay() const { return m_replay; }
    /// The numbers of the channels that have a bearing and got it in the span.
    [[nodiscard]] std::vector<std::size_t> shownChannels() const
    {
        std::vector<std::size_t> shown;
        for (std::size_t i = 0; i < m_replay.channels().size(); ++i) {
            const auto moment = m_momentsMs.find(i);
            const bool isInSpan = moment != m_momentsMs.end() && moment->second >= m_from;
            if (isInSpan && !isEmpty(m_replay.channels()[i].bearing)) {
                shown.push_back(i);
            }
        }
        return shown;
    }

private:
    std::optional<std::int32_t> m_code;
    std::uint64_t m_startMs;
    double m_from;
    double m_to;
    double m_momentMs = 0;  // of the record being applied
    std::map<std::size_t, double> m_momentsMs;
    BearingReplay m_replay{[this](const BearingChange& change) { m_momentsMs[change.channel] = m_momentMs; }};
};

std::string cell(double value)
{
    return std::isnan(value) ? "-" : number(value);
}

void printTable(const BearingReplay& replay, const std::vector<std::size_t>& shown)
{
    if (shown.empty()) {
        std::cout << "There is no bearing.\n";
        return;
    }
    Table table("rrrrrrrl", {"Channel", "Frequency", "Azimuth", "Elevation", "Level", "Quality", "Time", "Measured"});
    for (const std::size_t i : shown) {
        const BearingChange& channel = replay.channels()[i];
        const Bearing& bearing = channel.bearing;
        table.add({std::to_string(i), frequency(replay.range().frequencyHz(i)), cell(bearing.azimuthDeg),
                   cell(bearing.elevationDeg), cell(bearing.levelDb), cell(bearing.quality),
                   std::to_string(channel.timeMs), utcExactly(channel.measuredUs)});
    }
    table.print();
}

void printMapAsJson(const MapOptions& options, const Span& span, const BearingReplay& replay,
                    const std::vector<std::size_t>& shown)
{
    Json bearings = Json::array();
    for (const std::size_t i : shown) {
        const BearingChange& channel = replay.channels()[i];
        Json bearing = {{"channel", i}, {"frequencyHz", replay.range().frequencyHz(i)}};
        bearing.update(toJson(channel.bearing));
        bearing["timeMs"] = channel.timeMs;
        bearing["timeStampUs"] = channel.measuredUs;
        bearings.push_back(std::move(bearing));
    }
    printJson({{"file", shownName(options.files.front())},
               {"fromMs", options.from.empty() ? Json() : Json(span.from)},
               {"toMs", options.to.empty() ? Json() : Json(span.to)},
               {"range", toJson(replay.range())},
               {"bearings", std::move(bearings)}});
}

/// Why there is no answer to what is asked; nothing where there may be one.
const char* whyNotMapped(const MapOptions& options)
{
#if !defined(RECTOOL_HAS_GEO)
    if (options.geoJson || options.heat || options.track) {
        return "This rectool was built without GeographicLib, which --geojson, --heat and --track need.";
    }
#endif
    constexpr double LeastSigmaDeg = 0.5;  // of a heat map: its directions are a twentieth of a degree
    constexpr double MostReachKm = 300;
    if (options.isOfEarth && !options.geoJson && !options.heat && !options.track) {
        return "-o and options of places go with --geojson, --heat or --track.";
    }
    if (options.files.size() > 1 && !options.heat && !options.track) {
        return "Without --heat and --track one recording is shown at a time.";
    }
    if (options.geoJson && (options.heat || options.track)) {
        return "--heat and --track write GeoJSON by themselves: leave out --geojson.";
    }
    if (options.frequencyHz == 0 && options.track) {
        return "--track takes the channel at --frequency.";
    }
    if (options.heat && (options.sigmaDeg < LeastSigmaDeg || options.lengthKm > MostReachKm)) {
        return "--heat takes a --sigma from 0.5 degrees on and a --length of 300 km at most.";
    }
    return nullptr;
}

}  // namespace

ExitCode map(const MapOptions& options)
{
    if (const char* wrong = whyNotMapped(options)) {
        complain(options.files.front(), wrong);
        return ExitCode::Usage;
    }
#if defined(RECTOOL_HAS_GEO)
    if (options.heat || options.track) {
        return options.heat ? mapHeat(options) : mapTrack(options);
    }
#endif
    Inspection::Summary summary;
    if (!readSummary(options.files.front(), summary)) {
        return ExitCode::CannotRead;
    }
    Span span;
    if (!takeSpan(options.files.front(), options.from, options.to, summary, span)) {
        return ExitCode::Usage;
    }
    if (options.geoJson) {
#if defined(RECTOOL_HAS_GEO)
        return mapGeoJson(options, summary, span);
#else
        return ExitCode::Usage;
#endif
    }
    MapAtEnd atEnd(summary, span);
    const std::vector<Inspection::Finding> findings =
        walk(options.files.front(), summary, [&](const Inspection::Record& record) {
            atEnd.apply(record);
            return true;  // what was measured in the span may be filed after it
        });
    const BearingReplay& replay = atEnd.replay();
    const std::vector<std::size_t> shown = atEnd.shownChannels();
    options.json ? printMapAsJson(options, span, replay, shown) : printTable(replay, shown);
    complain(options.files.front(), findings);
    return finish(withPassedOver(options.files.front(), DirectionFindingKeyword, "bearings", replay.passedOver(),
                                 soundness(findings)));
}

namespace {

std::optional<double> inKilometres(const std::string& text)
{
    return TerminalText::parseInUnits(text, {{"", 1}, {"km", 1}, {"m", 1e-3}});
}

void addGeoJsonOptions(Verb<MapOptions>& verb, const Option& json)
{
    MapOptions& options = verb.options();
    verb.flag("--geojson", options.geoJson,
              "Print every bearing of the span as a line on the earth, and fixes, as GeoJSON")
        .excludes(json);
    const Option heat =
        verb.flag("--heat", options.heat, "Show where the bearings of the recordings say that a transmitter is");
    verb.flag("--track", options.track, "Show the levels of the channel at --frequency where they were measured")
        .excludes(heat);
    verb.output(
            "FILE",
            "With --geojson, --heat and --track: write GeoJSON to this file; with the last two a picture if its name "
            "ends in .png, .jpg or .pdf")
        .sets(options.isOfEarth);
    verb.frequency("--frequency", options.frequencyHz, "With --heat and --track: only the channel there")
        .sets(options.isOfEarth);
    verb.number("--length", options.lengthKm,
                "How far bearings reach, in kilometres or as 500m (default: beyond the fixes; without one 10, with "
                "--heat 20)")
        .as("KM")
        .withUnit(inKilometres, "a length such as 5, 5km or 500m", 0.001, 20'000, "1m to 20000km")
        .sets(options.isOfEarth);
    verb.number("--sigma", options.sigmaDeg, "Standard deviation of a bearing in degrees")
        .as("DEG")
        .inUnit({"deg", "°"}, 0.001, 45)
        .sets(options.isOfEarth)
        .showDefault();
    verb.number("--window", options.windowSeconds,
                "Bearings of one fix come within this time, such as 30s, 10min, 2h (default: 10min)")
        .as("DURATION")
        .sets(options.isOfEarth)
        .inSeconds(0.001, 1e9);
}

void addHeatOptions(Verb<MapOptions>& verb)
{
    constexpr int FewestCells = 10;
    constexpr int MostCells = 1000;
    MapOptions& options = verb.options();
    verb.text("--area", options.area,
              "With --heat: this area in degrees, south, west, north, east (default: as far as bearings reach)")
        .as("S,W,N,E")
        .sets(options.isOfEarth)
        .notEmpty();
    verb.number("--cells", options.cells, "With --heat: so many along the longer side")
        .sets(options.isOfEarth)
        .wholeNumber(FewestCells, MostCells)
        .showDefault();
    verb.unit("With --track: what levels are in, such as dBm; recordings do not tell");
    verb.size("Width of a picture in pixels", "Height of a picture in pixels");
}

}  // namespace

void addMap(const Syntax& program)
{
    Verb verb(program, "map", "Show the bearing of every channel", map);
    verb.span("Only channels whose bearing changed since this time",
              "The bearings as they are at this time, instead of at the end");
    const Option json = verb.json();
    addGeoJsonOptions(verb, json);
    addHeatOptions(verb);
    verb.paged();
    verb.examples({"map recording.rec", "map recording.rec --from bookmark:alarm --to bookmark:alarm+5000 --json",
                   "map recording.rec --geojson -o bearings.geojson",
                   "map recording.rec --geojson --sigma 1.5 --window 30s --length 5 --from 60000",
                   "map north.rec south.rec --heat --frequency 433.5M -o where.png",
                   "map drive.rec --track --frequency 433.5M -o drive.geojson"});
}

}  // namespace RecTool
