// What the operating system says when it refuses something.
#pragma once

#include <cstdint>
#include <string>

namespace System {

/// The operating system's own number of an error; 0 is none.
using Error = int;
/// One sentence's end in English: "No space left on device".
[[nodiscard]] std::string errorText(Error error);
extern const Error InvalidPosition;  ///< before the file
extern const Error CannotRead;       ///< bytes that the file has were not given
extern const Error FileTooLarge;     ///< for its system, or for its format
extern const Error NameTaken;        ///< something has that name already
extern const Error LockHeld;         ///< by another process, or through another opening of the file
extern const Error NoOrdinaryFile;   ///< a pipe, a device or the like: it was not opened
extern const Error BeingRemoved;     ///< Windows: a name that is free when the last one closes its file, or forbidden

/// What an error means for whoever has to go on.
enum class ErrorKind : std::uint8_t {
    Other,
    Missing,
    Exists,
    Full,      ///< no space or no quota
    Away,      ///< the whole file system cannot be used: not mounted any more, read-only, input or output error
    NotAFile,  ///< a link, a directory or a device stands where a file should
};
[[nodiscard]] ErrorKind kindOf(Error error);

}  // namespace System
