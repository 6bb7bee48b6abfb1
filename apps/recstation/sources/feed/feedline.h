// One line of a feed: what it says, and how it is carried out on the value tree in force. doc/feed.md describes the
// lines.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <QString>

#include <values/maps.h>
#include <values/tree.h>

#include "feedfields.h"
#include "input/badlines.h"

namespace RecStation {

struct FeedItem {
    QString name;
    double value = 0;
    std::int32_t key = 0;
};

/// Nothing measured, a level or a bearing.
using FeedCell = std::variant<std::monostate, double, values::Bearing>;

/// A new state of some properties of a value; those that are not set stay.
struct FeedChange {
    std::optional<std::variant<bool, double, QString>> value;
    std::optional<double> lower;
    std::optional<double> upper;
    std::optional<double> offset;
    std::vector<FeedItem> addItems;
    std::optional<QString> deleteItem;
    std::optional<std::variant<QString, std::int32_t>> select;  ///< by name or by key
    std::optional<values::ChannelRange> range;
    std::optional<std::vector<FeedCell>> cells;
    std::size_t firstCell = 0;
    std::optional<FeedTime> ownTime;
};

struct FeedCreate {
    values::ValueType kind = values::ValueType::Bool;
    FeedChange initial;
};
struct FeedRemove {};
struct FeedRecord {
    bool on = false;
    QString recorder;  ///< empty: the first one
};

struct FeedLine {
    FeedTime at;
    QString path;  ///< empty for a recorder command
    std::variant<FeedChange, FeedCreate, FeedRemove, FeedRecord> action;
};

/// Makes the line's times absolute.
/// @param startTime microseconds since 1970 UTC of the feed's time 0
void makeTimesAbsolute(FeedLine& line, unsigned long long startTime);

/// @param text one line, UTF-8
/// @throws LineError
[[nodiscard]] FeedLine parseFeedLine(const std::string& text);

/// Creates, changes or removes the value that the line names. A change is made property by property, each with its
/// notification: limits, offset, value; items, selection; range, cells.
/// @param line its times are absolute
/// @throws LineError when the value is missing, taken or of another kind; what was done before stays
void applyFeedLine(values::Tree& tree, const FeedLine& line);

}  // namespace RecStation
