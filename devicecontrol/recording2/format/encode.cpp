// Floats with six digits, times in eight bytes, and strings after their length.
#include "encode.h"

namespace Recording2::Format {

void appendFloat(std::string& out, float value)
{
    constexpr int Digits = 6;  // what a stream writes by default; files depend on it
    char buffer[64];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, Digits).ptr;
    out.append(buffer, end);
    out.push_back(Separator);
}

void appendTime(std::string& out, std::uint64_t milliseconds)
{
    char buffer[TimeBytes];
    out.append(buffer, putTime(buffer, milliseconds));
}

void appendString(std::string& out, std::uint64_t length, std::string_view text)
{
    appendNumber(out, length);
    out.append(text);
}

}  // namespace Recording2::Format
