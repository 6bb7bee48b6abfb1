#include "filename.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace Recording2::Inspection {

// Not what the process's code page makes of them, which may be any.
std::filesystem::path native(const std::string& name)
{
#if defined(_WIN32)
    constexpr UINT WesternEurope = 1252;
    std::wstring wide(name.size(), L'\0');
    MultiByteToWideChar(WesternEurope, 0, name.data(), static_cast<int>(name.size()), wide.data(),
                        static_cast<int>(wide.size()));  // one character a byte
    return wide;
#else
    return name;
#endif
}

}  // namespace Recording2::Inspection
