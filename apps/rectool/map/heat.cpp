// Walking recordings for the bearings of a heat map.
#include "heat.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <utility>

#include <QString>
#include <QStringList>

#include "geo/geodesic.h"
#include "printing/output.h"
#include "printing/text.h"
#include "replay/frequencies.h"
#include "replay/linesofbearing.h"

namespace RecTool {

namespace {

constexpr double FullCircleDegrees = 360;

/// One pass over the bearings of the span and the channel that have a position. What else there is, is counted.
void walkBearings(Recordings& recordings, double hz, Heat& heat,
                  const std::function<void(const TakenBearing&, double momentMs)>& visit)
{
    AllBearings all(recordings, [&](const PlacedRecord& placed, const BearingTaker::Taken& taken) {
        constexpr double UsPerMilli = 1000;
        if (recordings.isBefore(placed.momentMs)) {
            return;
        }
        const bool isWanted = hz == 0 || channelAt(taken.range, hz) == taken.bearing.channel;
        if (!isWanted || !taken.hasPosition) {
            ++(isWanted ? heat.withoutPosition : heat.ofOtherChannels);
            return;
        }
        TakenBearing bearing = taken.bearing;
        const double us = (static_cast<double>(recordings.startMs()) + placed.momentMs) * UsPerMilli;
        bearing.measuredUs = static_cast<unsigned long long>(std::max(us, 0.0));
        visit(bearing, placed.momentMs);
    });
    heat.withoutPosition = heat.ofOtherChannels = 0;
    recordings.walk([&](const PlacedRecord& placed) { all.apply(placed); });
    heat.passedOver = all.passedOver();
}

/// What a first pass finds out: where the stations are.
class HeatSurvey {
public:
    explicit HeatSurvey(Heat& heat) : m_heat(heat) {}

    void take(const TakenBearing& bearing, double momentMs)
    {
        m_heat.firstMs = m_heat.used == 0 ? momentMs : std::min(m_heat.firstMs, momentMs);
        m_heat.lastMs = m_heat.used == 0 ? momentMs : std::max(m_heat.lastMs, momentMs);
        ++m_heat.used;
        m_around.add(bearing.line.from);
        takeStation(bearing.line.from, momentMs);
        if (m_heat.used <= Heat::MostFixed) {
            m_heat.bearings.push_back(bearing);
        } else {
            m_heat.bearings = {};
        }
    }
    [[nodiscard]] const Geo::AreaAround& around() const { return m_around; }

private:
    void takeStation(const Geo::Position& position, double momentMs)
    {
        const auto key = std::pair(position.latitudeDeg, position.longitudeDeg);
        auto found = m_stations.find(key);
        if (found == m_stations.end()) {
            if (m_heat.stations.size() == Heat::MostStations) {
                m_heat.areMoreStations = true;
                return;
            }
            found = m_stations.emplace(key, m_heat.stations.size()).first;
            m_heat.stations.push_back({position, 0, momentMs, momentMs});
        }
        HeatStation& station = m_heat.stations[found->second];
        ++station.bearings;
        station.firstMs = std::min(station.firstMs, momentMs);
        station.lastMs = std::max(station.lastMs, momentMs);
    }

    Heat& m_heat;
    Geo::AreaAround m_around;
    std::map<std::pair<double, double>, std::size_t> m_stations;
};

/// Of "SOUTH,WEST,NORTH,EAST"; nothing for what is no area.
std::optional<Geo::Area> areaOf(const std::string& text)
{
    constexpr int Sides = 4;
    constexpr double MostNorth = 85;
    constexpr double MostEast = 180;
    std::vector<double> sides;
    for (const QString& side : QString::fromStdString(text).split(QLatin1Char(','))) {
        bool isNumber = false;
        sides.push_back(side.trimmed().toDouble(&isNumber));
        if (!isNumber || !std::isfinite(sides.back())) {
            return std::nullopt;
        }
    }
    if (sides.size() != Sides || sides[0] < -MostNorth || sides[2] > MostNorth || sides[0] >= sides[2] ||
        std::abs(sides[1]) > MostEast || std::abs(sides[3]) > MostEast || sides[1] == sides[3]) {
        return std::nullopt;
    }
    return Geo::Area{sides[0], sides[1], sides[2], sides[3] < sides[1] ? sides[3] + FullCircleDegrees : sides[3]};
}

/// A bearing that says how good it is counts for as much.
double weightOf(const TakenBearing& bearing)
{
    constexpr double Best = 100;
    const double quality = bearing.bearing.quality;
    return std::isfinite(quality) ? std::clamp(quality / Best, 0.0, 1.0) : 1;
}

/// Well beyond the fixes; where there is none, what is left as it is.
double usualReachM(const Heat& heat)
{
    constexpr double Beyond = 1.5;
    constexpr double MostM = 300'000;
    double farthestM = 0;
    for (const BearingGroup& group : heat.groups) {
        for (const std::size_t i : group.bearings) {
            farthestM = group.fix() != nullptr
                            ? std::max(farthestM, Geo::distanceM(heat.bearings[i].line.from, group.fix()->position))
                            : farthestM;
        }
    }
    return farthestM > 0 ? std::min(Beyond * farthestM, MostM) : heat.settings.reachM;
}

std::string whyNoHeat(const MapOptions& options, const Heat& heat)
{
    if (heat.withoutPosition > 0) {
        return "Where its bearings were taken is not recorded: there is no LOCATIONLATITUDE and LOCATIONLONGITUDE.";
    }
    if (heat.ofOtherChannels > 0) {
        return "No bearing of the span is of a channel at " + frequency(options.frequencyHz) + ": " +
               counted(heat.ofOtherChannels, "bearing") + " of others.";
    }
    return noRecord(options, "DFSPECTRUM with a bearing");
}

}  // namespace

double Heat::highest() const
{
    double highest = 0;
    for (std::size_t row = 0; row < grid->rows(); ++row) {
        for (std::size_t column = 0; column < grid->columns(); ++column) {
            highest = std::max(highest, grid->at(column, row).evidence);
        }
    }
    return highest;
}

ExitCode collectHeat(const MapOptions& options, Recordings& recordings, Heat& heat)
{
    constexpr double MPerKilometre = 1000;
    constexpr double UsPerSecond = 1e6;
    heat.settings.sigmaDeg = options.sigmaDeg;
    heat.settings.cells = static_cast<std::size_t>(options.cells);
    const auto given = options.area.empty() ? std::nullopt : areaOf(options.area);
    if (!options.area.empty() && !given) {
        return recordings.refuse(
            "--area takes south, west, north and east in degrees, such as 49.3,10.9,49.6,11.3, between 85 degrees "
            "south and north, not " +
            options.area + '.');
    }
    HeatSurvey survey(heat);
    walkBearings(recordings, options.frequencyHz, heat,
                 [&](const TakenBearing& bearing, double momentMs) { survey.take(bearing, momentMs); });
    if (heat.used == 0) {
        return recordings.refuse(whyNoHeat(options, heat));
    }
    Geo::FixSettings fixes;
    fixes.sigmaDeg = options.sigmaDeg;
    heat.groups = findFixes(heat.bearings, fixes, static_cast<unsigned long long>(options.windowSeconds * UsPerSecond));
    heat.settings.reachM = options.lengthKm > 0 ? options.lengthKm * MPerKilometre : usualReachM(heat);
    const auto area = given ? given : survey.around().area(heat.settings.reachM);
    if (!area) {
        return recordings.refuse(
            "Beams reach beyond 85 degrees of latitude, where there are no heat maps: see --area.");
    }
    heat.grid = std::make_unique<Geo::HeatGrid>(*area, heat.settings);
    walkBearings(recordings, options.frequencyHz, heat, [&](const TakenBearing& bearing, double momentMs) {
        heat.grid->add(bearing.line, weightOf(bearing), momentMs);
    });
    heat.grid->finish();
    return ExitCode::Fine;
}

}  // namespace RecTool
