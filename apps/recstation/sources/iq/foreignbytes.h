// Files that are no samples, told by their first bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace RecStation {

constexpr std::size_t ForeignBytes = 12;  ///< as many tell

/// What is wrong with bytes that would be noise if they were read as samples, and what to do, as a clause: "is packed
/// by gzip: unpack it first"; empty where nothing is known against them.
/// @param first of the input, ForeignBytes where it has so many
[[nodiscard]] std::string whyNoSamples(std::string_view first);

}  // namespace RecStation
