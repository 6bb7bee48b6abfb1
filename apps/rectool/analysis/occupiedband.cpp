// Adding powers up from the edges.
#include "occupiedband.h"

#include <algorithm>
#include <iterator>

#include "powers.h"

namespace RecTool {

namespace {

/// Where so much of the power lies before, going from channel to channel. @param ahead 1 for upwards, -1 for downwards
template <typename Iterator>
double edgeBehind(Iterator begin, Iterator end, double power, double widthHz, double ahead)
{
    for (Iterator channel = begin; channel != end; ++channel) {
        if (channel->power > power) {
            return channel->hz + ahead * widthHz * (power / channel->power - 0.5);
        }
        power -= channel->power;
    }
    return std::prev(end)->hz;  // all of them are nothing
}

}  // namespace

FrequencySpan bandOfPower(const std::vector<ChannelPower>& channels, double widthHz, double part)
{
    double all = 0;
    for (const ChannelPower& channel : channels) {
        all += channel.power;
    }
    const double outside = all * (1 - part) / 2;
    return {edgeBehind(channels.begin(), channels.end(), outside, widthHz, 1),
            edgeBehind(channels.rbegin(), channels.rend(), outside, widthHz, -1)};
}

FrequencySpan bandWithin(const std::vector<ChannelPower>& channels, double widthHz, double belowDb)
{
    const auto strongest = std::max_element(channels.begin(), channels.end(),
                                            [](const auto& a, const auto& b) { return a.power < b.power; });
    constexpr double Rounded = 1 - 1e-9;  // powers of ten come out a bit differently on each system
    const double least = strongest->power * powerOf(static_cast<float>(-belowDb)) * Rounded;
    const auto isIn = [least](const ChannelPower& channel) { return channel.power >= least; };
    return {std::find_if(channels.begin(), channels.end(), isIn)->hz - widthHz / 2,
            std::find_if(channels.rbegin(), channels.rend(), isIn)->hz + widthHz / 2};
}

}  // namespace RecTool
