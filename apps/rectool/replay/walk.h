// Reading a recording for a verb: what is wrong with it is told, and how far the reading has come.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <recording2/inspection/inspection.h>

namespace RecTool {

/// Reads header and tables. @return false, told, for a file that cannot be read
[[nodiscard]] bool readSummary(const std::string& file, Recording2::Inspection::Summary& summary);

/// Visits the records under a line of progress, until the visitor gives false.
/// @param progress is told instead, where it is not empty
/// @return what is damaged in the tables and in the records
[[nodiscard]] std::vector<Recording2::Inspection::Finding> walk(
    const std::string& file, const Recording2::Inspection::Summary& summary,
    const std::function<bool(const Recording2::Inspection::Record&)>& visit,
    const std::function<void(std::int64_t, std::int64_t)>& progress = {});

}  // namespace RecTool
