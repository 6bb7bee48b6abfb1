// Counting levels in wide and then in narrow bins.
#include "levelranks.h"

#include <algorithm>
#include <limits>

namespace RecTool {

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

}  // namespace RecTool
