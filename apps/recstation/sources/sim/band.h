// The constants of the simulated station.
#pragma once

#include <cstddef>
#include <cstdint>

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

}  // namespace RecStation::Sim
