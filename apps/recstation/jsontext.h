// What Qt's texts are in JSON.
#pragma once

#include <QString>

#include <nlohmann/json.hpp>

template <>
struct nlohmann::adl_serializer<QString> {
    template <typename Json>
    static void to_json(Json& json, const QString& text)
    {
        json = text.toStdString();
    }
};

namespace RecStation {

using OrderedJson = nlohmann::ordered_json;

/// Leaves an empty text out.
inline void addIfTold(OrderedJson& object, const char* key, const QString& text)
{
    if (!text.isEmpty()) {
        object[key] = text;
    }
}

}  // namespace RecStation
