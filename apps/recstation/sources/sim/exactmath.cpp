// Sine, logarithm, azimuth and random numbers by series that round alike everywhere.
#include "exactmath.h"

#include <cmath>

namespace recstation::exact {

namespace {

constexpr double fullCircle = 360;
constexpr double pi = 3.14159265358979323846;

// atanh-like series of the logarithm: ln((1 + t) / (1 - t)) / 2, for |t| up to 0.18.
double halfLogarithm(double t)
{
    const double square = t * t;
    return t * (1 + square * (1.0 / 3 + square * (1.0 / 5 + square * (1.0 / 7 + square * (1.0 / 9)))));
}

// For 0 .. 1, in degrees.
double arctangentDeg(double x)
{
    // Half the angle first: the series then converges quickly.
    const double t = x / (1 + std::sqrt(1 + x * x));
    const double square = t * t;
    double sum = 0;
    for (int denominator = 17; denominator > 0; denominator -= 2) {
        sum = 1.0 / denominator - square * sum;
    }
    return 2 * t * sum * (fullCircle / 2 / pi);
}

}  // namespace

double floor(double x)
{
    const auto whole = static_cast<double>(static_cast<std::int64_t>(x));
    return whole > x ? whole - 1 : whole;
}

double rounded(double x, double stepsPerUnit)
{
    constexpr double half = 0.5;
    return floor(x * stepsPerUnit + half) / stepsPerUnit;
}

double log10(double x)
{
    constexpr double log10Of2 = 0.30102999566398119521;
    constexpr double log10OfE = 0.43429448190325182765;
    constexpr double rootOfHalf = 0.70710678118654752440;
    int exponent = 0;
    double mantissa = std::frexp(x, &exponent);  // exact everywhere
    if (mantissa < rootOfHalf) {
        mantissa *= 2;
        --exponent;
    }
    const double natural = 2 * halfLogarithm((mantissa - 1) / (mantissa + 1));
    return exponent * log10Of2 + natural * log10OfE;
}

double wrapDeg(double degrees)
{
    const double wrapped = degrees - fullCircle * floor(degrees / fullCircle);
    return wrapped >= fullCircle ? 0 : wrapped;
}

double sine(double degrees)
{
    constexpr double half = fullCircle / 2;
    constexpr double quarter = fullCircle / 4;
    double angle = wrapDeg(degrees);
    const double sign = angle >= half ? -1 : 1;
    angle = angle >= half ? angle - half : angle;
    angle = angle > quarter ? half - angle : angle;
    const double x = angle * (pi / half);
    const double square = x * x;
    double term = x;
    double sum = x;
    for (int n = 1; n <= 6; ++n) {
        term = -term * square / ((2.0 * n) * (2.0 * n + 1));
        sum += term;
    }
    return sign * sum;
}

double azimuthDeg(double east, double north)
{
    const double x = std::fabs(east);
    const double y = std::fabs(north);
    if (x == 0 && y == 0) {
        return 0;
    }
    constexpr double quarter = fullCircle / 4;
    double angle = x <= y ? arctangentDeg(x / y) : quarter - arctangentDeg(y / x);
    if (north < 0) {
        angle = fullCircle / 2 - angle;
    }
    return wrapDeg(east < 0 ? fullCircle - angle : angle);
}

double Random::uniform(double low, double high)
{
    constexpr unsigned unusedBits = 11;
    constexpr double unit = 1.0 / 9007199254740992.0;  // 2^-53
    return low + (high - low) * (static_cast<double>(m_generator() >> unusedBits) * unit);
}

std::uint32_t Random::below(std::uint32_t limit)
{
    constexpr unsigned halfBits = 32;
    return static_cast<std::uint32_t>(((m_generator() >> halfBits) * limit) >> halfBits);
}

double Random::bell()
{
    // The sum of four uniform 16-bit numbers, centred and scaled.
    constexpr unsigned partBits = 16;
    constexpr std::uint64_t partMask = 0xFFFF;
    constexpr double centre = 2.0 * 65535;
    constexpr double scale = 1.73205080756887729353 / 65536;
    std::uint64_t bits = m_generator();
    std::uint64_t sum = 0;
    for (int part = 0; part < 4; ++part) {
        sum += bits & partMask;
        bits >>= partBits;
    }
    return (static_cast<double>(sum) - centre) * scale;
}

}  // namespace recstation::exact
