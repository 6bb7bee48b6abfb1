// Single lines of a feed: times, values, creations, ranges and cells.
#include "sources/feed/feedline.h"

#include <cmath>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace recstation {
namespace {

using testing::SizeIs;

FeedChange changeOf(const std::string& text)
{
    return std::get<FeedChange>(parseFeedLine(text).action);
}

FeedCreate createOf(const std::string& text)
{
    return std::get<FeedCreate>(parseFeedLine(text).action);
}

TEST(FeedLine, TimeAndPathAreRead)
{
    const FeedLine line = parseFeedLine(R"({"at": 1500.25, "path": "/LEVEL", "set": -31.5})");
    EXPECT_EQ(line.atUs, 1'500'250U);
    EXPECT_EQ(line.path, QStringLiteral("/LEVEL"));
    EXPECT_EQ(std::get<double>(std::get<FeedChange>(line.action).value.value()), -31.5);
}

TEST(FeedLine, PlainValuesAreBoolsTextsAndNumbers)
{
    EXPECT_TRUE(std::get<bool>(changeOf(R"({"at": 0, "path": "/A", "set": true})").value.value()));
    EXPECT_EQ(std::get<QString>(changeOf(R"({"at": 0, "path": "/A", "set": "ä\u0000b"})").value.value()).size(), 3);
    EXPECT_EQ(std::get<double>(changeOf(R"({"at": 0, "path": "/A", "set": 12345678901234})").value.value()),
              12345678901234);
}

TEST(FeedLine, LimitsAndOffsetComeAloneOrTogether)
{
    const FeedChange change = changeOf(R"({"at": 0, "path": "/A", "lower": 1, "offset": -2})");
    EXPECT_EQ(change.lower, 1);
    EXPECT_FALSE(change.upper);
    EXPECT_EQ(change.offset, -2);
    EXPECT_FALSE(change.value);
}

TEST(FeedLine, ASelectionIsSelectedByNameOrKey)
{
    EXPECT_EQ(std::get<QString>(changeOf(R"({"at": 0, "path": "/A", "select": "On"})").select.value()),
              QStringLiteral("On"));
    EXPECT_EQ(std::get<std::int32_t>(changeOf(R"({"at": 0, "path": "/A", "select": 23})").select.value()), 23);
}

TEST(FeedLine, ItemsHaveANameAndMayHaveValueAndKey)
{
    const FeedChange change = changeOf(R"({"at": 0, "path": "/A", "add": {"name": "x"}, "delete": "y"})");
    ASSERT_THAT(change.addItems, SizeIs(1));
    EXPECT_EQ(change.addItems[0].name, QStringLiteral("x"));
    EXPECT_EQ(change.addItems[0].key, 0);
    EXPECT_EQ(change.deleteItem, QStringLiteral("y"));
}

TEST(FeedLine, EveryKindCanBeCreated)
{
    EXPECT_EQ(createOf(R"({"at": 0, "path": "/A", "create": "bool", "value": true})").kind, FeedKind::Bool);
    EXPECT_EQ(createOf(R"({"at": 0, "path": "/A", "create": "text", "value": "x"})").kind, FeedKind::Text);
    EXPECT_EQ(createOf(R"({"at": 0, "path": "/A", "create": "number", "offset": 1})").kind, FeedKind::Number);
    EXPECT_EQ(createOf(R"({"at": 0, "path": "/A", "create": "levels"})").kind, FeedKind::Levels);
    EXPECT_EQ(createOf(R"({"at": 0, "path": "/A", "create": "bearings"})").kind, FeedKind::Bearings);
    const FeedCreate selection = createOf(
        R"({"at": 0, "path": "/A", "create": "selection", "items": [{"name": "a", "value": 1.5, "key": -3}], "select": "a"})");
    EXPECT_EQ(selection.kind, FeedKind::Selection);
    ASSERT_THAT(selection.initial.addItems, SizeIs(1));
    EXPECT_EQ(selection.initial.addItems[0].value, 1.5);
    EXPECT_EQ(selection.initial.addItems[0].key, -3);
}

TEST(FeedLine, ARangeIsEvenOrAListOfChannels)
{
    const auto even = changeOf(R"({"at": 0, "path": "/A", "range": {"start": 1e8, "step": 25e3, "count": 3}})").range;
    EXPECT_EQ(even, values::ChannelRange::Even(1e8, 25e3, 3));
    const auto list = changeOf(R"({"at": 0, "path": "/A", "range": {"channels": [1e8, 3e8]}})").range;
    EXPECT_EQ(list, values::ChannelRange::List({1e8, 3e8}));
}

TEST(FeedLine, CellsAreLevelsBearingsOrNothing)
{
    const FeedChange change =
        changeOf(R"({"at": 0, "path": "/A", "cells": [-3.5, null, {"azimuth": 10}], "first": 2, "time": 12.5})");
    ASSERT_THAT(change.cells.value(), SizeIs(3));
    EXPECT_EQ(std::get<double>(change.cells->at(0)), -3.5);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(change.cells->at(1)));
    EXPECT_EQ(std::get<values::Bearing>(change.cells->at(2)).azimuthDeg, 10);
    EXPECT_TRUE(std::isnan(std::get<values::Bearing>(change.cells->at(2)).quality));
    EXPECT_EQ(change.firstCell, 2U);
    EXPECT_EQ(change.ownTimeUs, 12'500U);
}

TEST(FeedLine, RecorderCommandsMayNameTheRecorder)
{
    const auto on = std::get<FeedRecord>(parseFeedLine(R"({"at": 0, "record": "On"})").action);
    EXPECT_TRUE(on.on);
    EXPECT_TRUE(on.recorder.isEmpty());
    const auto off = std::get<FeedRecord>(parseFeedLine(R"({"at": 0, "record": "Off", "recorder": "df"})").action);
    EXPECT_FALSE(off.on);
    EXPECT_EQ(off.recorder, QStringLiteral("df"));
}

TEST(FeedLine, ARemovalIsRead)
{
    EXPECT_TRUE(std::holds_alternative<FeedRemove>(parseFeedLine(R"({"at": 0, "path": "/A", "remove": true})").action));
}

}  // namespace
}  // namespace recstation
