// The panorama that several bands make, which a receiver is tuned to in turn.
#pragma once

#include <cstddef>
#include <vector>

#include <values/maps.h>

namespace RecStation {

/// Where the spectrum of one band lies in the panorama.
struct HopPart {
    std::size_t firstChannel = 0;  ///< of the panorama
    std::size_t firstBin = 0;      ///< of the band's spectrum
    std::size_t bins = 0;
};

struct HopLayout {
    values::ChannelRange channels;
    double lowHz = 0;
    double highHz = 0;
    double stepHz = 0;
    std::vector<HopPart> parts;  ///< in the order of the centres that were given
};

/// Of two bands that overlap each keeps what lies nearer to its centre; where two do not join there is nothing between
/// them, and the channels are a list then, as they are where one does not fall on the grid of the other.
/// @param centresHz different from each other, at least one
/// @param bins of a band's spectrum, even
[[nodiscard]] HopLayout layOutHops(const std::vector<double>& centresHz, double rateHz, std::size_t bins);

}  // namespace RecStation
