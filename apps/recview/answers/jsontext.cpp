// Writing texts and numbers as JSON has them.
#include "jsontext.h"

#include <array>
#include <charconv>
#include <cmath>

#include "rectool/printing/jsonvalue.h"

namespace RecView {

namespace {

template <typename Number>
void appendShortest(std::string& out, Number number)
{
    if (!std::isfinite(number)) {
        out += "null";
        return;
    }
    constexpr double Most = 1e15;  // times and frequencies have no exponent
    std::array<char, 48> digits{};
    char* const end = digits.data() + digits.size();
    const bool isPlain = std::abs(number) < Most && (number == 0 || std::abs(number) > 1 / Most);
    out.append(digits.data(), isPlain ? std::to_chars(digits.data(), end, number, std::chars_format::fixed).ptr
                                      : std::to_chars(digits.data(), end, number).ptr);
}

}  // namespace

void appendText(std::string& out, const std::string& text)
{
    out += RecTool::Json(text).dump();
}

void appendNumber(std::string& out, double number)
{
    appendShortest(out, number);
}

void appendNumber(std::string& out, float number)
{
    appendShortest(out, number);
}

void appendPair(std::string& out, double first, double second)
{
    out += '[';
    appendNumber(out, first);
    out += ',';
    appendNumber(out, second);
    out += ']';
}

std::string& JsonObject::member(std::string_view name)
{
    m_out += m_empty ? "\"" : ",\"";
    m_empty = false;
    m_out += name;
    m_out += "\":";
    return m_out;
}

}  // namespace RecView
