// Arguments and file names for the library, Qt and the file system.
#include "filenames.h"

#include <recording2/inspection/filename.h>

#if defined(_WIN32)
#include <memory>

#include <windows.h>

#include <shellapi.h>
#else
#include <QFile>
#endif

namespace RecTool {

#if defined(_WIN32)

// The C runtime has the arguments in a code page that lacks most characters.
std::vector<std::string> argumentsOf(int /*argc*/, const char* const* /*argv*/)
{
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> wide(CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(QString::fromWCharArray(wide.get()[i]).toStdString());
    }
    return arguments;
}

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

std::vector<std::string> argumentsOf(int argc, const char* const* argv)
{
    return argc < 2 ? std::vector<std::string>() : std::vector<std::string>(argv + 1, argv + argc);
}

std::string forLibrary(const std::string& name)
{
    return name;
}

QString forQt(const std::string& name)
{
    return QFile::decodeName(name.c_str());
}

#endif

std::filesystem::path native(const std::string& name)
{
    return Recording2::Inspection::native(name);
}

std::string fromNative(const std::filesystem::path& path)
{
    const std::u8string name = path.u8string();
    return {name.begin(), name.end()};
}

}  // namespace RecTool
