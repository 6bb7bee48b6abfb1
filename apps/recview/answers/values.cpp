// The answers to /api/values and /api/bearings: a number over time, or when a text, a selection or a truth value
// changed; where the station was, what it took, and the fixes of it.
#include <algorithm>
#include <cmath>
#include <limits>

#include "context.h"
#include "jsontext.h"
#include "recordings/keptcolumns.h"
#ifdef RECTOOL_HAS_GEO
#include "rectool/geo/shapes.h"
#include "rectool/map/geofixes.h"
#endif

namespace RecView {

namespace {

Response numbersOf(const OverviewedFiles& overviewed, const RecordedType& type, const Stretch& time,
                   std::size_t columns)
{
    NumberCurve curve;
    for (const OverviewedFile& file : overviewed.files) {
        const Stretch part = file.within(time);
        const double all = time.toMs - time.fromMs;
        const double share = all > 0 ? (part.toMs - part.fromMs) / all : 1;
        const auto points = static_cast<std::size_t>(std::max(2.0, static_cast<double>(columns) * share));
        appendNumbers(*file.overview, type.code, part, points, curve);
    }
    Response response;
    JsonObject object(response.body);
    object.members("kind", "number", "unit", type.unit);
    object.members("ms", curve.ms, "min", curve.min, "max", curve.max, "last", curve.last);
    object.members("exact", curve.exact, "made", overviewed.made);
    return response;
}

Response changesOf(const OverviewedFiles& overviewed, const RecordedType& type, const Stretch& time)
{
    constexpr std::size_t Most = 5'000;
    std::vector<TextChange> changes;
    std::uint64_t more = 0;
    for (const OverviewedFile& file : overviewed.files) {
        more += appendChanges(*file.overview, type.code, file.within(time), Most, changes);
    }
    // A split begins with the state, which is no change.
    const auto repeated = std::unique(changes.begin(), changes.end(),
                                      [](const TextChange& a, const TextChange& b) { return a.text == b.text; });
    changes.erase(repeated, changes.end());
    more += thin(changes, Most);
    Response response;
    JsonObject object(response.body);
    object.members("kind", "changes");
    object.list("changes", changes, [&](const TextChange& change) {
        JsonObject(response.body).members("ms", change.ms, "text", change.text);
    });
    object.members("more", more, "made", overviewed.made);
    return response;
}

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
    object.members("ms", bearing.ms, "code", bearing.code, "timeMs", bearing.timeMs, "hz", bearing.hz);
    object.members("azimuth", bearing.azimuthDeg);
    object.members("trueAzimuth", std::isnan(bearing.headingDeg) ? NoAngle : trueAzimuth(bearing));
    object.members("elevation", bearing.elevationDeg, "level", bearing.levelDb, "quality", bearing.quality);
    object.members("lat", bearing.latitudeDeg, "lon", bearing.longitudeDeg);
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
    entry.members("hz", hz, "lat", fix.position.latitudeDeg, "lon", fix.position.longitudeDeg);
    entry.members("bearings", fix.bearings);
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
    object.members("fixes", std::vector<double>());
}
#endif

}  // namespace

Response answerValues(const Context& context, const Request& request)
{
    constexpr std::int64_t Most = 10'000;
    const Parameters parameters(request, {"recording", "type", "from", "to", "columns"});
    const Asked asked = askedRecording(context, parameters);
    const RecordedType type = askedType(context, *asked.timeline, parameters);
    const auto [from, to] = parameters.moments();
    const auto columns = static_cast<std::size_t>(parameters.whole("columns", 1, Most, 1000));
    if (type.kind == Kind::Levels || type.kind == Kind::Bearings) {
        throw Refusal(400, "The parameter \"type\" names a map, which has no single value.");
    }
    const OverviewedFiles overviewed = overviewsIn(context, *asked.timeline, {from, to});
    return type.kind == Kind::Number ? numbersOf(overviewed, type, {from, to}, columns)
                                     : changesOf(overviewed, type, {from, to});
}

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
        JsonObject(out).members("ms", position.ms, "lat", position.latitudeDeg, "lon", position.longitudeDeg);
    });
    object.list("bearings", bearings, [&](const KeptBearing& bearing) { appendBearing(out, bearing); });
    appendFixes(object, out, bearings);
    object.members("leftOut", all - static_cast<double>(bearings.size()), "made", overviewed.made);
    return response;
}

}  // namespace RecView
