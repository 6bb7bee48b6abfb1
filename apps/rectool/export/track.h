// Where a device was: points made of the records of its position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "export.h"

class QXmlStreamWriter;

namespace RecTool {

struct TrackPoint {
    double momentMs = 0;
    double latitudeDeg = 0;   ///< -90 to 90
    double longitudeDeg = 0;  ///< from -180 to below 180
    std::optional<double> altitudeM;
};

/// Latitude, longitude and altitude are records of their own: those that come within 100 ms, each once, are one point,
/// at the time of the first of them.
class TrackFollower {
public:
    using Listener = std::function<void(const TrackPoint&)>;

    /// @param track of the recordings whose position is followed
    TrackFollower(const Recordings& recordings, std::size_t track, Listener listener);

    /// Takes all records of the recordings, also those before the span.
    void take(const PlacedRecord& placed);
    /// Gives the last point.
    void end();

private:
    struct Coordinate {
        std::optional<std::int32_t> code;
        std::optional<double> number;
        bool isNew = false;  // since the last point
    };
    [[nodiscard]] bool isPending() const { return m_latitude.isNew || m_longitude.isNew || m_altitude.isNew; }

    const Recordings& m_recordings;
    std::size_t m_track;
    Listener m_listener;
    Coordinate m_latitude;
    Coordinate m_longitude;
    Coordinate m_altitude;
    double m_firstMs = 0;  // of what is pending
};

/// Visits the points of a device in one pass.
void walkTrack(Recordings& recordings, std::size_t track, const NewFile& file, const TrackFollower::Listener& visit);

/// What a format writes of all recordings. @return how many points
using TrackWriter = std::function<std::uint64_t(Recordings& recordings, NewFile& file, QXmlStreamWriter& xml)>;
/// @param passes over the recordings a device
[[nodiscard]] ExitCode exportTrack(const ExportOptions& options, std::size_t passes, const TrackWriter& write);

/// Degrees or metres with the fewest digits that give the number again, never with an exponent.
[[nodiscard]] QString plainDecimal(double number);

}  // namespace RecTool
