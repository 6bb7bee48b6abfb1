// Positions, paths and times as GeoJSON has them, rounded to what they are worth.
#include "features.h"

#include <utility>

#include <QDateTime>

#include "printing/output.h"

namespace RecTool {

using Geo::Position;

double direction(double degrees)
{
    constexpr double PerDegree = 1e6;
    return rounded(degrees, PerDegree);
}

Json clockTime(unsigned long long us)
{
    constexpr unsigned long long UsPerMs = 1000;
    if (us / UsPerMs > EndOfYear9999Ms) {
        return {};
    }
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(us / UsPerMs), Qt::UTC)
        .toString(Qt::ISODateWithMs)
        .toStdString();
}

Json coordinates(const Position& position)
{
    return {placeDegrees(position.longitudeDeg), placeDegrees(position.latitudeDeg)};
}

namespace {

Json coordinates(const Geo::Path& path)
{
    return Json::arrayOf(path, [](const Position& point) { return RecTool::coordinates(point); });
}

}  // namespace

Json point(const Position& position)
{
    return {{"type", "Point"}, {"coordinates", coordinates(position)}};
}

Json lineString(const std::vector<Geo::Path>& parts)
{
    if (parts.size() == 1) {
        return {{"type", "LineString"}, {"coordinates", coordinates(parts.front())}};
    }
    return {{"type", "MultiLineString"},
            {"coordinates", Json::arrayOf(parts, [](const Geo::Path& part) { return coordinates(part); })}};
}

Json polygon(const std::vector<Geo::Path>& rings)
{
    Json polygons = Json::arrayOf(rings, [](const Geo::Path& ring) { return Json::array({coordinates(ring)}); });
    if (polygons.size() == 1) {
        return {{"type", "Polygon"}, {"coordinates", polygons.at(0)}};
    }
    return {{"type", "MultiPolygon"}, {"coordinates", std::move(polygons)}};
}

Json feature(Json geometry, Json properties)
{
    return {{"type", "Feature"}, {"geometry", std::move(geometry)}, {"properties", std::move(properties)}};
}

Json uncertaintyOf(const Geo::Fix& fix)
{
    return {{"confidence", Geo::Confidence},
            {"semiMajorM", hundredths(fix.ellipse.semiMajorM)},
            {"semiMinorM", hundredths(fix.ellipse.semiMinorM)},
            {"orientationDeg", thousandths(fix.ellipse.orientationDeg)}};
}

FeatureWriter::FeatureWriter(const Json& about, TextSink write) : m_write(std::move(write))
{
    Json head = {{"type", "FeatureCollection"}};
    head.update(about);
    std::string text = head.dump();
    text.back() = ',';  // the object goes on
    m_write(text + "\n\"features\":[");
}

void FeatureWriter::add(const Json& feature)
{
    m_write(m_separator + feature.dump());
    m_separator = ",\n";
}

void FeatureWriter::end()
{
    m_write("\n]}\n");
}

Json aboutFiles(const RecordingsOptions& options, const Recordings& recordings)
{
    return {{"files", shownNames(options.files)},
            {"startMsSince1970", recordings.startMs()},
            {"fromMs", thousandths(recordings.span().fromMs)},
            {"toMs", thousandths(recordings.span().toMs)}};
}

}  // namespace RecTool
