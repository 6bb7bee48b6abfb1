#include "inforce.h"

namespace RecTool {

void InForce::apply(const Recording2::Inspection::Record& record)
{
    if (record.timeMs != 0) {
        LastRecord& last = m_last[record.code];
        last.record = record;
        last.value = m_recorded.apply(record);
    }
}

const LastRecord* InForce::find(std::int32_t code) const
{
    const auto found = m_last.find(code);
    return found == m_last.end() ? nullptr : &found->second;
}

std::vector<std::string> InForce::completeTexts(std::int32_t code) const
{
    const LastRecord* last = find(code);
    if (last == nullptr) {
        return {};
    }
    // Records behind one that is not understood go on with what was there before it.
    std::vector<std::string> texts;
    if (const values::ValueBase* value = m_recorded.find(code)) {
        texts.push_back(value->GetObjectStateStringForRecording());
    }
    if (last->value == nullptr) {
        texts.push_back(last->record.data);
    }
    return texts;
}

}  // namespace RecTool
