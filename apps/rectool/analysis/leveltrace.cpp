// Summing levels up by channel: extremes, powers and, in a second pass, percentiles.
#include "leveltrace.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "powers.h"

namespace RecTool {

namespace {

/// Those that were measured and belong to a channel.
template <typename Take>
void forEachLevel(const std::vector<std::uint32_t>& numbers, std::span<const float> levels, const Take& take)
{
    for (std::size_t i = 0; i < levels.size(); ++i) {
        if (std::isfinite(levels[i]) && numbers[i] != ChannelNumbers::Outside) {
            take(std::size_t{numbers[i]}, levels[i]);
        }
    }
}

}  // namespace

LevelTrace::LevelTrace(std::optional<FrequencySpan> span, const std::vector<double>& fractions)
    : m_numbers(span, fractions.empty() ? MostChannels : MostRankedChannels)
{
    for (const double fraction : fractions) {
        m_ranks.emplace_back(fraction);
    }
}

void LevelTrace::addLevel(Sum& sum, float level, double power, double momentMs)
{
    if (sum.levels.sweeps == 0 || level > sum.levels.highest) {
        sum.levels.highest = level;
        sum.levels.highestMs = momentMs;
    }
    if (sum.levels.sweeps == 0 || level < sum.levels.lowest) {
        sum.levels.lowest = level;
        sum.levels.lowestMs = momentMs;
    }
    sum.power += power;
    ++sum.levels.sweeps;
}

bool LevelTrace::add(const values::ChannelRange& range, std::span<const float> levels, double momentMs)
{
    const std::vector<std::uint32_t>* numbers = m_numbers.of(range);
    if (numbers == nullptr) {
        return false;
    }
    m_sums.resize(m_numbers.frequencies().size());
    bool isTaken = false;
    const Powers& powers = Powers::table();
    forEachLevel(*numbers, levels, [&](std::size_t channel, float level) {
        addLevel(m_sums[channel], level, powers(level), momentMs);
        isTaken = true;
    });
    for (LevelRanks& ranks : m_ranks) {
        ranks.prepare(m_sums.size());
        forEachLevel(*numbers, levels, [&](std::size_t channel, float level) { ranks.count(channel, level); });
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
    for (LevelRanks& ranks : m_ranks) {
        if (numbers != nullptr) {
            forEachLevel(*numbers, levels, [&](std::size_t channel, float level) { ranks.look(channel, level); });
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
        channel.mean = levelOf(sum.power / static_cast<double>(sum.levels.sweeps));
        for (const LevelRanks& ranks : m_ranks) {
            channel.percentiles.push_back(ranks.of(number));
        }
    }
    std::sort(all.begin(), all.end(), [](const ChannelLevels& a, const ChannelLevels& b) { return a.hz < b.hz; });
    return all;
}

}  // namespace RecTool
