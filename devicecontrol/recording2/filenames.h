// File names where the platforms differ: encoding of 8-bit names, separator, default directory, renaming.
#pragma once

#include <filesystem>
#include <string>

#include <QString>

namespace Recording2::FileNames {

/// "\" on Windows, "/" elsewhere.
[[nodiscard]] QString separator();
/// Where recordings go when a configuration names no directory, or one that is not there: "c:\temp" on Windows, the
/// system's temporary directory elsewhere.
[[nodiscard]] QString defaultDirectory();

/// Whether a character can stand in a file name, and is no separator and no control character.
[[nodiscard]] bool fitsName(QChar character);
/// The name of an ordinary, visible file: one that the system would hide or take for a device is changed.
[[nodiscard]] QString ordinary(const QString& name);

/// 8-bit file names: Latin-1 on Windows, UTF-8 elsewhere whatever the process's locale is.
[[nodiscard]] std::string toBytes(const QString& name);
[[nodiscard]] QString fromBytes(const std::string& name);
/// The same name for the standard library.
[[nodiscard]] std::filesystem::path native(const std::string& name);

[[nodiscard]] bool exists(const std::string& path);
[[nodiscard]] bool isDirectory(const std::string& path);
/// The directory of a path, made absolute.
[[nodiscard]] std::string absoluteDirectory(const std::string& path);
/// The directory of a path as it stands; "." without one.
[[nodiscard]] std::string directory(const std::string& path);
[[nodiscard]] std::string fileName(const std::string& path);
/// The file name up to its first dot.
[[nodiscard]] std::string baseName(const std::string& path);
/// The file name after its last dot; empty without one.
[[nodiscard]] std::string suffix(const std::string& path);
/// Renames a file unless the new name is taken. @return whether it was renamed
bool renameWithoutReplacing(const std::string& from, const std::string& to);

}  // namespace Recording2::FileNames
