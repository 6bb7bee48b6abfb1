// Where the station was and how it stood, device by device, as it is recorded.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "emissiontracker.h"
#include "replay/recordings.h"

namespace RecTool {

/// Follows position, heading and frequency of every track.
class StationPlaces {
public:
    explicit StationPlaces(const Recordings& recordings)
    {
        for (const Track& track : recordings.tracks()) {
            Followed& followed = m_tracks.emplace_back();
            for (std::size_t i = 0; i < Count; ++i) {
                followed.codes[i] = track.names.numberOf(Keywords[i]);
            }
        }
    }
    /// @return whether the record was one of these values
    bool apply(const PlacedRecord& placed)
    {
        Followed& followed = m_tracks[placed.type.track];
        for (std::size_t i = 0; i < Count; ++i) {
            if (followed.codes[i] == placed.type.code) {
                followed.values[i] = placed.number().value_or(Unknown);
                return true;
            }
        }
        return false;
    }
    /// Of a track. NaN for what is no place on earth; 0, 0 is what values hold that nobody has set.
    [[nodiscard]] StationPlace place(std::size_t track) const
    {
        constexpr double PoleDeg = 90;
        constexpr double FullCircleDeg = 360;
        const auto& [latitude, longitude, heading, frequency] = m_tracks[track].values;
        const bool isOnEarth = std::abs(latitude) <= PoleDeg && std::abs(longitude) <= FullCircleDeg;
        return isOnEarth && (latitude != 0 || longitude != 0)
                   ? StationPlace{latitude, std::remainder(longitude, FullCircleDeg)}
                   : StationPlace();
    }
    /// In degrees, of the antenna's zero from true north; NaN where it is not known.
    [[nodiscard]] double headingDeg(std::size_t track) const { return m_tracks[track].values[2]; }
    [[nodiscard]] double frequencyHz(std::size_t track) const { return m_tracks[track].values[3]; }

private:
    static constexpr std::size_t Count = 4;
    static constexpr std::array<const char*, Count> Keywords = {"LOCATIONLATITUDE", "LOCATIONLONGITUDE", "TRUEHEADING",
                                                                "FREQUENCY"};
    static constexpr double Unknown = std::numeric_limits<double>::quiet_NaN();
    struct Followed {
        std::array<std::optional<std::int32_t>, Count> codes;
        std::array<double, Count> values{Unknown, Unknown, Unknown, Unknown};
    };
    std::vector<Followed> m_tracks;
};

}  // namespace RecTool
