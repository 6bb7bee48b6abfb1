// File names of the inspection library: UTF-8 on Windows whatever its code page is, the system's bytes elsewhere.
#pragma once

#include <filesystem>
#include <string>

namespace Recording2::Inspection {

/// The same name for the standard library.
[[nodiscard]] inline std::filesystem::path native(const std::string& name)
{
    return std::u8string(name.begin(), name.end());
}

[[nodiscard]] inline std::string utf8(const std::filesystem::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace Recording2::Inspection
