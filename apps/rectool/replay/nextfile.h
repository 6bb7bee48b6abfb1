// A recording that became too long for one file goes on in another one.
#pragma once

#include <string>

#include <recording2/inspection/inspection.h>

namespace RecTool {

/// The file in the same directory in which the recorder goes on: of the same device, begun at most 10 s after the
/// other's stop, the first of these. Empty when there is none (yet).
/// @param file as it is named now
[[nodiscard]] std::string nextFileOf(const std::string& file, const Recording2::Inspection::Header& header);

}  // namespace RecTool
