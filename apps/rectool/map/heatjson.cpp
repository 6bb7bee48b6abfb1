// Features of the cells, stations and fixes of a heat map.
#include "fieldjson.h"

#include "features.h"

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
                       {"firstTime", time(first.measuredUs)},
                       {"lastTime", time(last.measuredUs)}};
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

}  // namespace

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

}  // namespace RecTool
