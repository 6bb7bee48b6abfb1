// Rebuilding values record by record within bounded memory.
#include "recordedvalues.h"

#include <algorithm>
#include <limits>
#include <span>

#include <values/recordingtext.h>

namespace RecTool {

using values::CellMap;
using values::ValueBase;
using values::ValueType;

const ValueBase* RecordedValues::apply(const Recording2::Inspection::Record& record)
{
    const ValueType kind = values::RecordedKind(record.data);
    const bool hasRange = values::CarriesChannelRange(record.data);
    const bool rangeOnly = kind == ValueType::Unknown && hasRange;
    if ((kind == ValueType::Unknown && !rangeOnly) || (hasRange && isTooMuch(record.data.size()))) {
        return nullptr;
    }
    std::unique_ptr<ValueBase>& value = m_values[record.code];
    if (!rangeOnly && (value == nullptr || value->GetType() != kind)) {
        value = values::MakeValue(kind);
    }
    const bool isApplied = value != nullptr && value->ApplyRecordedState(record.data, 0, false);
    if (const auto* map = hasRange ? dynamic_cast<const values::MappingBase*>(value.get()) : nullptr) {
        m_load.channels += map->size();
    }
    return isApplied ? value.get() : nullptr;
}

const ValueBase* RecordedValues::applyAlone(const Recording2::Inspection::Record& record)
{
    const auto before = m_values.find(record.code);
    auto* const map =
        before == m_values.end() ? nullptr : dynamic_cast<CellMap<float, values::levelHandler>*>(before->second.get());
    if (map != nullptr) {
        m_blank.resize(std::max(m_blank.size(), map->size()), std::numeric_limits<float>::quiet_NaN());
        map->SetCells(0, std::span(m_blank).first(map->size()), map->GetTimeStamp());
    }
    return apply(record);
}

bool RecordedValues::isTooMuch(std::size_t textBytes)
{
    constexpr std::uint64_t Most = std::uint64_t{1} << 25U;  // two maps of the largest range
    constexpr std::uint64_t PerByte = 16;                    // a channel whose cell is written takes a byte at least
    m_load.textBytes += textBytes;
    return m_load.channels > Most + PerByte * m_load.textBytes;
}

const ValueBase* RecordedValues::find(std::int32_t code) const
{
    const auto found = m_values.find(code);
    return found == m_values.end() ? nullptr : found->second.get();
}

}  // namespace RecTool
