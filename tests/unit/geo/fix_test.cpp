// Fixes: where bearings cross, how large the ellipse is, when there is no fix, and which bearings belong together.
#include "geo/fix.h"

#include <numbers>
#include <random>

#include "geo/geodesic.h"
#include "support/testing.h"

namespace RecTool::Geo {

// For messages of tests.
void PrintTo(NoFix noFix, std::ostream* out)
{
    *out << "NoFix " << static_cast<int>(noFix);
}

namespace {

using namespace testing;

constexpr double RadPerDeg = std::numbers::pi / 180;

const Fix& fixOf(const std::variant<Fix, NoFix>& result)
{
    static const Fix none;
    const Fix* fix = std::get_if<Fix>(&result);
    EXPECT_NE(fix, nullptr) << testing::PrintToString(std::get<NoFix>(result));
    return fix != nullptr ? *fix : none;
}

NoFix noFixOf(const std::variant<Fix, NoFix>& result)
{
    return std::get<NoFix>(result);
}

Position offset(const Position& origin, double eastM, double northM)
{
    return endOf({origin, std::atan2(eastM, northM) / RadPerDeg}, std::hypot(eastM, northM));
}

/// True bearings of a transmitter.
std::vector<LineOfBearing> bearingsTo(const Position& transmitter, const std::vector<Position>& stations)
{
    std::vector<LineOfBearing> bearings;
    for (const Position& station : stations) {
        bearings.push_back({station, azimuthDeg(station, transmitter)});
    }
    return bearings;
}

void expectExactFix(const Position& transmitter, const std::vector<Position>& stations)
{
    const auto result = estimateFix(bearingsTo(transmitter, stations), {});
    const Fix& fix = fixOf(result);
    EXPECT_LT(distanceM(fix.position, transmitter), 0.01);
    EXPECT_LT(fix.rmsErrorDeg, 1e-5);
    EXPECT_EQ(fix.bearings, stations.size());
    EXPECT_EQ(fix.positions, stations.size());
    EXPECT_EQ(fix.outliers, 0U);
}

/// Whether the ellipse holds a position.
bool holds(const Fix& fix, const Position& position)
{
    const double metres = distanceM(fix.position, position);
    const double angle = (azimuthDeg(fix.position, position) - fix.ellipse.orientationDeg) * RadPerDeg;
    return std::hypot(metres * std::cos(angle) / fix.ellipse.semiMajorM,
                      metres * std::sin(angle) / fix.ellipse.semiMinorM) <= 1;
}

/// Gaussian numbers that are the same everywhere: those of the standard library differ between libraries.
class Noise {
public:
    explicit Noise(std::uint64_t seed) : m_generator(seed) {}
    double operator()() { return std::sqrt(-2 * std::log(uniform())) * std::cos(2 * std::numbers::pi * uniform()); }

private:
    double uniform()
    {
        constexpr double Steps = 9007199254740992.0;  // 2^53
        return (static_cast<double>(m_generator() >> 11U) + 0.5) / Steps;
    }
    std::mt19937_64 m_generator;
};

/// Bearings of a transmitter with an error of that standard deviation.
std::vector<LineOfBearing> noisyBearingsTo(const Position& transmitter, const std::vector<Position>& stations,
                                           double noiseDeg, Noise& noise)
{
    std::vector<LineOfBearing> bearings = bearingsTo(transmitter, stations);
    for (LineOfBearing& bearing : bearings) {
        bearing.azimuthDeg += noiseDeg * noise();
    }
    return bearings;
}

struct Coverage {
    double held = 0;   // share of the fixes whose ellipse holds the transmitter
    double fixed = 0;  // share of the trials that gave a fix
};

Coverage coverage(const Position& transmitter, const std::vector<Position>& stations, double noiseDeg,
                  const FixSettings& settings, int trials)
{
    Noise noise(1);
    int held = 0;
    int fixed = 0;
    for (int trial = 0; trial < trials; ++trial) {
        const auto result = estimateFix(noisyBearingsTo(transmitter, stations, noiseDeg, noise), settings);
        if (const Fix* fix = std::get_if<Fix>(&result)) {
            ++fixed;
            held += holds(*fix, transmitter) ? 1 : 0;
        }
    }
    return {static_cast<double>(held) / fixed, static_cast<double>(fixed) / trials};
}

const Position Origin{49.45, 11.08};

/// Places along a parabola that touches the origin's parallel there.
std::vector<Position> bend(int first, int end, double eastM, double northM)
{
    std::vector<Position> places;
    for (int i = first; i < end; ++i) {
        places.push_back(offset(Origin, eastM * i, northM * i * i));
    }
    return places;
}

TEST(Fix, ExactBearingsMeetAtTheTransmitterNearAndFarAndOnEveryPartOfTheEarth)
{
    const Position transmitter = offset(Origin, 2'400, 2'900);
    expectExactFix(transmitter, {Origin, offset(Origin, 900, 0)});
    expectExactFix(transmitter, {Origin, offset(Origin, 900, 0), offset(Origin, 900, 1'400), offset(Origin, 0, 1'400)});
    // It may stand among the positions.
    expectExactFix(Origin, {offset(Origin, 800, 10), offset(Origin, -400, 600), offset(Origin, -300, -700)});
    expectExactFix({55, 30}, {{50, 25}, {52, 38}, {60, 28}});
    expectExactFix({55, 30}, {{50, 25}, {52, 38}});
    for (const Position& there : {Position{-33.9, 18.4}, Position{-17, 179.99}, Position{-17, -179.99}, Position{0, 0},
                                  Position{71, 180}, Position{89.99, 30}, Position{-89.99, -120}}) {
        SCOPED_TRACE(there.latitudeDeg);
        expectExactFix(there, {offset(there, 5'000, 200), offset(there, -3'000, 4'000), offset(there, 1'000, -6'000)});
    }
}

// The plane triangle above a base of 1 km, without any geodesic: radii of curvature of the ellipsoid at 45 degrees.
TEST(Fix, TwoBearingsCrossWhereThePlaneTriangleSays)
{
    constexpr double MeridianM = 6'367'381.8;
    constexpr double NormalM = 6'388'838.3;
    constexpr double Latitude = 45;
    const double metresEast = NormalM * std::cos(Latitude * RadPerDeg) * RadPerDeg;
    const double metresNorth = MeridianM * RadPerDeg;
    const Position west{Latitude, 7};
    const Position east{Latitude, 7 + 1'000 / metresEast};
    for (const double angle : {30.0, 45.0, 70.0}) {
        SCOPED_TRACE(angle);
        const auto result = estimateFix({{west, angle}, {east, -angle}}, {.sigmaDeg = 1});
        const Fix& fix = fixOf(result);
        const double height = 500 / std::tan(angle * RadPerDeg);
        EXPECT_NEAR((fix.position.longitudeDeg - 7) * metresEast, 500, 0.2);
        EXPECT_NEAR((fix.position.latitudeDeg - Latitude) * metresNorth, height, 0.2);
        // Each line is uncertain across by its length; the crossing angle is twice the angle.
        const double across = 500 / std::sin(angle * RadPerDeg) * RadPerDeg;
        const double quantile = 2.4477;
        const double north = quantile * across / std::sqrt(2) / std::sin(angle * RadPerDeg);
        const double eastward = quantile * across / std::sqrt(2) / std::cos(angle * RadPerDeg);
        EXPECT_NEAR(fix.ellipse.semiMajorM, std::max(north, eastward), 0.1);
        EXPECT_NEAR(fix.ellipse.semiMinorM, std::min(north, eastward), 0.1);
        if (angle != 45) {
            EXPECT_NEAR(std::remainder(fix.ellipse.orientationDeg - (angle < 45 ? 0 : 90), 180), 0, 0.1);
        }
        EXPECT_EQ(fix.chi2PerDof, std::nullopt);
    }
}

TEST(Fix, TheMajorAxisPointsAlongTheLinesOfAFarTransmitter)
{
    const Position transmitter = offset(Origin, 3'000, 3'000);
    const auto result =
        estimateFix(bearingsTo(transmitter, {offset(Origin, -500, 500), offset(Origin, 500, -500)}), {.sigmaDeg = 1});
    EXPECT_NEAR(fixOf(result).ellipse.orientationDeg, 45, 0.5);
}

TEST(Fix, TheEllipseHoldsTheTransmitterAsOftenAsItSays)
{
    const Coverage two =
        coverage(offset(Origin, 300, 800), {Origin, offset(Origin, 1'000, 0)}, 3, {.sigmaDeg = 3}, 2'000);
    EXPECT_EQ(two.fixed, 1);
    EXPECT_NEAR(two.held, Confidence, 0.02);
    // Of more than two bearings the ellipse may be enlarged, never reduced.
    const Coverage twelve = coverage(offset(Origin, -1'500, 2'500), bend(0, 12, 100, 20), 3, {.sigmaDeg = 3}, 500);
    EXPECT_EQ(twelve.fixed, 1);
    EXPECT_GT(twelve.held, Confidence - 0.02);
    EXPECT_LT(twelve.held, 0.995);
}

TEST(Fix, BearingsThatAreWorseThanAssumedEnlargeTheEllipse)
{
    const std::vector<Position> stations = bend(0, 20, 80, 4);
    const Position transmitter = offset(Origin, 500, 2'500);
    const Coverage worse = coverage(transmitter, stations, 6, {.sigmaDeg = 2}, 200);
    EXPECT_GT(worse.held, Confidence - 0.04);
    Noise noise(2);
    const std::vector<LineOfBearing> bearings = noisyBearingsTo(transmitter, stations, 4, noise);
    const auto coarse = estimateFix(bearings, {.sigmaDeg = 2});
    const auto right = estimateFix(bearings, {.sigmaDeg = 4});
    EXPECT_THAT(fixOf(coarse).chi2PerDof, Optional(testing::Gt(2.0)));
    EXPECT_THAT(fixOf(right).chi2PerDof, Optional(DoubleNear(1, 0.6)));
    EXPECT_NEAR(fixOf(coarse).ellipse.semiMajorM, fixOf(right).ellipse.semiMajorM,
                0.3 * fixOf(right).ellipse.semiMajorM);
}

TEST(Fix, BetterBearingsThanAssumedDoNotMakeItSmaller)
{
    const std::vector<Position> stations = {Origin, offset(Origin, 1'000, 0), offset(Origin, 0, 1'000)};
    const Position transmitter = offset(Origin, 1'500, 1'500);
    const auto three = estimateFix(bearingsTo(transmitter, stations), {.sigmaDeg = 3});
    const auto one = estimateFix(bearingsTo(transmitter, stations), {.sigmaDeg = 1});
    EXPECT_NEAR(fixOf(three).ellipse.semiMajorM, 3 * fixOf(one).ellipse.semiMajorM, 0.01);
    EXPECT_LT(*fixOf(three).chi2PerDof, 1e-6);
}

TEST(Fix, AReflectionDoesNotCarryItAway)
{
    const Position transmitter = offset(Origin, -1'500, 2'500);
    std::vector<LineOfBearing> bearings = bearingsTo(transmitter, bend(0, 12, 100, 20));
    bearings[5].azimuthDeg += 70;
    const auto result = estimateFix(bearings, {.sigmaDeg = 3});
    const Fix& fix = fixOf(result);
    EXPECT_EQ(fix.outliers, 1U);
    EXPECT_TRUE(holds(fix, transmitter));
    EXPECT_LT(distanceM(fix.position, transmitter), 200);
    EXPECT_NEAR(fix.rmsErrorDeg, 70 / std::sqrt(12), 2);
}

TEST(Fix, ManyBearingsOfOnePositionAndOneOfAnotherMakeAFix)
{
    const Position transmitter = offset(Origin, 700, 1'000);
    std::vector<Position> stations(500, Origin);
    stations.push_back(offset(Origin, 1'500, 0));
    const auto result = estimateFix(bearingsTo(transmitter, stations), {});
    EXPECT_LT(distanceM(fixOf(result).position, transmitter), 0.01);
    EXPECT_EQ(fixOf(result).bearings, 501U);
    EXPECT_EQ(fixOf(result).positions, 2U);
}

TEST(Fix, WhateverTheBearingsTheAnswerIsSound)
{
    std::mt19937_64 generator(1);
    const auto upTo = [&](double most) { return most * static_cast<double>(generator() >> 11U) / 9007199254740992.0; };
    int fixes = 0;
    for (int trial = 0; trial < 400; ++trial) {
        const Position centre{upTo(180) - 90, upTo(360) - 180};
        const double sizeM = std::pow(10, 1 + upTo(5));
        std::vector<LineOfBearing> bearings;
        for (int i = 0; i < 2 + trial % 12; ++i) {
            bearings.push_back({endOf({centre, upTo(360)}, upTo(sizeM)), upTo(360)});
        }
        const auto result = estimateFix(bearings, {});
        if (const Fix* fix = std::get_if<Fix>(&result)) {
            ++fixes;
            EXPECT_LE(std::abs(fix->position.latitudeDeg), 90);
            EXPECT_LE(std::abs(fix->position.longitudeDeg), 180);
            EXPECT_GT(fix->ellipse.semiMinorM, 0);
            EXPECT_GE(fix->ellipse.semiMajorM, fix->ellipse.semiMinorM);
            EXPECT_LT(fix->ellipse.semiMajorM, 2'000e3);
        }
    }
    EXPECT_GT(fixes, 20);
}

TEST(NoFix, OfOnePositionOrLinesThatDoNotCrossInFrontOfAllThereIsNone)
{
    const Position east = offset(Origin, 1'000, 0);
    const Position north = offset(Origin, 0, 1'000);
    const Position twoMetresOn = offset(Origin, 2, 0);
    const std::vector<std::pair<std::vector<LineOfBearing>, NoFix>> rows = {
        {{}, NoFix::OnePosition},
        {{{Origin, 10}}, NoFix::OnePosition},
        {{{Origin, 10}, {Origin, 80}, {Origin, 200}}, NoFix::OnePosition},
        {{{Origin, 10}, {twoMetresOn, 350}}, NoFix::OnePosition},
        {{{Origin, 0}, {east, 0}}, NoFix::NoCrossing},
        {{{Origin, 350}, {east, 10}}, NoFix::NoCrossing},
        {{{Origin, 20}, {east, 200}}, NoFix::NoCrossing},
        {{{Origin, 45}, {east, 135}}, NoFix::NoCrossing},  // they cross behind one
        {{{Origin, 225}, {east, 315}}, NoFix::NoCrossing},
        {{{Origin, 200}, {east, azimuthDeg(east, Origin)}, {north, azimuthDeg(north, Origin)}}, NoFix::AtPosition}};
    for (std::size_t row = 0; row < rows.size(); ++row) {
        SCOPED_TRACE(row);
        EXPECT_EQ(noFixOf(estimateFix(rows[row].first, {})), rows[row].second);
    }
}

TEST(NoFix, TheBaseLineItselfIsNoCrossing)
{
    const Position east = offset(Origin, 1'000, 0);
    const double forth = azimuthDeg(Origin, east);
    const double back = azimuthDeg(east, Origin);
    for (const auto& [one, other] : {std::pair(forth, forth), std::pair(forth, back), std::pair(back, back)}) {
        const auto result = estimateFix({{Origin, one}, {east, other}}, {});
        EXPECT_EQ(std::get_if<Fix>(&result), nullptr);
    }
}

TEST(NoFix, AFlatCrossingDoesNotTellTheDistance)
{
    const Position east = offset(Origin, 1'000, 0);
    EXPECT_EQ(noFixOf(estimateFix({{Origin, 1}, {east, 359}}, {.sigmaDeg = 3})), NoFix::Undetermined);
    // The same lines of a better direction finder do.
    const auto better = estimateFix({{Origin, 1}, {east, 359}}, {.sigmaDeg = 0.1});
    EXPECT_NEAR(distanceM(Origin, fixOf(better).position), 28'600, 200);
}

TEST(NoFix, ACrossingFartherThanAllowedIsNone)
{
    const Position transmitter = offset(Origin, 500, 8'000);
    const std::vector<LineOfBearing> bearings = bearingsTo(transmitter, {Origin, offset(Origin, 1'000, 0)});
    EXPECT_LT(distanceM(fixOf(estimateFix(bearings, {.sigmaDeg = 0.5})).position, transmitter), 0.1);
    EXPECT_EQ(noFixOf(estimateFix(bearings, {.sigmaDeg = 0.5, .farthestM = 5'000})), NoFix::NoCrossing);
}

TEST(Fix, OneWhoDrivesPastTheTransmitterFixesIt)
{
    const Position transmitter = offset(Origin, 2, 1);
    Noise noise(3);
    const auto result = estimateFix(noisyBearingsTo(transmitter, bend(-20, 21, 50, 2), 3, noise), {.sigmaDeg = 3});
    EXPECT_TRUE(holds(fixOf(result), transmitter));
    EXPECT_LT(fixOf(result).ellipse.semiMajorM, 60);
}

TEST(NoFix, ABearingThatPointsAwayContradictsAFewOthers)
{
    std::vector<LineOfBearing> bearings = {{offset(Origin, 500, 1'000), 0},
                                           {Origin, 45},
                                           {offset(Origin, 1'000, 0), 315},
                                           {offset(Origin, -500, 500), 90},
                                           {offset(Origin, 1'500, 500), 270}};
    EXPECT_EQ(noFixOf(estimateFix(bearings, {})), NoFix::Contradictory);
    bearings[0].azimuthDeg = 180;
    EXPECT_LT(distanceM(fixOf(estimateFix(bearings, {})).position, offset(Origin, 500, 500)), 1);
}

TEST(FixGroups, AGroupTakesWhatComesOfOneTransmitterLessThanTheWindowAfterItsFirst)
{
    EXPECT_THAT(groupSightings({}, 10), IsEmpty());
    EXPECT_THAT(groupSightings({{1, 100}, {1, 109}, {1, 110}, {1, 119}}, 10),
                ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
    EXPECT_THAT(groupSightings({{2, 100}, {1, 101}, {2, 102}}, 10), ElementsAre(ElementsAre(1), ElementsAre(0, 2)));
    EXPECT_THAT(groupSightings({{1, 205}, {1, 100}, {1, 200}, {1, 95}}, 10),
                ElementsAre(ElementsAre(3, 1), ElementsAre(2, 0)));
    EXPECT_THAT(groupSightings({{1, 7}, {1, 7}, {1, 7}}, 1), ElementsAre(ElementsAre(0, 1, 2)));
}

}  // namespace
}  // namespace RecTool::Geo
