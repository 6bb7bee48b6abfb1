// The JSON shapes, which programs depend on: doc/rectool.md describes them.
#pragma once

#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>
#include <values/valuebase.h>

#include "jsonvalue.h"
#include "valuetext.h"

namespace Recording2::Inspection {
struct RepairedTimes;
}

namespace RecTool {

[[nodiscard]] Json toJson(const Recording2::Inspection::Header& header);
[[nodiscard]] Json toJson(const Recording2::Inspection::Finding& finding);
[[nodiscard]] Json toJson(const Recording2::Inspection::Bookmark& bookmark);
template <typename Item>
[[nodiscard]] Json toJson(const std::vector<Item>& items)
{
    return Json::arrayOf(items, [](const Item& item) { return toJson(item); });
}
[[nodiscard]] Json toJson(const values::ValueBase& value);
/// @param value null when the record's data is not understood
[[nodiscard]] Json toJson(const Recording2::Inspection::Record& record, const values::ValueBase* value,
                          const TypeNames& names);
[[nodiscard]] Json toJson(const values::ChannelRange& channels);
[[nodiscard]] Json toJson(const values::Bearing& bearing);
/// How many there are of each kind.
[[nodiscard]] Json toJson(const Recording2::Inspection::RepairedTimes& times);
/// The word for a file that can or cannot be read ("missing").
[[nodiscard]] const char* name(Recording2::Inspection::Readability readability);

/// Any bytes: as text when they are ASCII, in base64 otherwise.
[[nodiscard]] Json dataToJson(const std::string& bytes);
/// Prints it on standard output, over several lines.
void printJson(const Json& json);

}  // namespace RecTool
