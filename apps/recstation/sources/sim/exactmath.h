// Functions of the simulator that give the same bits on every machine: made of + - * / and exact steps only.
//
// Their accuracy is that of a simulation, about a millionth.
#pragma once

#include <cstdint>
#include <random>

namespace RecStation::Exact {

[[nodiscard]] double floor(double x);  ///< for |x| below 2^52
/// To a whole number of steps: rounded(x, 10) has one decimal.
[[nodiscard]] double rounded(double x, double stepsPerUnit);
[[nodiscard]] double log10(double x);  ///< x > 0
[[nodiscard]] double sine(double degrees);
[[nodiscard]] double azimuthDeg(double east, double north);  ///< clockwise from north, 0..360; 0 for no direction
[[nodiscard]] double wrapDeg(double degrees);                ///< into 0..360

/// Chance from the generator's raw numbers, whose sequence the language standard fixes.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_generator(seed) {}

    [[nodiscard]] double uniform(double low, double high);
    [[nodiscard]] std::uint32_t below(std::uint32_t limit);  ///< 0 .. limit - 1
    /// Bell-shaped around 0 with a standard deviation of 1, within -3.5 .. 3.5.
    [[nodiscard]] double bell();

private:
    std::mt19937_64 m_generator;
};

}  // namespace RecStation::Exact
