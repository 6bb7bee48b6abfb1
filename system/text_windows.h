// Texts of Windows in UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace System {

[[nodiscard]] std::string inUtf8(std::wstring_view text);
/// Of a text in the code page that the system's messages have.
[[nodiscard]] std::string inUtf8(const std::string& text);

}  // namespace System
