// JSON documents: our values to and from the library's.
#include "jsonvalue.h"

#include <algorithm>
#include <stdexcept>

#include <nlohmann/json.hpp>

namespace RecTool {

using Document = nlohmann::ordered_json;

struct JsonDocument {
    [[nodiscard]] static Document of(const Json& json)
    {
        return std::visit([](const auto& value) { return made(value); }, json.m_value);
    }
    [[nodiscard]] static Json json(const Document& document)
    {
        switch (document.type()) {
            case Document::value_t::boolean:
                return document.get<bool>();
            case Document::value_t::number_integer:
                return document.get<std::int64_t>();
            case Document::value_t::number_unsigned:
                return document.get<std::uint64_t>();
            case Document::value_t::number_float:
                return document.get<double>();
            case Document::value_t::string:
                return document.get<std::string>();
            case Document::value_t::array:
            case Document::value_t::object:
                return structure(document);
            default:
                return {};
        }
    }

private:
    static Document made(std::monostate /*null*/) { return nullptr; }
    static Document made(const Json::Array& items)
    {
        Document document = Document::array();
        std::transform(items.begin(), items.end(), std::back_inserter(document), of);
        return document;
    }
    static Document made(const Json::Object& entries)
    {
        Document document = Document::object();
        for (const auto& [key, value] : entries) {
            document.emplace(key, of(value));
        }
        return document;
    }
    template <typename Plain>
    static Document made(const Plain& value)
    {
        return value;
    }
    static Json structure(const Document& document)
    {
        Json json = document.is_array() ? Json::array() : Json::object();
        for (const auto& [key, value] : document.items()) {
            if (document.is_array()) {
                json.push_back(JsonDocument::json(value));
            } else {
                std::get<Json::Object>(json.m_value).emplace_back(key, JsonDocument::json(value));
            }
        }
        return json;
    }
};

Json::Json(std::initializer_list<Json> list)
{
    const bool isObject = std::all_of(list.begin(), list.end(), [](const Json& item) {
        const auto* pair = std::get_if<Array>(&item.m_value);
        return pair != nullptr && pair->size() == 2 && std::holds_alternative<std::string>(pair->front().m_value);
    });
    if (!isObject) {
        m_value.emplace<Array>(list);
        return;
    }
    auto& entries = m_value.emplace<Object>();
    entries.reserve(list.size());
    for (const Json& item : list) {
        const auto& pair = std::get<Array>(item.m_value);
        entries.emplace_back(std::get<std::string>(pair.front().m_value), pair.back());
    }
}

Json Json::array(std::initializer_list<Json> items)
{
    Json json;
    json.m_value.emplace<Array>(items);
    return json;
}

Json Json::object()
{
    Json json;
    json.m_value.emplace<Object>();
    return json;
}

Json Json::parse(const std::string& text)
{
    try {
        return JsonDocument::json(Document::parse(text));
    } catch (const Document::exception& error) {
        throw std::invalid_argument(error.what());
    }
}

Json& Json::operator[](const std::string& key)
{
    if (std::holds_alternative<std::monostate>(m_value)) {
        m_value.emplace<Object>();
    }
    auto& entries = std::get<Object>(m_value);
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return entry.first == key; });
    return found != entries.end() ? found->second : entries.emplace_back(key, Json()).second;
}

void Json::push_back(Json item)
{
    if (std::holds_alternative<std::monostate>(m_value)) {
        m_value.emplace<Array>();
    }
    std::get<Array>(m_value).push_back(std::move(item));
}

void Json::update(const Json& other)
{
    for (const auto& [key, value] : std::get<Object>(other.m_value)) {
        (*this)[key] = value;
    }
}

std::size_t Json::size() const
{
    if (const auto* items = std::get_if<Array>(&m_value)) {
        return items->size();
    }
    const auto* entries = std::get_if<Object>(&m_value);
    return entries != nullptr ? entries->size() : 0;
}

const Json& Json::at(std::size_t index) const
{
    return std::get<Array>(m_value).at(index);
}

const Json* Json::find(const std::string& key) const
{
    const auto* entries = std::get_if<Object>(&m_value);
    if (entries == nullptr) {
        return nullptr;
    }
    const auto found =
        std::find_if(entries->begin(), entries->end(), [&](const auto& entry) { return entry.first == key; });
    return found == entries->end() ? nullptr : &found->second;
}

std::optional<std::string> Json::text() const
{
    const auto* text = std::get_if<std::string>(&m_value);
    return text == nullptr ? std::nullopt : std::optional(*text);
}

std::optional<double> Json::number() const
{
    if (const auto* real = std::get_if<double>(&m_value)) {
        return *real;
    }
    if (const auto* whole = std::get_if<std::int64_t>(&m_value)) {
        return static_cast<double>(*whole);
    }
    const auto* whole = std::get_if<std::uint64_t>(&m_value);
    return whole == nullptr ? std::nullopt : std::optional(static_cast<double>(*whole));
}

std::string Json::dump(int indent) const
{
    return JsonDocument::of(*this).dump(indent, ' ', false, Document::error_handler_t::replace);
}

}  // namespace RecTool
