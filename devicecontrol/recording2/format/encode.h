// Writing the elementary fields of a recording: numbers, times and strings (doc/format.md).
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "littleendian.h"

namespace Recording2::Format {

constexpr char Separator = '#';

/// Room that any number with its separator needs.
constexpr std::size_t MaxNumberBytes = 24;
/// A time value with its separator.
constexpr std::size_t TimeBytes = 9;

/// Writes a decimal number and the separator. @param out room for MaxNumberBytes
template <typename Integer>
char* putNumber(char* out, Integer value)
{
    static_assert(std::numeric_limits<Integer>::is_integer);
    char* end = std::to_chars(out, out + MaxNumberBytes - 1, value).ptr;
    *end++ = Separator;
    return end;
}

/// Writes a time value and the separator. @param out room for TimeBytes
inline char* putTime(char* out, std::uint64_t milliseconds)
{
    char* end = putInt64(out, milliseconds);
    *end++ = Separator;
    return end;
}

template <typename Integer>
void appendNumber(std::string& out, Integer value)
{
    char buffer[MaxNumberBytes];
    out.append(buffer, putNumber(buffer, value));
}

void appendFloat(std::string& out, float value);  ///< at most six significant digits, as a stream writes it
void appendTime(std::string& out, std::uint64_t milliseconds);
/// The length as the caller says it, then the text as it stands.
void appendString(std::string& out, std::uint64_t length, std::string_view text);

}  // namespace Recording2::Format
