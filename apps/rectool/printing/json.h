// The JSON shapes, which programs depend on: doc/rectool.md describes them.
#pragma once

#include <string>

#include <recording2/inspection/inspection.h>
#include <values/maps.h>
#include <values/valuebase.h>

#include "jsonvalue.h"
#include "typenames.h"

namespace RecTool {

[[nodiscard]] Json toJson(const Recording2::Inspection::Header& header);
[[nodiscard]] Json toJson(const Recording2::Inspection::Finding& finding);
[[nodiscard]] Json toJson(const Recording2::Inspection::Bookmark& bookmark);
[[nodiscard]] Json toJson(const values::ValueBase& value);
/// @param value null when the record's data is not understood
[[nodiscard]] Json toJson(const Recording2::Inspection::Record& record, const values::ValueBase* value,
                          const TypeNames& names);
[[nodiscard]] Json toJson(const values::ChannelRange& channels);
[[nodiscard]] Json toJson(const values::Bearing& bearing);
/// The word for a file that can or cannot be read ("missing").
[[nodiscard]] const char* name(Recording2::Inspection::Readability readability);

/// Any bytes: as text when they are ASCII, in base64 otherwise.
[[nodiscard]] Json dataToJson(const std::string& bytes);
/// What a file's own name or path says: UTF-8, bytes that are none are replaced.
[[nodiscard]] std::string dump(const Json& json, int indent);

}  // namespace RecTool
