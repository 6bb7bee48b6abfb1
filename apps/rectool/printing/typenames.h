// What a recording's own type table calls its types.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

namespace RecTool {

/// The keyword of the bearings of a direction finder, the only type that is replayed into bearing maps.
constexpr const char* DirectionFindingKeyword = "DFSPECTRUM";

class TypeNames {
public:
    /// @param types must outlive the object
    explicit TypeNames(const std::vector<Recording2::Inspection::TypeEntry>& types);

    /// The entry of a type number, null when the type table does not name it.
    [[nodiscard]] const Recording2::Inspection::TypeEntry* find(std::int32_t number) const;
    /// The keyword in UTF-8; "type 7" for a type without one.
    [[nodiscard]] std::string label(std::int32_t number) const;
    /// The number of a keyword (in capitals or not) or of a number. Any number is taken.
    [[nodiscard]] std::optional<std::int32_t> numberOf(const std::string& keywordOrNumber) const;
    [[nodiscard]] std::string allKeywords() const;  ///< separated by commas
    [[nodiscard]] std::size_t longestLabel() const;

private:
    std::map<std::int32_t, const Recording2::Inspection::TypeEntry*> m_types;
};

}  // namespace RecTool
