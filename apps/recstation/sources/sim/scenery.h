// The simulated station: its constants, and what there is to receive: transmitters on a plane, and a vehicle that
// drives among them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "exactmath.h"

namespace RecStation::Sim {

// Keys of the receiver's mode: how the recorder tells RF from IF operation.
constexpr std::int32_t ScanKey = 5;
constexpr std::int32_t MonitorKey = 23;
constexpr std::int32_t DirectionFindingKey = 24;

// The band that is scanned.
constexpr double BandStartHz = 420e6;
constexpr double BandStepHz = 25e3;
constexpr std::size_t BandChannels = 1601;
constexpr double BandStopHz = BandStartHz + BandStepHz * (BandChannels - 1);

// The part of it that the direction finder watches.
constexpr double FinderStartHz = 430e6;
constexpr std::size_t FinderChannels = 401;

constexpr std::size_t IfChannels = 801;

constexpr double NoiseFloorDb = -107;          ///< dBm in one channel of the band
constexpr double IfNoiseFloorDb = -121;        ///< dBm in one channel of the IF spectrum
constexpr double FieldStrengthFactorDb = 124;  ///< from dBm to dBuV/m

// Where the vehicle starts; degrees.
constexpr double OriginLatitude = 49.45;
constexpr double OriginLongitude = 11.08;

// Of the WGS84 ellipsoid at the start: bearings on the plane are then those on a map, but for the meridians'
// convergence.
constexpr double MetresPerDegreeNorth = 111'218.4;
constexpr double MetresPerDegreeEast = 72'510.3;

/// Metres from the start of the route.
struct Place {
    double east = 0;
    double north = 0;
};

struct Transmitter {
    double frequencyHz = 0;
    double widthHz = 0;
    double powerDb = 0;  ///< level at a distance of 1 km, dBm
    Place place;
    double longestOnMs = 0;  ///< 0: always on, otherwise bursts of up to this length
    bool on = true;
    unsigned long long nextSwitchMs = 0;
};

/// Drives around a rectangle at varying speed.
class Vehicle {
public:
    void drive(double seconds, Exact::Random& random);

    [[nodiscard]] const Place& place() const { return m_place; }
    [[nodiscard]] double headingDeg() const { return m_headingDeg; }
    [[nodiscard]] double speed() const { return m_speed; }  ///< metres a second
    [[nodiscard]] double latitude() const;                  ///< degrees
    [[nodiscard]] double longitude() const;                 ///< degrees

private:
    Place m_place;
    double m_headingDeg = 0;
    double m_speed = 12;
    std::size_t m_target = 1;  // corner that it drives to
};

/// Everything follows from the seed and from the order of the calls.
class Scenery {
public:
    explicit Scenery(std::uint64_t seed);

    /// Switches the bursts; times never go backwards.
    void advanceTo(unsigned long long ms);
    void drive(double seconds) { m_vehicle.drive(seconds, m_random); }

    [[nodiscard]] Exact::Random& random() { return m_random; }
    [[nodiscard]] const Vehicle& vehicle() const { return m_vehicle; }
    [[nodiscard]] const std::vector<Transmitter>& transmitters() const { return m_transmitters; }

    [[nodiscard]] double levelDb(const Transmitter& transmitter);           ///< at the vehicle, with fading
    [[nodiscard]] double bearingDeg(const Transmitter& transmitter) const;  ///< from the vehicle's nose, 0..360

    /// The levels of a sweep over the band; the hopping transmitter is met where it happens to be.
    void sweepBand(std::span<float> cells);
    /// The levels around a transmitter; spanHz wide.
    void sweepAround(const Transmitter& centre, double spanHz, std::span<float> cells);

private:
    void addSignal(std::span<float> cells, double startHz, double stepHz, double centreHz, double widthHz,
                   double levelDb);
    void addHops(std::span<float> cells);

    Exact::Random m_random;
    Vehicle m_vehicle;
    std::vector<Transmitter> m_transmitters;
    double m_modulationDeg = 0;
};

}  // namespace RecStation::Sim
