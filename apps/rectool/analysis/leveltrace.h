// Level against frequency: what the levels of every channel were in a span, over all its sweeps.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include <values/maps.h>

#include "channelnumbers.h"

namespace RecTool {

/// Levels come as hundredths of a decibel in recordings. So two passes over the same levels give a percentile exactly:
/// the first counts them in wide bins, the second looks into the bin where it lies. Levels beyond what recordings code
/// in hundredths (-1310.72 to 1310.70 dB) count as its ends. Memory: about 8,700 bytes a channel.
class LevelRanks {
public:
    /// @param fraction of the levels that are at most the percentile: 0.5 for the median, from 0 to 1
    explicit LevelRanks(double fraction) : m_fraction(fraction) {}

    /// Makes room for channels, counted from 0; before each of them is counted.
    void prepare(std::size_t channels);
    /// First pass.
    void count(std::size_t channel, float level) { ++m_coarse[placeOf(channel, binOf(codeOf(level)))]; }
    void endCounting();
    /// Second pass, over the same levels.
    void look(std::size_t channel, float level)
    {
        Ranks& ranks = m_ranks[channel];
        const std::uint32_t code = codeOf(level);
        m_fine[channel * FineBins + code % FineBins] += binOf(code) == ranks.lowBin ? 1U : 0U;  // no jump: it is random
        if (binOf(code) == ranks.highBin && code < ranks.lowestOfHigh) {
            ranks.lowestOfHigh = code;
        }
    }
    /// After both passes: between the two levels next to the fraction as far as it lies between them. NaN without one.
    [[nodiscard]] double of(std::size_t channel) const;
    [[nodiscard]] double fraction() const { return m_fraction; }

private:
    static constexpr std::uint32_t Codes = 262'144;  // hundredths from -1310.72 dB on
    static constexpr std::size_t FineBins = 128;     // of a wide one
    static constexpr std::size_t Bins = Codes / FineBins;
    static constexpr std::size_t NoBin = Bins;
    static constexpr std::size_t Together = 64;  // channels
    static constexpr std::size_t Line = 16;      // bins

    /// The levels next to the fraction have the ranks low and low + 1 (or both low).
    struct Ranks {
        std::uint64_t inBin = 0;  // rank of the lower one inside its bin
        double between = 0;       // 0: the lower one itself
        std::size_t lowBin = NoBin;
        std::size_t highBin = NoBin;  // that of the other one, where it is another bin
        std::uint32_t lowestOfHigh = Codes;
    };
    [[nodiscard]] static std::uint32_t codeOf(float level)
    {
        constexpr float PerDb = 100;
        constexpr float Lowest = 131'072;
        const float code = level * PerDb + Lowest + 0.5F;
        return static_cast<std::uint32_t>(std::clamp(code, 0.0F, float{Codes - 1}));
    }
    [[nodiscard]] static std::size_t binOf(std::uint32_t code) { return code / FineBins; }
    /// In a sweep levels differ little: 20 dB of 64 channels side by side lie in one page of the memory.
    [[nodiscard]] static std::size_t placeOf(std::size_t channel, std::size_t bin)
    {
        const std::size_t page = channel / Together * (Bins / Line) + bin / Line;
        return (page * Together + channel % Together) * Line + bin % Line;
    }
    [[nodiscard]] static double levelOf(std::uint32_t code);
    [[nodiscard]] Ranks ranksOf(std::size_t channel) const;

    double m_fraction;
    std::size_t m_channels = 0;
    std::vector<std::uint32_t> m_coarse;
    std::vector<std::uint32_t> m_fine;
    std::vector<Ranks> m_ranks;
};

/// Levels in dB, NaN where there is none; moments in milliseconds since the start of the first recording.
struct ChannelLevels {
    double hz = 0;
    std::uint64_t sweeps = 0;  ///< that carry a level of the channel
    float highest = std::numeric_limits<float>::quiet_NaN();
    float lowest = std::numeric_limits<float>::quiet_NaN();
    double mean = std::numeric_limits<double>::quiet_NaN();  ///< of the powers: 10 log10 of the mean of 10^(level/10)
    double highestMs = 0;                                    ///< of the first sweep with the highest level
    double lowestMs = 0;
    std::vector<double> percentiles;  ///< in the order in which they were asked for
};

/// Takes the sweeps of one type, of any channel ranges: a channel is a frequency, whichever range it comes from. A
/// sweep is a record, with the levels that it carries itself. Levels that are no finite number count as not measured.
/// Memory: about 100 bytes a channel, and for each percentile 8,700.
class LevelTrace {
public:
    static constexpr std::size_t MostChannels = 1'000'000;
    static constexpr std::size_t MostRankedChannels = 16'000;

    /// @param span of the frequencies that are taken; nothing for all
    /// @param fractions of the percentiles, 0.5 for the median; they need a second pass
    LevelTrace(std::optional<FrequencySpan> span, const std::vector<double>& fractions);

    /// First pass. @return false when there are more channels than are taken; the sweep is left out then
    bool add(const values::ChannelRange& range, std::span<const float> levels, double momentMs);
    /// After the first pass; then the same sweeps again.
    void beginRanking();
    void rank(const values::ChannelRange& range, std::span<const float> levels);

    [[nodiscard]] std::uint64_t sweeps() const { return m_sweeps; }
    [[nodiscard]] double firstMs() const { return m_firstMs; }
    [[nodiscard]] double lastMs() const { return m_lastMs; }
    /// Those with a level, by frequency.
    [[nodiscard]] std::vector<ChannelLevels> channels() const;

private:
    struct Sum {
        ChannelLevels levels;
        double power = 0;
    };
    static void addLevel(Sum& sum, float level, double power, double momentMs);

    ChannelNumbers m_numbers;
    std::vector<LevelRanks> m_ranks;
    std::vector<Sum> m_sums;  // by number of the channel
    std::uint64_t m_sweeps = 0;
    double m_firstMs = 0;
    double m_lastMs = 0;
};

}  // namespace RecTool
