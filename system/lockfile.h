// A lock on a file that is made for the purpose and goes with it.
#pragma once

#include "nativefile.h"

namespace System {

/// Released when the object ends, or with the process, however it ends. One thread at a time.
class LockFile {
public:
    LockFile() = default;
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;
    /// Removes the file where nobody else holds it.
    ~LockFile();

    /// Does not wait. @return LockHeld when others have it; another error where the file cannot be made or locked
    [[nodiscard]] Error tryLock(const std::filesystem::path& path, LockMode mode, FileMode fileMode);
    /// Of one who shares it: keeps it alone. Others may have had it in between. @return LockHeld when others have it;
    /// after any error this one does not
    [[nodiscard]] Error keepAlone();
    /// Whether somebody holds it; a missing file is held by nobody.
    static Error look(const std::filesystem::path& path, bool& held);

private:
    NativeFile m_file;
    std::filesystem::path m_path;
};

/// Locks a file for one alone where others may hold it for a moment only to see whether somebody does. @return as
/// NativeFile::lock; LockHeld when somebody keeps it
[[nodiscard]] Error lockPatiently(NativeFile& file);

}  // namespace System
