// What a finished recording held before a change of it: the bytes of FILE.undo (doc/format.md).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Recording2::Format {

/// Bytes that a change writes, and those that stood there. What lies after the old end of the file had none.
struct ChangedBytes {
    std::int64_t position = 0;
    std::string before;
    std::string after;  ///< at least as many
};

struct Undo {
    std::int64_t sizeBefore = 0;
    std::vector<ChangedBytes> changes;  ///< by position, none overlapping
};

[[nodiscard]] std::string encodeUndo(const Undo& undo);
/// Nothing when the bytes are not whole, as a process leaves them that is killed before it changes the recording.
[[nodiscard]] std::optional<Undo> decodeUndo(std::string_view bytes);

}  // namespace Recording2::Format
