#include "input/optionchecks.h"

#include <array>
#include <charconv>
#include <utility>
#include <vector>

#include "input/isotime.h"
#include "input/logtime.h"
#include "input/quantity.h"

namespace recstation {

namespace {

std::string shortest(double number)
{
    constexpr std::size_t longest = 32;
    std::array<char, longest> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

std::string refusal(const std::string& expected, const std::string& found)
{
    return "expected " + expected + ", found " + (found.empty() ? "nothing" : found);
}

}  // namespace

CLI::Validator acceptedIf(std::function<bool(const std::string& text)> good, std::string expected)
{
    return {[good = std::move(good), expected = std::move(expected)](std::string& text) {
                return good(text) ? std::string() : refusal(expected, text);
            },
            ""};
}

CLI::Validator withUnit(std::function<std::optional<double>(const std::string& text)> parse, std::string expected,
                        double lowest, double highest)
{
    return {[=, parse = std::move(parse), expected = std::move(expected)](std::string& text) {
                const auto number = parse(text);
                if (!number) {
                    return refusal(expected, text);
                }
                if (!(*number >= lowest && *number <= highest)) {
                    return "expected " + shortest(lowest) + " to " + shortest(highest) + ", found " + text;
                }
                text = shortest(*number);
                return std::string();
            },
            ""};
}

CLI::Validator inHertz(double lowest, double highest)
{
    return withUnit(
        [](const std::string& text) {
            return parseQuantity(text, {"Hz", "S/s", "sps"});
        },
        "a number such as 48k, 145.5M or 1090e6", lowest, highest);
}

CLI::Validator inSeconds(double lowest, double highest)
{
    return withUnit(parseSeconds, "a time such as 90s, 3min or 1h", lowest, highest);
}

CLI::Validator inUnit(std::initializer_list<std::string_view> units, double lowest, double highest)
{
    const std::vector<std::string> names(units.begin(), units.end());
    return withUnit(
        [names](const std::string& text) {
            for (const std::string& name : names) {
                if (const auto number = parseQuantity(text, {name})) {
                    return number;
                }
            }
            return std::optional<double>();
        },
        "a number", lowest, highest);
}

CLI::Validator anUtcOffset()
{
    return acceptedIf([](const std::string& text) { return parseUtcOffset(text).has_value(); },
                      "an offset such as -05:00 or UTC");
}

CLI::Validator aTime()
{
    return acceptedIf([](const std::string& text) { return parseIsoTime(text).has_value(); },
                      "a time after the start of 1970 such as 2026-03-01T08:00:00Z");
}

}  // namespace recstation
