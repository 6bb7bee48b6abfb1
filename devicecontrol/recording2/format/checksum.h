// What tells bytes that were written from damaged or foreign ones.
#pragma once

#include <cstdint>
#include <string_view>

#define XXH_INLINE_ALL  // a small record takes no longer than the call of a function
#include <xxhash.h>

namespace Recording2::Format {

/// The 64 bits of XXH3 (xxhash.com) over all bytes. Against faults of devices, not against intent.
/// @param seed another one makes it another checksum
[[nodiscard]] inline std::uint64_t checksum(std::uint64_t seed, std::string_view bytes)
{
    return XXH3_64bits_withSeed(bytes.data(), bytes.size(), seed);
}

}  // namespace Recording2::Format
