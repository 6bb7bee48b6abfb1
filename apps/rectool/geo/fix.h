// Which bearings belong together, and where a transmitter is of which bearings were taken at several positions. Knows
// nothing of recordings and output.
//
// Bearings are taken to have independent Gaussian errors of one standard deviation. The fix is the most likely position
// (the least sum of squared errors, azimuths being those of geodesics on the WGS84 ellipsoid), found by damped
// Gauss-Newton steps from the best crossing of two lines. Bearings that are off by more than 2.5 standard deviations
// pull with constant force (Huber), so that a few reflections do not carry the fix away.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

#include "geodesic.h"

namespace RecTool::Geo {

struct Sighting {
    std::int64_t transmitter = 0;   ///< any number that tells transmitters apart
    unsigned long long timeUs = 0;  ///< when the bearing was taken
};

/// The numbers of the sightings that belong together, by time. A group begins with the first sighting that is in none
/// and takes all of its transmitter that come less than the window later. Groups stand in the order of their
/// transmitters, then of their times.
[[nodiscard]] std::vector<std::vector<std::size_t>> groupSightings(const std::vector<Sighting>& sightings,
                                                                   unsigned long long windowUs);

struct FixSettings {
    double sigmaDeg = 3;         ///< standard deviation of a bearing
    double farthestM = 1'000e3;  ///< a fix that is farther from all positions is none
};

/// Positions nearer to each other than this are one: nothing can be crossed from them.
constexpr double LeastBaseM = 5;
/// The probability that the ellipse of a fix stands for.
constexpr double Confidence = 0.95;

struct Fix {
    Position position;
    Ellipse ellipse;            ///< holds the transmitter with a probability of Confidence
    std::size_t bearings = 0;   ///< that were used: all
    std::size_t positions = 0;  ///< different ones, where they were taken
    std::size_t outliers = 0;   ///< bearings that are off by more than 2.5 standard deviations
    double rmsErrorDeg = 0;     ///< of the bearings, seen from the fix
    /// Squared errors by degree of freedom, in variances of a bearing: about 1 where the bearings are as good as
    /// assumed. Nothing for two bearings, which always agree. The ellipse is enlarged where it is above 1.
    std::optional<double> chi2PerDof;
};

/// Why there is no fix.
enum class NoFix : std::uint8_t {
    OnePosition,    ///< all bearings were taken at one position
    NoCrossing,     ///< no two lines cross before both positions: they diverge or run parallel
    TooFar,         ///< the lines meet only far away
    Undetermined,   ///< the lines cross at so flat an angle that the distance is as uncertain as it is long
    AtPosition,     ///< the lines meet where one of them begins; there a bearing can say nothing
    Contradictory,  ///< too many bearings point away from where the others meet
    NotConverged,   ///< the search came to no end
};

/// Estimates the position of one transmitter that does not move.
[[nodiscard]] std::variant<Fix, NoFix> estimateFix(const std::vector<LineOfBearing>& bearings,
                                                   const FixSettings& settings);

}  // namespace RecTool::Geo
