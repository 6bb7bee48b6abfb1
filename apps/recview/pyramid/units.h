// How the channels of a range become the cells that blocks are made of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include <values/maps.h>
#include "rectool/replay/frequencies.h"

namespace RecView {

/// The units of a series, ascending in frequency, and where the channels of a range stand among them. Mostly they are
/// the channels; of more channels than MostUnits several share a unit.
class Units {
public:
    static constexpr std::size_t MostUnits = 65'536;

    /// The units that a range has of its own.
    explicit Units(const values::ChannelRange& range);
    /// The channels of a range entered into those of a grid, which is evenly spaced and ascending. What lies beside it
    /// counts as its outermost units.
    Units(const values::ChannelRange& range, const values::ChannelRange& grid);

    [[nodiscard]] std::size_t count() const { return m_count; }
    [[nodiscard]] std::size_t channels() const { return m_channels; }
    /// Unit i is channel i.
    [[nodiscard]] bool isIdentity() const { return m_isIdentity; }
    /// The units of a channel, first and one past the last.
    [[nodiscard]] std::pair<std::size_t, std::size_t> of(std::size_t channel) const
    {
        if (!m_ranks.empty()) {
            const std::size_t unit = m_ranks[channel] / m_fold;
            return {unit, unit + 1};
        }
        if (m_spread) {
            return spread(channel);
        }
        const std::size_t unit = (m_descends ? m_channels - 1 - channel : channel) / m_fold;
        return {unit, unit + 1};
    }
    /// How many channels share a unit, at most.
    [[nodiscard]] std::size_t fold() const { return m_fold; }

private:
    [[nodiscard]] std::pair<std::size_t, std::size_t> spread(std::size_t channel) const;

    std::size_t m_channels = 0;
    std::size_t m_count = 0;
    std::size_t m_fold = 1;
    bool m_isIdentity = false;
    bool m_descends = false;
    std::vector<std::uint32_t> m_ranks;  // of lists: places in ascending order
    bool m_spread = false;
    values::ChannelRange m_range;  // of those that are spread over a grid
    double m_gridLowHz = 0;
    double m_perHz = 0;
    double m_halfHz = 0;
};

/// The frequencies of groups of units of a series: where each begins and ends.
[[nodiscard]] std::vector<RecTool::FrequencySpan> unitSpans(const values::ChannelRange& range);

/// From the lower edge of the lowest channel to the upper edge of the highest.
[[nodiscard]] RecTool::FrequencySpan wholeSpan(const values::ChannelRange& range);

}  // namespace RecView
