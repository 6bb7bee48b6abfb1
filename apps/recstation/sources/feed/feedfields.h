// Taking the fields of a feed's line out of its JSON, each with a sentence about what is wrong with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QString>

#include <nlohmann/json_fwd.hpp>

#include "input/badlines.h"

namespace RecStation {

/// A moment as a feed tells it.
struct FeedTime {
    unsigned long long us = 0;  ///< microseconds
    bool absolute = false;      ///< since 1970 UTC; otherwise on the feed's own clock
};

}  // namespace RecStation

namespace RecStation::FeedFields {

/// A key that stands twice is no JSON that has one meaning: refused, where a map would keep either value.
template <typename Key, typename Value, typename Less, typename Allocator>
class KeysThatStandOnce : public std::map<Key, Value, Less, Allocator> {
public:
    using std::map<Key, Value, Less, Allocator>::map;

    template <typename AnyKey>
    Value& operator[](AnyKey&& key)
    {
        const auto [place, isNew] = this->try_emplace(Key(std::forward<AnyKey>(key)));
        if (!isNew) {
            throw LineError("\"" + place->first + "\" stands twice");
        }
        return place->second;
    }
};

using Json = nlohmann::basic_json<KeysThatStandOnce>;
using Keys = std::vector<std::string_view>;

// All of them throw LineError.
[[noreturn]] void failLine(const std::string& sentence);
[[noreturn]] void failExpected(std::string_view key, const std::string& expected);

[[nodiscard]] std::string quotedList(const Keys& keys);
/// Null when there is none.
[[nodiscard]] const Json* find(const Json& object, std::string_view key);
[[nodiscard]] const Json& require(const Json& object, std::string_view key, const std::string& expected);
void refuseOtherKeys(const Json& object, const Keys& allowed, const std::string& where);

[[nodiscard]] double number(const Json& value, std::string_view key, const std::string& expected = "a number");
[[nodiscard]] double numberBetween(const Json& value, std::string_view key, double low, double high,
                                   const std::string& expected);
[[nodiscard]] std::optional<double> optionalNumber(const Json& object, std::string_view key);
[[nodiscard]] std::int32_t integer(const Json& value, std::string_view key);
[[nodiscard]] std::size_t count(const Json& value, std::string_view key);  ///< of channels
[[nodiscard]] QString text(const Json& value, std::string_view key, const std::string& expected = "a text");
[[nodiscard]] FeedTime time(const Json& value, std::string_view key);  ///< milliseconds, or an ISO 8601 text

}  // namespace RecStation::FeedFields
