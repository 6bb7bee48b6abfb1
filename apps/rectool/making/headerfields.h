// The frequencies and levels of a header, which a recorder learns from the values that it records.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <recording2/record/headertracker.h>

#include "replay/inforce.h"
#include "replay/recordedvalues.h"

namespace RecTool {

/// Follows the records of a file as the recorder that wrote them followed its values. What they do not tell is not
/// known.
class HeaderFields {
public:
    explicit HeaderFields(const std::vector<Recording2::Inspection::TypeEntry>& types);
    HeaderFields(const HeaderFields&) = delete;
    HeaderFields& operator=(const HeaderFields&) = delete;

    void follow(const Recording2::Inspection::Record& record);
    /// A recording starts with this state: what was followed up to here belongs to another one.
    void restart(const InForce& state);
    /// Puts in what is known; other fields stay.
    void put(Recording2::Inspection::Header& header) const;
    /// Whether the records told a level.
    [[nodiscard]] bool tellLevels() const { return m_tracker.range().minLevel || m_tracker.range().maxLevel; }

private:
    [[nodiscard]] bool hasIfRange(std::int32_t modeKey);

    std::map<std::int32_t, std::int32_t> m_typeIds;  // the recorder's, by those of this file
    RecordedValues m_recorded;
    Recording2::HeaderTracker m_tracker;
    bool m_rangeIsUncertain = false;
};

}  // namespace RecTool
