// A byte source over a string, for tests of the byte code.
#pragma once

#include <algorithm>
#include <string>
#include <utility>

#include <recording2/format/bytesource.h>

namespace RecordingTests {

class MemorySource final : public Recording2::Format::ByteSource {
public:
    explicit MemorySource(std::string bytes) : m_bytes(std::move(bytes)) {}

    std::size_t readAt(std::int64_t offset, char* out, std::size_t size) override
    {
        if (offset >= static_cast<std::int64_t>(m_bytes.size())) {
            return 0;
        }
        const auto begin = static_cast<std::size_t>(offset);
        const std::size_t count = std::min(size, m_bytes.size() - begin);
        std::copy_n(m_bytes.data() + begin, count, out);
        return count;
    }
    [[nodiscard]] std::int64_t size() override { return static_cast<std::int64_t>(m_bytes.size()); }

private:
    std::string m_bytes;
};

}  // namespace RecordingTests
