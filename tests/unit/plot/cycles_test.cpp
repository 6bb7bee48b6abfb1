// How sure occupancy is: the interval holds the truth as often as it says, for bursts shorter and longer than a
// revisit.
#include <random>

#include "analysis/cycles.h"
#include "support/testing.h"

using RecTool::Cycles;
using RecTool::studentWithin;

namespace {

/// A channel that is on for a part of the time, in bursts; lengths count in times between two samples.
struct Truth {
    double part;
    double burst;  ///< mean length
    int samples;
    bool isEven = false;  ///< bursts and pauses are evenly distributed around their means, otherwise exponentially
};

Cycles sampled(const Truth& truth, std::uint32_t seed)
{
    std::mt19937 random(seed);
    const double pause = truth.burst * (1 - truth.part) / truth.part;
    const auto length = [&](double mean) {
        return truth.isEven ? std::uniform_real_distribution<double>(0.2 * mean, 1.8 * mean)(random)
                            : std::exponential_distribution<double>(1 / mean)(random);
    };
    Cycles cycles;
    double time = -20 * (truth.burst + pause);  // nothing is left of how it began
    bool isOn = true;
    double until = time + length(truth.burst);
    for (int sample = 0; sample < truth.samples; ++sample) {
        while (until <= sample) {
            isOn = !isOn;
            time = until;
            until = time + length(isOn ? truth.burst : pause);
        }
        cycles.add(isOn);
    }
    return cycles;
}

struct Coverage {
    int held = 0;
    int many = 0;  ///< seeds with 30 emissions or more
    int heldOfMany = 0;
};

Coverage coverageOf(const Truth& truth, std::uint32_t seeds)
{
    constexpr std::uint64_t Many = 30;
    Coverage coverage;
    for (std::uint32_t seed = 0; seed < seeds; ++seed) {
        const Cycles cycles = sampled(truth, seed);
        const Cycles::Interval interval = cycles.interval(0.95);
        const bool isHeld = interval.low <= truth.part && truth.part <= interval.high;
        coverage.held += isHeld ? 1 : 0;
        coverage.many += cycles.emissions() >= Many ? 1 : 0;
        coverage.heldOfMany += cycles.emissions() >= Many && isHeld ? 1 : 0;
    }
    return coverage;
}

Cycles counted(const std::vector<int>& samples)
{
    Cycles cycles;
    for (const int sample : samples) {
        cycles.add(sample != 0);
    }
    return cycles;
}

}  // namespace

TEST(Cycles, TheIntervalHoldsTheTruthAsOftenAsItSays)
{
    constexpr std::uint32_t Seeds = 1000;
    const Truth truths[]{{0.1, 0.3, 2000},     {0.1, 3, 4000},  {0.3, 10, 5000},        {0.5, 2, 1000},
                         {0.02, 0.5, 4000},    {0.9, 10, 8000}, {0.01, 5, 1000},        {0.05, 20, 3000},
                         {0.001, 0.2, 1000},   {0.2, 40, 600},  {0.1, 0.3, 2000, true}, {0.3, 10, 3000, true},
                         {0.05, 3, 1500, true}};
    for (const Truth& truth : truths) {
        const Coverage coverage = coverageOf(truth, Seeds);
        const std::string what = testing::PrintToString(truth.part) + " in bursts of " +
                                 testing::PrintToString(truth.burst) + ", held " + std::to_string(coverage.held) +
                                 ", with many emissions " + std::to_string(coverage.heldOfMany) + " of " +
                                 std::to_string(coverage.many);
        EXPECT_GE(coverage.held, 930) << what;
        if (coverage.many == Seeds) {
            EXPECT_LE(coverage.heldOfMany, 980) << what;
        }
    }
}

TEST(Cycles, ACycleGoesFromTheBeginningOfAnEmissionToTheNext)
{
    const Cycles cycles = counted({0, 0, 1, 1, 0, 1, 0, 0});
    EXPECT_EQ(cycles.samples(), 8U);
    EXPECT_EQ(cycles.on(), 3U);
    EXPECT_EQ(cycles.emissions(), 2U);
    EXPECT_EQ(cycles.part(), 3.0 / 8);
}

TEST(Cycles, WhatIsOnAtBothEndsGoesOn)
{
    EXPECT_EQ(counted({1, 1, 0, 1}).emissions(), 1U);
    EXPECT_EQ(counted({1, 1, 0, 0}).emissions(), 1U);
    EXPECT_EQ(counted({1, 1, 1}).emissions(), 0U);
}

TEST(Cycles, AChannelThatNeverChangedIsKnownLikeOneSample)
{
    const Cycles::Interval off = counted(std::vector<int>(1000, 0)).interval(0.95);
    EXPECT_EQ(off.low, 0);
    EXPECT_NEAR(off.high, 0.975, 1e-12);
    const Cycles::Interval on = counted(std::vector<int>(1000, 1)).interval(0.95);
    EXPECT_NEAR(on.low, 0.025, 1e-12);
    EXPECT_EQ(on.high, 1);
}

TEST(Cycles, SamplesOfOneEmissionCountLittle)
{
    std::vector<int> quick;
    std::vector<int> slow;
    std::mt19937 random(7);
    for (int i = 0; i < 1000; ++i) {
        quick.push_back(random() % 10 < 3 ? 1 : 0);
        slow.push_back(i % 50 > 0 ? slow.back() : random() % 10 < 3 ? 1 : 0);
    }
    EXPECT_GT(counted(quick).independentSamples(), 500);
    EXPECT_LT(counted(slow).independentSamples(), 100);
}

TEST(Student, TheTableOfTheTextbooksComesOut)
{
    constexpr double Digits = 5e-4;
    const std::pair<std::uint64_t, double> table[]{{1, 12.7062}, {2, 4.3027},  {3, 3.1824},   {4, 2.7764},
                                                   {10, 2.2281}, {29, 2.0452}, {200, 1.9719}, {1000, 1.9623}};
    for (const auto& [degrees, t] : table) {
        EXPECT_NEAR(studentWithin(0.95, degrees), t, Digits) << degrees;
    }
    EXPECT_NEAR(studentWithin(0.99, 5), 4.0321, Digits);
    EXPECT_NEAR(studentWithin(0.95, 1'000'000), 1.95997, Digits);
}
