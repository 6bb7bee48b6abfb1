// The band that a signal occupies, by the powers of its channels.
#pragma once

#include <vector>

#include "replay/frequencies.h"

namespace RecTool {

/// A channel's power, of any unit: 10^(level/10), also summed up over sweeps.
struct ChannelPower {
    double hz = 0;
    double power = 0;
};

/// Channels come ascending, at least one, of a width in Hz that may be 0.
///
/// The band that holds this part of the power, with equal parts of the rest below and above it. The power of a channel
/// is taken to be spread evenly over its width.
[[nodiscard]] FrequencySpan bandOfPower(const std::vector<ChannelPower>& channels, double widthHz, double part);
/// From the lowest to the highest channel that is at most so much below the strongest one.
[[nodiscard]] FrequencySpan bandWithin(const std::vector<ChannelPower>& channels, double widthHz, double belowDb);

}  // namespace RecTool
