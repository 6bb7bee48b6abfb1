// Where the byte code reads from: a file, or memory in tests.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Recording2::Format {

/// Random access to the bytes of a recording.
class ByteSource {
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource() = default;

    /// Copies up to size bytes from an offset. @return the bytes copied: fewer only at the end, or after an error
    virtual std::size_t readAt(std::int64_t offset, char* out, std::size_t size) = 0;
    /// Bytes in all. Bounds what a length that stands in the file may ask for.
    [[nodiscard]] virtual std::int64_t size() = 0;
};

}  // namespace Recording2::Format
