// The verb "map" with --heat and --track: collecting, and writing a picture or GeoJSON.
#include <algorithm>
#include <utility>
#include <vector>

#include "analysis/fieldtrack.h"
#include "making/savedfile.h"
#include "map/features.h"
#include "map/heat.h"
#include "map/mapoptions.h"
#include "plot/earthplot.h"
#include "plot/plot.h"
#include "printing/output.h"
#include "printing/text.h"

namespace RecTool {

namespace {

constexpr double Silent = 1e-3;  // evidence of a cell that no bearing says anything of

Json degreesOf(const Geo::Area& area)
{
    return {placeDegrees(area.southDeg), placeDegrees(area.westDeg), placeDegrees(area.northDeg),
            placeDegrees(area.eastDeg)};
}

Json cellFeature(const Heat& heat, std::size_t column, std::size_t row, double highest)
{
    const Geo::HeatGrid::Cell& cell = heat.grid->at(column, row);
    const Geo::Area area = heat.grid->areaOf(column, row);
    return feature(polygon(Geo::outlineRings({{area.southDeg, area.westDeg},
                                              {area.southDeg, area.eastDeg},
                                              {area.northDeg, area.eastDeg},
                                              {area.northDeg, area.westDeg}})),
                   {{"type", "cell"},
                    {"evidence", thousandths(cell.evidence)},
                    {"share", thousandths(cell.evidence / highest)},
                    {"bearings", cell.bearings},
                    {"firstMs", cell.bearings > 0 ? Json(thousandths(cell.firstMs)) : Json()},
                    {"lastMs", cell.bearings > 0 ? Json(thousandths(cell.lastMs)) : Json()}});
}

Json stationFeature(const HeatStation& station)
{
    return feature(point(station.position), {{"type", "station"},
                                             {"bearings", station.bearings},
                                             {"firstMs", thousandths(station.firstMs)},
                                             {"lastMs", thousandths(station.lastMs)}});
}

Json fixFeature(const Heat& heat, const BearingGroup& group)
{
    const Geo::Fix& fix = *group.fix();
    const TakenBearing& first = heat.bearings[group.bearings.front()];
    const TakenBearing& last = heat.bearings[group.bearings.back()];
    Json properties = {{"type", "fix"},
                       {"frequencyHz", last.frequencyHz},
                       {"bearings", fix.bearings},
                       {"firstTime", clockTime(first.measuredUs)},
                       {"lastTime", clockTime(last.measuredUs)}};
    properties.update(uncertaintyOf(fix));
    return feature(point(fix.position), std::move(properties));
}

Json aboutHeat(const MapOptions& options, const Recordings& recordings, const Heat& heat, double highest)
{
    Json about = aboutFiles(options, recordings);
    about.update({{"frequencyHz", options.frequencyHz > 0 ? Json(options.frequencyHz) : Json()},
                  {"sigmaDeg", heat.settings.sigmaDeg},
                  {"reachM", hundredths(heat.settings.reachM)},
                  {"area", degreesOf(heat.grid->area())},
                  {"columns", heat.grid->columns()},
                  {"rows", heat.grid->rows()},
                  {"bearings", heat.used},
                  {"firstMs", thousandths(heat.firstMs)},
                  {"lastMs", thousandths(heat.lastMs)},
                  {"withoutPosition", heat.withoutPosition},
                  {"ofOtherChannels", heat.ofOtherChannels},
                  {"highestEvidence", thousandths(highest)}});
    return about;
}

/// What a track and its points are of.
Json ofChannel(const char* type, const FieldTrack& track)
{
    return {{"type", type}, {"device", track.device}, {"keyword", track.keyword}, {"frequencyHz", track.hz}};
}

Json wayFeature(const FieldTrack& track)
{
    Geo::Path path;
    double highest = track.points.front().highest;
    double lowest = track.points.front().lowest;
    std::uint64_t levels = 0;
    for (const FieldPoint& place : track.points) {
        path.push_back({place.latitudeDeg, place.longitudeDeg});
        highest = std::max(highest, place.highest);
        lowest = std::min(lowest, place.lowest);
        levels += place.levels;
    }
    Json properties = ofChannel("track", track);
    properties.update({{"levels", levels},
                       {"withoutPosition", track.withoutPosition},
                       {"max", thousandths(highest)},
                       {"min", thousandths(lowest)},
                       {"firstMs", thousandths(track.points.front().firstMs)},
                       {"lastMs", thousandths(track.points.back().lastMs)}});
    return feature(path.size() == 1 ? point(path.front()) : lineString(Geo::pathParts(std::move(path))),
                   std::move(properties));
}

Json levelFeature(const FieldTrack& track, const FieldPoint& place, double startMs)
{
    constexpr double UsPerMilli = 1000;
    Json properties = ofChannel("level", track);
    properties.update({{"max", thousandths(place.highest)},
                       {"mean", thousandths(place.mean())},
                       {"min", thousandths(place.lowest)},
                       {"levels", place.levels},
                       {"firstMs", thousandths(place.firstMs)},
                       {"lastMs", thousandths(place.lastMs)},
                       {"maxMs", thousandths(place.highestMs)},
                       {"positionMs", thousandths(place.positionMs)}});
    const double us = (startMs + place.firstMs) * UsPerMilli;
    properties["time"] = us > 0 ? clockTime(static_cast<unsigned long long>(us)) : Json();
    return feature(point({place.latitudeDeg, place.longitudeDeg}), std::move(properties));
}

/// Writes a feature collection, one feature a line: cells, stations, fixes.
void writeHeatJson(const MapOptions& options, const Recordings& recordings, const Heat& heat, const TextSink& write)
{
    const double highest = heat.highest();
    FeatureWriter features(aboutHeat(options, recordings, heat, highest), write);
    for (std::size_t row = 0; row < heat.grid->rows(); ++row) {
        for (std::size_t column = 0; column < heat.grid->columns(); ++column) {
            if (heat.grid->at(column, row).evidence >= Silent) {
                features.add(cellFeature(heat, column, row, highest));
            }
        }
    }
    for (const HeatStation& station : heat.stations) {
        features.add(stationFeature(station));
    }
    for (const BearingGroup& group : heat.groups) {
        if (group.fix() != nullptr) {
            features.add(fixFeature(heat, group));
        }
    }
    features.end();
}

/// Writes a feature collection, one feature a line: ways and the positions on them.
void writeFieldJson(const MapOptions& options, const Recordings& recordings, const std::vector<FieldTrack>& tracks,
                    const TextSink& write)
{
    Json about = aboutFiles(options, recordings);
    about.update({{"frequencyHz", options.frequencyHz}, {"unit", options.unit}});
    FeatureWriter features(about, write);
    for (const FieldTrack& track : tracks) {
        features.add(wayFeature(track));
        for (const FieldPoint& place : track.points) {
            features.add(levelFeature(track, place, static_cast<double>(recordings.startMs())));
        }
    }
    features.end();
}

bool isPictureName(const std::string& path)
{
    const std::string suffix = path.substr(std::min(path.find_last_of('.'), path.size()));
    return suffix == ".png" || suffix == ".jpg" || suffix == ".jpeg" || suffix == ".pdf";
}

/// Whether the output may be written; told if not.
ExitCode checkMapOutput(const MapOptions& options)
{
    if (isPictureName(options.output)) {
        return checkPicture(options);
    }
    if (options.json) {
        complain(options.files.front(), "--json tells of a picture: it needs -o with a name in .png, .jpg or .pdf.");
        return ExitCode::Usage;
    }
    return options.output.empty() || mayReplace(options.output) ? ExitCode::Fine : ExitCode::Usage;
}

void tellHeat(const Recordings& recordings, const Heat& heat)
{
    if (heat.withoutPosition > 0) {
        complain(recordings.file(), grouped(heat.withoutPosition) + " of " + grouped(heat.used + heat.withoutPosition) +
                                        " bearings are left out: where they were taken is not recorded.");
    }
    if (heat.bearings.empty()) {
        complain(recordings.file(), "Fixes are not worked out of more than " + grouped(Heat::MostFixed) + " bearings.");
    }
    if (heat.areMoreStations) {
        complain(recordings.file(), "Only the first " + grouped(Heat::MostStations) + " positions are marked.");
    }
}

}  // namespace

ExitCode mapHeat(const MapOptions& options)
{
    constexpr std::size_t Passes = 2;
    Recordings recordings(options, Passes, checkMapOutput(options));
    if (recordings.state() != ExitCode::Fine) {
        return recordings.state();
    }
    Heat heat;
    if (const ExitCode collected = collectHeat(options, recordings, heat); collected != ExitCode::Fine) {
        return collected;
    }
    const ExitCode made =
        isPictureName(options.output)
            ? drawHeat(options, recordings, heat)
            : saveText(options.output, [&](const TextSink& write) { writeHeatJson(options, recordings, heat, write); });
    tellHeat(recordings, heat);
    return recordings.end(
        withPassedOver(recordings.file(), DirectionFindingKeyword, "bearings", heat.passedOver, made));
}

ExitCode mapTrack(const MapOptions& options)
{
    constexpr std::size_t Passes = 2;
    Recordings recordings(options, Passes, checkMapOutput(options));
    if (recordings.state() != ExitCode::Fine) {
        return recordings.state();
    }
    std::vector<FieldTrack> tracks = trackField(recordings, options.frequencyHz);
    if (tracks.empty()) {
        return recordings.refuse("No level of the span is of a channel at " + frequency(options.frequencyHz) +
                                 ", neither of a spectrum nor LEVEL or FIELDSTRENGTH while FREQUENCY was that.");
    }
    std::uint64_t unplaced = 0;
    for (const FieldTrack& track : tracks) {
        unplaced += track.withoutPosition;
    }
    std::erase_if(tracks, [](const FieldTrack& track) { return track.points.empty(); });
    if (tracks.empty()) {
        return recordings.refuse(
            "Where its levels were measured is not recorded: there is no LOCATIONLATITUDE and "
            "LOCATIONLONGITUDE before them.");
    }
    const ExitCode made = isPictureName(options.output) ? drawField(options, recordings, tracks)
                                                        : saveText(options.output, [&](const TextSink& write) {
                                                              writeFieldJson(options, recordings, tracks, write);
                                                          });
    if (unplaced > 0) {
        complain(recordings.file(),
                 counted(unplaced, "level") + " left out: where they were measured is not recorded.");
    }
    return recordings.end(made);
}

}  // namespace RecTool
