// Open files, locks and mappings as Windows gives them.
#include "nativefile.h"

#include <windows.h>

#include <algorithm>

#include "calls_windows.h"

namespace System {

namespace {

HANDLE handleOf(std::intptr_t handle)
{
    return reinterpret_cast<HANDLE>(handle);
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
        case Access::UpdateOrNew:
            return OPEN_ALWAYS;
        case Access::Update:
        case Access::Read:
        case Access::ReadItself:
            break;
    }
    return OPEN_EXISTING;
}

/// A byte far after the end stands for the whole file: locked bytes could not be read by others.
constexpr std::int64_t FarBehind = std::int64_t{1} << 62;

Error lockFarBehind(HANDLE file, DWORD how)
{
    OVERLAPPED place = at(FarBehind);
    return resultOf(::LockFileEx(file, how, 0, 1, 0, &place));
}

/// Whether a file is what stands at a path, or what a link there leads to. Wine no longer tells the volume (0) of an
/// open file whose name was changed; nothing is renamed from one volume to another.
bool isSameAs(HANDLE file, const std::filesystem::path& path, bool followLinks)
{
    const Handle there(path, 0, OPEN_EXISTING,
                       FILE_FLAG_BACKUP_SEMANTICS | (followLinks ? 0 : FILE_FLAG_OPEN_REPARSE_POINT));
    BY_HANDLE_FILE_INFORMATION one{};
    BY_HANDLE_FILE_INFORMATION other{};
    if (::GetFileInformationByHandle(there.get(), &one) == 0 || ::GetFileInformationByHandle(file, &other) == 0) {
        return false;
    }
    if (other.dwVolumeSerialNumber == 0) {
        other.dwVolumeSerialNumber = one.dwVolumeSerialNumber;
    }
    return identityOf(one).isSameFile(identityOf(other));
}

DWORD piece(std::size_t size)
{
    constexpr std::size_t Most = std::size_t{1} << 30U;
    return static_cast<DWORD>(std::min(size, Most));
}

}  // namespace

NativeFile::~NativeFile()
{
    close();
}

// Others may read, write, rename and remove the file, as they may elsewhere.
Error NativeFile::open(const std::filesystem::path& path, Access access, FileMode /*mode*/)
{
    const bool itself = access == Access::ReadItself || access == Access::UpdateOrNew;
    const bool readOnly = access == Access::ReadItself || access == Access::Read;
    Handle opened(path, readOnly ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE, dispositionOf(access),
                  FILE_ATTRIBUTE_NORMAL | (itself ? FILE_FLAG_OPEN_REPARSE_POINT : 0));
    if (!opened.good()) {
        const Error error = lastError();
        return error == ERROR_ALREADY_EXISTS ? NameTaken : error;
    }
    FileIdentity identity;
    const Error error = ::GetFileType(opened.get()) != FILE_TYPE_DISK ? NoOrdinaryFile  // names such as NUL
                        : itself                                      ? identityOf(opened.get(), identity)
                                                                      : 0;
    if (error != 0) {
        return error;
    }
    close();
    m_handle = reinterpret_cast<std::intptr_t>(opened.release());
    return 0;
}

Error NativeFile::close()
{
    if (!isOpen()) {
        return 0;
    }
    const Error error = resultOf(::CloseHandle(handleOf(m_handle)));
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

Error NativeFile::readAt(std::int64_t position, char* bytes, std::size_t size, std::size_t& read) const
{
    read = 0;
    while (read < size) {
        OVERLAPPED place = at(position + static_cast<std::int64_t>(read));
        DWORD part = 0;
        if (::ReadFile(handleOf(m_handle), bytes + read, piece(size - read), &part, &place) == 0) {
            const Error error = lastError();
            return error == ERROR_HANDLE_EOF ? 0 : error;
        }
        if (part == 0) {
            return 0;
        }
        read += part;
    }
    return 0;
}

void NativeFile::forgetCached() const
{
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
    return resultOf(::SetFileInformationByHandle(handleOf(m_handle), FileEndOfFileInfo, &end, sizeof end));
}

// A file that is not sparse has its space as soon as it has its size.
Error NativeFile::allocate(std::int64_t position, std::int64_t bytes)
{
    return position + bytes > size() ? setSize(position + bytes) : 0;
}

// NTFS sees to it itself.
void NativeFile::allocateAhead(std::int64_t /*position*/, std::int64_t /*bytes*/)
{
}

void NativeFile::giveBackAhead()
{
}

Error NativeFile::fsync()
{
    return resultOf(::FlushFileBuffers(handleOf(m_handle)));
}

Error NativeFile::lock(LockMode mode)
{
    OVERLAPPED place = at(FarBehind);
    ::UnlockFileEx(handleOf(m_handle), 0, 1, 0, &place);
    const DWORD how = mode == LockMode::Exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0;
    return lockFarBehind(handleOf(m_handle), how | LOCKFILE_FAIL_IMMEDIATELY);
}

Error NativeFile::identity(FileIdentity& identity) const
{
    return identityOf(handleOf(m_handle), identity);
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

Error Mapping::fsync()
{
    return resultOf(::FlushViewOfFile(m_data, m_bytes));
}

void Mapping::unmap()
{
    if (m_data != nullptr) {
        ::UnmapViewOfFile(m_data);
        m_data = nullptr;
    }
}

void expectUse(std::span<std::byte> /*memory*/)
{
}

}  // namespace System
