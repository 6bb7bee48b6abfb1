// Spans of frequency and time; which frequencies the channels of a range cover, and where they lie in a picture.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <values/maps.h>

namespace RecTool {

/// Both ends are included, in milliseconds of the recording; measured values have parts of them.
struct TimeSpan {
    double fromMs = 0;
    double toMs = 0;

    [[nodiscard]] double width() const { return toMs - fromMs; }
    /// Which of so many equal parts a time lies in; the last end belongs to the last part.
    [[nodiscard]] std::size_t partOf(double timeMs, std::size_t parts) const
    {
        const double part = (timeMs - fromMs) / width() * static_cast<double>(parts);
        return static_cast<std::size_t>(std::clamp(part, 0.0, static_cast<double>(parts - 1)));
    }
};

/// From the lower edge of the lowest channel to the upper edge of the highest.
struct FrequencySpan {
    double lowHz = 0;
    double highHz = 0;

    [[nodiscard]] double width() const { return highHz - lowHz; }
    [[nodiscard]] bool holds(double hz) const { return lowHz <= hz && hz <= highHz; }
};

/// What users ask for, 0 for no end; nothing where they take all.
[[nodiscard]] std::optional<FrequencySpan> wantedSpan(double lowHz, double highHz);

/// How wide a channel is: the step of an even range, the smallest distance between two channels of a list. 0 where
/// there is neither.
[[nodiscard]] double channelWidthHz(const values::ChannelRange& range);
/// The channels in ascending order of frequency.
[[nodiscard]] std::vector<std::size_t> byFrequency(const values::ChannelRange& range);
/// The channel whose centre is nearest to a frequency. The range must have channels.
[[nodiscard]] std::size_t nearestChannel(const values::ChannelRange& range, double hz);
/// The channel that a frequency belongs to: the nearest one, if it reaches so far.
[[nodiscard]] std::optional<std::size_t> channelAt(const values::ChannelRange& range, double hz);
/// The stretches of frequency that the channels cover, ascending; channels that touch are one stretch.
[[nodiscard]] std::vector<FrequencySpan> coveredBy(const values::ChannelRange& range);
/// Joins stretches that touch or overlap, ascending.
[[nodiscard]] std::vector<FrequencySpan> joined(std::vector<FrequencySpan> spans);
/// The pieces into which a frequency axis is best broken: at every gap that is wider than all that is measured. Where
/// that makes too many pieces, those with the smallest gaps are joined again. A span without width gets one.
[[nodiscard]] std::vector<FrequencySpan> axisPieces(const std::vector<FrequencySpan>& covered, std::size_t most);

/// Which channels stand for which column of a picture. A column shows the channels whose centres lie in it or, where
/// there is none, the channel that reaches over its middle; one of unknown width is 2 % of the span wide. So every
/// channel in the span is in some column, and a column in a gap has no channel.
class ColumnMap {
public:
    struct Interval {
        std::uint32_t begin = 0;
        std::uint32_t end = 0;
    };

    ColumnMap() = default;
    ColumnMap(const values::ChannelRange& range, const FrequencySpan& span, std::size_t columns);

    /// Whether any column has a channel.
    [[nodiscard]] bool hasChannels() const { return m_hasChannels; }
    /// The place of every channel in ascending order of frequency; empty where that is the order of the channels.
    [[nodiscard]] std::span<const std::uint32_t> ranks() const { return m_ranks; }
    [[nodiscard]] std::uint32_t rankOf(std::size_t channel) const
    {
        return m_ranks.empty() ? static_cast<std::uint32_t>(channel) : m_ranks[channel];
    }
    /// The ranks of the channels of a column.
    [[nodiscard]] const Interval& channelsOf(std::size_t column) const { return m_channels[column]; }
    /// The columns of a channel, by its rank; empty when it lies outside.
    [[nodiscard]] const Interval& columnsOf(std::size_t rank) const { return m_columns[rank]; }

private:
    void fill(const std::vector<double>& ascending, const FrequencySpan& span, double halfWidth);

    std::vector<std::uint32_t> m_ranks;
    std::vector<Interval> m_channels;
    std::vector<Interval> m_columns;
    bool m_hasChannels = false;
};

}  // namespace RecTool
