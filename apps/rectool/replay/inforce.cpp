// Keeping the last record of every type, and the texts that rebuild its value.
#include "inforce.h"

#include <algorithm>

namespace RecTool {

void InForce::apply(const Recording2::Inspection::Record& record)
{
    if (record.timeMs != 0) {
        LastRecord& last = m_last[record.code];
        last.record = record;
        last.value = m_recorded.apply(record);
    }
}

void InForce::restore(Recording2::Inspection::Record last, const std::vector<std::string>& texts, bool isUnderstood)
{
    const std::int32_t code = last.code;
    for (const std::string& text : texts) {
        static_cast<void>(m_recorded.apply({last.position, last.timeMs, code, text}));
    }
    m_last[code] = {std::move(last), isUnderstood ? m_recorded.find(code) : nullptr};
}

const LastRecord* InForce::find(std::int32_t code) const
{
    const auto found = m_last.find(code);
    return found == m_last.end() ? nullptr : &found->second;
}

std::vector<std::pair<std::int32_t, const LastRecord*>> InForce::inOrder() const
{
    std::vector<std::pair<std::int32_t, const LastRecord*>> entries;
    for (const auto& [code, last] : m_last) {
        entries.emplace_back(code, &last);
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const auto& a, const auto& b) { return a.second->record.timeMs < b.second->record.timeMs; });
    return entries;
}

std::vector<std::string> InForce::completeTexts(std::int32_t code) const
{
    const LastRecord* last = find(code);
    if (last == nullptr) {
        return {};
    }
    // Records after one that is not understood go on with what was there before it.
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
