// The spectra in what rigctld sends to a multicast group: JSON in a datagram.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace RecStation {

/// Why a packet cannot be used.
class RigPacketError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What the scope of a receiver shows.
struct RigSpectrum {
    double lowHz = 0;   ///< of the first cell
    double highHz = 0;  ///< of the last
    double lowestDb = 0;
    double highestDb = 0;         ///< what a cell can say at most
    std::vector<float> levelsDb;  ///< 2 at least

    [[nodiscard]] double stepHz() const { return (highHz - lowHz) / static_cast<double>(levelsDb.size() - 1); }
};

struct RigPacket {
    std::string rig;                      ///< id and name of the receiver
    std::uint32_t seq = 0;                ///< from 1, 0 where it has none
    std::optional<RigSpectrum> spectrum;  ///< the first, where there are several
};

/// @param bytes of a datagram @throws RigPacketError
[[nodiscard]] RigPacket parseRigPacket(std::string_view bytes);

}  // namespace RecStation
