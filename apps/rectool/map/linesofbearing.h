// The bearings of a recording with the place where they were taken and their true direction.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>

#include "geo/position.h"
#include "printing/typenames.h"

namespace RecTool {

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
    ~BearingTaker();

    /// Takes a record, all of them in their order; of those whose time is lost nothing is known.
    void apply(const Recording2::Inspection::Record& record);
    /// Of the station, as it is in force; nothing where it is not known.
    [[nodiscard]] std::optional<Geo::Position> position() const;
    [[nodiscard]] std::uint64_t passedOver() const;  ///< DFSPECTRUM records that are no bearings

private:
    struct Private;
    std::unique_ptr<Private> d;
};

struct TakenBearings {
    std::vector<TakenBearing> bearings;  ///< in the order of the records
    std::uint64_t withoutPosition = 0;   ///< bearings that are left out because nobody knows where they were taken
    std::uint64_t passedOver = 0;        ///< DFSPECTRUM records that are no bearings
    std::vector<Recording2::Inspection::Finding> findings;  ///< damage of the tables and the records
};

/// Walks a recording and takes the bearings that were measured in a span, as MeasuredBearings tells them apart.
[[nodiscard]] TakenBearings takeBearings(const std::string& file, const Recording2::Inspection::Summary& summary,
                                         std::uint64_t fromMs, std::uint64_t toMs);

}  // namespace RecTool
