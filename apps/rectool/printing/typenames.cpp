// Looking up types by number or keyword, and their labels in print.
#include "typenames.h"

#include <algorithm>
#include <charconv>

#include <QString>

#include "table.h"
#include "text.h"

namespace RecTool {

using Recording2::Inspection::TypeEntry;

TypeNames::TypeNames(const std::vector<TypeEntry>& types)
{
    for (const TypeEntry& type : types) {
        m_types.emplace(type.typeNumber, &type);  // the first entry of a number counts
    }
}

const TypeEntry* TypeNames::find(std::int32_t number) const
{
    const auto found = m_types.find(number);
    return found == m_types.end() ? nullptr : found->second;
}

std::string TypeNames::label(std::int32_t number) const
{
    const TypeEntry* type = find(number);
    if (type == nullptr || type->keyword.empty()) {
        return "type " + std::to_string(number);
    }
    constexpr std::size_t Longest = 100;  // it may stand before every record
    const bool isLong = type->keyword.size() > Longest;
    return oneLine(fromLatin1(type->keyword.substr(0, Longest))) + (isLong ? "..." : "");
}

std::optional<std::int32_t> TypeNames::numberOf(const std::string& keywordOrNumber) const
{
    std::int32_t number = 0;
    const char* end = keywordOrNumber.data() + keywordOrNumber.size();
    const auto [last, error] = std::from_chars(keywordOrNumber.data(), end, number);
    if (error == std::errc() && last == end) {
        return number;
    }
    const QString wanted = QString::fromStdString(keywordOrNumber);
    for (const auto& [typeNumber, type] : m_types) {
        if (wanted.compare(QString::fromStdString(fromLatin1(type->keyword)), Qt::CaseInsensitive) == 0) {
            return typeNumber;
        }
    }
    return std::nullopt;
}

std::string TypeNames::allKeywords() const
{
    std::string all;
    for (const auto& [number, type] : m_types) {
        all += (all.empty() ? "" : ", ") + label(number);
    }
    return all;
}

std::size_t TypeNames::longestLabel() const
{
    std::size_t longest = 0;
    for (const auto& [number, type] : m_types) {
        longest = std::max(longest, width(label(number)));
    }
    return longest;
}

}  // namespace RecTool
