// Values of the tree that a source publishes: found or made, and never mistaken for another kind of value.
#pragma once

#include <stdexcept>

#include <QString>

#include <values/tree.h>
#include <values/value.h>

namespace RecStation {

/// Attaches a pointer to the value at a path of the tree, making it where it is missing.
/// @throws std::runtime_error when the path is taken by another kind of value, or there is no tree
template <typename T>
void attachValue(values::ValuePtr<T>& value, const QString& path)
{
    value.Attach(path);
    const values::Tree* tree = values::Tree::Instance();
    if (tree == nullptr || tree->Find(path) != value.get()) {
        throw std::runtime_error("the value " + path.toStdString() + " is already there as another kind of value");
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

inline void setText(const QString& path, const QString& text)
{
    setValue<values::Value<QString>>(path, text);
}

}  // namespace RecStation
