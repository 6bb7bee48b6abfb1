// Recorded values: the texts of the records turned back into what the recorder saw.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>
#include <values/valuebase.h>

namespace RecTool {

/// The values of a recording, one a type number. A record may hold only what changed, so every record from the
/// beginning on must be applied for a value to be complete.
class RecordedValues {
public:
    /// Applies a record. @return the value as it is then, null when the record's text is not understood; valid until
    /// the next record of the same type number is applied. Channel ranges that by far exceed what their texts carry are
    /// not understood once all of them together would fill the memory: a short text may ask for 16,777,216 channels.
    const values::ValueBase* apply(const Recording2::Inspection::Record& record);
    /// The same, but a map of levels has then only the cells that this record carries; the others are NaN.
    const values::ValueBase* applyAlone(const Recording2::Inspection::Record& record);
    /// The value of a type number as the last record that was understood left it; null when there is none.
    [[nodiscard]] const values::ValueBase* find(std::int32_t code) const;

    /// What decides when channel ranges are too many: to be taken over by whoever goes on in the middle of a recording.
    struct Load {
        std::uint64_t channels = 0;   ///< of all ranges so far
        std::uint64_t textBytes = 0;  ///< of the texts that they came from
    };
    [[nodiscard]] const Load& load() const { return m_load; }
    void setLoad(const Load& load) { m_load = load; }

private:
    bool isTooMuch(std::size_t textBytes);

    std::map<std::int32_t, std::unique_ptr<values::ValueBase>> m_values;
    std::vector<float> m_blank;  // cells
    Load m_load;
};

}  // namespace RecTool
