// Numbers for the channels of many ranges: a channel is a frequency, whichever range it stands in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <list>
#include <optional>
#include <unordered_map>
#include <vector>

#include <values/maps.h>

#include "replay/frequencies.h"

namespace RecTool {

/// Channels are numbered from 0 in the order in which their ranges come.
class ChannelNumbers {
public:
    static constexpr std::uint32_t Outside = std::numeric_limits<std::uint32_t>::max();

    /// @param span of the frequencies that get a number; nothing for all
    /// @param most channels that are numbered
    ChannelNumbers(std::optional<FrequencySpan> span, std::size_t most) : m_span(span), m_most(most) {}

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
    std::uint32_t numberOf(double hz);

    std::optional<FrequencySpan> m_span;
    std::size_t m_most;
    std::vector<double> m_frequencies;
    std::unordered_map<double, std::uint32_t> m_byFrequency;
    std::list<Numbering> m_recent;
};

}  // namespace RecTool
