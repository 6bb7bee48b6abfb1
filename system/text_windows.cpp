// Texts of Windows in UTF-8.
#include "text_windows.h"

#include <windows.h>

namespace System {

std::string inUtf8(std::wstring_view text)
{
    const int length = static_cast<int>(text.size());
    std::string bytes(
        static_cast<std::size_t>(::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr)),
        '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), static_cast<int>(bytes.size()), nullptr,
                          nullptr);
    return bytes;
}

std::string inUtf8(const std::string& text)
{
    const int length = static_cast<int>(text.size());
    std::wstring wide(static_cast<std::size_t>(::MultiByteToWideChar(CP_ACP, 0, text.data(), length, nullptr, 0)),
                      L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
    return inUtf8(wide);
}

}  // namespace System
