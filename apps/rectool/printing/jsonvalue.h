// A JSON document that is put together and written. The library behind it is heavy to compile, so that only
// jsonvalue.cpp sees it.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace RecTool {

/// Null, a truth value, a number, a text in UTF-8, an array, or an object whose keys stand in the order in which they
/// were put in. Braces make arrays; braces of pairs that begin with a text make an object.
class Json {
public:
    using Array = std::vector<Json>;
    using Object = std::vector<std::pair<std::string, Json>>;

    Json() = default;
    Json(std::same_as<bool> auto truth) : m_value(truth) {}
    Json(std::signed_integral auto number) : m_value(static_cast<std::int64_t>(number)) {}
    Json(std::unsigned_integral auto number) requires(!std::same_as<decltype(number), bool>)
        : m_value(static_cast<std::uint64_t>(number))
    {
    }
    /// What is no number in JSON (infinity, not a number) is written as null.
    Json(std::floating_point auto number) : m_value(static_cast<double>(number)) {}
    Json(std::string text) : m_value(std::move(text)) {}
    Json(const char* text) : m_value(std::string(text)) {}
    Json(std::initializer_list<Json> list);
    template <typename Item>
    Json(const std::vector<Item>& items) : m_value(Array(items.begin(), items.end()))
    {
    }
    /// Null for nothing.
    template <typename Item>
    Json(const std::optional<Item>& item) : Json(item ? Json(*item) : Json())
    {
    }

    [[nodiscard]] static Json array(std::initializer_list<Json> items = {});
    /// What is made of each of some items.
    template <typename Items, typename Make>
    [[nodiscard]] static Json arrayOf(const Items& items, const Make& make)
    {
        Json json = array();
        for (const auto& item : items) {
            json.push_back(make(item));
        }
        return json;
    }
    [[nodiscard]] static Json object();
    /// @throws std::invalid_argument for a text that is no JSON
    [[nodiscard]] static Json parse(const std::string& text);

    /// The value of a key, null at first. Only for an object, or for null, which becomes one.
    Json& operator[](const std::string& key);
    /// Only for an array, or for null, which becomes one.
    void push_back(Json item);
    /// Puts in what another object holds.
    void update(const Json& other);

    /// An object's or an array's entries, 0 for anything else.
    [[nodiscard]] std::size_t size() const;
    /// An element of an array. @throws std::out_of_range beyond its end
    [[nodiscard]] const Json& at(std::size_t index) const;

    /// The value of an object's key; null where there is none, also for what is no object.
    [[nodiscard]] const Json* find(const std::string& key) const;
    [[nodiscard]] bool isArray() const { return std::holds_alternative<Array>(m_value); }
    [[nodiscard]] bool isObject() const { return std::holds_alternative<Object>(m_value); }
    /// Nothing for what is none.
    [[nodiscard]] std::optional<std::string> text() const;
    [[nodiscard]] std::optional<double> number() const;

    /// @param indent spaces per level; below 0 all stands in one line. Bytes that are no UTF-8 are replaced.
    [[nodiscard]] std::string dump(int indent = -1) const;

private:
    friend struct JsonDocument;

    std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, Array, Object> m_value;
};

}  // namespace RecTool
