// Calls of Windows that answer with an error of ours.
#pragma once

#include <windows.h>

#include <filesystem>
#include <utility>

#include "names.h"

namespace System {

inline Error lastError()
{
    return static_cast<Error>(::GetLastError());
}

inline Error resultOf(BOOL done)
{
    return done != 0 ? 0 : lastError();
}

/// Something that is open, shared with everybody.
class Handle {
public:
    Handle(const std::filesystem::path& path, DWORD access, DWORD disposition, DWORD flags)
        : m_handle(::CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                 disposition, flags, nullptr))
    {
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle()
    {
        if (good()) {
            ::CloseHandle(m_handle);
        }
    }
    [[nodiscard]] HANDLE get() const { return m_handle; }
    [[nodiscard]] HANDLE release() { return std::exchange(m_handle, INVALID_HANDLE_VALUE); }
    [[nodiscard]] bool good() const { return m_handle != INVALID_HANDLE_VALUE; }

private:
    HANDLE m_handle;
};

[[nodiscard]] FileIdentity identityOf(const BY_HANDLE_FILE_INFORMATION& info);
/// @return NoOrdinaryFile for a folder or a link
Error identityOf(HANDLE file, FileIdentity& identity);

}  // namespace System
