// How often a channel is on, and how sure that is.
#pragma once

#include <cstdint>

namespace RecTool {

/// Counts samples of a channel that goes on and off. Successive samples are alike when emissions last longer than the
/// time between samples, so samples are no measure of how much is known; emissions are: from the beginning of one to
/// that of the next is a cycle, and cycles are taken as independent of each other, however long they are and whatever
/// the distribution of their lengths. The part of the time that is on is then a ratio of two sums over cycles, whose
/// variance the cycles tell themselves (the regenerative method of simulation, Crane and Lemoine 1977; the ratio
/// estimate of sampling surveys, Cochran 1977, chapter 6). What is before the first beginning makes one cycle with what
/// is after the last one. Memory: 100 bytes.
class Cycles {
public:
    struct Interval {
        double low = 0;
        double high = 1;
    };

    void add(bool isOn);

    [[nodiscard]] std::uint64_t samples() const { return m_samples; }
    [[nodiscard]] std::uint64_t on() const { return m_on; }
    [[nodiscard]] std::uint64_t emissions() const;  ///< beginnings; one that lasts all the time has none
    /// The part that is on, NaN without a sample.
    [[nodiscard]] double part() const;
    /// Where the part lies that would be found in the long run. Student's distribution for as many cycles as there are,
    /// symmetric in the logarithm of the odds. A channel that never changed counts as one sample, as nothing tells how
    /// long it stays so; one emission as two.
    /// @param confidence between 0 and 1
    [[nodiscard]] Interval interval(double confidence) const;
    /// How many samples like these independent ones are worth; 0 without a sample.
    [[nodiscard]] double independentSamples() const;

private:
    struct Sums {
        double on = 0;
        double length = 0;
        double onSquared = 0;
        double lengthSquared = 0;
        double onLength = 0;
    };
    static void addCycle(Sums& sums, double on, double length);
    [[nodiscard]] Sums closed() const;

    std::uint64_t m_samples = 0;
    std::uint64_t m_on = 0;
    std::uint64_t m_begun = 0;   // emissions whose beginning was seen
    std::uint64_t m_leadOn = 0;  // before the first of them
    std::uint64_t m_leadLength = 0;
    std::uint64_t m_cycleOn = 0;  // since the last one
    std::uint64_t m_cycleLength = 0;
    Sums m_sums;
    bool m_first = false;
    bool m_last = false;
};

/// The number that a variable of Student's distribution does not pass, in either direction, with a probability.
/// @param degrees of freedom, 1 or more
[[nodiscard]] double studentWithin(double probability, std::uint64_t degrees);

}  // namespace RecTool
