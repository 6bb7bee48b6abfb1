// The bearings of a recording: the DFSPECTRUM records replayed into the map that the direction finder had.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>

#include "recordedvalues.h"

namespace RecTool {

/// Whether every figure is the same; what was not measured is the same as itself.
[[nodiscard]] bool isSame(const values::Bearing& a, const values::Bearing& b);

/// A cell of the bearing map that became something else.
struct BearingChange {
    std::size_t channel = 0;
    values::Bearing bearing;            ///< what it is now; may be empty (isEmpty)
    std::uint64_t timeMs = 0;           ///< of the record
    unsigned long long measuredUs = 0;  ///< time stamp of the map then: since 1970 UTC, 0 for none
};

/// The bearing map of a recording as its records build it up. A new channel range empties it.
class BearingReplay {
public:
    /// Told of every cell that changed; range() is the one in force then. Cells that a new range emptied are not told.
    using Listener = std::function<void(const BearingChange&)>;

    explicit BearingReplay(Listener listener = {}) : m_listener(std::move(listener)) {}

    /// Applies a record. All records of the direction finder must be applied in their order.
    void apply(const Recording2::Inspection::Record& record);
    [[nodiscard]] const values::ChannelRange& range() const { return m_range; }
    /// The last change of each channel; without any, an empty bearing at the time 0.
    [[nodiscard]] const std::vector<BearingChange>& channels() const { return m_channels; }
    /// Records that are no bearings.
    [[nodiscard]] std::uint64_t passedOver() const { return m_passedOver; }

private:
    void update(const values::CellMap<values::Bearing, values::BearingHandler>& map, std::uint64_t timeMs);

    Listener m_listener;
    RecordedValues m_recorded;
    values::ChannelRange m_range;
    std::vector<BearingChange> m_channels;
    std::uint64_t m_passedOver = 0;
};

}  // namespace RecTool
