// The bearings of a recording: the DFSPECTRUM records replayed into the map that the direction finder had, and every
// bearing that it took, also one with the same result as the one before.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
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

/// Which cells a record of a bearing map carries, whether they changed or not.
class CarriedCells {
public:
    /// Looks at a record's text. @param range of the map after the record @return false when the text is refused
    bool read(const std::string& text, const values::ChannelRange& range);

    [[nodiscard]] const std::vector<std::size_t>& channels() const { return m_channels; }  ///< ascending
    [[nodiscard]] unsigned long long timeStampUs() const { return m_map.GetTimeStamp(); }
    /// The text carries the whole map, whatever was measured.
    [[nodiscard]] bool all() const { return m_channels.size() == m_map.size(); }

private:
    values::FastValueMap<values::Bearing, values::BearingHandler> m_map;
    std::vector<values::Bearing> m_marks;
    std::vector<std::size_t> m_channels;
};

/// A bearing was taken when its cell became another one, and when a record that tells a change carries the cell once
/// more: whoever writes a cell has measured it, also with the same result in the same second at another place. A
/// complete map of several channels says nothing about cells that stayed the same, unless none of them changed: then
/// it was the one of the frequency in force, or the only one that has a bearing. A complete map with its channel range
/// under the time stamp of the record before is the state, which files begin with, and no news.
class MeasuredBearings {
public:
    /// Told of every bearing, in order of records and channels. A cell that was emptied is told too (isEmpty).
    using Listener = BearingReplay::Listener;

    explicit MeasuredBearings(Listener listener) : m_listener(std::move(listener)) {}

    /// The frequency that the direction finder is set to from now on, in Hz.
    void tune(double frequencyHz) { m_frequencyHz = frequencyHz; }
    /// Applies a record. All records of the direction finder must be applied in their order.
    void apply(const Recording2::Inspection::Record& record);
    [[nodiscard]] const values::ChannelRange& range() const { return m_replay.range(); }
    [[nodiscard]] std::uint64_t passedOver() const { return m_replay.passedOver(); }  ///< records that are no bearings

private:
    [[nodiscard]] std::vector<std::size_t> measuredChannels(bool isState) const;
    [[nodiscard]] std::vector<std::size_t> likelyChannel() const;

    Listener m_listener;
    std::vector<std::size_t> m_changed;  // by the record being applied
    BearingReplay m_replay{[this](const BearingChange& change) { m_changed.push_back(change.channel); }};
    CarriedCells m_carried;
    unsigned long long m_timeStampUs = 0;  // of the record before
    double m_frequencyHz = 0;
};

}  // namespace RecTool
