// The answer to /api/bearings: where the station was, what it took, and the fixes of it.
#include <algorithm>
#include <cmath>
#include <set>

#include "context.h"
#include "jsontext.h"
#include "rectool/map/linesofbearing.h"
#ifdef RECTOOL_HAS_GEO
#include "rectool/geo/shapes.h"
#include "rectool/map/geofixes.h"
#endif

namespace RecView {

namespace Inspection = Recording2::Inspection;
using RecTool::BearingTaker;
using RecTool::TakenBearing;

namespace {

struct StationPosition {
    double ms = 0;
    RecTool::Geo::Position position;
};

struct SeenBearing {
    double ms = 0;
    bool hasPosition = false;
    TakenBearing bearing;
};

/// What was taken in a span of moments.
struct SeenBearings {
    std::vector<StationPosition> positions;
    std::vector<SeenBearing> bearings;
};

void collect(const RecordedFile& file, const Parameters::Span& span, SeenBearings& seen)
{
    const Inspection::Summary summary = readTables(file);
    BearingTaker taker(summary.types, summary.header.startMs, [&](const BearingTaker::Taken& taken) {
        const double ms = sinceEpoch(file, taken.momentMs);
        if (ms >= span.from && ms <= span.to) {
            seen.bearings.push_back({ms, taken.hasPosition, taken.bearing});
        }
    });
    Inspection::walkRecords(file.path, summary, [&](const Inspection::Record& record) {
        taker.apply(record);
        const double ms = sinceEpoch(file, static_cast<double>(record.timeMs));
        const auto position = taker.position();
        const bool isNew = position && (seen.positions.empty() || seen.positions.back().position != *position);
        if (isNew && ms <= span.to) {
            if (ms < span.from) {
                seen.positions.clear();  // only the one in force at the beginning
            }
            seen.positions.push_back({std::max(ms, span.from), *position});
        }
        return true;
    });
}

/// At most so many, evenly. @return how many were left out
template <typename Item>
std::size_t thin(std::vector<Item>& items, std::size_t most)
{
    const std::size_t all = items.size();
    if (all <= most) {
        return 0;
    }
    std::vector<Item> kept;
    kept.reserve(most);
    for (std::size_t i = 0; i < most; ++i) {
        kept.push_back(std::move(items[i * all / most]));
    }
    items = std::move(kept);
    return all - most;
}

void appendBearing(std::string& out, const SeenBearing& seen, std::int32_t code)
{
    constexpr double None = std::numeric_limits<double>::quiet_NaN();
    const TakenBearing& taken = seen.bearing;
    JsonObject object(out);
    object.number("ms", seen.ms);
    object.number("code", static_cast<double>(code));
    object.number("timeMs", static_cast<double>(taken.timeMs));
    object.number("hz", taken.frequencyHz);
    object.number("azimuth", taken.bearing.azimuthDeg);
    object.number("trueAzimuth", taken.headingDeg ? taken.line.azimuthDeg : None);
    object.number("elevation", taken.bearing.elevationDeg);
    object.number("level", taken.bearing.levelDb);
    object.number("quality", taken.bearing.quality);
    object.number("lat", seen.hasPosition ? taken.line.from.latitudeDeg : None);
    object.number("lon", seen.hasPosition ? taken.line.from.longitudeDeg : None);
}

#ifdef RECTOOL_HAS_GEO
/// As `rectool map --geojson` finds them.
void appendFixes(JsonObject& object, std::string& out, const std::vector<SeenBearing>& seen)
{
    constexpr unsigned long long WindowUs = 600'000'000;
    std::vector<TakenBearing> placed;
    for (const SeenBearing& one : seen) {
        if (one.hasPosition) {
            placed.push_back(one.bearing);
        }
    }
    std::vector<RecTool::BearingGroup> fixes = RecTool::findFixes(placed, {}, WindowUs);
    std::erase_if(fixes, [](const RecTool::BearingGroup& group) { return group.fix() == nullptr; });
    object.list("fixes", fixes, [&](const RecTool::BearingGroup& group) {
        const RecTool::Geo::Fix& fix = *group.fix();
        JsonObject entry(out);
        entry.number("hz", placed[group.bearings.front()].frequencyHz);
        entry.number("lat", fix.position.latitudeDeg);
        entry.number("lon", fix.position.longitudeDeg);
        entry.number("bearings", static_cast<double>(fix.bearings));
        RecTool::Geo::Path outline;
        for (const RecTool::Geo::Path& ring : RecTool::Geo::ellipseRings(fix.position, fix.ellipse)) {
            outline.insert(outline.end(), ring.begin(), ring.end());
        }
        entry.list("ellipse", outline, [&](const RecTool::Geo::Position& point) {
            out += '[';
            appendNumber(out, point.latitudeDeg);
            out += ',';
            appendNumber(out, point.longitudeDeg);
            out += ']';
        });
    });
}
#else
void appendFixes(JsonObject& object, std::string& out, const std::vector<SeenBearing>&)
{
    object.list("fixes", std::vector<double>(), [&](double) { out += ""; });
}
#endif

}  // namespace

Response answerBearings(const Context& context, const Request& request)
{
    constexpr std::int64_t Most = 100'000;
    constexpr std::int64_t Usual = 5'000;
    const Parameters parameters(request, {"recording", "from", "to", "limit"});
    const Asked asked = askedRecording(context, parameters);
    const Parameters::Span span = parameters.moments();
    const auto limit = static_cast<std::size_t>(parameters.whole("limit", 1, Most, Usual));
    SeenBearings seen;
    for (const FilePointer& file : asked.timeline->files) {
        if (sinceEpoch(*file, 0) <= span.to) {
            collect(*file, span, seen);
        }
    }
    std::int32_t code = 0;
    for (const auto& [number, type] : asked.timeline->recorded()) {
        code = type.kind == Kind::Bearings ? number : code;
    }
    Response response;
    std::string& out = response.body;
    JsonObject object(out);
    const std::size_t leftOut = thin(seen.bearings, limit);
    thin(seen.positions, limit);
    object.list("positions", seen.positions, [&](const StationPosition& at) {
        JsonObject entry(out);
        entry.number("ms", at.ms);
        entry.number("lat", at.position.latitudeDeg);
        entry.number("lon", at.position.longitudeDeg);
    });
    object.list("bearings", seen.bearings, [&](const SeenBearing& one) { appendBearing(out, one, code); });
    appendFixes(object, out, seen.bearings);
    object.number("leftOut", static_cast<double>(leftOut));
    return response;
}

}  // namespace RecView
