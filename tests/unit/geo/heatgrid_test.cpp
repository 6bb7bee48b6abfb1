// Bearings in the cells of a grid, and the ways that it computes.
#include "geo/heatgrid.h"

#include <numbers>

#include "geo/geodesic.h"
#include "support/testing.h"

namespace {

using namespace RecTool::Geo;

double beamHeight(double sigmaDeg)
{
    return std::log1p(9 * 360 / (sigmaDeg * std::sqrt(2 * std::numbers::pi)));
}

/// The cell of a grid of one cell around a place, after one bearing from elsewhere.
HeatGrid::Cell cellAt(const Position& place, const LineOfBearing& line, double sigmaDeg, double reachM)
{
    constexpr double Half = 0.0005;
    HeatGrid grid(
        {place.latitudeDeg - Half, place.longitudeDeg - Half, place.latitudeDeg + Half, place.longitudeDeg + Half},
        {sigmaDeg, reachM, 1});
    grid.add(line, 1, 1500);
    grid.finish();
    return grid.at(0, 0);
}

}  // namespace

TEST(HeatGrid, TheGeodesicToACellIsTheMiddleOfItsBeamUpTo300KilometresAnd70Degrees)
{
    constexpr double SigmaDeg = 0.5;
    for (const double latitude : {-70.0, -33.0, 0.1, 48.0, 70.0}) {
        for (double azimuth = 1; azimuth < 360; azimuth += 37) {
            for (const double distance : {1'000.0, 40'000.0, 299'000.0}) {
                const Position from{latitude, 11};
                const Position place = endOf({from, azimuth}, distance);
                if (std::abs(place.latitudeDeg) > 70) {
                    continue;
                }
                const HeatGrid::Cell cell = cellAt(place, {from, azimuth}, SigmaDeg, 1.002 * distance);
                // 0.05 degrees are a tenth of the standard deviation.
                EXPECT_NEAR(cell.evidence, beamHeight(SigmaDeg), 0.006)
                    << latitude << ' ' << azimuth << ' ' << distance;
                EXPECT_EQ(cell.bearings, 1U);
                EXPECT_EQ(cellAt(place, {from, azimuth}, SigmaDeg, 0.998 * distance).evidence, 0);
            }
        }
    }
}

TEST(HeatGrid, EvidenceFallsAsAGaussianOverTheShareOfStrays)
{
    const Position from{49, 11};
    const Position place = endOf({from, 90}, 5'000);
    const double height = 9 * 360 / (3 * std::sqrt(2 * std::numbers::pi));
    for (const double off : {1.0, 3.0, 7.5, 12.0}) {
        const HeatGrid::Cell cell = cellAt(place, {from, 90 + off}, 3, 10'000);
        EXPECT_NEAR(cell.evidence, std::log1p(height * std::exp(-off * off / 18)), 0.003) << off;
        EXPECT_EQ(cell.bearings, off <= 6 ? 1U : 0U);
    }
    EXPECT_EQ(cellAt(place, {from, 150}, 3, 10'000).evidence, 0);
}

TEST(HeatGrid, BearingsOfOnePlaceAddUpAsThoseOfSeveralDo)
{
    const Area area{49, 11, 49.1, 11.2};
    HeatGrid together(area, {3, 20'000, 40});
    HeatGrid apart(area, {3, 20'000, 40});
    for (const double azimuth : {359.98, 0.01, 20.0, 45.0, 45.0}) {
        together.add({{49.01, 11.02}, azimuth}, 0.5, azimuth);
        apart.add({{49.01, 11.02}, azimuth}, 0.5, azimuth);
        apart.finish();
    }
    together.finish();
    for (std::size_t row = 0; row < together.rows(); ++row) {
        for (std::size_t column = 0; column < together.columns(); ++column) {
            EXPECT_NEAR(together.at(column, row).evidence, apart.at(column, row).evidence, 1e-9);
            EXPECT_EQ(together.at(column, row).bearings, apart.at(column, row).bearings);
            EXPECT_EQ(together.at(column, row).firstMs, apart.at(column, row).firstMs);
        }
    }
}

TEST(HeatGrid, AnAreaAroundBothSidesOfTheAntimeridianIsNarrow)
{
    AreaAround around;
    around.add({-17, 179.9});
    around.add({-17, -179.9});
    const Area area = around.area(0).value();
    EXPECT_NEAR(area.eastDeg - area.westDeg, 0.2, 1e-9);
    EXPECT_NEAR(area.westDeg, 179.9, 1e-9);
    EXPECT_FALSE(AreaAround().area(1).has_value());
}
