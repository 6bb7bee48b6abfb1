// Features of levels where they were measured.
#include "fieldjson.h"

#include <algorithm>
#include <utility>

namespace RecTool {

namespace {

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
    properties["time"] = us > 0 ? time(static_cast<unsigned long long>(us)) : Json();
    return feature(point({place.latitudeDeg, place.longitudeDeg}), std::move(properties));
}

}  // namespace

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

}  // namespace RecTool
