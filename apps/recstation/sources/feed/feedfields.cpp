// Fields of JSON and the sentences about wrong ones.
#include "feedfields.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <nlohmann/json.hpp>

#include "input/badlines.h"
#include "input/timetext.h"

namespace RecStation::FeedFields {

namespace {

// 3,000 years: far from any overflow of the clock.
constexpr double LatestMs = 1e14;
constexpr double MostChannels = 16'777'216;

}  // namespace

void failLine(const std::string& sentence)
{
    throw LineError(sentence);
}

void failExpected(std::string_view key, const std::string& expected)
{
    failLine("\"" + std::string(key) + "\": expected " + expected);
}

std::string quotedList(const Keys& keys)
{
    std::string list;
    for (const std::string_view key : keys) {
        list += (list.empty() ? "\"" : ", \"") + std::string(key) + "\"";
    }
    return list;
}

const Json* find(const Json& object, std::string_view key)
{
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

const Json& require(const Json& object, std::string_view key, const std::string& expected)
{
    const Json* value = find(object, key);
    if (value == nullptr) {
        failLine("\"" + std::string(key) + "\" is missing: expected " + expected);
    }
    return *value;
}

void refuseOtherKeys(const Json& object, const Keys& allowed, const std::string& where)
{
    for (const auto& entry : object.items()) {
        if (std::find(allowed.begin(), allowed.end(), entry.key()) == allowed.end()) {
            failLine("\"" + entry.key() + "\" means nothing in " + where + ": expected " + quotedList(allowed));
        }
    }
}

double number(const Json& value, std::string_view key, const std::string& expected)
{
    if (!value.is_number()) {
        failExpected(key, expected);
    }
    return value.get<double>();
}

double numberBetween(const Json& value, std::string_view key, double low, double high, const std::string& expected)
{
    const double found = number(value, key, expected);
    if (!(found >= low && found <= high)) {
        failExpected(key, expected);
    }
    return found;
}

std::int32_t integer(const Json& value, std::string_view key)
{
    constexpr auto Expected = "an integer of 32 bits";
    const double found = numberBetween(value, key, std::numeric_limits<std::int32_t>::min(),
                                       std::numeric_limits<std::int32_t>::max(), Expected);
    if (std::trunc(found) != found) {
        failExpected(key, Expected);
    }
    return static_cast<std::int32_t>(found);
}

std::size_t count(const Json& value, std::string_view key)
{
    const std::string expected = "an integer from 0 to 16777216";
    const double found = numberBetween(value, key, 0, MostChannels, expected);
    if (std::trunc(found) != found) {
        failExpected(key, expected);
    }
    return static_cast<std::size_t>(found);
}

QString text(const Json& value, std::string_view key, const std::string& expected)
{
    if (!value.is_string()) {
        failExpected(key, expected);
    }
    return QString::fromStdString(value.get_ref<const std::string&>());
}

std::optional<double> optionalNumber(const Json& object, std::string_view key)
{
    const Json* value = find(object, key);
    return value == nullptr ? std::nullopt : std::optional<double>(number(*value, key, "a number"));
}

FeedTime time(const Json& value, std::string_view key)
{
    constexpr double MicrosecondsPerMillisecond = 1000;
    constexpr double Half = 0.5;
    const std::string expected = R"(milliseconds from 0 on, or a time such as "2026-03-01T08:00:00.25Z")";
    if (value.is_string()) {
        const auto absolute = parseIsoTime(value.get_ref<const std::string&>());
        if (!absolute) {
            failExpected(key, expected);
        }
        return {*absolute, true};
    }
    const double ms = numberBetween(value, key, 0, LatestMs, expected);
    return {static_cast<unsigned long long>(ms * MicrosecondsPerMillisecond + Half), false};
}

}  // namespace RecStation::FeedFields
