// File names where the platforms differ. Within rectool they are UTF-8 on Windows, and elsewhere bytes as they were
// given; so is what else comes from the command line.
#pragma once

#include <string>

#include <recording2/inspection/filename.h>
#include <QString>

namespace RecTool {

/// The 8-bit name that CFileAccess takes. A character that has none there becomes a "?", which is in no name of
/// Windows: opening such a file fails.
[[nodiscard]] std::string forLibrary(const std::string& name);
using Recording2::Inspection::native;  ///< the same name for the standard library
using Recording2::Inspection::utf8;    ///< and back
/// The same name for Qt.
[[nodiscard]] QString forQt(const std::string& name);

}  // namespace RecTool
