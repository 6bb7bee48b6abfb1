// Sine, logarithm, azimuth and random numbers by series that round alike everywhere.
#include "exactmath.h"

#include <cmath>

namespace RecStation::Exact {

namespace {

constexpr double FullCircle = 360;
constexpr double Pi = 3.14159265358979323846;

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
    return 2 * t * sum * (FullCircle / 2 / Pi);
}

}  // namespace

double floor(double x)
{
    const auto whole = static_cast<double>(static_cast<std::int64_t>(x));
    return whole > x ? whole - 1 : whole;
}

double rounded(double x, double stepsPerUnit)
{
    constexpr double Half = 0.5;
    return floor(x * stepsPerUnit + Half) / stepsPerUnit;
}

double log10(double x)
{
    constexpr double Log10Of2 = 0.30102999566398119521;
    constexpr double Log10OfE = 0.43429448190325182765;
    constexpr double RootOfHalf = 0.70710678118654752440;
    int exponent = 0;
    double mantissa = std::frexp(x, &exponent);  // exact everywhere
    if (mantissa < RootOfHalf) {
        mantissa *= 2;
        --exponent;
    }
    const double natural = 2 * halfLogarithm((mantissa - 1) / (mantissa + 1));
    return exponent * Log10Of2 + natural * Log10OfE;
}

double wrapDeg(double degrees)
{
    const double wrapped = degrees - FullCircle * floor(degrees / FullCircle);
    return wrapped >= FullCircle ? 0 : wrapped;
}

double sine(double degrees)
{
    constexpr double Half = FullCircle / 2;
    constexpr double Quarter = FullCircle / 4;
    double angle = wrapDeg(degrees);
    const double sign = angle >= Half ? -1 : 1;
    angle = angle >= Half ? angle - Half : angle;
    angle = angle > Quarter ? Half - angle : angle;
    const double x = angle * (Pi / Half);
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
    constexpr double Quarter = FullCircle / 4;
    double angle = x <= y ? arctangentDeg(x / y) : Quarter - arctangentDeg(y / x);
    if (north < 0) {
        angle = FullCircle / 2 - angle;
    }
    return wrapDeg(east < 0 ? FullCircle - angle : angle);
}

double Random::uniform(double low, double high)
{
    constexpr unsigned UnusedBits = 11;
    constexpr double Unit = 1.0 / 9007199254740992.0;  // 2^-53
    return low + (high - low) * (static_cast<double>(m_generator() >> UnusedBits) * Unit);
}

std::uint32_t Random::below(std::uint32_t limit)
{
    constexpr unsigned HalfBits = 32;
    return static_cast<std::uint32_t>(((m_generator() >> HalfBits) * limit) >> HalfBits);
}

double Random::bell()
{
    // The sum of four uniform 16-bit numbers, centred and scaled.
    constexpr unsigned PartBits = 16;
    constexpr std::uint64_t PartMask = 0xFFFF;
    constexpr double Centre = 2.0 * 65535;
    constexpr double Scale = 1.73205080756887729353 / 65536;
    std::uint64_t bits = m_generator();
    std::uint64_t sum = 0;
    for (int part = 0; part < 4; ++part) {
        sum += bits & PartMask;
        bits >>= PartBits;
    }
    return (static_cast<double>(sum) - Centre) * Scale;
}

}  // namespace RecStation::Exact
