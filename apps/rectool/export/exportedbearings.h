// The bearings of recordings, each as it was taken, with where and how the direction finder stood.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include <values/maps.h>

#include "analysis/stationplaces.h"
#include "export.h"
#include "replay/measuredbearings.h"

namespace RecTool {

/// What is not known is NaN.
struct ExportedBearing {
    const PlacedRecord& placed;
    double frequencyHz = 0;
    values::Bearing bearing;  ///< with an azimuth, as recorded: relative to the antenna
    StationPlace place;
    double headingDeg = 0;  ///< of the antenna's zero, from true north
};

class ExportedBearings {
public:
    using Visit = std::function<void(const ExportedBearing&)>;

    /// Visits the bearings of the span, as far as their type is wanted, while the records are walked.
    ExportedBearings(const Recordings& recordings, ExportedRecords& records, Visit visit);
    ExportedBearings(const ExportedBearings&) = delete;
    ExportedBearings& operator=(const ExportedBearings&) = delete;
    ~ExportedBearings() = default;

    [[nodiscard]] std::uint64_t count() const { return m_count; }

private:
    void take(const PlacedRecord& placed);
    void tell(std::size_t track, const BearingChange& change);

    const Recordings& m_recordings;
    Visit m_visit;
    StationPlaces m_places;
    std::vector<std::unique_ptr<MeasuredBearings>> m_finders;  // by track, null where bearings are not wanted
    std::vector<std::optional<std::int32_t>> m_codes;
    const PlacedRecord* m_now = nullptr;
    std::uint64_t m_count = 0;
};

}  // namespace RecTool
