// What rectool writes besides recordings: pictures and GeoJSON.
#pragma once

#include <functional>
#include <string>

#include <QIODevice>

#include "printing/exitcode.h"

namespace RecTool {

/// Whether a picture or a document may take a name. Measurements cannot be repeated: no recording is ever replaced,
/// neither the one that is read nor another; nor is what is more than a file, a device say. @return false, told
[[nodiscard]] bool mayReplace(const std::string& path);

/// Whether there is a recording, finished or not, by what the file holds.
[[nodiscard]] bool holdsRecording(const std::string& path);
/// Whether the name is that of a file that is recorded, or of its journal, behind all links.
[[nodiscard]] bool isUnderWay(const std::string& path);

/// Lets something write to a file, which has all of it then, or stays as it was.
/// @param produce gives false when it could not
/// @return Fine, or, told, CannotRead
[[nodiscard]] ExitCode saveFile(const std::string& path, const std::function<bool(QIODevice&)>& produce);

/// Takes a piece of text.
using TextSink = std::function<void(const std::string&)>;
/// The same for text, which goes to standard output where there is no path.
[[nodiscard]] ExitCode saveText(const std::string& path, const std::function<void(const TextSink&)>& produce);

}  // namespace RecTool
