// The checksum of undo files, and of the journals of the first version.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "littleendian.h"

namespace Recording2::Format {

/// A state of 64 bits that takes words: tells damaged bytes from those that were written, not against intent.
class WordChecksum {
public:
    explicit WordChecksum(std::uint64_t seed) : m_state(seed) {}

    static constexpr std::uint64_t Factor = 0x9e3779b97f4a7c15U;

    WordChecksum& add(std::uint64_t value)
    {
        m_state = (m_state ^ value) * Factor;
        m_state ^= m_state >> 32U;
        return *this;
    }
    /// Eight bytes at a time, the last eight as the last word even where they were taken already.
    WordChecksum& add(std::string_view bytes)
    {
        if (bytes.size() < WordBytes) {
            return add(few(bytes.data(), bytes.size()));
        }
        const std::size_t last = bytes.size() - WordBytes;
        for (std::size_t i = 0; i < last; i += WordBytes) {
            add(getInt64(bytes.data() + i));
        }
        return add(getInt64(bytes.data() + last));
    }
    [[nodiscard]] std::uint64_t value() const { return m_state; }

private:
    static constexpr std::size_t WordBytes = sizeof(std::uint64_t);

    // Every byte of fewer than a word has its part; some have two.
    static std::uint64_t few(const char* bytes, std::size_t size)
    {
        constexpr std::size_t HalfWord = sizeof(std::uint32_t);
        const auto byte = [&](std::size_t i) { return std::uint64_t{static_cast<unsigned char>(bytes[i])}; };
        if (size >= HalfWord) {
            return std::uint64_t{getInt32(bytes)} << 32U | getInt32(bytes + size - HalfWord);
        }
        return size == 0 ? 0 : byte(0) | byte(size / 2) << 8U | byte(size - 1) << 16U;
    }

    std::uint64_t m_state;
};

}  // namespace Recording2::Format
