// Every bearing that a direction finder took, also one with the same result as the one before.
#pragma once

#include <cstdint>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>

#include "bearingreplay.h"
#include "carriedcells.h"

namespace RecTool {

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
