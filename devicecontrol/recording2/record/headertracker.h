// What the header of a recording tells of frequencies and levels, followed from value to value.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

#include <values/valuebase.h>

#include "../format/layout.h"

namespace Recording2 {

/// Frequencies in Hz, levels in the unit of their values; nothing where no value told.
struct HeaderRange {
    std::optional<float> startFreq;
    std::optional<float> stopFreq;
    std::optional<std::int32_t> minLevel;
    std::optional<std::int32_t> maxLevel;

    friend bool operator==(const HeaderRange&, const HeaderRange&) = default;
    /// Puts in what is known; other fields stay.
    void putInto(Format::HeaderRecord& header) const;
};

/// Whether the range of a receiver follows its frequency and IF span in a mode.
enum class IfMode : std::uint8_t {
    No,
    Yes,
    DependsOnAntenna,  ///< not while the antenna is that of the direction finder
};
[[nodiscard]] IfMode ifModeOf(std::int32_t modeKey);

/// Takes values by their type ids. A value of another class than its type has is passed over.
class HeaderTracker {
public:
    using HasIfRange = std::function<bool(std::int32_t modeKey)>;

    /// @param range before any value tells
    /// @param hasIfRange whether the range follows frequency and IF span now; asked when one of the two is taken
    HeaderTracker(const HeaderRange& range, HasIfRange hasIfRange) : m_range(range), m_hasIfRange(std::move(hasIfRange))
    {
    }

    /// Takes over what a value is when a recording starts.
    /// @return for the mode, whether it was told; for the IF span, whether the frequencies were set by it
    bool assign(std::int32_t typeId, const values::ValueBase& value) { return take(typeId, value, true); }
    /// Follows a change: the frequencies of a scan widen the range. @return as for assign
    bool follow(std::int32_t typeId, const values::ValueBase& value) { return take(typeId, value, false); }
    void forgetFrequencies();

    [[nodiscard]] const HeaderRange& range() const { return m_range; }
    [[nodiscard]] std::int32_t modeKey() const { return m_modeKey; }

private:
    friend class RecordingTestPeer;

    bool take(std::int32_t typeId, const values::ValueBase& value, bool anew);
    void takeScan(std::int32_t typeId, const values::ValueBase& value, bool anew);
    bool takeFrequency(const values::ValueBase& value);
    bool takeModeKey(const values::ValueBase& value);
    bool takeIfSpan(const values::ValueBase& value);
    void takeLevels(std::int32_t typeId, const values::ValueBase& value);
    void computeRange();

    HeaderRange m_range;
    HasIfRange m_hasIfRange;
    float m_frequency = 0;
    double m_frequencyOffset = 0;
    float m_ifSpan = 0;
    std::int32_t m_modeKey = 0;
};

}  // namespace Recording2
