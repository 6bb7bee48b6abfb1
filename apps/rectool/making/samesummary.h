// Whether two files hold the same tables.
#pragma once

#include <vector>

#include <recording2/inspection/inspection.h>

namespace RecTool {

[[nodiscard]] bool sameTable(const std::vector<Recording2::Inspection::TypeEntry>& a,
                             const std::vector<Recording2::Inspection::TypeEntry>& b);
[[nodiscard]] bool sameTable(const std::vector<Recording2::Inspection::TimeEntry>& a,
                             const std::vector<Recording2::Inspection::TimeEntry>& b);
[[nodiscard]] bool sameTable(const std::vector<Recording2::Inspection::Bookmark>& a,
                             const std::vector<Recording2::Inspection::Bookmark>& b);

}  // namespace RecTool
