// The frequencies and levels of a header, which a recorder learns from the values that it records.
#pragma once

#include <cstdint>
#include <optional>

#include <recording2/inspection/inspection.h>
#include <values/valuebase.h>

#include "replay/inforce.h"
#include "replay/typenames.h"

namespace RecTool {

/// Follows the records of a file as the recorder that wrote them followed its values. What they do not tell is not
/// known.
class HeaderFields {
public:
    /// @param names must outlive the object
    explicit HeaderFields(const TypeNames& names) : m_names(names) {}

    void follow(const Recording2::Inspection::Record& record);
    /// A recording starts with this state: what was followed up to here belongs to another one.
    void restart(const InForce& state);
    /// Puts in what is known; other fields stay.
    void put(Recording2::Inspection::Header& header) const;
    [[nodiscard]] bool tellLevels() const { return m_minLevel || m_maxLevel; }  ///< whether the records told a level

private:
    enum class Field : std::uint8_t {
        None,
        StartFreq,
        StopFreq,
        Frequency,
        StartLevel,
        StopLevel,
        RfYLimit,
        Mode,
        IfSpan
    };

    [[nodiscard]] Field fieldOf(std::int32_t code) const;
    void take(Field field, const values::ValueBase& value);
    bool takeFrequency(const values::ValueBase& value);
    bool takeIfSpan(const values::ValueBase& value);
    void takeLevels(Field field, const values::ValueBase& value);
    [[nodiscard]] bool modeHasIfRange();
    void computeRange();

    const TypeNames& m_names;
    RecordedValues m_recorded;
    std::optional<float> m_startFreq;
    std::optional<float> m_stopFreq;
    std::optional<std::int32_t> m_minLevel;
    std::optional<std::int32_t> m_maxLevel;
    float m_frequency = 0;
    double m_frequencyOffset = 0;
    float m_ifSpan = 0;
    std::int32_t m_mode = 0;
    bool m_rangeIsUncertain = false;
};

}  // namespace RecTool
