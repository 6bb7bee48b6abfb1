// Numbers for the channels of many ranges: a channel is a frequency, whichever range it stands in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <list>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include <values/maps.h>

#include "replay/frequencies.h"

namespace RecTool {

/// Channels are numbered from 0 in the order in which their ranges come.
class ChannelNumbers {
public:
    static constexpr std::uint32_t Outside = std::numeric_limits<std::uint32_t>::max();

    /// The channel that a frequency belongs to, by a frequency of its own; NaN for none.
    using ChannelOf = std::function<double(double hz)>;

    /// @param span of the frequencies that get a number; nothing for all
    /// @param most channels that are numbered
    ChannelNumbers(std::optional<FrequencySpan> span, std::size_t most);
    ChannelNumbers(ChannelOf channelOf, std::size_t most) : m_channelOf(std::move(channelOf)), m_most(most) {}

    /// The number of each channel of a range, Outside for those that get none; valid until the next call. Null when
    /// there are too many. Ranges that come again and again are not looked up anew.
    const std::vector<std::uint32_t>* of(const values::ChannelRange& range);
    /// By number, in Hz.
    [[nodiscard]] const std::vector<double>& frequencies() const { return m_frequencies; }

private:
    struct Numbering {
        values::ChannelRange range;
        std::vector<std::uint32_t> numbers;
    };
    std::uint32_t numberOf(double cellHz);

    ChannelOf m_channelOf;
    std::size_t m_most;
    std::vector<double> m_frequencies;
    std::unordered_map<double, std::uint32_t> m_byFrequency;
    std::list<Numbering> m_recent;
};

}  // namespace RecTool
