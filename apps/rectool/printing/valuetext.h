// Types and values of recordings in words.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>
#include <values/valuebase.h>

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

/// The lowest and highest number of some, those that are none left out.
struct MeasuredSpan {
    std::size_t count = 0;
    double lowest = 0;
    double highest = 0;

    void add(double number);
};

/// A value as a person would write it, on one line. Maps: range, number of channels, lowest and highest.
[[nodiscard]] std::string describe(const values::ValueBase& value);
/// The same for the value that a record led to. @param value null when the record's data is not understood: it is then
/// shown as it is, cut where it is long
[[nodiscard]] std::string describe(const Recording2::Inspection::Record& record, const values::ValueBase* value);

/// The number of a value that is one; nothing for others and for null.
[[nodiscard]] std::optional<double> plainNumber(const values::ValueBase* value);

/// Whether nothing of a bearing was measured.
[[nodiscard]] bool isEmpty(const values::Bearing& bearing);

}  // namespace RecTool
