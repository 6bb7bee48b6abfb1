// File names where the platforms differ. Within rectool they are UTF-8 on Windows, and elsewhere bytes as they were
// given; so is what else comes from the command line.
#pragma once

#include <filesystem>
#include <string>

#include <QString>

namespace RecTool {

/// The 8-bit name that CFileAccess takes. A character that has none there becomes a "?", which is in no name of
/// Windows: opening such a file fails.
[[nodiscard]] std::string forLibrary(const std::string& name);
/// The same name for the standard library.
[[nodiscard]] std::filesystem::path native(const std::string& name);
/// The same name for Qt.
[[nodiscard]] QString forQt(const std::string& name);
/// A name of the standard library as rectool has it.
[[nodiscard]] std::string fromNative(const std::filesystem::path& path);

}  // namespace RecTool
