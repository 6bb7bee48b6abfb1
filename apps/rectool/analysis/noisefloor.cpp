// Drawing levels by window, and finding the noise in the pools of neighbours.
#include "noisefloor.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>

namespace RecTool {

namespace {

constexpr float Unknown = std::numeric_limits<float>::quiet_NaN();

/// How many levels lie in each tenth of a decibel. Channels come and go as a pool moves over the frequencies.
class LevelPool {
public:
    void put(std::span<const float> levels) { count(levels, 1); }
    void take(std::span<const float> levels) { count(levels, -1); }

    /// The level that so many of the levels lie below, evenly spread within their tenth.
    [[nodiscard]] double percentile(double fraction) const
    {
        double left = fraction * static_cast<double>(m_count);
        std::size_t group = 0;
        while (group + 1 < Groups && m_groups[group] <= left) {
            left -= m_groups[group++];
        }
        std::size_t bin = group * GroupBins;
        while (bin + 1 < (group + 1) * GroupBins && m_bins[bin] <= left) {
            left -= m_bins[bin++];
        }
        const double part = m_bins[bin] == 0 ? 0 : left / m_bins[bin];
        return LowestDb + (static_cast<double>(bin) + part - 0.5) / PerDb;
    }

private:
    static constexpr double LowestDb = -1311;
    static constexpr double PerDb = 10;
    static constexpr std::size_t GroupBins = 164;
    static constexpr std::size_t Groups = 160;  // up to 1311 dB, beyond what recordings code

    void count(std::span<const float> levels, int step)
    {
        for (const float level : levels) {
            const double place = std::round((double{level} - LowestDb) * PerDb);
            const auto bin = static_cast<std::size_t>(std::clamp(place, 0.0, double{GroupBins * Groups - 1}));
            m_bins[bin] += step;
            m_groups[bin / GroupBins] += step;
            m_count += step;
        }
    }

    std::vector<std::int32_t> m_bins = std::vector<std::int32_t>(GroupBins * Groups);
    std::array<std::int32_t, Groups> m_groups{};
    std::int64_t m_count = 0;
};

/// The middle of the noise at the lower end of a pool.
float middleOfNoise(const LevelPool& pool)
{
    constexpr double Quartile = 0.25;
    constexpr double Tenth = 0.10;
    constexpr double ToMiddle = 1.11;  // in the normal distribution: 0.6745 / (1.2816 - 0.6745)
    constexpr double WidestDb = 4.4;   // of a spectrum that is not averaged
    const double quartile = pool.percentile(Quartile);
    return static_cast<float>(quartile + ToMiddle * std::min(quartile - pool.percentile(Tenth), WidestDb));
}

bool isNear(double hz, double otherHz)
{
    constexpr double Part = 0.05;
    constexpr double LeastHz = 1e6;
    return std::abs(otherHz - hz) <= std::max(std::abs(hz) * Part, LeastHz);
}

/// Fills in what a window does not know from the nearest one that does.
void fillUp(const std::vector<std::pair<double, float*>>& column)
{
    std::ptrdiff_t known = -1;
    const auto count = static_cast<std::ptrdiff_t>(column.size());
    for (std::ptrdiff_t i = 0; i <= count; ++i) {
        if (i < count && std::isnan(*column[static_cast<std::size_t>(i)].second)) {
            continue;
        }
        for (std::ptrdiff_t gap = known + 1; gap < i; ++gap) {
            const double at = column[static_cast<std::size_t>(gap)].first;
            const auto toNext =
                i == count ? std::numeric_limits<double>::infinity() : column[static_cast<std::size_t>(i)].first - at;
            const bool isNext = known < 0 || toNext < at - column[static_cast<std::size_t>(known)].first;
            const std::ptrdiff_t from = isNext ? i : known;
            if (from < count) {
                *column[static_cast<std::size_t>(gap)].second = *column[static_cast<std::size_t>(from)].second;
            }
        }
        known = i;
    }
}

}  // namespace

void NoiseFloor::add(const std::vector<double>& frequencies, std::span<const std::uint32_t> numbers,
                     std::span<const float> levels, double momentMs)
{
    constexpr std::uint64_t Multiplier = 6'364'136'223'846'793'005;  // Knuth's linear congruential generator
    constexpr std::uint64_t Increment = 1'442'695'040'888'963'407;
    constexpr int LowBits = 32;
    const double number = std::floor(momentMs / m_windowMs);
    if (m_isOpen && number > m_number) {
        close(frequencies);
    }
    if (!m_isOpen) {
        m_number = m_windows.empty() ? number : std::max(number, m_windows.back().number + 1);
        m_isOpen = true;
    }
    m_samples.resize(frequencies.size());
    for (std::size_t i = 0; i < levels.size(); ++i) {
        if (!std::isfinite(levels[i]) || numbers[i] >= m_samples.size()) {
            continue;
        }
        Sample& sample = m_samples[numbers[i]];
        std::uint64_t place = sample.seen++;
        if (place >= Kept) {
            m_random = m_random * Multiplier + Increment;
            place = ((m_random >> LowBits) * sample.seen) >> LowBits;
        }
        if (place < Kept) {
            sample.levels[place] = levels[i];
        }
    }
}

void NoiseFloor::close(const std::vector<double>& frequencies)
{
    constexpr std::size_t OnEachSide = 64;
    const std::size_t count = frequencies.size();
    m_samples.resize(count);
    if (m_order.size() != count) {
        m_order.resize(count);
        std::iota(m_order.begin(), m_order.end(), 0U);
        std::sort(m_order.begin(), m_order.end(),
                  [&](std::uint32_t a, std::uint32_t b) { return frequencies[a] < frequencies[b]; });
    }
    std::vector<std::uint32_t> measured;
    std::copy_if(m_order.begin(), m_order.end(), std::back_inserter(measured),
                 [&](std::uint32_t channel) { return m_samples[channel].seen > 0; });
    Window window{m_number, std::vector<float>(count, Unknown)};
    LevelPool pool;
    const auto levelsOf = [&](std::size_t place) {
        const Sample& sample = m_samples[measured[place]];
        return std::span(sample.levels).first(std::min<std::size_t>(sample.seen, Kept));
    };
    std::size_t begin = 0;
    std::size_t end = 0;
    for (std::size_t place = 0; place < measured.size(); ++place) {
        const double hz = frequencies[measured[place]];
        while (end < measured.size() &&
               (end <= place || (end <= place + OnEachSide && isNear(hz, frequencies[measured[end]])))) {
            pool.put(levelsOf(end++));
        }
        while (begin < place && (begin + OnEachSide < place || !isNear(hz, frequencies[measured[begin]]))) {
            pool.take(levelsOf(begin++));
        }
        window.floors[measured[place]] = middleOfNoise(pool);
    }
    m_windows.push_back(std::move(window));
    std::fill(m_samples.begin(), m_samples.end(), Sample());
    m_isOpen = false;
    while (m_windows.size() > 1 && m_windows.size() * count > m_mostFloors) {
        widen();
    }
}

/// The floor of two windows is the lower one: signals can only raise it.
void NoiseFloor::widen()
{
    m_windowMs *= 2;
    std::vector<Window> wider;
    for (Window& window : m_windows) {
        window.number = std::floor(window.number / 2);
        if (wider.empty() || wider.back().number != window.number) {
            wider.push_back(std::move(window));
            continue;
        }
        std::vector<float>& floors = wider.back().floors;
        floors.resize(window.floors.size(), Unknown);
        for (std::size_t channel = 0; channel < floors.size(); ++channel) {
            floors[channel] = std::fmin(floors[channel], window.floors[channel]);
        }
    }
    m_windows = std::move(wider);
}

void NoiseFloor::end(const std::vector<double>& frequencies)
{
    if (m_isOpen) {
        close(frequencies);
    }
    std::vector<std::pair<double, float*>> column;
    for (Window& window : m_windows) {
        window.floors.resize(frequencies.size(), Unknown);
    }
    for (std::size_t channel = 0; channel < frequencies.size(); ++channel) {
        column.clear();
        for (Window& window : m_windows) {
            column.emplace_back(window.number, &window.floors[channel]);
        }
        fillUp(column);
    }
    m_samples = {};
    m_order = {};
}

std::span<const float> NoiseFloor::at(double momentMs) const
{
    if (m_windows.empty()) {
        return {};
    }
    const double number = std::floor(momentMs / m_windowMs);
    auto next = std::lower_bound(m_windows.begin(), m_windows.end(), number,
                                 [](const Window& window, double wanted) { return window.number < wanted; });
    const bool isBefore = next != m_windows.begin() &&
                          (next == m_windows.end() || number - std::prev(next)->number <= next->number - number);
    if (isBefore && (next == m_windows.end() || next->number != number)) {
        --next;
    }
    return next->floors;
}

}  // namespace RecTool
