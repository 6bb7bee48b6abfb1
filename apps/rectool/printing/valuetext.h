// Values of recordings in words.
#pragma once

#include <optional>
#include <string>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>
#include <values/valuebase.h>

namespace RecTool {

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
