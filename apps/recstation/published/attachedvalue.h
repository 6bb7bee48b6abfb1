// Values of the tree that a source publishes: found or made, and never mistaken for another kind of value.
#pragma once

#include <limits>
#include <memory>
#include <stdexcept>

#include <QString>

#include <values/maps.h>
#include <values/selection.h>
#include <values/tree.h>
#include <values/value.h>

namespace RecStation {

using LevelMap = values::FastValueMap<float, values::levelHandler>;
using BearingMap = values::ValueMap<values::Bearing, values::BearingHandler>;

/// Attaches a pointer to the value at a path of the tree, making it where it is missing.
/// @return whether it was made
/// @throws std::runtime_error when the path is taken by another kind of value, or there is no tree
template <typename T>
bool attachValue(values::ValuePtr<T>& value, const QString& path)
{
    const values::Tree* tree = values::Tree::Instance();
    const bool isMissing = tree != nullptr && tree->Find(path) == nullptr;
    value.Attach(path);
    if (tree == nullptr || tree->Find(path) != value.get()) {
        throw std::runtime_error("the value " + path.toStdString() + " is already there as another kind of value");
    }
    return isMissing;
}

/// The same of a number, which is not known (not a number) where it was made.
template <typename Number>
void attachNumber(values::ValuePtr<Number>& number, const QString& path)
{
    if (attachValue(number, path)) {
        number->SetValue(std::numeric_limits<double>::quiet_NaN());
    }
}

/// Sets the value at a path, making it where it is missing. Throws as attachValue does.
template <typename T, typename Content>
void setValue(const QString& path, const Content& content)
{
    values::ValuePtr<T> value;
    attachValue(value, path);
    value->SetValue(content);
}

inline void setNumber(const QString& path, double number)
{
    setValue<values::ValueNumeric<double>>(path, number);
}

inline void addItem(const values::ValuePtr<values::ValueSelection>& selection, const QString& name, double number,
                    std::int32_t key)
{
    selection->AddItem(std::make_unique<values::SelectionItem>(name, number, key).release());
}

/// A device's name as the recorder can make it a part of file names, which must not have separators and end at a dot.
[[nodiscard]] inline QString forFileNames(QString name)
{
    static const QString kept = QStringLiteral(" -_");
    for (QChar& c : name) {
        if (!c.isLetterOrNumber() && !kept.contains(c)) {
            c = QLatin1Char('_');
        }
    }
    return name;
}

/// What the device of a value path is called, and what it is.
inline void setDevice(const QString& valuePath, const QString& name, const QString& type)
{
    setValue<values::Value<QString>>(valuePath + QStringLiteral("/Adm/DRIVERNAME"), name);
    setValue<values::Value<QString>>(valuePath + QStringLiteral("/Adm/DEVICE_TYPE"), type);
}

/// From where to where the device of a value path measures.
inline void setScanRange(const QString& valuePath, double lowHz, double highHz)
{
    setNumber(valuePath + QStringLiteral("/Scn/StartFreq"), lowHz);
    setNumber(valuePath + QStringLiteral("/Scn/StopFreq"), highHz);
}

/// The scale of its levels.
inline void setScanLevels(const QString& valuePath, double lowestDb, double highestDb)
{
    setNumber(valuePath + QStringLiteral("/Scn/StartLevel"), lowestDb);
    setNumber(valuePath + QStringLiteral("/Scn/StopLevel"), highestDb);
}

}  // namespace RecStation
