// Checks a GeoJSON document shape by shape.
#include "geojsontesting.h"

using nlohmann::json;

namespace {

// On the earth, no more than seven decimals.
void checkPosition(const json& position)
{
    ASSERT_EQ(position.size(), 2U);
    constexpr double PerDegree = 1e7;
    for (const double coordinate : {position[0].get<double>(), position[1].get<double>()}) {
        EXPECT_NEAR(coordinate * PerDegree, std::round(coordinate * PerDegree), 1e-4);
    }
    EXPECT_LE(std::abs(position[0].get<double>()), 180);
    EXPECT_LE(std::abs(position[1].get<double>()), 90);
}

// At least two positions that stay on their side of the antimeridian.
void checkLine(const json& line)
{
    ASSERT_GE(line.size(), 2U);
    for (std::size_t i = 0; i < line.size(); ++i) {
        checkPosition(line[i]);
        EXPECT_LE(std::abs(line[i][0].get<double>() - line[i > 0 ? i - 1 : 0][0].get<double>()), 180);
    }
}

// One closed ring, counter-clockwise.
void checkPolygon(const json& polygon)
{
    ASSERT_EQ(polygon.size(), 1U);
    const json& ring = polygon[0];
    checkLine(ring);
    ASSERT_GE(ring.size(), 4U);
    EXPECT_EQ(ring.front(), ring.back());
    double area = 0;
    const double x = ring[0][0];
    const double y = ring[0][1];
    for (std::size_t i = 1; i < ring.size(); ++i) {
        area += (ring[i - 1][0].get<double>() - x) * (ring[i][1].get<double>() - y) -
                (ring[i][0].get<double>() - x) * (ring[i - 1][1].get<double>() - y);
    }
    EXPECT_GT(area, 0);
}

void checkGeometry(const json& geometry)
{
    const std::string type = geometry.at("type");
    const json& coordinates = geometry.at("coordinates");
    if (type == "Point") {
        checkPosition(coordinates);
    } else if (type == "LineString") {
        checkLine(coordinates);
    } else if (type == "Polygon") {
        checkPolygon(coordinates);
    } else if (type == "MultiLineString") {
        std::for_each(coordinates.begin(), coordinates.end(), checkLine);
    } else {
        EXPECT_EQ(type, "MultiPolygon");
        std::for_each(coordinates.begin(), coordinates.end(), checkPolygon);
    }
}

void checkDocument(const json& document)
{
    EXPECT_EQ(document.at("type"), "FeatureCollection");
    for (const json& feature : document.at("features")) {
        EXPECT_EQ(feature.at("type"), "Feature");
        EXPECT_TRUE(feature.at("properties").is_object());
        checkGeometry(feature.at("geometry"));
    }
}

}  // namespace

QString recorded(const QString& folder, const QStringList& source)
{
    const ProgramResult result =
        runProgram(RECSTATION, QStringList{"--json", "--quiet", "--record", "df", "--output", folder} + source);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const json files = json::parse(result.out).at("files");
    EXPECT_EQ(files.size(), 1U);
    return QString::fromStdString(files.at(0).at("path"));
}

ProgramResult geoJson(const QString& file, const QStringList& more)
{
    return runProgram(RECTOOL, QStringList{"map", file, "--geojson"} + more);
}

json geoJsonDocument(const QString& file, const QStringList& more)
{
    const ProgramResult result = geoJson(file, more);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    json document = json::parse(result.out);
    checkDocument(document);
    return document;
}

std::vector<json> featuresOf(const json& document, const std::string& type)
{
    std::vector<json> features;
    for (const json& feature : document.at("features")) {
        if (feature.at("properties").at("type") == type) {
            features.push_back(feature);
        }
    }
    return features;
}
