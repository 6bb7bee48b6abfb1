// Which recording a file is: by what it holds, and by signs that it is the same as before.
#pragma once

#include <cstdint>
#include <string>

namespace RecView {

/// A checksum of header, types, records and times in hexadecimal digits, the same for every copy of a recording, with
/// any bookmarks. Reads the whole file. Empty when it cannot be read, or changes meanwhile.
[[nodiscard]] std::string contentOf(const std::string& path);

/// What changes when a file is changed, also where size and time of writing are kept.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t bytes = 0;
    std::int64_t writtenNs = 0;
    std::int64_t touchedNs = 0;

    bool operator==(const FileStamp&) const = default;
    /// Whether there is a file, and a change from now on will be seen: clocks of files go in steps.
    [[nodiscard]] bool isGood() const;
};
[[nodiscard]] FileStamp stampOf(const std::string& path);

}  // namespace RecView
