// Creating, changing and removing values of the tree as lines of a feed say.
#include "feedline.h"

#include <memory>

#include <values/maps.h>
#include <values/recordingtext.h>
#include <values/selection.h>
#include <values/value.h>
#include <vkbase/vkexception.h>

namespace RecStation {

namespace {

using LevelMap = values::FastValueMap<float, values::levelHandler>;
using BearingMap = values::ValueMap<values::Bearing, values::BearingHandler>;

[[noreturn]] void failValue(const QString& sentence)
{
    throw LineError(sentence.toStdString());
}

// The value as the class that a key needs.
template <typename T>
T& as(values::ValueBase& value, const char* key, const char* expected)
{
    auto* found = dynamic_cast<T*>(&value);
    if (found == nullptr) {
        failValue(QStringLiteral("%1 is a value of kind %2: \"%3\" needs %4")
                      .arg(value.GetPath(), values::ValueTypeName(value.GetType()), QLatin1String(key),
                           QLatin1String(expected)));
    }
    return *found;
}

void setPlainValue(values::ValueBase& value, const std::variant<bool, double, QString>& content)
{
    if (const auto* flag = std::get_if<bool>(&content)) {
        as<values::Value<bool>>(value, "set", "a bool value for true or false").SetValue(*flag);
    } else if (const auto* number = std::get_if<double>(&content)) {
        as<values::ValueNumeric<double>>(value, "set", "a number value for a number").SetValue(*number);
    } else {
        as<values::Value<QString>>(value, "set", "a text value for a text").SetValue(std::get<QString>(content));
    }
}

void applyNumber(values::ValueBase& value, const FeedChange& change)
{
    if (change.lower || change.upper) {
        auto& number = as<values::ValueNumeric<double>>(value, "lower\" or \"upper", "a number");
        number.SetLimits(change.lower.value_or(number.GetLowerLimit()), change.upper.value_or(number.GetUpperLimit()));
    }
    if (change.offset) {
        as<values::ValueNumericWithOffset<double>>(value, "offset", "a number that was created with one")
            .SetOffset(*change.offset);
    }
    if (change.value) {
        setPlainValue(value, *change.value);
    }
}

void addItem(values::ValueSelection& selection, const FeedItem& item)
{
    const std::size_t before = selection.GetItems().size();
    selection.AddItem(new values::SelectionItem(item.name, item.value, item.key));
    if (selection.GetItems().size() == before) {
        failValue(QStringLiteral("%1 has an item \"%2\" already").arg(selection.GetPath(), item.name));
    }
}

void select(values::ValueSelection& selection, const std::variant<QString, std::int32_t>& choice)
{
    if (const auto* name = std::get_if<QString>(&choice)) {
        if (!selection.Select(*name)) {
            failValue(QStringLiteral("%1 has no item \"%2\"").arg(selection.GetPath(), *name));
        }
    } else if (!selection.SelectKey(std::get<std::int32_t>(choice))) {
        failValue(QStringLiteral("%1 has no item with the key %2")
                      .arg(selection.GetPath(), QString::number(std::get<std::int32_t>(choice))));
    }
}

void applySelection(values::ValueBase& value, const FeedChange& change)
{
    for (const FeedItem& item : change.addItems) {
        addItem(as<values::ValueSelection>(value, "add", "a selection"), item);
    }
    if (change.deleteItem) {
        auto& selection = as<values::ValueSelection>(value, "delete", "a selection");
        if (!selection.DeleteItem(*change.deleteItem)) {
            failValue(QStringLiteral("%1 has no item \"%2\"").arg(selection.GetPath(), *change.deleteItem));
        }
    }
    if (change.select) {
        select(as<values::ValueSelection>(value, "select", "a selection"), *change.select);
    }
}

float toEntry(const FeedCell& cell, const float* /*tag*/)
{
    if (std::holds_alternative<values::Bearing>(cell)) {
        throw LineError("\"cells\": a level map takes numbers and null, not bearings");
    }
    const auto* level = std::get_if<double>(&cell);
    return level == nullptr ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(*level);
}

values::Bearing toEntry(const FeedCell& cell, const values::Bearing* /*tag*/)
{
    if (std::holds_alternative<double>(cell)) {
        throw LineError("\"cells\": a bearing map takes bearings and null, not numbers");
    }
    const auto* bearing = std::get_if<values::Bearing>(&cell);
    return bearing == nullptr ? values::Bearing() : *bearing;
}

template <typename Entry, typename Map>
void setCells(Map& map, const FeedChange& change)
{
    const std::size_t channels = map.size();
    if (change.firstCell > channels || change.cells->size() > channels - change.firstCell) {
        failValue(QStringLiteral("%1 has %2 channels: %3 cells from channel %4 on do not fit")
                      .arg(map.GetPath(), QString::number(channels), QString::number(change.cells->size()),
                           QString::number(change.firstCell)));
    }
    std::vector<Entry> entries;
    entries.reserve(change.cells->size());
    for (const FeedCell& cell : *change.cells) {
        entries.push_back(toEntry(cell, static_cast<const Entry*>(nullptr)));
    }
    map.SetCells(change.firstCell, entries, change.ownTime ? change.ownTime->us : 0);
}

void applyMap(values::ValueBase& value, const FeedChange& change)
{
    if (change.range) {
        as<values::MappingBase>(value, "range", "a level or bearing map").SetChannelRange(*change.range);
    }
    if (!change.cells) {
        return;
    }
    if (auto* bearings = dynamic_cast<BearingMap*>(&value)) {
        setCells<values::Bearing>(*bearings, change);
    } else {
        setCells<float>(as<LevelMap>(value, "cells", "a level or bearing map"), change);
    }
}

void applyChange(values::ValueBase& value, const FeedChange& change)
{
    applyNumber(value, change);
    applySelection(value, change);
    applyMap(value, change);
}

// The value gets its initial state before it enters the tree: a line that fails leaves nothing behind.
void createValue(values::Tree& tree, const QString& path, const FeedCreate& create)
{
    if (tree.Find(path) != nullptr) {
        failValue(QStringLiteral("%1 exists already").arg(path));
    }
    const int slash = path.lastIndexOf(QLatin1Char('/'));
    std::unique_ptr<values::ValueBase> value = values::MakeValue(create.kind);
    value->SetName(path.mid(slash + 1));
    applyChange(*value, create.initial);
    tree.Insert(path.left(slash + 1), value.get());
    static_cast<void>(value.release());  // the tree's now
}

values::ValueBase& findValue(const values::Tree& tree, const QString& path)
{
    values::ValueBase* value = tree.Find(path);
    if (value == nullptr) {
        failValue(QStringLiteral("%1 does not exist: expected a line that creates it before").arg(path));
    }
    return *value;
}

}  // namespace

void applyFeedLine(values::Tree& tree, const FeedLine& line)
{
    if (const auto* create = std::get_if<FeedCreate>(&line.action)) {
        createValue(tree, line.path, *create);
    } else if (const auto* change = std::get_if<FeedChange>(&line.action)) {
        applyChange(findValue(tree, line.path), *change);
    } else if (std::holds_alternative<FeedRemove>(line.action)) {
        if (findValue(tree, line.path).GetName().startsWith(QLatin1String("REC_"))) {
            failValue(
                QStringLiteral("%1 belongs to a recorder and stays: expected a value of a device").arg(line.path));
        }
        tree.Remove(line.path);
    }
}

}  // namespace RecStation
