// The search for the place that bearings agree on best, and the ellipse around it.
#include "fix.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <set>
#include <utility>

#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/Math.hpp>

namespace RecTool::Geo {

namespace {

using GeographicLib::Geodesic;

constexpr double DegPerRad = 180 / std::numbers::pi;
constexpr double HalfCircleDeg = 180;
constexpr double EarthRadiusM = 6'371'000;
constexpr double NoDirectionM = 1e-3;  // nearer to a position than this there is no direction to speak of
constexpr double HuberLimit = 2.5;     // standard deviations

const Geodesic& earth()
{
    return Geodesic::WGS84();
}

/// The difference of two directions, -180 to 180.
double turnDeg(double fromDeg, double toDeg)
{
    return GeographicLib::Math::AngDiff(fromDeg, toDeg);
}

double square(double value)
{
    return value * value;
}

/// One bearing as seen with a transmitter assumed somewhere.
struct Sight {
    double errorDeg = 0;   // measured less expected
    double eastDeg = 0;    // how much the expected azimuth turns when the transmitter moves 1 m east,
    double northDeg = 0;   // and 1 m north
    double distanceM = 0;  // to the transmitter
};

/// @param leastM nearer than this the azimuth does not turn faster
Sight sight(const LineOfBearing& bearing, const Position& transmitter, double leastM)
{
    double expectedDeg = 0;
    double arrivalDeg = 0;
    double reducedM = 0;  // sideways metres at the transmitter for each radian at the position
    Sight seen;
    earth().Inverse(bearing.from.latitudeDeg, bearing.from.longitudeDeg, transmitter.latitudeDeg,
                    transmitter.longitudeDeg, seen.distanceM, expectedDeg, arrivalDeg, reducedM);
    const double degPerM = DegPerRad / std::max(reducedM, leastM);
    seen.errorDeg = turnDeg(expectedDeg, bearing.azimuthDeg);
    seen.eastDeg = std::cos(arrivalDeg / DegPerRad) * degPerM;
    seen.northDeg = -std::sin(arrivalDeg / DegPerRad) * degPerM;
    return seen;
}

/// Huber's weight of an error: 1 as far as errors of Gaussian bearings go, then less.
double weight(double errorDeg, double sigmaDeg)
{
    const double size = std::abs(errorDeg) / sigmaDeg;
    return size <= HuberLimit ? 1 : HuberLimit / size;
}

/// The sum that is least at the fix.
double loss(double errorDeg, double sigmaDeg)
{
    const double size = std::abs(errorDeg) / sigmaDeg;
    return size <= HuberLimit ? square(size) : HuberLimit * (2 * size - HuberLimit);
}

double lossAt(const Position& transmitter, const std::vector<LineOfBearing>& bearings, double sigmaDeg)
{
    double sum = 0;
    for (const LineOfBearing& bearing : bearings) {
        sum += loss(sight(bearing, transmitter, NoDirectionM).errorDeg, sigmaDeg);
    }
    return sum;
}

/// All bearings with a transmitter assumed somewhere: the normal equations of a step to a better place.
struct Normal {
    double loss = 0;
    double chi2 = 0;  // weighted
    double ee = 0;    // information: 1/m^2 east east,
    double en = 0;    // east north,
    double nn = 0;    // north north
    double east = 0;  // right-hand side
    double north = 0;
    double squaresDeg2 = 0;  // of the errors, not weighted
    double nearestM = std::numeric_limits<double>::infinity();
    double farthestM = 0;
    std::size_t outliers = 0;
    std::size_t pointingAway = 0;
    std::size_t atPosition = 0;  // taken where the transmitter is assumed
};

Normal normalAt(const Position& transmitter, const std::vector<LineOfBearing>& bearings, double sigmaDeg, double leastM)
{
    Normal sum;
    const double precision = 1 / square(sigmaDeg);
    for (const LineOfBearing& bearing : bearings) {
        const Sight seen = sight(bearing, transmitter, leastM);
        const double weighted = precision * weight(seen.errorDeg, sigmaDeg);
        sum.loss += loss(seen.errorDeg, sigmaDeg);
        sum.ee += weighted * seen.eastDeg * seen.eastDeg;
        sum.en += weighted * seen.eastDeg * seen.northDeg;
        sum.nn += weighted * seen.northDeg * seen.northDeg;
        sum.east += weighted * seen.eastDeg * seen.errorDeg;
        sum.north += weighted * seen.northDeg * seen.errorDeg;
        sum.squaresDeg2 += square(seen.errorDeg);
        sum.nearestM = std::min(sum.nearestM, seen.distanceM);
        sum.farthestM = std::max(sum.farthestM, seen.distanceM);
        sum.outliers += std::abs(seen.errorDeg) > HuberLimit * sigmaDeg ? 1U : 0U;
        sum.pointingAway += std::abs(seen.errorDeg) > HalfCircleDeg / 2 ? 1U : 0U;
        sum.atPosition += seen.distanceM < LeastBaseM ? 1U : 0U;
    }
    return sum;
}

struct Step {
    double eastM = 0;
    double northM = 0;
    [[nodiscard]] double lengthM() const { return std::hypot(eastM, northM); }
};

/// Solves the normal equations, damped after Levenberg and Marquardt.
Step solve(const Normal& normal, double damping)
{
    const double ee = normal.ee * (1 + damping);
    const double nn = normal.nn * (1 + damping);
    const double determinant = ee * nn - square(normal.en);
    return {(nn * normal.east - normal.en * normal.north) / determinant,
            (ee * normal.north - normal.en * normal.east) / determinant};
}

Position moved(const Position& position, const Step& step)
{
    return endOf({position, std::atan2(step.eastM, step.northM) * DegPerRad}, step.lengthM());
}

/// The place of least loss near a start.
class Search {
public:
    Search(const std::vector<LineOfBearing>& bearings, const FixSettings& settings, const Position& start)
        : m_bearings(bearings),
          m_settings(settings),
          m_place(start),
          m_normal(normalAt(start, bearings, sigma(), NoDirectionM))
    {
    }

    /// @return nothing when the least loss was found
    std::optional<NoFix> run()
    {
        constexpr int MostSteps = 200;
        for (int i = 0; i < MostSteps; ++i) {
            if (m_normal.nearestM > m_settings.farthestM) {
                return NoFix::TooFar;
            }
            Step step = solve(m_normal, m_damping);
            const double lengthM = step.lengthM();
            if (!std::isfinite(lengthM)) {
                return NoFix::Undetermined;  // all lines are one
            }
            if (lengthM <= toleranceM()) {
                return std::nullopt;
            }
            tryStep(shortened(step, lengthM));
        }
        return NoFix::NotConverged;
    }
    [[nodiscard]] const Position& place() const { return m_place; }

private:
    [[nodiscard]] double sigma() const { return m_settings.sigmaDeg; }
    /// Far below any ellipse, and above what rounding can do.
    [[nodiscard]] double toleranceM() const
    {
        constexpr double Relative = 1e-9;
        constexpr double LeastM = 1e-5;
        return LeastM + Relative * m_normal.farthestM;
    }
    /// Steps are good as far as the azimuths are about linear.
    [[nodiscard]] Step shortened(const Step& step, double lengthM) const
    {
        const double mostM = m_normal.farthestM / 2;
        const double factor = lengthM > mostM ? mostM / lengthM : 1;
        return {step.eastM * factor, step.northM * factor};
    }
    void tryStep(const Step& step)
    {
        constexpr double Change = 10;
        constexpr double Least = 1e-9;
        const Position next = moved(m_place, step);
        const Normal normal = normalAt(next, m_bearings, sigma(), NoDirectionM);
        if (normal.loss <= m_normal.loss) {
            m_place = next;
            m_normal = normal;
            m_damping = m_damping > Least ? m_damping / Change : 0;
        } else {
            m_damping = std::max(m_damping * Change, Least);
        }
    }

    const std::vector<LineOfBearing>& m_bearings;
    const FixSettings& m_settings;
    Position m_place;
    Normal m_normal;
    double m_damping = 1e-3;
};

/// Where two lines cross before both positions. The triangle of the base and the two lines is solved on a sphere,
/// with angles from the ellipsoid: near enough to search from.
std::optional<Position> crossing(const LineOfBearing& one, const LineOfBearing& other, double farthestM)
{
    double baseM = 0;
    double departureDeg = 0;
    double arrivalDeg = 0;
    earth().Inverse(one.from.latitudeDeg, one.from.longitudeDeg, other.from.latitudeDeg, other.from.longitudeDeg, baseM,
                    departureDeg, arrivalDeg);
    const double atOne = turnDeg(departureDeg, one.azimuthDeg) / DegPerRad;
    const double atOther = turnDeg(arrivalDeg, other.azimuthDeg) / DegPerRad;
    const bool oneSide = atOne * atOther > 0;
    if (baseM < LeastBaseM || !oneSide) {
        return std::nullopt;
    }
    const double base = baseM / EarthRadiusM;
    const double a = std::abs(atOne);
    const double b = std::numbers::pi - std::abs(atOther);
    const double distance = std::atan2(std::sin(base) * std::sin(b),
                                       std::cos(base) * std::cos(a) * std::sin(b) + std::sin(a) * std::cos(b));
    const bool inFront = distance > 0 && distance * EarthRadiusM <= farthestM;
    return inFront ? std::optional(endOf(one, distance * EarthRadiusM)) : std::nullopt;
}

/// One line for each of at most so many positions, evenly taken: the mean of the bearings taken there.
std::vector<LineOfBearing> representatives(std::vector<LineOfBearing> bearings, std::size_t most)
{
    const auto byPosition = [](const LineOfBearing& a, const LineOfBearing& b) {
        return std::pair(a.from.latitudeDeg, a.from.longitudeDeg) < std::pair(b.from.latitudeDeg, b.from.longitudeDeg);
    };
    std::stable_sort(bearings.begin(), bearings.end(), byPosition);
    std::vector<LineOfBearing> means;
    for (auto begin = bearings.begin(); begin != bearings.end();) {
        const auto end = std::upper_bound(begin, bearings.end(), *begin, byPosition);
        double east = 0;
        double north = 0;
        for (auto bearing = begin; bearing != end; ++bearing) {
            east += std::sin(bearing->azimuthDeg / DegPerRad);
            north += std::cos(bearing->azimuthDeg / DegPerRad);
        }
        means.push_back({begin->from, std::atan2(east, north) * DegPerRad});
        begin = end;
    }
    if (means.size() <= most) {
        return means;
    }
    std::vector<LineOfBearing> taken;
    for (std::size_t i = 0; i < most; ++i) {
        taken.push_back(means[i * (means.size() - 1) / (most - 1)]);
    }
    return taken;
}

/// The crossing of two lines that all lines agree with best.
std::optional<Position> bestCrossing(const std::vector<LineOfBearing>& bearings, const FixSettings& settings)
{
    constexpr std::size_t MostLines = 24;  // 276 pairs
    const std::vector<LineOfBearing> lines = representatives(bearings, MostLines);
    std::optional<Position> best;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        for (std::size_t j = i + 1; j < lines.size(); ++j) {
            const std::optional<Position> place = crossing(lines[i], lines[j], settings.farthestM);
            const double sum = place ? lossAt(*place, lines, settings.sigmaDeg) : least;
            if (sum < least) {
                least = sum;
                best = place;
            }
        }
    }
    return best;
}

bool fromOnePosition(const std::vector<LineOfBearing>& bearings)
{
    return std::all_of(bearings.begin(), bearings.end(), [&](const LineOfBearing& bearing) {
        return bearing.from == bearings.front().from || distanceM(bearings.front().from, bearing.from) < LeastBaseM;
    });
}

/// Of the inverse of the information, enlarged.
Ellipse ellipseOf(const Normal& normal, double scale)
{
    const double determinant = normal.ee * normal.nn - square(normal.en);
    const double ee = normal.nn / determinant;  // variances and covariance, m^2
    const double nn = normal.ee / determinant;
    const double en = -normal.en / determinant;
    const double mean = (ee + nn) / 2;
    const double spread = std::hypot((ee - nn) / 2, en);
    const double quantile = -2 * std::log(1 - Confidence);  // of chi squared with two degrees of freedom
    const double axisDeg = std::atan2(2 * en, nn - ee) / 2 * DegPerRad;
    // The lesser variance from the product of both, which does not lose digits.
    const double greater = mean + spread;
    const double lesser = 1 / (determinant * greater);
    return {std::sqrt(quantile * scale * greater), std::sqrt(quantile * scale * lesser),
            axisDeg < 0 ? axisDeg + HalfCircleDeg : axisDeg};
}

std::size_t countPositions(const std::vector<LineOfBearing>& bearings)
{
    std::set<std::pair<double, double>> positions;
    for (const LineOfBearing& bearing : bearings) {
        positions.emplace(bearing.from.latitudeDeg, bearing.from.longitudeDeg);
    }
    return positions.size();
}

}  // namespace

std::vector<std::vector<std::size_t>> groupSightings(const std::vector<Sighting>& sightings,
                                                     unsigned long long windowUs)
{
    std::vector<std::size_t> order(sightings.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return std::pair(sightings[a].transmitter, sightings[a].timeUs) <
               std::pair(sightings[b].transmitter, sightings[b].timeUs);
    });
    std::vector<std::vector<std::size_t>> groups;
    for (const std::size_t i : order) {
        const bool joins = !groups.empty() &&
                           sightings[groups.back().front()].transmitter == sightings[i].transmitter &&
                           sightings[i].timeUs - sightings[groups.back().front()].timeUs < windowUs;
        if (!joins) {
            groups.emplace_back();
        }
        groups.back().push_back(i);
    }
    return groups;
}

std::variant<Fix, NoFix> estimateFix(const std::vector<LineOfBearing>& bearings, const FixSettings& settings)
{
    constexpr std::size_t Unknowns = 2;
    constexpr std::size_t MostOdd = 10;  // one bearing in so many may be
    if (fromOnePosition(bearings)) {
        return NoFix::OnePosition;
    }
    const std::optional<Position> start = bestCrossing(bearings, settings);
    if (!start) {
        return NoFix::NoCrossing;
    }
    Search search(bearings, settings, *start);
    if (const std::optional<NoFix> failure = search.run()) {
        return *failure;
    }
    // Where the position is as good as that of a bearing, the bearing tells no more than from the least base.
    const Normal normal = normalAt(search.place(), bearings, settings.sigmaDeg, LeastBaseM);
    if (normal.atPosition * MostOdd > bearings.size()) {
        return NoFix::AtPosition;
    }
    if (normal.pointingAway * MostOdd > bearings.size()) {
        return NoFix::Contradictory;
    }
    Fix fix;
    fix.position = search.place();
    fix.bearings = bearings.size();
    fix.positions = countPositions(bearings);
    fix.outliers = normal.outliers;
    fix.rmsErrorDeg = std::sqrt(normal.squaresDeg2 / static_cast<double>(bearings.size()));
    if (bearings.size() > Unknowns) {
        // Outliers count in full: bearings that do not agree must show.
        fix.chi2PerDof =
            normal.squaresDeg2 / square(settings.sigmaDeg) / static_cast<double>(bearings.size() - Unknowns);
    }
    fix.ellipse = ellipseOf(normal, std::max(1.0, fix.chi2PerDof.value_or(1)));
    // Written so that an ellipse that is no number is none.
    const bool determined = fix.ellipse.semiMajorM <= normal.farthestM;
    return determined ? std::variant<Fix, NoFix>(fix) : NoFix::Undetermined;
}

}  // namespace RecTool::Geo
