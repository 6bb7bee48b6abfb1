// What the verb "map" takes, and what it does on the earth.
#pragma once

#include <string>

#include "making/pictureoptions.h"
#include "replay/recordingtime.h"

namespace RecTool {

/// Output of geoJson, heat and track is a file, or standard output where it is empty; a picture by its suffix.
struct MapOptions : PlotOptions {
    bool geoJson = false;        ///< lines of bearing and fixes on the earth
    bool heat = false;           ///< where bearings meet, of several recordings
    bool track = false;          ///< levels of a channel where they were measured, of several recordings
    bool isOfEarth = false;      ///< one of the following was given, which belong to these
    double lengthKm = 0;         ///< of the lines and beams; 0: chosen
    double sigmaDeg = 3;         ///< standard deviation of a bearing
    double windowSeconds = 600;  ///< bearings of one fix come within this time
    double frequencyHz = 0;      ///< of the channel; 0: all, which track does not take
    std::string area;            ///< of a heat map, "SOUTH,WEST,NORTH,EAST"; empty: around the stations
    int cells = 100;             ///< of a heat map along its longer side
    std::string unit = "dB";     ///< of levels
};

/// Lines of bearing and fixes of the span.
[[nodiscard]] ExitCode mapGeoJson(const MapOptions& options, const Recording2::Inspection::Summary& summary,
                                  const Span& span);
[[nodiscard]] ExitCode mapHeat(const MapOptions& options);
[[nodiscard]] ExitCode mapTrack(const MapOptions& options);

}  // namespace RecTool
