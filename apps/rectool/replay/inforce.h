// What is in force at a moment of a recording: the last record of every type and the value that it led to.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <values/valuebase.h>

#include "recordedvalues.h"

namespace RecTool {

/// The last record of a type and what the value is after it.
struct LastRecord {
    Recording2::Inspection::Record record;
    const values::ValueBase* value = nullptr;  ///< null when the record is not understood
};

/// The state of a recording as its records build it up. Every record from the beginning on must be applied for maps to
/// be complete. Records whose time is lost have no place in it: applying them does nothing.
class InForce {
public:
    void apply(const Recording2::Inspection::Record& record);
    /// Takes a type's state over from elsewhere: its last record, the texts that completeTexts gave then, and whether
    /// the record was understood.
    void restore(Recording2::Inspection::Record last, const std::vector<std::string>& texts, bool isUnderstood);
    [[nodiscard]] const RecordedValues::Load& load() const { return m_recorded.load(); }
    void setLoad(const RecordedValues::Load& load) { m_recorded.setLoad(load); }

    /// By type number. The values are good until the next record is applied.
    [[nodiscard]] const std::map<std::int32_t, LastRecord>& entries() const { return m_last; }
    [[nodiscard]] const LastRecord* find(std::int32_t code) const;  ///< null when the type has no record
    /// A type's value as the last record that was understood left it; null when there is none.
    [[nodiscard]] const values::ValueBase* value(std::int32_t code) const { return m_recorded.find(code); }
    /// The same as entries, in the order in which the values took their state.
    [[nodiscard]] std::vector<std::pair<std::int32_t, const LastRecord*>> inOrder() const;
    /// The texts that bring about the state of a type in an empty recording: one, or two where the last record is not
    /// understood and an earlier one was. Maps are given with their range and all cells, data that is not understood as
    /// it was recorded.
    [[nodiscard]] std::vector<std::string> completeTexts(std::int32_t code) const;

private:
    RecordedValues m_recorded;
    std::map<std::int32_t, LastRecord> m_last;
};

}  // namespace RecTool
