// The constants of the simulated station.
#pragma once

#include <cstddef>
#include <cstdint>

namespace recstation::sim {

// Keys of the receiver's mode: how the recorder tells RF from IF operation.
constexpr std::int32_t scanKey = 5;
constexpr std::int32_t monitorKey = 23;
constexpr std::int32_t directionFindingKey = 24;

// The band that is scanned.
constexpr double bandStartHz = 420e6;
constexpr double bandStepHz = 25e3;
constexpr std::size_t bandChannels = 1601;
constexpr double bandStopHz = bandStartHz + bandStepHz * (bandChannels - 1);

// The part of it that the direction finder watches.
constexpr double finderStartHz = 430e6;
constexpr std::size_t finderChannels = 401;

constexpr std::size_t ifChannels = 801;

constexpr double noiseFloorDb = -107;          ///< dBm in one channel of the band
constexpr double ifNoiseFloorDb = -121;        ///< dBm in one channel of the IF spectrum
constexpr double fieldStrengthFactorDb = 124;  ///< from dBm to dBuV/m

// Where the vehicle starts; degrees.
constexpr double originLatitude = 49.45;
constexpr double originLongitude = 11.08;

// Of the WGS84 ellipsoid at the start: bearings on the plane are then those on a map, but for the meridians'
// convergence.
constexpr double metresPerDegreeNorth = 111'218.4;
constexpr double metresPerDegreeEast = 72'510.3;

}  // namespace recstation::sim
