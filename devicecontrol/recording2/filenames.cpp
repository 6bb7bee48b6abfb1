// What Windows and the others make of a file's name, each after its own #if.
#include "filenames.h"

#include <filesystem>
#include <system_error>

#include <QDir>

#include <system/nativefile.h>

#if defined(_WIN32)
#include <windows.h>

#include <QRegularExpression>
#endif

namespace Recording2::FileNames {

namespace {

#if defined(_WIN32)
constexpr const char* Separators = "/\\";
#else
constexpr const char* Separators = "/";
#endif

}  // namespace

QString separator()
{
#if defined(_WIN32)
    return QStringLiteral("\\");
#else
    return QStringLiteral("/");
#endif
}

QString defaultDirectory()
{
#if defined(_WIN32)
    return QStringLiteral("c:\\temp");
#else
    // Not QDir::tempPath(), which gives nothing for a directory that is missing: the name is to be kept and shown.
    const QString directory = qEnvironmentVariable("TMPDIR");
    return directory.isEmpty() ? QStringLiteral("/tmp") : QDir::cleanPath(directory);
#endif
}

bool fitsName(QChar character)
{
    bool fits = character.category() != QChar::Other_Control && character != QLatin1Char('/');
#if defined(_WIN32)
    constexpr ushort LastOfLatin1 = 0xFF;
    fits = fits && character.unicode() <= LastOfLatin1 && !QStringLiteral("\\:*?\"<>|").contains(character);
#endif
    return fits;
}

QString ordinary(const QString& name)
{
    QString changed = name;
    if (changed.startsWith(QLatin1Char('.'))) {
        changed[0] = QLatin1Char('_');
    }
#if defined(_WIN32)
    static const QRegularExpression device(
        QStringLiteral("^(CON|PRN|AUX|NUL|COM[0-9]|LPT[0-9]|CONIN\\$|CONOUT\\$)(\\.|$)"),
        QRegularExpression::CaseInsensitiveOption);
    if (device.match(changed).hasMatch()) {
        changed.prepend(QLatin1Char('_'));
    }
#endif
    return changed;
}

std::string toBytes(const QString& name)
{
#if defined(_WIN32)
    return name.toLatin1().toStdString();
#else
    return name.toStdString();
#endif
}

QString fromBytes(const std::string& name)
{
#if defined(_WIN32)
    return QString::fromLatin1(name.data(), static_cast<int>(name.size()));
#else
    return QString::fromStdString(name);
#endif
}

// On Windows what code page 1252 makes of the bytes, whatever the process's own is: Latin-1 but for 32 characters that
// are in no name.
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

bool exists(const std::string& path)
{
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(native(path), error));
}

bool isDirectory(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_directory(native(path), error);
}

std::string absoluteDirectory(const std::string& path)
{
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(native(path), error);
    if (error) {
        return directory(path);
    }
#if defined(_WIN32)
    return toBytes(QString::fromStdWString(absolute.parent_path().wstring()));
#else
    return absolute.parent_path().string();
#endif
}

std::string directory(const std::string& path)
{
    const auto slash = path.find_last_of(Separators);
    if (slash == std::string::npos) {
        return ".";
    }
    return path.substr(0, slash == 0 ? 1 : slash);
}

std::string fileName(const std::string& path)
{
    const auto slash = path.find_last_of(Separators);
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string baseName(const std::string& path)
{
    const std::string name = fileName(path);
    return name.substr(0, name.find('.'));
}

std::string suffix(const std::string& path)
{
    const std::string name = fileName(path);
    const auto dot = name.rfind('.');
    return dot == std::string::npos ? std::string() : name.substr(dot + 1);
}

bool renameWithoutReplacing(const std::string& from, const std::string& to)
{
    return System::renameToNew(native(from), native(to)) == 0;
}

}  // namespace Recording2::FileNames
