// Files, locks, mappings and renaming as Windows gives them.
#include "nativefile.h"

#include <windows.h>

#include <algorithm>
#include <system_error>

namespace System {

namespace {

HANDLE handleOf(std::intptr_t handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

Error lastError()
{
    return static_cast<Error>(::GetLastError());
}

Error errorOf(BOOL done)
{
    return done != 0 ? 0 : lastError();
}

OVERLAPPED at(std::int64_t position)
{
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(position & 0xffffffffLL);
    place.OffsetHigh = static_cast<DWORD>(position >> 32);
    return place;
}

DWORD dispositionOf(Access access)
{
    switch (access) {
        case Access::Create:
            return CREATE_ALWAYS;
        case Access::New:
            return CREATE_NEW;
        case Access::Update:
        case Access::Read:
            break;
    }
    return OPEN_EXISTING;
}

/// A byte far behind the end stands for the whole file: locked bytes could not be read by others.
Error lockFarBehind(HANDLE file, DWORD how)
{
    constexpr std::int64_t FarBehind = std::int64_t{1} << 62;
    OVERLAPPED place = at(FarBehind);
    return errorOf(::LockFileEx(file, how, 0, 1, 0, &place));
}

/// Whether a file is what stands at a path, or what a link there leads to.
bool isSameAs(HANDLE file, const std::filesystem::path& path, bool followLinks)
{
    const DWORD how = FILE_FLAG_BACKUP_SEMANTICS | (followLinks ? 0 : FILE_FLAG_OPEN_REPARSE_POINT);
    const HANDLE opened = ::CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, how, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        return false;
    }
    BY_HANDLE_FILE_INFORMATION there{};
    BY_HANDLE_FILE_INFORMATION here{};
    const bool known =
        ::GetFileInformationByHandle(opened, &there) != 0 && ::GetFileInformationByHandle(file, &here) != 0;
    ::CloseHandle(opened);
    return known && there.dwVolumeSerialNumber == here.dwVolumeSerialNumber &&
           there.nFileIndexHigh == here.nFileIndexHigh && there.nFileIndexLow == here.nFileIndexLow;
}

DWORD piece(std::size_t size)
{
    constexpr std::size_t Most = std::size_t{1} << 30U;
    return static_cast<DWORD>(std::min(size, Most));
}

}  // namespace

const Error InvalidPosition = ERROR_NEGATIVE_SEEK;
const Error CannotRead = ERROR_READ_FAULT;
const Error NameTaken = ERROR_FILE_EXISTS;
const Error LockHeld = ERROR_LOCK_VIOLATION;
const Error NoOrdinaryFile = -1;

std::string errorText(Error error)
{
    if (error == LockHeld) {
        return "Another program holds its lock";
    }
    if (error == NoOrdinaryFile) {
        return "It is no ordinary file";
    }
    return std::system_category().message(error);
}

NativeFile::~NativeFile()
{
    close();
}

// Others may read, write, rename and remove the file, as they may elsewhere.
Error NativeFile::open(const std::filesystem::path& path, Access access, FileMode /*mode*/)
{
    const DWORD how = access == Access::Read ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
    const HANDLE opened = ::CreateFileW(path.c_str(), how, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, dispositionOf(access), FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        const Error error = lastError();
        return error == ERROR_ALREADY_EXISTS ? NameTaken : error;
    }
    if (::GetFileType(opened) != FILE_TYPE_DISK) {  // names such as NUL
        ::CloseHandle(opened);
        return NoOrdinaryFile;
    }
    close();
    m_handle = reinterpret_cast<std::intptr_t>(opened);
    return 0;
}

Error NativeFile::close()
{
    if (!isOpen()) {
        return 0;
    }
    const Error error = errorOf(::CloseHandle(handleOf(m_handle)));
    m_handle = NoHandle;
    return error;
}

Error NativeFile::writeAt(std::int64_t position, const char* bytes, std::size_t size, std::size_t& written)
{
    written = 0;
    while (written < size) {
        OVERLAPPED place = at(position + static_cast<std::int64_t>(written));
        DWORD part = 0;
        if (::WriteFile(handleOf(m_handle), bytes + written, piece(size - written), &part, &place) == 0) {
            return lastError();
        }
        if (part == 0) {
            return ERROR_WRITE_FAULT;
        }
        written += part;
    }
    return 0;
}

std::size_t NativeFile::readAt(std::int64_t position, char* bytes, std::size_t size) const
{
    std::size_t read = 0;
    while (read < size) {
        OVERLAPPED place = at(position + static_cast<std::int64_t>(read));
        DWORD part = 0;
        if (::ReadFile(handleOf(m_handle), bytes + read, piece(size - read), &part, &place) == 0 || part == 0) {
            break;
        }
        read += part;
    }
    return read;
}

std::int64_t NativeFile::size() const
{
    LARGE_INTEGER size{};
    return ::GetFileSizeEx(handleOf(m_handle), &size) != 0 ? size.QuadPart : 0;
}

Error NativeFile::setSize(std::int64_t size)
{
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = size;
    return errorOf(::SetFileInformationByHandle(handleOf(m_handle), FileEndOfFileInfo, &end, sizeof end));
}

// A file that is not sparse has its space as soon as it has its size.
Error NativeFile::allocate(std::int64_t position, std::int64_t bytes)
{
    return position + bytes > size() ? setSize(position + bytes) : 0;
}

Error NativeFile::sync()
{
    return errorOf(::FlushFileBuffers(handleOf(m_handle)));
}

Error NativeFile::lock()
{
    return lockFarBehind(handleOf(m_handle), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY);
}

void NativeFile::waitForLock()
{
    static_cast<void>(lockFarBehind(handleOf(m_handle), LOCKFILE_EXCLUSIVE_LOCK));
}

bool NativeFile::isAt(const std::filesystem::path& path) const
{
    return isSameAs(handleOf(m_handle), path, false);
}

bool NativeFile::isReachedBy(const std::filesystem::path& path) const
{
    return isSameAs(handleOf(m_handle), path, true);
}

FileMode NativeFile::mode() const
{
    return DefaultFileMode;
}

// A new file has the rights of its directory.
void NativeFile::takeAccessOf(const NativeFile& /*other*/)
{
}

std::int64_t NativeFile::lastWritten() const
{
    FILETIME time{};
    return ::GetFileTime(handleOf(m_handle), nullptr, nullptr, &time) != 0
               ? std::int64_t{time.dwHighDateTime} << 32 | std::int64_t{time.dwLowDateTime}
               : 0;
}

Error Mapping::map(const NativeFile& file, std::size_t bytes)
{
    const HANDLE mapping =
        ::CreateFileMappingW(handleOf(file.m_handle), nullptr, PAGE_READWRITE, 0, static_cast<DWORD>(bytes), nullptr);
    if (mapping == nullptr) {
        return lastError();
    }
    void* const data = ::MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, bytes);
    const Error error = data == nullptr ? lastError() : 0;
    ::CloseHandle(mapping);  // the view keeps it
    m_data = static_cast<char*>(data);
    m_bytes = bytes;
    return error;
}

Error Mapping::sync()
{
    return errorOf(::FlushViewOfFile(m_data, m_bytes));
}

void Mapping::unmap()
{
    if (m_data != nullptr) {
        ::UnmapViewOfFile(m_data);
        m_data = nullptr;
    }
}

// The system keeps its directories by itself.
Error syncDirectory(const std::filesystem::path& /*directory*/)
{
    return 0;
}

Error removeFile(const std::filesystem::path& path)
{
    return errorOf(::DeleteFileW(path.c_str()));
}

Error renameToNew(const std::filesystem::path& from, const std::filesystem::path& to)
{
    return errorOf(::MoveFileExW(from.c_str(), to.c_str(), 0));
}

}  // namespace System
