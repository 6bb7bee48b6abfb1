#include "input/quantity.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <utility>

#include "input/fields.h"

namespace recstation {

namespace {

struct NumberAndRest {
    double number = 0;
    std::string rest;  // without blanks around it
};

char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::optional<NumberAndRest> parted(std::string_view text)
{
    text = trimmed(text);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    NumberAndRest found;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, found.number);
    if (error != std::errc() || !std::isfinite(found.number)) {
        return std::nullopt;
    }
    found.rest = trimmed(std::string_view(stop, static_cast<std::size_t>(end - stop)));
    return found;
}

bool takeUnit(std::string& rest, std::initializer_list<std::string_view> units)
{
    for (const std::string_view unit : units) {
        const std::size_t from = rest.size() - std::min(rest.size(), unit.size());
        bool same = rest.size() >= unit.size();
        for (std::size_t i = 0; same && i < unit.size(); ++i) {
            same = lowered(rest[from + i]) == lowered(unit[i]);
        }
        if (same) {
            rest.resize(from);
            return true;
        }
    }
    return false;
}

}  // namespace

std::optional<double> parseQuantity(std::string_view text, std::initializer_list<std::string_view> units)
{
    auto found = parted(text);
    if (!found) {
        return std::nullopt;
    }
    takeUnit(found->rest, units);
    constexpr double kilo = 1e3;
    constexpr double mega = 1e6;
    constexpr double giga = 1e9;
    constexpr std::array<std::pair<std::string_view, double>, 5> prefixes = {
        {{"", 1}, {"k", kilo}, {"K", kilo}, {"M", mega}, {"G", giga}}};
    for (const auto& [prefix, factor] : prefixes) {
        if (trimmed(found->rest) == prefix) {
            return found->number * factor;
        }
    }
    return std::nullopt;
}

std::optional<double> parseSeconds(std::string_view text)
{
    const auto found = parted(text);
    if (!found) {
        return std::nullopt;
    }
    constexpr double millisecond = 1e-3;
    constexpr double minute = 60;
    constexpr double hour = 3600;
    constexpr std::array<std::pair<std::string_view, double>, 5> units = {
        {{"", 1}, {"ms", millisecond}, {"s", 1}, {"min", minute}, {"h", hour}}};
    std::string rest = found->rest;
    for (char& c : rest) {
        c = lowered(c);
    }
    for (const auto& [unit, factor] : units) {
        if (rest == unit) {
            return found->number * factor;
        }
    }
    return std::nullopt;
}

}  // namespace recstation
