// Numbers in memory as they stand in a recording and in the files beside it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Recording2::Format {

/// Numbers stand with their least significant byte first: as they are in the memory of nearly every machine.
template <typename Unsigned>
Unsigned littleEndian(Unsigned value)
{
    if constexpr (std::endian::native == std::endian::little) {
        return value;
    } else {
        Unsigned swapped = 0;
        for (std::size_t i = 0; i < sizeof value; ++i) {
            swapped = static_cast<Unsigned>(swapped << 8U | (value >> (8 * i) & 0xffU));
        }
        return swapped;
    }
}
template <typename Unsigned>
Unsigned getInt(const char* from)
{
    Unsigned value = 0;
    std::memcpy(&value, from, sizeof value);
    return littleEndian(value);
}
template <typename Unsigned>
char* putInt(char* out, Unsigned value)
{
    value = littleEndian(value);
    std::memcpy(out, &value, sizeof value);
    return out + sizeof value;
}
inline std::uint64_t getInt64(const char* from)
{
    return getInt<std::uint64_t>(from);
}
inline std::uint32_t getInt32(const char* from)
{
    return getInt<std::uint32_t>(from);
}
inline char* putInt64(char* out, std::uint64_t value)
{
    return putInt(out, value);
}
inline char* putInt32(char* out, std::uint32_t value)
{
    return putInt(out, value);
}

}  // namespace Recording2::Format
