// Lines of bearing and ellipses as paths, over the antimeridian and around a pole.
#include "geo/shapes.h"

#include <numbers>

#include "geo/geodesic.h"
#include "support/testing.h"

namespace {

using namespace RecTool::Geo;
using namespace testing;

// Positive for counter-clockwise, in square degrees.
double area(const Path& ring)
{
    double sum = 0;
    for (std::size_t i = 1; i < ring.size(); ++i) {
        sum += ring[i - 1].longitudeDeg * ring[i].latitudeDeg - ring[i].longitudeDeg * ring[i - 1].latitudeDeg;
    }
    return sum / 2;
}

void expectProperRing(const Path& ring)
{
    ASSERT_GE(ring.size(), 4U);
    EXPECT_EQ(ring.front(), ring.back());
    EXPECT_GT(area(ring), 0);
    for (const Position& point : ring) {
        EXPECT_LE(std::abs(point.longitudeDeg), 180);
        EXPECT_LE(std::abs(point.latitudeDeg), 90);
    }
}

TEST(LinePaths, AShortLineHasItsTwoEnds)
{
    const LineOfBearing line{{49.45, 11.08}, 37};
    const std::vector<Path> paths = linePaths(line, 4'000);
    ASSERT_THAT(paths, SizeIs(1));
    ASSERT_THAT(paths[0], SizeIs(2));
    EXPECT_EQ(paths[0][0], line.from);
    EXPECT_NEAR(distanceM(paths[0][0], paths[0][1]), 4'000, 1e-6);
    EXPECT_NEAR(azimuthDeg(paths[0][0], paths[0][1]), 37, 1e-9);
}

TEST(LinePaths, PointsOfALongLineLieOnTheGeodesic)
{
    const LineOfBearing line{{60, 0}, 80};
    const std::vector<Path> paths = linePaths(line, 800'000);
    ASSERT_THAT(paths, SizeIs(1));
    EXPECT_THAT(paths[0], SizeIs(161));
    for (std::size_t i = 1; i < paths[0].size(); ++i) {
        EXPECT_NEAR(azimuthDeg(line.from, paths[0][i]), 80, 1e-6);
        EXPECT_NEAR(distanceM(paths[0][i - 1], paths[0][i]), 5'000, 1e-3);
    }
}

TEST(LinePaths, ALineOverTheAntimeridianIsCutThere)
{
    for (const double eastward : {1.0, -1.0}) {
        const LineOfBearing line{{-17, 179.97 * eastward}, 90 * eastward};
        const std::vector<Path> paths = linePaths(line, 20'000);
        ASSERT_THAT(paths, SizeIs(2));
        EXPECT_EQ(paths[0].back().longitudeDeg, 180 * eastward);
        EXPECT_EQ(paths[1].front().longitudeDeg, -180 * eastward);
        EXPECT_EQ(paths[0].back().latitudeDeg, paths[1].front().latitudeDeg);
        EXPECT_NEAR(distanceM(line.from, paths[1].back()), 20'000, 1e-6);
    }
}

TEST(LinePaths, ALineThatOnlyTouchesTheAntimeridianIsOne)
{
    for (const double azimuth : {90.0, 270.0}) {
        EXPECT_THAT(linePaths({{10, 180}, azimuth}, 3'000), SizeIs(1));
        EXPECT_THAT(linePaths({{10, -180}, azimuth}, 3'000), SizeIs(1));
    }
}

TEST(EllipseRings, TheOutlineIsAsFarAsTheAxesSay)
{
    const Position centre{49.45, 11.08};
    const std::vector<Path> rings = ellipseRings(centre, {400, 100, 30});
    ASSERT_THAT(rings, SizeIs(1));
    expectProperRing(rings[0]);
    double farthest = 0;
    double nearest = 1e9;
    for (const Position& point : rings[0]) {
        const double metres = distanceM(centre, point);
        const double along = metres * std::cos((azimuthDeg(centre, point) - 30) * std::numbers::pi / 180);
        const double across = metres * std::sin((azimuthDeg(centre, point) - 30) * std::numbers::pi / 180);
        EXPECT_NEAR(std::hypot(along / 400, across / 100), 1, 1e-9);
        farthest = std::max(farthest, metres);
        nearest = std::min(nearest, metres);
    }
    EXPECT_NEAR(farthest, 400, 1e-6);
    EXPECT_NEAR(nearest, 100, 1e-6);
    EXPECT_NEAR(azimuthDeg(centre, rings[0][0]), 30, 1e-9);
}

TEST(EllipseRings, OverTheAntimeridianThereAreTwo)
{
    for (const double longitude : {179.999, -179.999, 180.0}) {
        const std::vector<Path> rings = ellipseRings({-17, longitude}, {2'000, 500, 60});
        const std::vector<Path> whole = ellipseRings({-17, 20}, {2'000, 500, 60});
        ASSERT_THAT(rings, SizeIs(2));
        for (const Path& ring : rings) {
            expectProperRing(ring);
            const bool east = ring[0].longitudeDeg > 0;
            for (const Position& point : ring) {
                EXPECT_EQ(point.longitudeDeg > 0, east);
            }
        }
        EXPECT_NEAR(area(rings[0]) + area(rings[1]), area(whole[0]), 1e-9);
    }
}

TEST(EllipseRings, AroundAPoleTheRingRunsAlongThePole)
{
    for (const double pole : {1.0, -1.0}) {
        const std::vector<Path> rings = ellipseRings({89.99 * pole, 40}, {5'000, 3'000, 10});
        ASSERT_THAT(rings, SizeIs(1));
        expectProperRing(rings[0]);
        const auto atPole = std::count_if(rings[0].begin() + 1, rings[0].end(),
                                          [&](const Position& p) { return p.latitudeDeg == 90 * pole; });
        EXPECT_EQ(atPole, 2);
        // About the area of the ellipse in latitude and longitude: every longitude, down to its outline.
        EXPECT_GT(area(rings[0]), 360 * 0.015);
        EXPECT_LT(area(rings[0]), 360 * 0.06);
    }
}

TEST(EllipseRings, BesideAPoleItIsAnOrdinaryRing)
{
    const std::vector<Path> rings = ellipseRings({89.9, 40}, {5'000, 3'000, 10});
    ASSERT_THAT(rings, SizeIs(1));
    expectProperRing(rings[0]);
    for (const Position& point : rings[0]) {
        EXPECT_LT(point.latitudeDeg, 90);
    }
}

}  // namespace
