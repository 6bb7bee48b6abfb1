// Arguments and file names for the library, Qt and the file system.
#include "filenames.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <QFile>
#endif

namespace RecTool {

#if defined(_WIN32)

std::string forLibrary(const std::string& name)
{
    constexpr UINT WesternEurope = 1252;
    const std::wstring wide = native(name).wstring();
    const int length = static_cast<int>(wide.size());
    std::string bytes(wide.size(), '\0');  // one byte a character
    WideCharToMultiByte(WesternEurope, WC_NO_BEST_FIT_CHARS, wide.data(), length, bytes.data(), length, "?", nullptr);
    return bytes;
}

QString forQt(const std::string& name)
{
    return QString::fromStdString(name);
}

#else

std::string forLibrary(const std::string& name)
{
    return name;
}

QString forQt(const std::string& name)
{
    return QFile::decodeName(name.c_str());
}

#endif

}  // namespace RecTool
