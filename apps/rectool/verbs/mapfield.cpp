// The verb "map" with --heat and --track: collecting, and writing a picture or GeoJSON.
#include "mapfield.h"

#include <algorithm>
#include <iostream>

#include "making/savedfile.h"
#include "map/fieldjson.h"
#include "map/heat.h"
#include "map/mapgeojson.h"
#include "plot/earthplot.h"
#include "printing/output.h"
#include "printing/text.h"

namespace RecTool {

namespace {

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
