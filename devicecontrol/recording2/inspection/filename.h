// The 8-bit names of files as the library has them: code page 1252 on Windows, bytes as they stand elsewhere.
#pragma once

#include <filesystem>
#include <string>

namespace Recording2::Inspection {

/// The same name for the standard library.
[[nodiscard]] std::filesystem::path native(const std::string& name);

}  // namespace Recording2::Inspection
