// The table of transmitters, the vehicle's way round the block, signals and noise.
#include "scenery.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace RecStation::Sim {

namespace {

// A block of streets; the vehicle turns at its corners.
constexpr std::array<Place, 4> Corners = {{{0, 0}, {0, 900}, {1400, 900}, {1400, 0}}};

constexpr std::array Transmitters = {
    Transmitter{422.500e6, 25e3, -62, {-2600, 1800}},  // carriers
    Transmitter{427.125e6, 50e3, -70, {3900, 5200}},
    Transmitter{431.700e6, 25e3, -58, {2400, 2900}},
    Transmitter{438.650e6, 25e3, -66, {-1900, -3300}},
    Transmitter{451.000e6, 200e3, -72, {6100, -800}},
    Transmitter{457.375e6, 100e3, -75, {-5200, 4100}},
    Transmitter{433.500e6, 25e3, -55, {900, -1500}, 6'000, false},  // bursts
    Transmitter{436.225e6, 25e3, -60, {3100, 700}, 3'000, false},
    Transmitter{444.800e6, 25e3, -64, {-1200, 2500}, 9'000, false},
};

constexpr double HopPowerDb = -85;
constexpr double HopWidthHz = 50e3;
constexpr double HopStartHz = 440e6;
constexpr double HopStepHz = 100e3;
constexpr std::uint32_t HopChannels = 64;
constexpr std::size_t HopsPerSweep = 5;

}  // namespace

void Vehicle::drive(double seconds, Exact::Random& random)
{
    constexpr double Slowest = 6;
    constexpr double Fastest = 16;
    constexpr double TurnDegPerSecond = 40;
    constexpr double Half = 180;
    m_speed = std::clamp(m_speed + random.uniform(-1, 1), Slowest, Fastest);
    const Place& target = Corners.at(m_target);
    const double east = target.east - m_place.east;
    const double north = target.north - m_place.north;
    const double distance = std::sqrt(east * east + north * north);
    const double way = std::min(distance, m_speed * seconds);
    if (distance > 0) {
        m_place.east += east / distance * way;
        m_place.north += north / distance * way;
    }
    if (way >= distance) {
        m_target = (m_target + 1) % Corners.size();
    }
    // The nose follows the way, but not at once.
    const double turn = Exact::wrapDeg(Exact::azimuthDeg(east, north) - m_headingDeg + Half) - Half;
    const double most = TurnDegPerSecond * seconds;
    m_headingDeg = Exact::wrapDeg(m_headingDeg + std::clamp(turn, -most, most));
}

double Vehicle::latitude() const
{
    return OriginLatitude + m_place.north / MetresPerDegreeNorth;
}

double Vehicle::longitude() const
{
    return OriginLongitude + m_place.east / MetresPerDegreeEast;
}

Scenery::Scenery(std::uint64_t seed) : m_random(seed), m_transmitters(Transmitters.begin(), Transmitters.end())
{
}

void Scenery::advanceTo(unsigned long long ms)
{
    constexpr double ShortestMs = 300;
    constexpr double PauseFactor = 3;
    for (Transmitter& transmitter : m_transmitters) {
        while (transmitter.longestOnMs > 0 && transmitter.nextSwitchMs <= ms) {
            transmitter.on = !transmitter.on;
            const double longest = transmitter.longestOnMs * (transmitter.on ? 1 : PauseFactor);
            transmitter.nextSwitchMs += static_cast<unsigned long long>(m_random.uniform(ShortestMs, longest));
        }
    }
}

double Scenery::levelDb(const Transmitter& transmitter)
{
    constexpr double MetresPerKilometre = 1000;
    constexpr double Nearest = 0.01;
    const double east = (transmitter.place.east - m_vehicle.place().east) / MetresPerKilometre;
    const double north = (transmitter.place.north - m_vehicle.place().north) / MetresPerKilometre;
    const double squaredDistance = std::max(east * east + north * north, Nearest);
    return transmitter.powerDb - 10 * Exact::log10(squaredDistance) + m_random.bell();
}

double Scenery::bearingDeg(const Transmitter& transmitter) const
{
    const double azimuth = Exact::azimuthDeg(transmitter.place.east - m_vehicle.place().east,
                                             transmitter.place.north - m_vehicle.place().north);
    return Exact::wrapDeg(azimuth - m_vehicle.headingDeg());
}

// A parabola in decibels, as a narrow-band signal looks after a Gaussian filter.
void Scenery::addSignal(std::span<float> cells, double startHz, double stepHz, double centreHz, double widthHz,
                        double levelDb)
{
    constexpr double DropAtEdgeDb = 12;
    constexpr double Reach = 2;  // half widths
    constexpr double Ripple = 0.4;
    const double halfWidth = widthHz / 2;
    const double last = static_cast<double>(cells.size()) - 1;
    const double low = std::clamp(Exact::floor((centreHz - Reach * halfWidth - startHz) / stepHz), 0.0, last);
    const double high = std::clamp(Exact::floor((centreHz + Reach * halfWidth - startHz) / stepHz), 0.0, last);
    for (auto i = static_cast<std::size_t>(low); i <= static_cast<std::size_t>(high); ++i) {
        const double offset = (startHz + stepHz * static_cast<double>(i) - centreHz) / halfWidth;
        const double level = levelDb - DropAtEdgeDb * offset * offset + Ripple * m_random.bell();
        cells[i] = std::max(cells[i], static_cast<float>(level));
    }
}

// Each hop is met only while the sweep passes its part of the band.
void Scenery::addHops(std::span<float> cells)
{
    for (std::size_t hop = 0; hop < HopsPerSweep; ++hop) {
        const double frequency = HopStartHz + HopStepHz * m_random.below(HopChannels);
        const double position = (frequency - BandStartHz) / (BandStopHz - BandStartHz);
        if (Exact::floor(position * HopsPerSweep) == static_cast<double>(hop)) {
            addSignal(cells, BandStartHz, BandStepHz, frequency, HopWidthHz, HopPowerDb + 2 * m_random.bell());
        }
    }
}

void Scenery::sweepBand(std::span<float> cells)
{
    constexpr double NoiseSpreadDb = 1.5;
    for (float& cell : cells) {
        cell = static_cast<float>(NoiseFloorDb + NoiseSpreadDb * m_random.bell());
    }
    for (const Transmitter& transmitter : m_transmitters) {
        if (transmitter.on) {
            addSignal(cells, BandStartHz, BandStepHz, transmitter.frequencyHz, transmitter.widthHz,
                      levelDb(transmitter));
        }
    }
    addHops(cells);
}

void Scenery::sweepAround(const Transmitter& centre, double spanHz, std::span<float> cells)
{
    constexpr double NoiseSpreadDb = 2;
    constexpr double ModulationStepDeg = 67;
    constexpr double Deviation = 0.25;  // of the signal's width
    constexpr double Occupancy = 0.6;   // of the width at one moment
    const double step = spanHz / static_cast<double>(cells.size() - 1);
    const double start = centre.frequencyHz - spanHz / 2;
    for (float& cell : cells) {
        cell = static_cast<float>(IfNoiseFloorDb + NoiseSpreadDb * m_random.bell());
    }
    m_modulationDeg = Exact::wrapDeg(m_modulationDeg + ModulationStepDeg * m_random.uniform(0, 1));
    for (const Transmitter& transmitter : m_transmitters) {
        const double frequency =
            transmitter.frequencyHz + Deviation * transmitter.widthHz * Exact::sine(m_modulationDeg);
        const bool inSpan = std::fabs(transmitter.frequencyHz - centre.frequencyHz) < spanHz;
        if (transmitter.on && inSpan) {
            addSignal(cells, start, step, frequency, Occupancy * transmitter.widthHz, levelDb(transmitter));
        }
    }
}

}  // namespace RecStation::Sim
