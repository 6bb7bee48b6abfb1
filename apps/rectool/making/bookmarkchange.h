// Changes of a recording's bookmarks in place, as every program makes them.
#pragma once

#include <cstdint>
#include <string>

#include "filechange.h"

namespace RecTool {

// The change was checked before. Times are milliseconds of the recording, texts UTF-8 with characters of Latin-1. What
// is refused is told, and nothing was changed then.

ExitCode storeBookmark(FileChange& change, std::uint64_t time, const std::string& text);
ExitCode dropBookmark(FileChange& change, std::uint64_t time);
/// Gives the bookmark at a time another text.
ExitCode renameBookmark(FileChange& change, std::uint64_t time, const std::string& text);

}  // namespace RecTool
