// The bearings of recordings with the place where they were taken and their true direction.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>

#include "bearingreplay.h"
#include "geo/geodesic.h"
#include "printing/valuetext.h"
#include "recordedvalues.h"
#include "recordings.h"
#include "recordingtime.h"

namespace RecTool {

/// The position of a recorded latitude and longitude, which may be 0 to 360. Nothing for what is no place on earth, and
/// for 0, 0, which values hold that nobody has set.
[[nodiscard]] std::optional<Geo::Position> positionOf(std::optional<double> latitudeDeg,
                                                      std::optional<double> longitudeDeg);

/// Where a station was, how it stood and what it was tuned to: nothing for what is not known.
class StationValues {
public:
    /// @param names of the recording's types
    explicit StationValues(const TypeNames& names);

    /// @return whether the record was one of these values
    bool apply(const Recording2::Inspection::Record& record);

    [[nodiscard]] std::optional<Geo::Position> position() const { return positionOf(m_latitude.is, m_longitude.is); }
    [[nodiscard]] std::optional<double> headingDeg() const;  ///< of the antenna's zero from true north
    [[nodiscard]] std::optional<double> frequencyHz() const { return m_frequency.is; }

private:
    struct Number {
        std::optional<std::int32_t> code;
        std::optional<double> is;
    };

    Number m_latitude;
    Number m_longitude;
    Number m_heading;
    Number m_frequency;
    RecordedValues m_recorded;
};

/// Of all devices, by track.
[[nodiscard]] std::vector<StationValues> stationValues(const Recordings& recordings);

struct TakenBearing {
    std::size_t channel = 0;
    double frequencyHz = 0;
    values::Bearing bearing;            ///< as recorded, with an azimuth
    std::uint64_t timeMs = 0;           ///< of the record
    unsigned long long measuredUs = 0;  ///< since 1970 UTC: time stamp of the map, or the record's own time without one
    std::optional<double> headingDeg;   ///< of the antenna's zero, if recorded
    Geo::LineOfBearing line;            ///< from the position in force; the azimuth is true where there is a heading
};

/// Follows position, heading and bearings record by record.
class BearingTaker {
public:
    struct Taken {
        const TakenBearing& bearing;
        bool hasPosition;                   ///< nobody knows where it was taken without; its line is none then
        double momentMs;                    ///< of the recording
        const values::ChannelRange& range;  ///< that its channel is of
    };
    using Listener = std::function<void(const Taken&)>;

    /// @param names of the recording's types @param startMs of the recording, since 1970 UTC
    BearingTaker(const TypeNames& names, std::uint64_t startMs, Listener listener);
    BearingTaker(const BearingTaker&) = delete;
    BearingTaker& operator=(const BearingTaker&) = delete;
    ~BearingTaker() = default;

    /// Takes a record, all of them in their order; of those whose time is lost nothing is known.
    void apply(const Recording2::Inspection::Record& record);
    /// Of the station, as it is in force; nothing where it is not known.
    [[nodiscard]] std::optional<Geo::Position> position() const { return m_station.position(); }
    [[nodiscard]] std::optional<double> headingDeg() const { return m_station.headingDeg(); }
    [[nodiscard]] std::uint64_t passedOver() const { return m_measured.passedOver(); }  ///< as MeasuredBearings

private:
    void take(const BearingChange& change);

    std::optional<std::int32_t> m_code;
    StationValues m_station;
    MeasuredBearings m_measured{[this](const BearingChange& change) { take(change); }};
    std::uint64_t m_startMs;
    Listener m_listener;
    double m_momentMs = 0;  // of the record
};

/// Whether a direction finder's bearings are among the recordings.
[[nodiscard]] bool hasBearings(const Recordings& recordings);

/// The bearings of all devices, while recordings are walked.
class AllBearings {
public:
    /// Told of every bearing and the record that carries it, also before the span.
    using Listener = std::function<void(const PlacedRecord& placed, const BearingTaker::Taken& taken)>;

    AllBearings(const Recordings& recordings, Listener listener);
    AllBearings(const AllBearings&) = delete;
    AllBearings& operator=(const AllBearings&) = delete;
    ~AllBearings() = default;

    /// Takes a record, all of them in their order.
    void apply(const PlacedRecord& placed);
    [[nodiscard]] const BearingTaker& of(std::size_t track) const { return m_takers[track]; }
    [[nodiscard]] std::uint64_t passedOver() const;

private:
    Listener m_listener;
    std::deque<BearingTaker> m_takers;  // by track
    const PlacedRecord* m_now = nullptr;
};

struct TakenBearings {
    std::vector<TakenBearing> bearings;  ///< in the order of the records
    std::uint64_t withoutPosition = 0;   ///< bearings that are left out because nobody knows where they were taken
    std::uint64_t passedOver = 0;        ///< DFSPECTRUM records that are no bearings
    std::vector<Recording2::Inspection::Finding> findings;  ///< damage of the tables and the records
};

/// Walks a recording and takes the bearings that were measured in a span, as MeasuredBearings tells them apart.
[[nodiscard]] TakenBearings takeBearings(const std::string& file, const Recording2::Inspection::Summary& summary,
                                         const Span& span);

}  // namespace RecTool
