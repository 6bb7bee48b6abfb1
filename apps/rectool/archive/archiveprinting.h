// What the archive knows, for people and for machines.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <QString>

#include <zelvo/archive.h>

#include "printing/json.h"

namespace RecTool {

// Texts of the registry come from anywhere.
[[nodiscard]] std::string plain(const QString& text);
[[nodiscard]] std::string count(std::int64_t number);
/// Before an address's group.
inline constexpr std::string_view AddressScheme = "zelvo:///";
[[nodiscard]] const char* nameOf(Zelvo::StorageProblem::Kind kind);
/// Whether the last move of the file failed.
[[nodiscard]] bool hasFailed(const Zelvo::FileInfo& file);

[[nodiscard]] Json archiveJson(const Zelvo::FileInfo& file);
[[nodiscard]] Json archiveJson(const Zelvo::GroupInfo& group);
[[nodiscard]] Json archiveJson(const Zelvo::StationInfo& station);
[[nodiscard]] Json archiveJson(const Zelvo::ArchiveStatus& status);
template <typename Item>
[[nodiscard]] Json archiveJson(const std::vector<Item>& items)
{
    return Json::arrayOf(items, [](const Item& item) { return archiveJson(item); });
}

void printStatus(const Zelvo::ArchiveStatus& status);
void printGroups(const std::vector<Zelvo::GroupInfo>& groups);
void printGroup(const Zelvo::GroupInfo& group);
void printFiles(const std::vector<Zelvo::FileInfo>& files);
void printFile(const Zelvo::FileInfo& file);

}  // namespace RecTool
