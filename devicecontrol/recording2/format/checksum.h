// What tells bytes that were written from damaged or foreign ones.
#pragma once

#include <cstdint>
#include <string_view>

namespace Recording2::Format {

/// The 64 bits of XXH3 (xxhash.com) over all bytes. Against faults of devices, not against intent.
/// @param seed another one makes it another checksum
[[nodiscard]] std::uint64_t checksum(std::uint64_t seed, std::string_view bytes);

}  // namespace Recording2::Format
