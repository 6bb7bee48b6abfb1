// Summing levels up by channel: extremes, powers and, in a second pass, percentiles.
#include "leveltrace.h"

#include <cmath>

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

double LevelRanks::levelOf(std::uint32_t code)
{
    constexpr double PerDb = 100;
    constexpr double Lowest = 131'072;
    return (code - Lowest) / PerDb;
}

void LevelRanks::prepare(std::size_t channels)
{
    m_channels = std::max(m_channels, channels);
    m_coarse.resize((m_channels + Together - 1) / Together * Together * Bins);
}

void LevelRanks::endCounting()
{
    for (std::size_t channel = 0; channel < m_channels; ++channel) {
        m_ranks.push_back(ranksOf(channel));
    }
    m_fine.assign(m_channels * FineBins, 0);
}

LevelRanks::Ranks LevelRanks::ranksOf(std::size_t channel) const
{
    std::uint64_t all = 0;
    for (std::size_t bin = 0; bin < Bins; ++bin) {
        all += m_coarse[placeOf(channel, bin)];
    }
    Ranks ranks;
    if (all == 0) {
        return ranks;
    }
    const double place = static_cast<double>(all - 1) * m_fraction;
    const auto low = static_cast<std::uint64_t>(place);
    ranks.between = place - static_cast<double>(low);
    std::uint64_t before = 0;
    for (std::size_t bin = 0; bin < Bins; ++bin) {
        const std::uint64_t upTo = before + m_coarse[placeOf(channel, bin)];
        if (low >= before && low < upTo) {
            ranks.lowBin = bin;
            ranks.inBin = low - before;
        }
        if (low + 1 >= before && low + 1 < upTo && ranks.lowBin != bin) {
            ranks.highBin = bin;
        }
        before = upTo;
    }
    return ranks;
}

double LevelRanks::of(std::size_t channel) const
{
    if (channel >= m_ranks.size() || m_ranks[channel].lowBin == NoBin) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const Ranks& ranks = m_ranks[channel];
    const std::uint32_t* const fine = m_fine.data() + channel * FineBins;
    const auto at = [&](std::uint64_t rank) {  // the code of a rank inside the bin, or past its end
        auto code = static_cast<std::uint32_t>(ranks.lowBin * FineBins);
        for (std::size_t i = 0; i < FineBins; ++i, ++code) {
            if (rank < fine[i]) {
                return code;
            }
            rank -= fine[i];
        }
        return Codes;
    };
    const double low = levelOf(at(ranks.inBin));
    if (ranks.between == 0) {
        return low;
    }
    const double high = levelOf(ranks.highBin != NoBin ? ranks.lowestOfHigh : at(ranks.inBin + 1));
    return low + (high - low) * ranks.between;
}

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
