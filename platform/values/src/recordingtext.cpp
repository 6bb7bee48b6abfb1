// Which kind of value wrote a text, and a fresh value of that kind.
#include <values/recordingtext.h>

#include <optional>

#include <values/maps.h>
#include <values/selection.h>
#include <values/value.h>

#include "textformat.h"

namespace values {

ValueType RecordedKind(const std::string& text)
{
    const std::optional<Text::Parts> parts = Text::parse(text);
    return parts ? parts->kind : ValueType::Unknown;
}

bool CarriesChannelRange(const std::string& text)
{
    const std::optional<Text::Parts> parts = Text::parse(text);
    return parts && parts->range;
}

std::unique_ptr<ValueBase> MakeValue(ValueType type)
{
    switch (type) {
        case ValueType::Bool:
            return std::make_unique<Value<bool>>();
        case ValueType::String:
            return std::make_unique<Value<QString>>();
        case ValueType::Numeric:
            return std::make_unique<ValueNumeric<double>>();
        case ValueType::NumericWithOffset:
            return std::make_unique<ValueNumericWithOffset<double>>();
        case ValueType::Selection:
            return std::make_unique<ValueSelection>();
        case ValueType::LevelMap:
            return std::make_unique<FastValueMap<float, levelHandler>>();
        case ValueType::BearingMap:
            return std::make_unique<ValueMap<Bearing, BearingHandler>>();
        case ValueType::FastBearingMap:
            return std::make_unique<FastValueMap<Bearing, BearingHandler>>();
        case ValueType::Unknown:
            break;
    }
    return nullptr;
}

}  // namespace values
