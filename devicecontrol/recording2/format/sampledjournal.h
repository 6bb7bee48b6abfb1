// The checks of journals of the first version, which may still lie beside what a recorder of then left behind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "journal.h"

/// A check is a state of 64 bits that takes words. Of a long record it takes 8 of every 512 bytes: that tells lost
/// sectors and foreign bytes, not every flipped bit.
namespace Recording2::Format::Journal::Sampled {

constexpr std::size_t EntryBytes = 16;  // time, place, check
constexpr std::size_t EntryPlaceOffset = 8;
constexpr std::size_t EntryCheckOffset = 12;

[[nodiscard]] std::uint64_t check(std::uint64_t seed, std::string_view bytes);
[[nodiscard]] std::uint64_t checkOfNumber(std::uint64_t seed, std::uint64_t number);
[[nodiscard]] std::uint64_t checkOfHeader(std::uint64_t seed, std::string_view record);
[[nodiscard]] std::uint64_t checkOfTypes(std::uint64_t salt, std::string_view block);
[[nodiscard]] std::uint64_t checkOfStopTime(std::uint64_t seed, std::uint64_t milliseconds);
/// Of the entry in the upper half, of it and its record in the lower.
[[nodiscard]] bool isSound(std::uint32_t check, std::uint64_t seed, std::uint64_t timeMs, std::uint32_t place);
[[nodiscard]] std::uint32_t checkOfRecord(std::uint64_t seed, const Entry& entry, std::int32_t code,
                                          std::string_view data);

}  // namespace Recording2::Format::Journal::Sampled
