// Single lines of a feed: times, values, creations, ranges and cells, and bad lines.
#include "sources/feed/feedline.h"

#include <cmath>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace recstation {
namespace {

using testing::HasSubstr;
using testing::SizeIs;

FeedChange changeOf(const std::string& text)
{
    return std::get<FeedChange>(parseFeedLine(text).action);
}

FeedCreate createOf(const std::string& text)
{
    return std::get<FeedCreate>(parseFeedLine(text).action);
}

std::string problemOf(const std::string& text)
{
    try {
        static_cast<void>(parseFeedLine(text));
    } catch (const LineError& error) {
        return error.what();
    }
    return "no problem";
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

struct BadLine {
    const char* text;
    const char* said;
};

class BadFeedLine : public testing::TestWithParam<BadLine> {};

TEST_P(BadFeedLine, IsRefusedAndToldWhatWasExpected)
{
    EXPECT_THAT(problemOf(GetParam().text), HasSubstr(GetParam().said)) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Every, BadFeedLine,
    testing::Values(
        BadLine{"nonsense", "not JSON at byte 2"}, BadLine{R"({"at": 0} x)", "not JSON at byte"},
        BadLine{R"({"at": 1e999})", "out of range"}, BadLine{"{\"at\": \"\xff\"}", "not JSON at byte"},
        BadLine{"[1]", "expected one JSON object"}, BadLine{"{}", "\"at\" is missing"},
        BadLine{R"({"at": "0"})", "\"at\": expected milliseconds"}, BadLine{R"({"at": -1})", "milliseconds from 0 on"},
        BadLine{R"({"at": 1e15})", "milliseconds from 0 on"}, BadLine{R"({"at": 0})", "\"path\" is missing"},
        BadLine{R"({"at": 0, "path": 5, "set": 1})", "\"path\": expected the path"},
        BadLine{R"({"at": 0, "path": "LEVEL", "set": 1})", "\"path\": expected the path"},
        BadLine{R"({"at": 0, "path": "/LEVEL/", "set": 1})", "\"path\": expected the path"},
        BadLine{R"({"at": 0, "path": "/A"})", "nothing is said"},
        BadLine{R"({"at": 0, "path": "/A", "sett": 1})", "\"sett\" means nothing in a change"},
        BadLine{R"({"at": 0, "path": "/A", "set": null})", "true, false, a number or a text"},
        BadLine{R"({"at": 0, "path": "/A", "lower": "1"})", "\"lower\": expected a number"},
        BadLine{R"({"at": 0, "path": "/A", "select": true})", "the name of an item or its key"},
        BadLine{R"({"at": 0, "path": "/A", "select": 1.5})", "an integer of 32 bits"},
        BadLine{R"({"at": 0, "path": "/A", "select": 3000000000})", "an integer of 32 bits"},
        BadLine{R"({"at": 0, "path": "/A", "add": "x"})", "\"add\": expected an item such as"},
        BadLine{R"({"at": 0, "path": "/A", "add": {"key": 1}})", "\"name\" is missing"},
        BadLine{R"({"at": 0, "path": "/A", "add": {"name": "x", "id": 1}})", "\"id\" means nothing in an item"},
        BadLine{R"({"at": 0, "path": "/A", "delete": 1})", "the name of an item"},
        BadLine{R"({"at": 0, "path": "/A", "remove": false})", "\"remove\": expected true"},
        BadLine{R"({"at": 0, "path": "/A", "remove": true, "set": 1})", "\"set\" means nothing in a removal"},
        BadLine{R"({"at": 0, "record": "on"})", "\"On\" or \"Off\""},
        BadLine{R"({"at": 0, "record": true})", "\"On\" or \"Off\""},
        BadLine{R"({"at": 0, "record": "On", "path": "/A"})", "\"path\" means nothing in a recorder command"},
        BadLine{R"({"at": 0, "record": "On", "recorder": 1})", "the name of a recorder"},
        BadLine{R"({"at": 0, "path": "/A", "create": "integer"})", "one of \"bool\", \"text\""},
        BadLine{R"({"at": 0, "path": "/A", "create": 1})", "one of \"bool\", \"text\""},
        BadLine{R"({"at": 0, "path": "/A", "create": "bool", "lower": 1})", "the creation of a bool value"},
        BadLine{R"({"at": 0, "path": "/A", "create": "bool", "value": 1})", "\"value\": expected true or false"},
        BadLine{R"({"at": 0, "path": "/A", "create": "number", "value": "1"})", "\"value\": expected a number"},
        BadLine{R"({"at": 0, "path": "/A", "create": "text", "value": 1})", "\"value\": expected a text"},
        BadLine{R"({"at": 0, "path": "/A", "create": "selection", "items": {}})", "a list of items"},
        BadLine{R"({"at": 0, "path": "/A", "range": []})", "\"range\": expected"},
        BadLine{R"({"at": 0, "path": "/A", "range": {"start": 1, "step": 1}})", "\"count\" is missing"},
        BadLine{R"({"at": 0, "path": "/A", "range": {"start": 1, "step": 1, "count": 16777217}})", "0 to 16777216"},
        BadLine{R"({"at": 0, "path": "/A", "range": {"start": 1, "step": 1, "count": 1.5}})", "0 to 16777216"},
        BadLine{R"({"at": 0, "path": "/A", "range": {"start": 1, "stop": 2}})", "\"stop\" means nothing in a range"},
        BadLine{R"({"at": 0, "path": "/A", "range": {"channels": []}})", "a list of frequencies"},
        BadLine{R"({"at": 0, "path": "/A", "range": {"channels": ["x"]}})", "a list of frequencies"},
        BadLine{R"({"at": 0, "path": "/A", "range": {"channels": [1], "count": 1}})", "a range with channels"},
        BadLine{R"({"at": 0, "path": "/A", "cells": 5})", "\"cells\": expected a list"},
        BadLine{R"({"at": 0, "path": "/A", "cells": ["x"]})", "levels, bearings or null"},
        BadLine{R"({"at": 0, "path": "/A", "cells": [1e39]})", "levels, bearings or null"},
        BadLine{R"({"at": 0, "path": "/A", "cells": [{"azimuth": 361}]})", "degrees from 0 to 360"},
        BadLine{R"({"at": 0, "path": "/A", "cells": [{"elevation": 91}]})", "degrees from -90 to 90"},
        BadLine{R"({"at": 0, "path": "/A", "cells": [{"quality": -1}]})", "from 0 to 100"},
        BadLine{R"({"at": 0, "path": "/A", "cells": [{"bearing": 1}]})", "\"bearing\" means nothing in a bearing"},
        BadLine{R"({"at": 0, "path": "/A", "cells": [], "first": -1})", "\"first\": expected an integer"},
        BadLine{R"({"at": 0, "path": "/A", "cells": [], "time": -1})", "\"time\": expected milliseconds"},
        BadLine{R"({"at": 0, "path": "/A", "set": 1, "first": 1})", "\"cells\", which are missing"}));

}  // namespace
}  // namespace recstation
