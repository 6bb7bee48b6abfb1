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
    std::array<char, 32> digits{};
    out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
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

std::string& JsonObject::member(std::string_view name)
{
    m_out += m_empty ? "\"" : ",\"";
    m_empty = false;
    m_out += name;
    m_out += "\":";
    return m_out;
}

}  // namespace RecView
