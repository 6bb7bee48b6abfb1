// The noise floor against plain sorting of pools, and against noise whose level is known.
#include <numeric>
#include <random>
#include <span>

#include "analysis/noisefloor.h"
#include "support/testing.h"

using RecTool::NoiseFloor;

namespace {

constexpr float NoLevel = std::numeric_limits<float>::quiet_NaN();
constexpr double WindowMs = 1000;

struct NoiseSweep {
    std::vector<std::uint32_t> numbers;
    std::vector<float> levels;
    double momentMs = 0;
};

float floorOf(const NoiseFloor& floor, std::size_t channel, double momentMs)
{
    const std::span<const float> floors = floor.at(momentMs);
    return channel < floors.size() ? floors[channel] : NoLevel;
}

std::vector<double> evenFrequencies(double startHz, double stepHz, std::size_t count)
{
    std::vector<double> all;
    for (std::size_t i = 0; i < count; ++i) {
        all.push_back(startHz + stepHz * static_cast<double>(i));
    }
    return all;
}

std::vector<std::uint32_t> allNumbers(const std::vector<double>& frequencies)
{
    std::vector<std::uint32_t> numbers(frequencies.size());
    std::iota(numbers.begin(), numbers.end(), 0U);
    return numbers;
}

/// The lower part of a pool as the header tells it; with a number of levels of which all are kept.
double naiveFloor(const std::vector<double>& hz, const std::vector<NoiseSweep>& sweeps, std::uint32_t channel,
                  double window)
{
    std::vector<std::vector<float>> levels(hz.size());
    for (const NoiseSweep& sweep : sweeps) {
        for (std::size_t i = 0; i < sweep.levels.size(); ++i) {
            if (std::floor(sweep.momentMs / WindowMs) == window && std::isfinite(sweep.levels[i])) {
                levels[sweep.numbers[i]].push_back(sweep.levels[i]);
            }
        }
    }
    std::vector<std::pair<double, std::uint32_t>> below;
    std::vector<std::pair<double, std::uint32_t>> above;
    for (std::uint32_t other = 0; other < hz.size(); ++other) {
        const double away = std::abs(hz[other] - hz[channel]);
        if (other != channel && !levels[other].empty() && away <= std::max(hz[channel] * 0.05, 1e6)) {
            (hz[other] < hz[channel] ? below : above).emplace_back(away, other);
        }
    }
    std::vector<float> pool = levels[channel];
    for (auto* side : {&below, &above}) {
        std::sort(side->begin(), side->end());
        side->resize(std::min<std::size_t>(side->size(), 64));
        for (const auto& [away, other] : *side) {
            pool.insert(pool.end(), levels[other].begin(), levels[other].end());
        }
    }
    std::sort(pool.begin(), pool.end());
    const auto count = static_cast<double>(pool.size());
    const double quartile = pool[static_cast<std::size_t>(count * 0.25)];
    const double tenth = pool[static_cast<std::size_t>(count * 0.1)];
    return quartile + 1.11 * std::min(quartile - tenth, 4.4);
}

/// Power of noise in a channel of a spectrum that is not averaged, in dB of its mean.
float unaveragedNoise(std::mt19937& random)
{
    return static_cast<float>(10 * std::log10(std::exponential_distribution<double>(1)(random)));
}

}  // namespace

TEST(NoiseFloorTest, APoolIsTheChannelAndItsNearNeighboursInTheWindow)
{
    std::mt19937 random(1);
    for (int round = 0; round < 6; ++round) {
        std::vector<double> hz = evenFrequencies(100e6, 25e3, 300);
        for (const double far : {400e6, 400.5e6, 800e6}) {
            hz.push_back(far);
        }
        std::shuffle(hz.begin(), hz.end(), random);
        std::vector<NoiseSweep> sweeps;
        for (int i = 0; i < 60; ++i) {
            NoiseSweep& sweep = sweeps.emplace_back();
            sweep.momentMs = i * 40;
            sweep.numbers = allNumbers(hz);
            for (std::size_t channel = 0; channel < hz.size(); ++channel) {
                const float level =
                    static_cast<float>(random() % 300) / 10 - 120 + static_cast<float>(hz[channel] / 1e7);
                sweep.levels.push_back(random() % 4 == 0 ? NoLevel : level);
            }
        }
        NoiseFloor floor(WindowMs);
        for (const NoiseSweep& sweep : sweeps) {
            floor.add(hz, sweep.numbers, sweep.levels, sweep.momentMs);
        }
        floor.end(hz);
        for (std::uint32_t channel = 0; channel < hz.size(); channel += 7) {
            for (const double window : {0, 1, 2}) {
                constexpr double Tenths = 0.33;  // 0.1 of each percentile
                EXPECT_NEAR(floorOf(floor, channel, window * WindowMs + 500), naiveFloor(hz, sweeps, channel, window),
                            Tenths)
                    << hz[channel] << ' ' << window;
            }
        }
    }
}

TEST(NoiseFloorTest, ItIsTheMiddleOfTheNoiseUnderChannelsThatAreAlwaysOnAndBursts)
{
    std::mt19937 random(2);
    std::normal_distribution<float> averaged(0, 1.5F);
    const std::vector<double> hz = evenFrequencies(430e6, 12.5e3, 400);
    for (const bool isAveraged : {true, false}) {
        NoiseFloor floor(WindowMs);
        for (int i = 0; i < 2000; ++i) {
            std::vector<float> levels;
            const float noise = i < 1000 ? -107.F : -101.F;  // an antenna that was changed
            for (std::size_t channel = 0; channel < hz.size(); ++channel) {
                const bool isOn = channel % 5 == 0 || (channel % 5 == 1 && i % 3 == 0);
                levels.push_back(isOn ? -60 : noise + (isAveraged ? averaged(random) : unaveragedNoise(random)));
            }
            floor.add(hz, allNumbers(hz), levels, i * 10);
        }
        floor.end(hz);
        for (std::uint32_t channel = 0; channel < hz.size(); ++channel) {
            constexpr double Near = 1.5;  // a quarter of the levels are signals
            EXPECT_NEAR(floorOf(floor, channel, 5000), -107, Near);
            EXPECT_NEAR(floorOf(floor, channel, 15'000), -101, Near);
        }
    }
}

TEST(NoiseFloorTest, RangesThatAlternateHaveEachTheirOwn)
{
    std::vector<double> hz = evenFrequencies(100e6, 25e3, 50);
    const std::vector<double> other = evenFrequencies(900e6, 25e3, 50);
    hz.insert(hz.end(), other.begin(), other.end());
    const std::vector<std::uint32_t> all = allNumbers(hz);
    const std::vector<std::uint32_t> low(all.begin(), all.begin() + 50);
    const std::vector<std::uint32_t> high(all.begin() + 50, all.end());
    NoiseFloor floor;
    for (int i = 0; i < 100; ++i) {
        floor.add(hz, i % 2 == 0 ? low : high, std::vector<float>(50, i % 2 == 0 ? -90.F : -110.F), i * 1000);
    }
    floor.end(hz);
    for (std::uint32_t channel = 0; channel < 100; ++channel) {
        EXPECT_NEAR(floorOf(floor, channel, 50'000), channel < 50 ? -90 : -110, 0.2) << channel;
    }
}

TEST(NoiseFloorTest, WhereNothingWasMeasuredItIsThatOfTheNearestWindow)
{
    const std::vector<double> hz = {100e6, 500e6, 900e6};
    NoiseFloor floor(WindowMs);
    EXPECT_TRUE(floor.at(0).empty());
    const auto add = [&](std::uint32_t channel, float level, double momentMs) {
        floor.add(hz, std::vector<std::uint32_t>{channel}, std::vector<float>{level}, momentMs);
    };
    add(0, -100, 0);
    add(0, -90, 10'000);
    add(1, -80, 10'100);
    add(1, -70, 9000);  // late: it counts in the latest window
    add(0, std::numeric_limits<float>::infinity(), 20'000);
    add(2, NoLevel, 20'000);
    floor.end(hz);
    for (const auto& [momentMs, level] : {std::pair(-5e3, -100), {0., -100}, {4e3, -100}, {6e3, -90}, {1e9, -90}}) {
        EXPECT_NEAR(floorOf(floor, 0, momentMs), level, 0.2) << momentMs;
    }
    EXPECT_NEAR(floorOf(floor, 1, 0), -80, 0.2);
    EXPECT_TRUE(std::isnan(floorOf(floor, 2, 20'000)));
    EXPECT_TRUE(std::isnan(floorOf(floor, 3, 0)));
}

TEST(NoiseFloorTest, VeryManyWindowsAreJoined)
{
    const std::vector<double> hz = evenFrequencies(100e6, 1e3, 400);
    const std::vector<std::uint32_t> numbers = allNumbers(hz);
    NoiseFloor floor(WindowMs, 399 * hz.size());
    for (int i = 0; i < 500; ++i) {
        floor.add(hz, numbers, std::vector<float>(hz.size(), i < 250 ? -100.F : -90.F), i * WindowMs);
    }
    floor.end(hz);
    EXPECT_EQ(floor.windowMs(), 2 * WindowMs);
    EXPECT_NEAR(floorOf(floor, 399, 240 * WindowMs), -100, 0.2);
    EXPECT_NEAR(floorOf(floor, 0, 260 * WindowMs), -90, 0.2);
}
