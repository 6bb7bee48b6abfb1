// The simulated direction finder knows where its transmitters stand: the fixes must be there.
#include "geo/geodesic.h"
#include "geojsontesting.h"
#include "sources/sim/scenery.h"

namespace {

using nlohmann::json;
using RecTool::Geo::Position;

/// Where the simulator puts a transmitter, by its own map projection.
Position placeOf(double frequencyHz)
{
    namespace Sim = RecStation::Sim;
    const Sim::Scenery scenery(1);
    for (const Sim::Transmitter& transmitter : scenery.transmitters()) {
        if (transmitter.frequencyHz == frequencyHz) {
            return {Sim::OriginLatitude + transmitter.place.north / Sim::MetresPerDegreeNorth,
                    Sim::OriginLongitude + transmitter.place.east / Sim::MetresPerDegreeEast};
        }
    }
    ADD_FAILURE() << "no transmitter at " << frequencyHz;
    return {};
}

Position pointOf(const json& point)
{
    return {point.at("coordinates")[1], point.at("coordinates")[0]};
}

bool holds(const json& fix, const Position& position)
{
    const Position centre = pointOf(fix.at("geometry"));
    const json& properties = fix.at("properties");
    const double metres = RecTool::Geo::distanceM(centre, position);
    const double angle = (RecTool::Geo::azimuthDeg(centre, position) - properties.at("orientationDeg").get<double>()) *
                         std::acos(-1) / 180;
    return std::hypot(metres * std::cos(angle) / properties.at("semiMajorM").get<double>(),
                      metres * std::sin(angle) / properties.at("semiMinorM").get<double>()) <= 1;
}

struct Score {
    int fixes = 0;
    int held = 0;
    double chi2 = 0;
};

Score scoreOf(const json& document)
{
    Score score;
    for (const json& fix : featuresOf(document, "fix")) {
        ++score.fixes;
        score.held += holds(fix, placeOf(fix.at("properties").at("frequencyHz"))) ? 1 : 0;
        const json& chi2 = fix.at("properties").at("chi2PerDof");
        score.chi2 += chi2.is_null() ? 1 : chi2.get<double>();
    }
    return score;
}

class SimulatedVehicle : public testing::TestWithParam<int> {
protected:
    [[nodiscard]] QString recording() const
    {
        return recorded(m_folder.path(), {"sim", "--duration", "3min", "--seed", QString::number(GetParam())});
    }

private:
    QTemporaryDir m_folder;
};

INSTANTIATE_TEST_SUITE_P(Seeds, SimulatedVehicle, testing::Range(1, 5));

TEST_P(SimulatedVehicle, AllBearingsOfATransmitterFixIt)
{
    const json document = geoJsonDocument(recording());
    EXPECT_EQ(document.at("withoutPosition"), 0);
    EXPECT_EQ(document.at("unfixed"), json::array());
    const Score score = scoreOf(document);
    EXPECT_EQ(score.fixes, 4);
    EXPECT_EQ(score.held, 4);
    for (const json& fix : featuresOf(document, "fix")) {
        EXPECT_LT(fix.at("properties").at("semiMajorM"), 600);
        const Position place = placeOf(fix.at("properties").at("frequencyHz"));
        EXPECT_LT(RecTool::Geo::distanceM(pointOf(fix.at("geometry")), place), 400);
    }
}

// The simulator's bearings are within 1.5 degrees, its compass is within 0.3: heading, azimuth and position that were
// not of one moment would show here.
TEST_P(SimulatedVehicle, BearingsAreAsExactAsTheSimulatorMakesThem)
{
    const Score score = scoreOf(geoJsonDocument(recording(), {"--sigma", "1.53"}));
    EXPECT_NEAR(score.chi2 / score.fixes, 1, 0.1);
}

TEST_P(SimulatedVehicle, FixesOfSingleMinutesHoldTheTransmitterAsOftenAsTheySay)
{
    const Score score = scoreOf(geoJsonDocument(recording(), {"--window", "60s"}));
    EXPECT_GE(score.fixes, 8);
    EXPECT_GE(score.held, 0.95 * score.fixes - 1);
}

TEST(SimulatedPlane, HasTheMetresOfADegreeOfTheEllipsoid)
{
    namespace Sim = RecStation::Sim;
    const Position start{Sim::OriginLatitude, Sim::OriginLongitude};
    constexpr double Step = 0.005;
    const Position south{Sim::OriginLatitude - Step, Sim::OriginLongitude};
    const Position north{Sim::OriginLatitude + Step, Sim::OriginLongitude};
    const Position east{Sim::OriginLatitude, Sim::OriginLongitude + 2 * Step};
    EXPECT_NEAR(RecTool::Geo::distanceM(south, north) / (2 * Step), Sim::MetresPerDegreeNorth, 0.1);
    EXPECT_NEAR(RecTool::Geo::distanceM(start, east) / (2 * Step), Sim::MetresPerDegreeEast, 0.1);
}

#if defined(__linux__)
TEST(GeoJsonOfTheSimulator, AFullDiskIsTold)
{
    const QTemporaryDir folder;
    const QString file = recorded(folder.path(), {"sim", "--duration", "2s"});
    const ProgramResult result =
        runProgram("sh", {"-c", QStringLiteral("%1 map %2 --geojson > /dev/full").arg(RECTOOL, file)});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.err, testing::HasSubstr("the output could not be written: No space left on device"));
}
#endif

}  // namespace
