// The answer to /api/bearings: where the station was, what it took, and the fixes of it.
#include <algorithm>
#include <cmath>
#include <limits>

#include "context.h"
#include "jsontext.h"
#include "recordings/valuequeries.h"
#ifdef RECTOOL_HAS_GEO
#include "rectool/geo/shapes.h"
#include "rectool/map/geofixes.h"
#endif

namespace RecView {

namespace {

constexpr double FullCircleDeg = 360;
constexpr double NoAngle = std::numeric_limits<double>::quiet_NaN();

/// From north, where it is known how the antenna stands.
double trueAzimuth(const KeptBearing& bearing)
{
    const double degrees = std::fmod(bearing.azimuthDeg + bearing.headingDeg, FullCircleDeg);
    return degrees < 0 ? degrees + FullCircleDeg : degrees;
}

void appendBearing(std::string& out, const KeptBearing& bearing)
{
    JsonObject object(out);
    object.number("ms", bearing.ms);
    object.number("code", bearing.code);
    object.number("timeMs", bearing.timeMs);
    object.number("hz", bearing.hz);
    object.number("azimuth", bearing.azimuthDeg);
    object.number("trueAzimuth", std::isnan(bearing.headingDeg) ? NoAngle : trueAzimuth(bearing));
    object.number("elevation", bearing.elevationDeg);
    object.number("level", bearing.levelDb);
    object.number("quality", bearing.quality);
    object.number("lat", bearing.latitudeDeg);
    object.number("lon", bearing.longitudeDeg);
}

#ifdef RECTOOL_HAS_GEO
/// As the recording tells it; without a heading the antenna is taken to look north.
RecTool::TakenBearing takenBearing(const KeptBearing& kept)
{
    RecTool::TakenBearing taken;
    taken.channel = kept.channel;
    taken.frequencyHz = kept.hz;
    taken.bearing = {kept.azimuthDeg, kept.elevationDeg, kept.levelDb, kept.quality};
    taken.timeMs = kept.timeMs;
    taken.measuredUs = kept.measuredUs;
    KeptBearing turned = kept;
    turned.headingDeg = std::isnan(kept.headingDeg) ? 0 : kept.headingDeg;
    taken.line = {{kept.latitudeDeg, kept.longitudeDeg}, trueAzimuth(turned)};
    return taken;
}

void appendFix(std::string& out, const RecTool::Geo::Fix& fix, double hz)
{
    JsonObject entry(out);
    entry.number("hz", hz);
    entry.number("lat", fix.position.latitudeDeg);
    entry.number("lon", fix.position.longitudeDeg);
    entry.number("bearings", fix.bearings);
    RecTool::Geo::Path outline;
    for (const RecTool::Geo::Path& ring : RecTool::Geo::ellipseRings(fix.position, fix.ellipse)) {
        outline.insert(outline.end(), ring.begin(), ring.end());
    }
    entry.list("ellipse", outline,
               [&](const RecTool::Geo::Position& point) { appendPair(out, point.latitudeDeg, point.longitudeDeg); });
}

/// As `rectool map --geojson` finds them.
void appendFixes(JsonObject& object, std::string& out, const std::vector<KeptBearing>& bearings)
{
    constexpr unsigned long long WindowUs = 600'000'000;
    std::vector<RecTool::TakenBearing> placed;
    for (const KeptBearing& one : bearings) {
        if (!std::isnan(one.latitudeDeg)) {
            placed.push_back(takenBearing(one));
        }
    }
    std::vector<RecTool::BearingGroup> fixes = RecTool::findFixes(placed, {}, WindowUs);
    std::erase_if(fixes, [](const RecTool::BearingGroup& group) { return group.fix() == nullptr; });
    object.list("fixes", fixes, [&](const RecTool::BearingGroup& group) {
        appendFix(out, *group.fix(), placed[group.bearings.front()].frequencyHz);
    });
}
#else
void appendFixes(JsonObject& object, std::string&, const std::vector<KeptBearing>&)
{
    object.numbers("fixes", std::vector<double>());
}
#endif

}  // namespace

Response answerBearings(const Context& context, const Request& request)
{
    constexpr std::int64_t Most = 100'000;
    constexpr std::int64_t Usual = 5'000;
    const Parameters parameters(request, {"recording", "from", "to", "limit"});
    const Asked asked = askedRecording(context, parameters);
    const auto [from, to] = parameters.moments();
    const auto limit = static_cast<std::size_t>(parameters.whole("limit", 1, Most, Usual));
    const OverviewedFiles overviewed = overviewsIn(context, *asked.timeline, {from, to});
    std::vector<KeptBearing> bearings;
    std::vector<KeptPosition> positions;
    double all = 0;
    for (const OverviewedFile& file : overviewed.files) {
        all += appendBearings(*file.overview, file.file->types, {from, to}, limit, bearings);
        appendPositions(*file.overview, file.within({from, to}), limit, positions);
    }
    thin(bearings, limit);
    thin(positions, limit);
    Response response;
    std::string& out = response.body;
    JsonObject object(out);
    object.list("positions", positions, [&](const KeptPosition& position) {
        JsonObject entry(out);
        entry.number("ms", position.ms);
        entry.number("lat", position.latitudeDeg);
        entry.number("lon", position.longitudeDeg);
    });
    object.list("bearings", bearings, [&](const KeptBearing& bearing) { appendBearing(out, bearing); });
    appendFixes(object, out, bearings);
    object.number("leftOut", all - static_cast<double>(bearings.size()));
    object.number("made", overviewed.made);
    return response;
}

}  // namespace RecView
