// The table of transmitters, the vehicle's way round the block, signals and noise.
#include "scenery.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "band.h"

namespace recstation::sim {

namespace {

// A block of streets; the vehicle turns at its corners.
constexpr std::array<Place, 4> corners = {{{0, 0}, {0, 900}, {1400, 900}, {1400, 0}}};

struct TransmitterRow {
    double frequencyHz;
    double widthHz;
    double powerDb;
    Place place;
    double longestOnMs;
};

constexpr std::array transmitterRows = {
    TransmitterRow{422.500e6, 25e3, -62, {-2600, 1800}, 0},  // carriers
    TransmitterRow{427.125e6, 50e3, -70, {3900, 5200}, 0},
    TransmitterRow{431.700e6, 25e3, -58, {2400, 2900}, 0},
    TransmitterRow{438.650e6, 25e3, -66, {-1900, -3300}, 0},
    TransmitterRow{451.000e6, 200e3, -72, {6100, -800}, 0},
    TransmitterRow{457.375e6, 100e3, -75, {-5200, 4100}, 0},
    TransmitterRow{433.500e6, 25e3, -55, {900, -1500}, 6'000},  // bursts
    TransmitterRow{436.225e6, 25e3, -60, {3100, 700}, 3'000},
    TransmitterRow{444.800e6, 25e3, -64, {-1200, 2500}, 9'000},
};

constexpr double hopPowerDb = -85;
constexpr double hopWidthHz = 50e3;
constexpr double hopStartHz = 440e6;
constexpr double hopStepHz = 100e3;
constexpr std::uint32_t hopChannels = 64;
constexpr std::size_t hopsPerSweep = 5;

}  // namespace

void Vehicle::drive(double seconds, exact::Random& random)
{
    constexpr double slowest = 6;
    constexpr double fastest = 16;
    constexpr double turnDegPerSecond = 40;
    constexpr double half = 180;
    m_speed = std::clamp(m_speed + random.uniform(-1, 1), slowest, fastest);
    const Place& target = corners.at(m_target);
    const double east = target.east - m_place.east;
    const double north = target.north - m_place.north;
    const double distance = std::sqrt(east * east + north * north);
    const double way = std::min(distance, m_speed * seconds);
    if (distance > 0) {
        m_place.east += east / distance * way;
        m_place.north += north / distance * way;
    }
    if (way >= distance) {
        m_target = (m_target + 1) % corners.size();
    }
    // The nose follows the way, but not at once.
    const double turn = exact::wrapDeg(exact::azimuthDeg(east, north) - m_headingDeg + half) - half;
    const double most = turnDegPerSecond * seconds;
    m_headingDeg = exact::wrapDeg(m_headingDeg + std::clamp(turn, -most, most));
}

double Vehicle::latitude() const
{
    return originLatitude + m_place.north / metresPerDegreeNorth;
}

double Vehicle::longitude() const
{
    return originLongitude + m_place.east / metresPerDegreeEast;
}

Scenery::Scenery(std::uint64_t seed) : m_random(seed)
{
    for (const TransmitterRow& row : transmitterRows) {
        Transmitter transmitter;
        transmitter.frequencyHz = row.frequencyHz;
        transmitter.widthHz = row.widthHz;
        transmitter.powerDb = row.powerDb;
        transmitter.place = row.place;
        transmitter.longestOnMs = row.longestOnMs;
        transmitter.on = row.longestOnMs == 0;
        m_transmitters.push_back(transmitter);
    }
}

void Scenery::advanceTo(unsigned long long ms)
{
    constexpr double shortestMs = 300;
    constexpr double pauseFactor = 3;
    for (Transmitter& transmitter : m_transmitters) {
        while (transmitter.longestOnMs > 0 && transmitter.nextSwitchMs <= ms) {
            transmitter.on = !transmitter.on;
            const double longest = transmitter.longestOnMs * (transmitter.on ? 1 : pauseFactor);
            transmitter.nextSwitchMs += static_cast<unsigned long long>(m_random.uniform(shortestMs, longest));
        }
    }
}

double Scenery::levelDb(const Transmitter& transmitter)
{
    constexpr double metresPerKilometre = 1000;
    constexpr double nearest = 0.01;
    const double east = (transmitter.place.east - m_vehicle.place().east) / metresPerKilometre;
    const double north = (transmitter.place.north - m_vehicle.place().north) / metresPerKilometre;
    const double squaredDistance = std::max(east * east + north * north, nearest);
    return transmitter.powerDb - 10 * exact::log10(squaredDistance) + m_random.bell();
}

double Scenery::bearingDeg(const Transmitter& transmitter) const
{
    const double azimuth = exact::azimuthDeg(transmitter.place.east - m_vehicle.place().east,
                                             transmitter.place.north - m_vehicle.place().north);
    return exact::wrapDeg(azimuth - m_vehicle.headingDeg());
}

// A parabola in decibels, as a narrow-band signal looks behind a Gaussian filter.
void Scenery::addSignal(std::span<float> cells, double startHz, double stepHz, double centreHz, double widthHz,
                        double levelDb)
{
    constexpr double dropAtEdgeDb = 12;
    constexpr double reach = 2;  // half widths
    constexpr double ripple = 0.4;
    const double halfWidth = widthHz / 2;
    const double last = static_cast<double>(cells.size()) - 1;
    const double low = std::clamp(exact::floor((centreHz - reach * halfWidth - startHz) / stepHz), 0.0, last);
    const double high = std::clamp(exact::floor((centreHz + reach * halfWidth - startHz) / stepHz), 0.0, last);
    for (auto i = static_cast<std::size_t>(low); i <= static_cast<std::size_t>(high); ++i) {
        const double offset = (startHz + stepHz * static_cast<double>(i) - centreHz) / halfWidth;
        const double level = levelDb - dropAtEdgeDb * offset * offset + ripple * m_random.bell();
        cells[i] = std::max(cells[i], static_cast<float>(level));
    }
}

// Each hop is met only while the sweep passes its part of the band.
void Scenery::addHops(std::span<float> cells)
{
    for (std::size_t hop = 0; hop < hopsPerSweep; ++hop) {
        const double frequency = hopStartHz + hopStepHz * m_random.below(hopChannels);
        const double position = (frequency - bandStartHz) / (bandStopHz - bandStartHz);
        if (exact::floor(position * hopsPerSweep) == static_cast<double>(hop)) {
            addSignal(cells, bandStartHz, bandStepHz, frequency, hopWidthHz, hopPowerDb + 2 * m_random.bell());
        }
    }
}

void Scenery::sweepBand(std::span<float> cells)
{
    constexpr double noiseSpreadDb = 1.5;
    for (float& cell : cells) {
        cell = static_cast<float>(noiseFloorDb + noiseSpreadDb * m_random.bell());
    }
    for (const Transmitter& transmitter : m_transmitters) {
        if (transmitter.on) {
            addSignal(cells, bandStartHz, bandStepHz, transmitter.frequencyHz, transmitter.widthHz,
                      levelDb(transmitter));
        }
    }
    addHops(cells);
}

void Scenery::sweepAround(const Transmitter& centre, double spanHz, std::span<float> cells)
{
    constexpr double noiseSpreadDb = 2;
    constexpr double modulationStepDeg = 67;
    constexpr double deviation = 0.25;  // of the signal's width
    constexpr double occupancy = 0.6;   // of the width at one moment
    const double step = spanHz / static_cast<double>(cells.size() - 1);
    const double start = centre.frequencyHz - spanHz / 2;
    for (float& cell : cells) {
        cell = static_cast<float>(ifNoiseFloorDb + noiseSpreadDb * m_random.bell());
    }
    m_modulationDeg = exact::wrapDeg(m_modulationDeg + modulationStepDeg * m_random.uniform(0, 1));
    for (const Transmitter& transmitter : m_transmitters) {
        const double frequency =
            transmitter.frequencyHz + deviation * transmitter.widthHz * exact::sine(m_modulationDeg);
        const bool inSpan = std::fabs(transmitter.frequencyHz - centre.frequencyHz) < spanHz;
        if (transmitter.on && inSpan) {
            addSignal(cells, start, step, frequency, occupancy * transmitter.widthHz, levelDb(transmitter));
        }
    }
}

}  // namespace recstation::sim
