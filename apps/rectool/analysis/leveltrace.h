// Level against frequency: what the levels of every channel were in a span, over all its sweeps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include <values/maps.h>

#include "channelnumbers.h"
#include "levelranks.h"

namespace RecTool {

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
