// What recordings are, the state at a moment, and changes of bookmarks.
#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <string>
#include <vector>

#include "reading.h"

namespace RecPython {

/// Headers and tables as a dict. @throws Refusal
[[nodiscard]] pybind11::dict describeFiles(const std::vector<std::string>& files);

/// The last record of every type up to request.to (empty: the end), of each device:
/// [(device, keyword, type number, ms of the axis, value, data), ...]. @throws Refusal, Interrupted
[[nodiscard]] pybind11::list stateOf(const Request& request);

// Times in milliseconds of the file, texts UTF-8. Without the interpreter's lock; whole or not at all. @throws Refusal
void addBookmark(const std::string& file, std::uint64_t timeMs, const std::string& text);
void removeBookmark(const std::string& file, std::uint64_t timeMs);
void renameBookmark(const std::string& file, std::uint64_t timeMs, const std::string& text);

}  // namespace RecPython
