// Channels in ascending order, several to a unit where there are very many, or spread over a grid.
#include "units.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace RecView {

namespace {

std::vector<std::uint32_t> ascendingOrder(const std::vector<double>& channels)
{
    std::vector<std::uint32_t> order(channels.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return channels[a] < channels[b]; });
    return order;
}

}  // namespace

Units::Units(const values::ChannelRange& range)
    : m_channels(range.size()), m_fold((std::max<std::size_t>(m_channels, 1) + MostUnits - 1) / MostUnits)
{
    m_count = (m_channels + m_fold - 1) / m_fold;
    if (range.isList() && !std::is_sorted(range.channelsHz.begin(), range.channelsHz.end())) {
        const std::vector<std::uint32_t> order = ascendingOrder(range.channelsHz);
        m_ranks.resize(order.size());
        for (std::uint32_t rank = 0; rank < order.size(); ++rank) {
            m_ranks[order[rank]] = rank;
        }
    }
    m_descends = !range.isList() && range.stepHz < 0;
    m_isIdentity = m_fold == 1 && !m_descends && m_ranks.empty();
}

Units::Units(const values::ChannelRange& range, const values::ChannelRange& grid)
    : m_channels(range.size()),
      m_count(grid.count),
      m_spread(true),
      m_range(range),
      m_gridLowHz(grid.startHz - grid.stepHz / 2),
      m_perHz(1 / grid.stepHz),
      m_halfHz(RecTool::channelWidthHz(range) / 2)
{
}

std::pair<std::size_t, std::size_t> Units::spread(std::size_t channel) const
{
    const double hz = m_range.frequencyHz(channel);
    // Frequencies may be so large that they are no numbers any more.
    const auto within = [](double unit, double least, double most) {
        return unit >= least ? std::min(unit, most) : least;
    };
    const auto count = static_cast<double>(m_count);
    const double low = within(std::floor((hz - m_halfHz - m_gridLowHz) * m_perHz), 0, count - 1);
    const double high = within(std::ceil((hz + m_halfHz - m_gridLowHz) * m_perHz), low + 1, count);
    return {static_cast<std::size_t>(low), static_cast<std::size_t>(high)};
}

std::vector<RecTool::FrequencySpan> unitSpans(const values::ChannelRange& range)
{
    const Units units(range);
    const double half = RecTool::channelWidthHz(range) / 2;
    const std::size_t channels = range.size();
    std::vector<double> ascending = range.channelsHz;
    std::sort(ascending.begin(), ascending.end());
    const auto hz = [&](std::size_t rank) {
        return range.isList() ? ascending[rank] : range.frequencyHz(range.stepHz < 0 ? channels - 1 - rank : rank);
    };
    std::vector<RecTool::FrequencySpan> spans(units.count());
    for (std::size_t unit = 0; unit < spans.size(); ++unit) {
        const std::size_t first = unit * units.fold();
        const std::size_t last = std::min(first + units.fold(), channels) - 1;
        spans[unit] = {hz(first) - half, hz(last) + half};
    }
    return spans;
}

RecTool::FrequencySpan wholeSpan(const values::ChannelRange& range)
{
    if (range.size() == 0) {
        return {};
    }
    const double half = RecTool::channelWidthHz(range) / 2;
    double low = range.frequencyHz(0);
    double high = range.frequencyHz(range.size() - 1);
    if (range.isList()) {
        const auto [least, most] = std::minmax_element(range.channelsHz.begin(), range.channelsHz.end());
        low = *least;
        high = *most;
    }
    return {std::min(low, high) - half, std::max(low, high) + half};
}

}  // namespace RecView
