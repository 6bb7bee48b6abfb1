// Percentiles of the levels of many channels, exactly and in bounded memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace RecTool {

/// Levels come as hundredths of a decibel in recordings. So two passes over the same levels give a percentile exactly:
/// the first counts them in wide bins, the second looks into the bin where it lies. Levels beyond what recordings code
/// in hundredths (-1310.72 to 1310.70 dB) count as its ends. Memory: about 5,000 bytes a channel.
class LevelRanks {
public:
    /// @param fraction of the levels that are at most the percentile: 0.5 for the median, from 0 to 1
    explicit LevelRanks(double fraction) : m_fraction(fraction) {}

    /// First pass. @param channel counted from 0; a new one may come at any time
    void count(std::size_t channel, float level);
    void endCounting();
    /// Second pass, over the same levels.
    void look(std::size_t channel, float level)
    {
        Ranks& ranks = m_ranks[channel];
        const std::int32_t code = codeOf(level);
        if (code / BinCodes == ranks.lowBin) {
            ++m_fine[channel * FineBins + static_cast<std::size_t>(code % BinCodes)];
        }
        if (code / BinCodes == ranks.highBin && code < ranks.lowestOfHigh) {
            ranks.lowestOfHigh = code;
        }
    }
    /// After both passes: between the two levels next to the fraction as far as it lies between them. NaN without one.
    [[nodiscard]] double of(std::size_t channel) const;
    [[nodiscard]] double fraction() const { return m_fraction; }

private:
    static constexpr std::int32_t Codes = 262'143;  // hundredths from -1310.72 dB on
    static constexpr std::int32_t BinCodes = 400;
    static constexpr std::size_t Bins = Codes / BinCodes + 1;
    static constexpr std::size_t FineBins = BinCodes;

    /// The levels next to the fraction have the ranks low and low + 1 (or both low).
    struct Ranks {
        std::uint64_t inBin = 0;  // rank of the lower one inside its bin
        double between = 0;       // 0: the lower one itself
        std::int32_t lowBin = -1;
        std::int32_t highBin = -1;  // that of the other one, where it is another bin
        std::int32_t lowestOfHigh = Codes;
    };
    [[nodiscard]] static std::int32_t codeOf(float level);
    [[nodiscard]] static double levelOf(std::int32_t code);
    [[nodiscard]] Ranks ranksOf(std::size_t channel) const;

    double m_fraction;
    std::vector<std::uint32_t> m_coarse;
    std::vector<std::uint32_t> m_fine;
    std::vector<Ranks> m_ranks;
};

}  // namespace RecTool
