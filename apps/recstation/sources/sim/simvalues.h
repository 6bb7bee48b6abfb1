// The device values that the simulator publishes: one for every keyword of the recorder, at its default path.
#pragma once

#include <span>

#include <QString>

#include <values/maps.h>
#include <values/selection.h>
#include <values/tree.h>

#include "configuration.h"

namespace RecStation::Sim {

using LevelMap = values::FastValueMap<float, values::levelHandler>;
using BearingMap = values::ValueMap<values::Bearing, values::BearingHandler>;

/// A keyword's value: where it stands and what it begins with.
struct KeywordValue {
    const char* keyword;
    const char* path;  ///< below a device's value path unless it begins with "/"
    values::ValueType type;
    double value = 0;  ///< of a number; of a selection the key of the item selected first
    double lower = 0;  ///< limits of a number
    double upper = 0;
};

[[nodiscard]] std::span<const KeywordValue> keywordValues();

/// Creates all values of a device that are not in the tree yet, its antenna mode and the job id included.
/// @param number for the device's name, from 1
void createDevice(const Instance& instance, int number);

/// The value at a path as a kind; null when there is none of that kind.
template <typename T>
[[nodiscard]] T* findValue(const QString& path)
{
    return dynamic_cast<T*>(values::Tree::Instance()->Find(path));
}

// Changes of values in the tree in force. A value that was removed, or was made by another source as another kind,
// stays as it is.
template <typename T, typename Content>
void setValue(const QString& path, const Content& content)
{
    if (T* value = findValue<T>(path)) {
        value->SetValue(content);
    }
}
inline void setNumber(const QString& path, double number)
{
    setValue<values::ValueNumeric<double>>(path, number);
}
void chooseKey(const QString& path, std::int32_t key);

}  // namespace RecStation::Sim
