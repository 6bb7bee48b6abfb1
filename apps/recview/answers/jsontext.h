// JSON that is written piece by piece: answers have many numbers, too many to build a document of.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>

namespace RecView {

/// A text in quotation marks. What is no UTF-8 is replaced, so that it is JSON whatever a recording holds.
void appendText(std::string& out, const std::string& text);
/// The shortest decimal that is this number; null for what is none.
void appendNumber(std::string& out, double number);
/// The same of a level, which has no more digits than its precision.
void appendNumber(std::string& out, float number);
/// Two numbers as an array.
void appendPair(std::string& out, double first, double second);

/// Writes one object; a member follows the other.
class JsonObject {
public:
    explicit JsonObject(std::string& out) : m_out(out) { m_out += '{'; }
    JsonObject(const JsonObject&) = delete;
    JsonObject& operator=(const JsonObject&) = delete;
    ~JsonObject() { m_out += '}'; }

    /// Begins a member, whose value is to be appended.
    std::string& member(std::string_view name);
    /// Members one behind the other: a name, then its text, number, truth value or numbers.
    template <typename Value, typename... Others>
    void members(std::string_view name, const Value& value, const Others&... others)
    {
        if constexpr (std::is_same_v<Value, bool>) {
            member(name) += value ? "true" : "false";
        } else if constexpr (std::is_arithmetic_v<Value>) {
            appendNumber(member(name), static_cast<double>(value));
        } else if constexpr (std::is_convertible_v<const Value&, std::string>) {
            appendText(member(name), value);
        } else {
            list(name, value, [this](auto number) { appendNumber(m_out, number); });
        }
        if constexpr (sizeof...(others) > 0) {
            members(others...);
        }
    }
    /// An array. @param write appends one item
    template <typename Items, typename Write>
    void list(std::string_view name, const Items& items, const Write& write)
    {
        member(name) += '[';
        bool isFirst = true;
        for (const auto& item : items) {
            m_out += isFirst ? "" : ",";
            isFirst = false;
            write(item);
        }
        m_out += ']';
    }

private:
    std::string& m_out;
    bool m_empty = true;
};

}  // namespace RecView
