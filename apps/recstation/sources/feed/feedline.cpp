// Parsing a feed's line key by key, and sentences about what is wrong in it.
#include "feedline.h"

#include <limits>
#include <string_view>

#include <nlohmann/json.hpp>

#include "feedfields.h"

namespace RecStation {

namespace {

using namespace FeedFields;
using values::ValueType;

QString path(const Json& line)
{
    const std::string expected = "the path of a value, such as \"/LEVEL\"";
    QString found = text(require(line, "path", expected), "path", expected);
    if (!found.startsWith(QLatin1Char('/')) || found.endsWith(QLatin1Char('/'))) {
        failExpected("path", expected);
    }
    return found;
}

std::variant<bool, double, QString> plainValue(const Json& value, std::string_view key)
{
    if (value.is_boolean()) {
        return value.get<bool>();
    }
    if (value.is_number()) {
        return value.get<double>();
    }
    return text(value, key, "true, false, a number or a text");
}

std::variant<bool, double, QString> plainValue(const Json& value, ValueType kind)
{
    switch (kind) {
        case ValueType::Bool:
            if (!value.is_boolean()) {
                failExpected("value", "true or false");
            }
            return value.get<bool>();
        case ValueType::Numeric:
            return number(value, "value");
        default:
            return text(value, "value");
    }
}

FeedItem item(const Json& value, std::string_view key)
{
    const std::string expected = R"(an item such as {"name": "Scan", "value": 0, "key": 5})";
    if (!value.is_object()) {
        failExpected(key, expected);
    }
    refuseOtherKeys(value, {"name", "value", "key"}, "an item");
    FeedItem result;
    result.name = text(require(value, "name", "the name of the item"), "name");
    result.value = optionalNumber(value, "value").value_or(0);
    if (const Json* itemKey = find(value, "key")) {
        result.key = integer(*itemKey, "key");
    }
    return result;
}

std::vector<FeedItem> items(const Json& value)
{
    if (!value.is_array()) {
        failExpected("items", "a list of items");
    }
    std::vector<FeedItem> result;
    for (const Json& element : value) {
        result.push_back(item(element, "items"));
    }
    return result;
}

values::ChannelRange range(const Json& value)
{
    const std::string expected = R"({"start": Hz, "step": Hz, "count": N} or {"channels": [Hz, ...]})";
    if (!value.is_object()) {
        failExpected("range", expected);
    }
    const Json* channels = find(value, "channels");
    if (channels == nullptr) {
        refuseOtherKeys(value, {"start", "step", "count"}, "a range");
        return values::ChannelRange::Even(number(require(value, "start", "Hz"), "start"),
                                          number(require(value, "step", "Hz"), "step"),
                                          count(require(value, "count", "the number of channels"), "count"));
    }
    refuseOtherKeys(value, {"channels"}, "a range with channels");
    if (!channels->is_array() || channels->empty()) {
        failExpected("channels", "a list of frequencies in Hz");
    }
    std::vector<double> list;
    for (const Json& channel : *channels) {
        list.push_back(number(channel, "channels", "a list of frequencies in Hz"));
    }
    return values::ChannelRange::List(std::move(list));
}

double bearingField(const Json& bearing, const char* key, double low, double high, const std::string& expected)
{
    const Json* value = find(bearing, key);
    return value == nullptr ? std::numeric_limits<double>::quiet_NaN()
                            : numberBetween(*value, key, low, high, expected);
}

values::Bearing bearing(const Json& value)
{
    constexpr double Largest = std::numeric_limits<double>::max();
    refuseOtherKeys(value, {"azimuth", "elevation", "level", "quality"}, "a bearing");
    values::Bearing result;
    result.azimuthDeg = bearingField(value, "azimuth", 0, 360, "degrees from 0 to 360");
    result.elevationDeg = bearingField(value, "elevation", -90, 90, "degrees from -90 to 90");
    result.levelDb = bearingField(value, "level", -Largest, Largest, "a number");
    result.quality = bearingField(value, "quality", 0, 100, "a number from 0 to 100");
    return result;
}

FeedCell cell(const Json& value)
{
    constexpr double Largest = std::numeric_limits<float>::max();
    if (value.is_null()) {
        return std::monostate();
    }
    if (value.is_object()) {
        return bearing(value);
    }
    return numberBetween(value, "cells", -Largest, Largest, "levels, bearings or null");
}

std::vector<FeedCell> cells(const Json& value)
{
    if (!value.is_array()) {
        failExpected("cells", "a list of levels, of bearings, or of null for a channel without measurement");
    }
    std::vector<FeedCell> result;
    result.reserve(value.size());
    for (const Json& element : value) {
        result.push_back(cell(element));
    }
    return result;
}

void readMapKeys(const Json& line, FeedChange& change)
{
    if (const Json* value = find(line, "range")) {
        change.range = range(*value);
    }
    if (const Json* value = find(line, "cells")) {
        change.cells = cells(*value);
    }
    for (const std::string_view key : {"first", "time"}) {
        if (find(line, key) != nullptr && !change.cells) {
            failLine("\"" + std::string(key) + "\" says something about \"cells\", which are missing");
        }
    }
    if (const Json* value = find(line, "first")) {
        change.firstCell = count(*value, "first");
    }
    if (const Json* value = find(line, "time")) {
        change.ownTime = time(*value, "time");
    }
}

void readNumberKeys(const Json& line, FeedChange& change)
{
    change.lower = optionalNumber(line, "lower");
    change.upper = optionalNumber(line, "upper");
    change.offset = optionalNumber(line, "offset");
}

void readSelect(const Json& line, FeedChange& change)
{
    const Json* value = find(line, "select");
    if (value == nullptr) {
        return;
    }
    if (value->is_number()) {
        change.select = integer(*value, "select");
    } else {
        change.select = text(*value, "select", "the name of an item or its key");
    }
}

struct KindRule {
    std::string_view name;
    ValueType kind;
    Keys keys;  // beside at, path and create
};

const std::vector<KindRule>& kindRules()
{
    static const std::vector<KindRule> rules = {
        {"bool", ValueType::Bool, {"value"}},
        {"text", ValueType::String, {"value"}},
        {"number", ValueType::Numeric, {"value", "lower", "upper", "offset"}},
        {"selection", ValueType::Selection, {"items", "select"}},
        {"levels", ValueType::LevelMap, {"range", "cells", "first", "time"}},
        {"bearings", ValueType::BearingMap, {"range", "cells", "first", "time"}},
    };
    return rules;
}

const KindRule& kindRule(const Json& value)
{
    Keys names;
    for (const KindRule& rule : kindRules()) {
        if (value.is_string() && value.get_ref<const std::string&>() == rule.name) {
            return rule;
        }
        names.push_back(rule.name);
    }
    failExpected("create", "one of " + quotedList(names));
}

FeedCreate create(const Json& line)
{
    const KindRule& rule = kindRule(line.at("create"));
    Keys allowed = {"at", "path", "create"};
    allowed.insert(allowed.end(), rule.keys.begin(), rule.keys.end());
    refuseOtherKeys(line, allowed, "the creation of a " + std::string(rule.name) + " value");
    FeedCreate result;
    result.kind = rule.kind;
    if (const Json* value = find(line, "value")) {
        result.initial.value = plainValue(*value, rule.kind);
    }
    readNumberKeys(line, result.initial);
    if (result.initial.offset) {
        result.kind = ValueType::NumericWithOffset;
    }
    if (const Json* value = find(line, "items")) {
        result.initial.addItems = items(*value);
    }
    readSelect(line, result.initial);
    readMapKeys(line, result.initial);
    return result;
}

FeedChange change(const Json& line)
{
    refuseOtherKeys(
        line,
        {"at", "path", "set", "lower", "upper", "offset", "select", "add", "delete", "range", "cells", "first", "time"},
        "a change");
    if (line.size() == 2) {
        failLine(
            "nothing is said about the value: expected \"set\", \"select\", \"cells\", \"create\", \"remove\" or "
            "another change");
    }
    FeedChange result;
    if (const Json* value = find(line, "set")) {
        result.value = plainValue(*value, "set");
    }
    readNumberKeys(line, result);
    if (const Json* value = find(line, "add")) {
        result.addItems.push_back(item(*value, "add"));
    }
    if (const Json* value = find(line, "delete")) {
        result.deleteItem = text(*value, "delete", "the name of an item");
    }
    readSelect(line, result);
    readMapKeys(line, result);
    return result;
}

FeedRemove remove(const Json& line)
{
    refuseOtherKeys(line, {"at", "path", "remove"}, "a removal");
    if (!line.at("remove").is_boolean() || !line.at("remove").get<bool>()) {
        failExpected("remove", "true");
    }
    return {};
}

FeedRecord record(const Json& line)
{
    const std::string expected = R"("On" or "Off")";
    refuseOtherKeys(line, {"at", "record", "recorder"}, "a recorder command");
    const QString command = text(line.at("record"), "record", expected);
    if (command != QStringLiteral("On") && command != QStringLiteral("Off")) {
        failExpected("record", expected);
    }
    FeedRecord result;
    result.on = command == QStringLiteral("On");
    if (const Json* name = find(line, "recorder")) {
        result.recorder = text(*name, "recorder", "the name of a recorder");
    }
    return result;
}

FeedLine fromJson(const Json& line)
{
    if (!line.is_object()) {
        failLine(R"(expected one JSON object such as {"at": 0, "path": "/LEVEL", "set": -30})");
    }
    FeedLine result;
    result.at = time(require(line, "at", "milliseconds from 0 on"), "at");
    if (find(line, "record") != nullptr) {
        result.action = record(line);
        return result;
    }
    result.path = path(line);
    if (find(line, "create") != nullptr) {
        result.action = create(line);
    } else if (find(line, "remove") != nullptr) {
        result.action = remove(line);
    } else {
        result.action = change(line);
    }
    return result;
}

}  // namespace

void makeTimesAbsolute(FeedLine& line, unsigned long long startTime)
{
    const auto makeAbsolute = [startTime](FeedTime& time) { time = {time.us + (time.absolute ? 0 : startTime), true}; };
    makeAbsolute(line.at);
    const auto makeOwnAbsolute = [&makeAbsolute](FeedChange& change) {
        if (change.ownTime) {
            makeAbsolute(*change.ownTime);
        }
    };
    if (auto* change = std::get_if<FeedChange>(&line.action)) {
        makeOwnAbsolute(*change);
    } else if (auto* create = std::get_if<FeedCreate>(&line.action)) {
        makeOwnAbsolute(create->initial);
    }
}

FeedLine parseFeedLine(const std::string& text)
{
    try {
        return fromJson(Json::parse(text));
    } catch (const Json::parse_error& error) {
        failLine("not JSON at byte " + std::to_string(error.byte) + ": expected one object per line");
    } catch (const Json::exception&) {
        // A number too large for any type is the one other thing that the parser refuses.
        failLine("not JSON: a number is out of range");
    }
}

}  // namespace RecStation
