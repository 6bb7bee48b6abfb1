// Spans that channels cover, pieces of a broken axis, and the channels of each column.
#include "frequencies.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <set>

namespace RecTool {

using values::ChannelRange;

namespace {

constexpr double Touching = 1e-6;  // of a channel's width: edges that only differ by rounding

/// A span without width cannot be drawn.
FrequencySpan widened(const FrequencySpan& span)
{
    constexpr double Part = 1e-4;
    const double room = std::max(1.0, std::abs(span.lowHz) * Part);
    return span.width() > 0 ? span : FrequencySpan{span.lowHz - room, span.highHz + room};
}

/// Makes fewer pieces of them: those with the smallest gaps between them become one, of equal gaps the first ones.
std::vector<FrequencySpan> joinNearest(const std::vector<FrequencySpan>& pieces, std::size_t most)
{
    std::vector<std::size_t> gaps(pieces.size() - 1);  // by the piece after them, the widest first
    std::iota(gaps.begin(), gaps.end(), std::size_t{1});
    const auto width = [&](std::size_t piece) { return pieces[piece].lowHz - pieces[piece - 1].highHz; };
    std::sort(gaps.begin(), gaps.end(),
              [&](std::size_t a, std::size_t b) { return width(a) != width(b) ? width(a) > width(b) : a > b; });
    gaps.resize(std::max<std::size_t>(most, 1) - 1);
    const std::set<std::size_t> kept(gaps.begin(), gaps.end());
    std::vector<FrequencySpan> joined{pieces.front()};
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        if (kept.contains(i)) {
            joined.push_back(pieces[i]);
        } else {
            joined.back().highHz = pieces[i].highHz;
        }
    }
    return joined;
}

}  // namespace

std::optional<FrequencySpan> wantedSpan(double lowHz, double highHz)
{
    if (lowHz == 0 && highHz == 0) {
        return std::nullopt;
    }
    return FrequencySpan{lowHz, highHz == 0 ? std::numeric_limits<double>::infinity() : highHz};
}

double channelWidthHz(const ChannelRange& range)
{
    if (!range.isList()) {
        return std::abs(range.stepHz);
    }
    std::vector<double> frequencies = range.channelsHz;
    std::sort(frequencies.begin(), frequencies.end());
    double smallest = 0;
    for (std::size_t i = 1; i < frequencies.size(); ++i) {
        const double distance = frequencies[i] - frequencies[i - 1];
        if (distance > 0 && (smallest == 0 || distance < smallest)) {
            smallest = distance;
        }
    }
    return smallest;
}

std::vector<FrequencySpan> joined(std::vector<FrequencySpan> spans)
{
    std::sort(spans.begin(), spans.end(),
              [](const FrequencySpan& a, const FrequencySpan& b) { return a.lowHz < b.lowHz; });
    std::vector<FrequencySpan> joined;
    for (const FrequencySpan& span : spans) {
        if (!joined.empty() && span.lowHz <= joined.back().highHz + Touching * span.width()) {
            joined.back().highHz = std::max(joined.back().highHz, span.highHz);
        } else {
            joined.push_back(span);
        }
    }
    return joined;
}

std::vector<std::size_t> byFrequency(const ChannelRange& range)
{
    std::vector<std::size_t> channels(range.size());
    std::iota(channels.begin(), channels.end(), std::size_t{0});
    std::stable_sort(channels.begin(), channels.end(),
                     [&](std::size_t a, std::size_t b) { return range.frequencyHz(a) < range.frequencyHz(b); });
    return channels;
}

std::size_t nearestChannel(const ChannelRange& range, double hz)
{
    if (range.isList()) {
        const auto isNearer = [hz](double a, double b) { return std::abs(a - hz) < std::abs(b - hz); };
        return static_cast<std::size_t>(std::min_element(range.channelsHz.begin(), range.channelsHz.end(), isNearer) -
                                        range.channelsHz.begin());
    }
    const double place = range.stepHz == 0 ? 0 : std::round((hz - range.startHz) / range.stepHz);
    return static_cast<std::size_t>(std::clamp(place, 0.0, static_cast<double>(range.size() - 1)));
}

std::optional<std::size_t> channelAt(const ChannelRange& range, double hz)
{
    constexpr double Reach = 0.5 + 1e-9;  // of a channel's width
    if (range.size() == 0) {
        return std::nullopt;
    }
    const std::size_t nearest = nearestChannel(range, hz);
    return std::abs(range.frequencyHz(nearest) - hz) <= channelWidthHz(range) * Reach ? std::optional(nearest)
                                                                                      : std::nullopt;
}

std::vector<FrequencySpan> coveredBy(const ChannelRange& range)
{
    if (range.size() == 0) {
        return {};
    }
    const double width = channelWidthHz(range);
    if (!range.isList()) {
        const double first = range.frequencyHz(0);
        const double last = range.frequencyHz(range.size() - 1);
        return {{std::min(first, last) - width / 2, std::max(first, last) + width / 2}};
    }
    std::vector<FrequencySpan> spans;
    spans.reserve(range.size());
    for (const double channel : range.channelsHz) {
        spans.push_back({channel - width / 2, channel + width / 2});
    }
    return joined(std::move(spans));
}

std::vector<FrequencySpan> axisPieces(const std::vector<FrequencySpan>& covered, std::size_t most)
{
    if (covered.empty()) {
        return {};
    }
    const double measured = std::accumulate(covered.begin(), covered.end(), 0.0,
                                            [](double sum, const FrequencySpan& span) { return sum + span.width(); });
    std::vector<FrequencySpan> pieces{covered.front()};
    for (std::size_t i = 1; i < covered.size(); ++i) {
        if (measured > 0 && covered[i].lowHz - pieces.back().highHz > measured) {
            pieces.push_back(covered[i]);
        } else {
            pieces.back().highHz = covered[i].highHz;
        }
    }
    if (pieces.size() > most) {
        pieces = joinNearest(pieces, most);
    }
    std::transform(pieces.begin(), pieces.end(), pieces.begin(), widened);
    return pieces;
}

ColumnMap::ColumnMap(const ChannelRange& range, const FrequencySpan& span, std::size_t columns)
    : m_channels(columns), m_columns(range.size())
{
    std::vector<double> ascending(range.size());
    std::vector<std::uint32_t> order(range.size());
    std::iota(order.begin(), order.end(), 0U);
    if (range.isList() || range.stepHz < 0) {
        std::stable_sort(order.begin(), order.end(),
                         [&](std::uint32_t a, std::uint32_t b) { return range.frequencyHz(a) < range.frequencyHz(b); });
        m_ranks.resize(range.size());
    }
    for (std::uint32_t rank = 0; rank < order.size(); ++rank) {
        ascending[rank] = range.frequencyHz(order[rank]);
        if (!m_ranks.empty()) {
            m_ranks[order[rank]] = rank;
        }
    }
    constexpr double Unknown = 0.02;  // of the span, so that such a channel can be seen
    const double known = channelWidthHz(range);
    fill(ascending, span, (known > 0 ? known : span.width() * Unknown) / 2 * (1 + Touching));
}

void ColumnMap::fill(const std::vector<double>& ascending, const FrequencySpan& span, double halfWidth)
{
    const double columnHz = span.width() / static_cast<double>(m_channels.size());
    const auto rankFrom = [&](auto bound) { return static_cast<std::uint32_t>(bound - ascending.begin()); };
    std::uint32_t next = rankFrom(std::lower_bound(ascending.begin(), ascending.end(), span.lowHz));
    for (std::uint32_t column = 0; column < m_channels.size(); ++column) {
        const double low = span.lowHz + columnHz * column;
        const double middle = low + columnHz / 2;
        const bool isLast = column + 1 == m_channels.size();
        Interval channels{next, next};
        channels.end = rankFrom(isLast ? std::upper_bound(ascending.begin() + next, ascending.end(), span.highHz)
                                       : std::lower_bound(ascending.begin() + next, ascending.end(), low + columnHz));
        next = channels.end;
        if (channels.begin == channels.end) {
            if (next > 0 && middle - ascending[next - 1] <= halfWidth) {
                channels.begin = next - 1;
            } else if (next < ascending.size() && ascending[next] - middle <= halfWidth) {
                channels.end = next + 1;
            }
        }
        m_channels[column] = channels;
        m_hasChannels = m_hasChannels || channels.begin != channels.end;
        for (std::uint32_t rank = channels.begin; rank < channels.end; ++rank) {
            Interval& own = m_columns[rank];
            own.begin = own.begin == own.end ? column : own.begin;
            own.end = column + 1;
        }
    }
}

}  // namespace RecTool
