// Sums over cycles, and the interval that they give.
#include "cycles.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace RecTool {

namespace {

constexpr double Pi = 3.14159265358979323846;

/// Abramowitz and Stegun 26.7.3 and 26.7.4: that a variable of Student's distribution lies within +-t.
double probabilityWithin(double t, std::uint64_t degrees)
{
    const double angle = std::atan(t / std::sqrt(static_cast<double>(degrees)));
    const bool isOdd = degrees % 2 == 1;
    const double cosine = std::cos(angle);
    double term = isOdd ? cosine : 1;
    double sum = degrees > 1 ? term : 0;
    for (std::uint64_t k = isOdd ? 3 : 2; k + 2 <= degrees; k += 2) {
        term *= cosine * cosine * static_cast<double>(k - 1) / static_cast<double>(k);
        sum += term;
    }
    return isOdd ? 2 / Pi * (angle + std::sin(angle) * sum) : std::sin(angle) * sum;
}

template <typename Rising>
double whereReached(double wanted, const Rising& rising)
{
    constexpr int Halvings = 80;
    double low = 0;
    double high = 1;
    while (rising(high) < wanted && high < std::numeric_limits<float>::max()) {
        high *= 2;
    }
    for (int i = 0; i < Halvings; ++i) {
        const double middle = (low + high) / 2;
        (rising(middle) < wanted ? low : high) = middle;
    }
    return high;
}

double normalWithin(double probability)
{
    return whereReached(probability, [](double z) { return std::erf(z / std::sqrt(2.0)); });
}

/// Exact for a whole number of samples (Clopper and Pearson 1934), here of one or two.
Cycles::Interval ofFewSamples(double part, std::uint64_t samples, double confidence)
{
    const double tail = (1 - confidence) / 2;
    const double one = std::pow(tail, 1.0 / static_cast<double>(samples));
    return part == 0 ? Cycles::Interval{0, 1 - one} : part == 1 ? Cycles::Interval{one, 1} : Cycles::Interval{0, 1};
}

}  // namespace

double studentWithin(double probability, std::uint64_t degrees)
{
    constexpr std::uint64_t Many = 200;
    if (degrees <= Many) {
        return whereReached(probability, [&](double t) { return probabilityWithin(t, degrees); });
    }
    const double z = normalWithin(probability);
    return z + (z * z * z + z) / (4 * static_cast<double>(degrees));  // Abramowitz and Stegun 26.7.5
}

void Cycles::addCycle(Sums& sums, double on, double length)
{
    sums.on += on;
    sums.length += length;
    sums.onSquared += on * on;
    sums.lengthSquared += length * length;
    sums.onLength += on * length;
}

void Cycles::add(bool isOn)
{
    if (m_samples == 0) {
        m_first = isOn;
    } else if (isOn && !m_last) {
        if (m_begun == 0) {
            m_leadOn = m_cycleOn;
            m_leadLength = m_cycleLength;
        } else {
            addCycle(m_sums, static_cast<double>(m_cycleOn), static_cast<double>(m_cycleLength));
        }
        m_cycleOn = 0;
        m_cycleLength = 0;
        ++m_begun;
    }
    ++m_samples;
    ++m_cycleLength;
    m_on += isOn ? 1U : 0U;
    m_cycleOn += isOn ? 1U : 0U;
    m_last = isOn;
}

std::uint64_t Cycles::emissions() const
{
    return m_begun + (m_samples > 0 && m_first && !m_last ? 1U : 0U);
}

/// All cycles, with the beginning and the end put together to one or two.
Cycles::Sums Cycles::closed() const
{
    Sums sums = m_sums;
    if (m_begun == 0) {
        addCycle(sums, static_cast<double>(m_on), static_cast<double>(m_samples));
    } else if (m_first && !m_last) {
        addCycle(sums, static_cast<double>(m_leadOn), static_cast<double>(m_leadLength));
        addCycle(sums, static_cast<double>(m_cycleOn), static_cast<double>(m_cycleLength));
    } else {
        addCycle(sums, static_cast<double>(m_leadOn + m_cycleOn), static_cast<double>(m_leadLength + m_cycleLength));
    }
    return sums;
}

double Cycles::part() const
{
    return m_samples == 0 ? std::numeric_limits<double>::quiet_NaN()
                          : static_cast<double>(m_on) / static_cast<double>(m_samples);
}

double Cycles::independentSamples() const
{
    constexpr std::uint64_t Fewest = 2;
    const std::uint64_t cycles = emissions();
    if (cycles < Fewest) {
        return static_cast<double>(std::min(m_samples, cycles + 1));
    }
    const auto count = static_cast<double>(cycles);
    const auto all = static_cast<double>(m_samples);
    const double p = part();
    const Sums sums = closed();
    const double squares = sums.onSquared - 2 * p * sums.onLength + p * p * sums.lengthSquared;
    const double variance = std::max(squares, 0.0) * count / (count - 1) / (all * all);
    // Cycles of one length tell nothing of what would be otherwise; so much is enough to say that little is unsure.
    constexpr double MostPerSample = 50;
    const double known = variance > 0 ? p * (1 - p) / variance : std::numeric_limits<double>::infinity();
    return std::min(known, MostPerSample * all) / (1 + 2 / count);
}

Cycles::Interval Cycles::interval(double confidence) const
{
    if (m_samples == 0) {
        return {};
    }
    const std::uint64_t cycles = emissions();
    const double p = part();
    if (cycles < 2 || p == 1) {
        return ofFewSamples(p, cycles + 1, confidence);
    }
    const double deviation = 1 / std::sqrt(independentSamples() * p * (1 - p));  // of the logarithm of the odds
    const double reach = studentWithin(confidence, cycles - 1) * deviation;
    const double odds = std::log(p / (1 - p));
    const auto partOf = [](double logOdds) { return 1 / (1 + std::exp(-logOdds)); };
    return {partOf(odds - reach), partOf(odds + reach)};
}

}  // namespace RecTool
