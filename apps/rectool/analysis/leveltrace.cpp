// Summing levels up by channel: extremes, powers and, in a second pass, percentiles.
#include "leveltrace.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace RecTool {

namespace {

/// 10^(level/10). Recorded levels are hundredths of a decibel, so that few powers are ever needed.
class Powers {
public:
    Powers()
    {
        for (std::size_t i = 0; i < m_powers.size(); ++i) {
            m_powers[i] = of(Lowest + static_cast<double>(i) / PerDb);
        }
    }
    [[nodiscard]] double operator()(float level) const
    {
        const double place = (double{level} - Lowest) * PerDb;
        const double nearest = std::round(place);
        constexpr double Same = 1e-3;  // of a hundredth: a float's own error
        const bool isKnown = nearest >= 0 && nearest < double{Count} && std::abs(place - nearest) < Same;
        return isKnown ? m_powers[static_cast<std::size_t>(nearest)] : of(double{level});
    }

private:
    static constexpr double Lowest = -250;
    static constexpr double PerDb = 100;
    static constexpr int Count = 50'000;
    static double of(double level) { return std::pow(10.0, level / 10); }

    std::vector<double> m_powers = std::vector<double>(Count);
};

double powerOf(float level)
{
    static const Powers powers;
    return powers(level);
}

}  // namespace

LevelTrace::LevelTrace(std::optional<FrequencySpan> span, const std::vector<double>& fractions)
    : m_numbers(span, fractions.empty() ? MostChannels : MostRankedChannels)
{
    for (const double fraction : fractions) {
        m_ranks.emplace_back(fraction);
    }
}

bool LevelTrace::add(const values::ChannelRange& range, std::span<const float> levels, double momentMs)
{
    const std::vector<std::uint32_t>* numbers = m_numbers.of(range);
    if (numbers == nullptr) {
        return false;
    }
    m_sums.resize(m_numbers.frequencies().size());
    bool isTaken = false;
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const float level = levels[i];
        if (!std::isfinite(level) || (*numbers)[i] == ChannelNumbers::Outside) {
            continue;
        }
        Sum& sum = m_sums[(*numbers)[i]];
        if (sum.levels.sweeps == 0 || level > sum.levels.highest) {
            sum.levels.highest = level;
            sum.levels.highestMs = momentMs;
        }
        if (sum.levels.sweeps == 0 || level < sum.levels.lowest) {
            sum.levels.lowest = level;
            sum.levels.lowestMs = momentMs;
        }
        sum.power += powerOf(level);
        ++sum.levels.sweeps;
        isTaken = true;
        for (LevelRanks& ranks : m_ranks) {
            ranks.count((*numbers)[i], level);
        }
    }
    if (isTaken) {
        m_firstMs = m_sweeps == 0 ? momentMs : std::min(m_firstMs, momentMs);
        m_lastMs = m_sweeps == 0 ? momentMs : std::max(m_lastMs, momentMs);
        ++m_sweeps;
    }
    return true;
}

void LevelTrace::beginRanking()
{
    for (LevelRanks& ranks : m_ranks) {
        ranks.endCounting();
    }
}

void LevelTrace::rank(const values::ChannelRange& range, std::span<const float> levels)
{
    const std::vector<std::uint32_t>* numbers = m_numbers.of(range);
    if (numbers == nullptr) {
        return;
    }
    for (std::size_t i = 0; i < levels.size(); ++i) {
        if (std::isfinite(levels[i]) && (*numbers)[i] != ChannelNumbers::Outside) {
            for (LevelRanks& ranks : m_ranks) {
                ranks.look((*numbers)[i], levels[i]);
            }
        }
    }
}

std::vector<ChannelLevels> LevelTrace::channels() const
{
    std::vector<ChannelLevels> all;
    for (std::size_t number = 0; number < m_sums.size(); ++number) {
        const Sum& sum = m_sums[number];
        if (sum.levels.sweeps == 0) {
            continue;
        }
        ChannelLevels& channel = all.emplace_back(sum.levels);
        channel.hz = m_numbers.frequencies()[number];
        constexpr double Decibels = 10;
        channel.mean = Decibels * std::log10(sum.power / static_cast<double>(sum.levels.sweeps));
        for (const LevelRanks& ranks : m_ranks) {
            channel.percentiles.push_back(ranks.of(number));
        }
    }
    std::sort(all.begin(), all.end(), [](const ChannelLevels& a, const ChannelLevels& b) { return a.hz < b.hz; });
    return all;
}

}  // namespace RecTool
