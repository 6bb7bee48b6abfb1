// The checksums of journals of the first version, which may still lie beside what a recorder of then left behind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "journal.h"

/// A checksum is a state of 64 bits that takes words. Of a long record it takes 8 of every 512 bytes: that tells lost
/// sectors and foreign bytes, not every flipped bit.
namespace Recording2::Format::Journal::Sampled {

constexpr std::size_t EntryBytes = 16;  // time, place, checksum
constexpr std::size_t EntryPlaceOffset = 8;
constexpr std::size_t EntryChecksumOffset = 12;

[[nodiscard]] std::uint64_t checksum(std::uint64_t seed, std::string_view bytes);
[[nodiscard]] std::uint64_t checksumOfNumber(std::uint64_t seed, std::uint64_t number);
[[nodiscard]] std::uint64_t checksumOfHeader(std::uint64_t seed, std::string_view record);
[[nodiscard]] std::uint64_t checksumOfTypes(std::uint64_t nonce, std::string_view block);
[[nodiscard]] std::uint64_t checksumOfStopTime(std::uint64_t seed, std::uint64_t milliseconds);
/// Of the entry in the upper half, of it and its record in the lower.
[[nodiscard]] bool isSound(std::uint32_t checksum, std::uint64_t seed, std::uint64_t timeMs, std::uint32_t place);
[[nodiscard]] std::uint32_t checksumOfRecord(std::uint64_t seed, const Entry& entry, std::int32_t code,
                                             std::string_view data);

}  // namespace Recording2::Format::Journal::Sampled
