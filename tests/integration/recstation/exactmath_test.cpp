// The simulation's own mathematics, compared with the standard library.
#include "sources/sim/exactmath.h"

#include "support/testing.h"

namespace RecStation::Exact {
namespace {

constexpr double tolerance = 1e-6;

TEST(ExactMath, FloorGoesDown)
{
    EXPECT_EQ(floor(2.7), 2);
    EXPECT_EQ(floor(-2.1), -3);
    EXPECT_EQ(floor(-2), -2);
}

TEST(ExactMath, RoundingKeepsTheAskedDecimals)
{
    EXPECT_EQ(rounded(1.26, 10), 1.3);
    EXPECT_EQ(rounded(-107.04, 10), -107.0);
    EXPECT_EQ(rounded(49.450052615, 1e7), 49.4500526);
}

TEST(ExactMath, Log10AgreesWithTheStandardLibrary)
{
    for (double x = 1e-9; x < 1e12; x *= 1.37) {
        EXPECT_NEAR(log10(x), std::log10(x), tolerance) << x;
    }
}

TEST(ExactMath, SineAgreesWithTheStandardLibrary)
{
    for (double degrees = -720; degrees <= 720; degrees += 7.3) {
        EXPECT_NEAR(sine(degrees), std::sin(degrees * std::acos(-1.0) / 180), tolerance) << degrees;
    }
}

TEST(ExactMath, AzimuthIsClockwiseFromNorth)
{
    for (double degrees = 0; degrees < 360; degrees += 3.7) {
        const double radians = degrees * std::acos(-1.0) / 180;
        EXPECT_NEAR(azimuthDeg(25 * std::sin(radians), 25 * std::cos(radians)), degrees, tolerance) << degrees;
    }
    EXPECT_EQ(azimuthDeg(0, 0), 0);
}

TEST(ExactMath, AnglesAreWrappedIntoTheCircle)
{
    EXPECT_EQ(wrapDeg(-90), 270);
    EXPECT_EQ(wrapDeg(360), 0);
    EXPECT_EQ(wrapDeg(725), 5);
    EXPECT_EQ(wrapDeg(-1e-20), 0);
}

TEST(ExactMath, ChanceStaysInItsBounds)
{
    Random random(7);
    double sum = 0;
    double squares = 0;
    constexpr int draws = 20'000;
    for (int i = 0; i < draws; ++i) {
        EXPECT_LT(random.below(5), 5U);
        const double uniform = random.uniform(-2, 3);
        EXPECT_GE(uniform, -2);
        EXPECT_LT(uniform, 3);
        const double bell = random.bell();
        EXPECT_LE(std::fabs(bell), 3.5);
        sum += bell;
        squares += bell * bell;
    }
    EXPECT_NEAR(sum / draws, 0, 0.05);
    EXPECT_NEAR(squares / draws, 1, 0.05);
}

}  // namespace
}  // namespace RecStation::Exact
