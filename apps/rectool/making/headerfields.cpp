// Following records by what the recorder's own header tracker makes of their values.
#include "headerfields.h"

#include <algorithm>
#include <array>

#include <recording2/record/recordtypetable.h>

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

// In the order in which a recorder looks at its values when it starts.
constexpr std::array FollowedTypes = {Recording2::DrvCommands, Recording2::Frequency, Recording2::IfSpan,
                                      Recording2::RfYLimit,    Recording2::StartFreq, Recording2::StopFreq,
                                      Recording2::StartLevel,  Recording2::StopLevel};

}  // namespace

HeaderFields::HeaderFields(const std::vector<Inspection::TypeEntry>& types)
    : m_tracker({}, [this](std::int32_t modeKey) { return hasIfRange(modeKey); })
{
    for (const Inspection::TypeEntry& type : types) {
        const auto* row =
            std::find_if(Recording2::RecordTypeTable.begin(), Recording2::RecordTypeTable.end(),
                         [&](const Recording2::RecordType& known) { return type.keyword == known.keyword; });
        const bool isFollowed = row != Recording2::RecordTypeTable.end() &&
                                std::find(FollowedTypes.begin(), FollowedTypes.end(), row->id) != FollowedTypes.end();
        m_typeIds.emplace(type.typeNumber, isFollowed ? row->id : Recording2::UnknownType);
    }
}

void HeaderFields::follow(const Inspection::Record& record)
{
    const auto type = m_typeIds.find(record.code);
    if (type == m_typeIds.end() || type->second == Recording2::UnknownType) {
        return;
    }
    if (const values::ValueBase* value = m_recorded.apply(record)) {
        m_tracker.follow(type->second, *value);
    }
}

/// In one mode that depends on the antenna's mode, which is not recorded: the range cannot be told from there on.
bool HeaderFields::hasIfRange(std::int32_t modeKey)
{
    const Recording2::IfMode mode = Recording2::ifModeOf(modeKey);
    m_rangeIsUncertain = m_rangeIsUncertain || mode == Recording2::IfMode::DependsOnAntenna;
    return mode == Recording2::IfMode::Yes;
}

void HeaderFields::restart(const InForce& state)
{
    std::map<std::int32_t, const values::ValueBase*> values;  // by the recorder's type ids
    for (const auto& [code, entry] : state.entries()) {
        if (const auto type = m_typeIds.find(code); type != m_typeIds.end() && entry.value != nullptr) {
            values.emplace(type->second, entry.value);
        }
    }
    m_tracker.forgetFrequencies();
    bool followsSpan = false;
    for (const std::int32_t typeId : FollowedTypes) {
        const auto value = values.find(typeId);
        const bool isScan = typeId == Recording2::StartFreq || typeId == Recording2::StopFreq;
        if (value == values.end() || (isScan && followsSpan)) {
            continue;
        }
        const bool taken = m_tracker.assign(typeId, *value->second);
        followsSpan = followsSpan || (taken && typeId == Recording2::IfSpan);  // the device's own range does then, too
    }
}

void HeaderFields::put(Inspection::Header& header) const
{
    Recording2::HeaderRange range = m_tracker.range();
    if (m_rangeIsUncertain) {
        range.startFreq.reset();
        range.stopFreq.reset();
    }
    range.putInto(header);
}

}  // namespace RecTool
