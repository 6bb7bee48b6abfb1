// Names in directories: what stands under them, giving and taking them, forcing them to the device. A link is looked at
// itself, never what it leads to.
#pragma once

#include <cstdint>
#include <filesystem>

#include "error.h"

namespace System {

/// Who may do what with a new file, less what the process's umask takes away. Windows has nothing like it.
using FileMode = unsigned int;
constexpr FileMode DefaultFileMode = 0640;

/// Tells one file of a name from the next one of that name.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t bytes = 0;
    std::int64_t changedNs = 0;
    std::int64_t bornNs = 0;  ///< 0 where the system does not keep it

    bool operator==(const FileIdentity&) const = default;
    [[nodiscard]] bool isSameFile(const FileIdentity& other) const
    {
        return device == other.device && number == other.number;
    }
};

enum class NameKind : std::uint8_t { Missing, File, Directory, Other };

/// What stands under a name. That nothing does is no error.
Error lookAt(const std::filesystem::path& path, NameKind& kind);
/// Of the file under a name. @return NoOrdinaryFile for what is none
Error identityOf(const std::filesystem::path& path, FileIdentity& identity);
/// When anything about the file under a name was last changed, its content included: to be compared only. Nobody can
/// set it, as the time of writing can be. 0 where the system does not tell.
[[nodiscard]] std::int64_t touchedNs(const std::filesystem::path& path);
/// Whether this process has the file open. False also where the system does not tell.
[[nodiscard]] bool isOpenHere(const FileIdentity& file);

/// Makes one directory. @return NameTaken where anything stands. @param mode whatever the process's mask is
Error makeDirectory(const std::filesystem::path& path, FileMode mode);
/// Makes the device keep the names in a directory: when it returns 0, a power cut leaves them as they are. Windows
/// keeps them by itself, and so do file systems that cannot be asked to.
Error fsyncDirectory(const std::filesystem::path& directory);
Error removeFile(const std::filesystem::path& path);
/// Gives a file a new name of the same file system and never replaces what has it: NameTaken, and all is as it was.
/// The system itself refuses a name that is taken. Where a file system cannot do that, a second name is given and the
/// first one taken away; of a crash between the two a file with both names is left. Where it has no second names
/// either, as some shares, the name is looked at before: another process that takes it in that moment loses its file.
Error renameToNew(const std::filesystem::path& from, const std::filesystem::path& to);
/// Gives a file a name of the same file system, in the place of the file that has it.
Error renameReplacing(const std::filesystem::path& from, const std::filesystem::path& to);
/// Marks a file as changed just now.
Error touch(const std::filesystem::path& path);

/// The folder that the running program lies in; empty but on Windows, where libraries lie beside programs.
[[nodiscard]] std::filesystem::path programFolder();

}  // namespace System
