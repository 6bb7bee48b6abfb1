// Names in the directories of Windows.
#include "names.h"

#include "calls_windows.h"

namespace System {

FileIdentity identityOf(const BY_HANDLE_FILE_INFORMATION& info)
{
    const auto joined = [](DWORD high, DWORD low) { return (std::uint64_t{high} << 32U) | low; };
    const auto nanosecondsOf = [&joined](const FILETIME& time) {
        constexpr std::int64_t NanosecondsPerTick = 100;
        constexpr std::int64_t Ticks1601To1970 = 116'444'736'000'000'000;
        const auto ticks = static_cast<std::int64_t>(joined(time.dwHighDateTime, time.dwLowDateTime));
        return (ticks - Ticks1601To1970) * NanosecondsPerTick;
    };
    return {info.dwVolumeSerialNumber, joined(info.nFileIndexHigh, info.nFileIndexLow),
            static_cast<std::int64_t>(joined(info.nFileSizeHigh, info.nFileSizeLow)),
            nanosecondsOf(info.ftLastWriteTime), nanosecondsOf(info.ftCreationTime)};
}

Error identityOf(HANDLE file, FileIdentity& identity)
{
    BY_HANDLE_FILE_INFORMATION info{};
    if (::GetFileInformationByHandle(file, &info) == 0) {
        return lastError();
    }
    identity = identityOf(info);
    const bool special = (info.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) != 0;
    return special ? NoOrdinaryFile : 0;
}

Error lookAt(const std::filesystem::path& path, NameKind& kind)
{
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    kind = NameKind::Missing;
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const Error error = lastError();
        return kindOf(error) == ErrorKind::Missing ? 0 : error;
    }
    const bool special = (attributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DEVICE)) != 0;
    const bool directory = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    kind = special ? NameKind::Other : directory ? NameKind::Directory : NameKind::File;
    return 0;
}

Error identityOf(const std::filesystem::path& path, FileIdentity& identity)
{
    const Handle file(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING,
                      FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
    return file.good() ? identityOf(file.get(), identity) : lastError();
}

std::int64_t touchedNs(const std::filesystem::path& path)
{
    constexpr std::int64_t Tick = 100;
    const Handle file(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    FILE_BASIC_INFO info{};
    const bool known =
        file.good() && ::GetFileInformationByHandleEx(file.get(), FileBasicInfo, &info, sizeof info) != 0;
    return known ? info.ChangeTime.QuadPart * Tick : 0;
}

bool isOpenHere(const FileIdentity& /*file*/)
{
    return false;
}

// Permissions are those that the directory above hands down.
Error makeDirectory(const std::filesystem::path& path, FileMode /*mode*/)
{
    const Error error = resultOf(::CreateDirectoryW(path.c_str(), nullptr));
    return error == ERROR_ALREADY_EXISTS ? NameTaken : error;
}

// Names are written through when they are given.
Error fsyncDirectory(const std::filesystem::path& /*directory*/)
{
    return 0;
}

Error removeFile(const std::filesystem::path& path)
{
    return resultOf(::DeleteFileW(path.c_str()));
}

Error renameToNew(const std::filesystem::path& from, const std::filesystem::path& to)
{
    const Error error = resultOf(::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH));
    return error == ERROR_ALREADY_EXISTS ? NameTaken : error;
}

Error renameReplacing(const std::filesystem::path& from, const std::filesystem::path& to)
{
    return resultOf(::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
}

Error touch(const std::filesystem::path& path)
{
    const Handle file(path, FILE_WRITE_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT);
    FILETIME now{};
    ::GetSystemTimePreciseAsFileTime(&now);
    return file.good() ? resultOf(::SetFileTime(file.get(), nullptr, nullptr, &now)) : lastError();
}

std::filesystem::path programFolder()
{
    constexpr DWORD Most = 32'768;
    std::wstring path(Most, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), Most));
    return std::filesystem::path(path).parent_path();
}

}  // namespace System
