// Whole feeds: what becomes of the values, their times, and lines that are bad.
#include "sources/feed/feedsource.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <values/maps.h>
#include <values/selection.h>
#include <values/tree.h>

#include "scheduler.h"

namespace recstation {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr unsigned long long startUs = 1'000'000'000'000;

using LevelMap = values::FastValueMap<float, values::levelHandler>;
using BearingMap = values::ValueMap<values::Bearing, values::BearingHandler>;

class FeedSourceTest : public testing::Test {
protected:
    SourceReport run(const std::string& text)
    {
        FeedHost host;
        host.switchRecorder = [this](const QString& name, bool on) {
            m_commands.push_back(name.toStdString() + (on ? " on" : " off"));
            return name != QStringLiteral("nobody");
        };
        host.created = [this](const QString& path) { m_created.push_back(path.toStdString()); };
        host.report = [this](const QString& sentence) { m_reports.push_back(sentence.toStdString()); };
        auto open = [text]() -> ByteInput {
            return [text, position = std::size_t{0}](char* buffer, std::size_t size) mutable {
                const std::size_t count = std::min(size, text.size() - position);
                std::copy_n(text.data() + position, count, buffer);
                position += count;
                return count;
            };
        };
        Scheduler scheduler(m_clock);
        host.recorded = [](const QString& path) { return !path.isEmpty(); };
        scheduler.add(std::make_unique<FeedSource>(open, startUs, m_options, host));
        scheduler.prepare();
        while (scheduler.nextTime()) {
            scheduler.step();
        }
        return scheduler.sources().front()->report();
    }

    template <typename T>
    [[nodiscard]] const T& value(const char* path) const
    {
        auto* found = dynamic_cast<T*>(m_tree.Find(QString::fromLatin1(path)));
        if (found == nullptr) {
            throw std::runtime_error(std::string("no such value: ") + path);
        }
        return *found;
    }

    SimulatedClock m_clock;
    values::Tree m_tree;
    std::vector<std::string> m_commands;
    std::vector<std::string> m_created;
    FeedOptions m_options;
    std::vector<std::string> m_reports;
};

const std::string plainBeforeMap = R"({"at": 0, "path": "/LEVEL", "create": "number"}
{"at": 0, "path": "/Spectrum", "create": "levels", "range": {"start": 1e6, "step": 1e3, "count": 2}}
{"at": 100, "record": "On"}
{"at": 200, "path": "/LEVEL", "set": -1}
{"at": 300, "path": "/LEVEL", "set": -2}
{"at": 1000, "path": "/Spectrum", "cells": [1, 2], "time": 980}
{"at": 1100, "path": "/LEVEL", "set": -3}
{"at": 2000, "path": "/Spectrum", "cells": [1, 2], "time": 1980}
)";

TEST_F(FeedSourceTest, PlainValuesThatTheFirstMapsTimeMovesAreToldWithTheAmount)
{
    run(plainBeforeMap);
    EXPECT_THAT(m_reports,
                ElementsAre(AllOf(HasSubstr("line 6: 2 changes"), HasSubstr("880 ms later"), HasSubstr("--keep-at"))));
}

TEST_F(FeedSourceTest, NothingIsMovedWhereEveryValueKeepsItsTime)
{
    m_options.keepAt = true;
    run(plainBeforeMap);
    EXPECT_THAT(m_reports, testing::IsEmpty());
}

TEST_F(FeedSourceTest, AMapThatComesFirstMovesNothing)
{
    run(R"({"at": 0, "path": "/LEVEL", "create": "number"}
{"at": 0, "path": "/Spectrum", "create": "levels", "range": {"start": 1e6, "step": 1e3, "count": 2}}
{"at": 100, "record": "On"}
{"at": 1000, "path": "/Spectrum", "cells": [1, 2], "time": 980}
{"at": 1100, "path": "/LEVEL", "set": -3}
)");
    EXPECT_THAT(m_reports, testing::IsEmpty());
}

TEST_F(FeedSourceTest, CreatesAndSetsPlainValues)
{
    run(R"({"at": 0, "path": "/A/Flag", "create": "bool", "value": true}
{"at": 0, "path": "/Text", "create": "text"}
{"at": 0, "path": "/Number", "create": "number", "value": 5, "lower": 1, "upper": 9}
{"at": 1, "path": "/Text", "set": "Süd"}
{"at": 1, "path": "/Number", "set": 7.5, "upper": 10}
)");
    EXPECT_THAT(m_reports, IsEmpty());
    EXPECT_TRUE(value<values::Value<bool>>("/A/Flag").GetValue());
    EXPECT_EQ(value<values::Value<QString>>("/Text").GetValue(), QStringLiteral("Süd"));
    const auto& number = value<values::ValueNumeric<double>>("/Number");
    EXPECT_EQ(number.GetValue(), 7.5);
    EXPECT_EQ(number.GetLowerLimit(), 1);
    EXPECT_EQ(number.GetUpperLimit(), 10);
}

TEST_F(FeedSourceTest, ANumberCreatedWithAnOffsetKeepsOne)
{
    run(R"({"at": 0, "path": "/FREQUENCY", "create": "number", "value": 1e8, "offset": 5}
{"at": 1, "path": "/FREQUENCY", "offset": 6}
)");
    EXPECT_THAT(m_reports, IsEmpty());
    EXPECT_EQ(value<values::ValueNumericWithOffset<double>>("/FREQUENCY").GetOffset(), 6);
}

TEST_F(FeedSourceTest, WorksASelection)
{
    run(R"({"at": 0, "path": "/S", "create": "selection", "items": [{"name": "a", "key": 1}, {"name": "b", "key": 2}]}
{"at": 0, "path": "/S", "select": 2}
{"at": 0, "path": "/S", "add": {"name": "c", "value": 4.5, "key": 3}}
{"at": 0, "path": "/S", "delete": "a"}
{"at": 0, "path": "/S", "select": "c"}
)");
    EXPECT_THAT(m_reports, IsEmpty());
    const auto& selection = value<values::ValueSelection>("/S");
    EXPECT_EQ(selection.GetItems().size(), 2U);
    EXPECT_EQ(selection.GetCurrentKey(), 3);
    EXPECT_EQ(selection.GetCurrentValue(), 4.5);
}

TEST_F(FeedSourceTest, WorksALevelMapWithItsOwnTime)
{
    run(R"({"at": 0, "path": "/L", "create": "levels", "range": {"start": 1e8, "step": 1e3, "count": 4}, "cells": [1, 2, 3, 4]}
{"at": 9, "path": "/L", "cells": [-5.5, null], "first": 1, "time": 8.5}
)");
    EXPECT_THAT(m_reports, IsEmpty());
    const auto& map = value<LevelMap>("/L");
    EXPECT_EQ(map.GetCells()[1], -5.5F);
    EXPECT_TRUE(std::isnan(map.GetCells()[2]));
    EXPECT_EQ(map.GetCells()[3], 4.0F);
    EXPECT_EQ(map.GetTimeStamp(), startUs + 8'500);
}

TEST_F(FeedSourceTest, WorksABearingMapWithoutATimeOfItsOwn)
{
    run(R"({"at": 0, "path": "/B", "create": "bearings", "range": {"channels": [1e8, 3e8]}}
{"at": 9, "path": "/B", "cells": [{"azimuth": 90, "elevation": 1, "level": -60, "quality": 50}, null]}
)");
    EXPECT_THAT(m_reports, IsEmpty());
    const auto& map = value<BearingMap>("/B");
    EXPECT_EQ(map.GetCells()[0].azimuthDeg, 90);
    EXPECT_EQ(map.GetCells()[0].levelDb, -60);
    EXPECT_TRUE(std::isnan(map.GetCells()[1].azimuthDeg));
    EXPECT_EQ(map.GetTimeStamp(), 0U);
}

TEST_F(FeedSourceTest, AValueOfARecorderStaysAndTheLineIsBad)
{
    run(R"({"at": 0, "path": "/Devices/Rx1/REC_STATUS", "create": "text"}
{"at": 1, "path": "/Devices/Rx1/REC_STATUS", "remove": true}
)");
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("belongs to a recorder")));
    EXPECT_NE(m_tree.Find(QStringLiteral("/Devices/Rx1/REC_STATUS")), nullptr);
}

TEST_F(FeedSourceTest, RemovesAValueSoThatAnotherKindCanTakeItsPlace)
{
    run(R"({"at": 0, "path": "/A", "create": "bool"}
{"at": 1, "path": "/A", "remove": true}
{"at": 2, "path": "/A", "create": "text"}
)");
    EXPECT_THAT(m_reports, IsEmpty());
    EXPECT_EQ(m_tree.Find(QStringLiteral("/A"))->GetType(), values::ValueType::String);
}

TEST_F(FeedSourceTest, PassesRecorderCommandsOn)
{
    const auto report =
        run("{\"at\": 0, \"record\": \"On\"}\n{\"at\": 1, \"record\": \"Off\", \"recorder\": \"df\"}\n");
    EXPECT_THAT(m_commands, ElementsAre(" on", "df off"));
    EXPECT_EQ(report.used, 2U);
}

TEST_F(FeedSourceTest, AtIsTheStationsTimeFromTheStartOn)
{
    run(R"({"at": 2500.5, "path": "/A", "create": "bool"})");
    EXPECT_EQ(m_clock.CurrentTime(), startUs + 2'500'500);
}

TEST_F(FeedSourceTest, BlankLinesAreSkippedAndLineEndsMayBeThoseOfWindows)
{
    const auto report = run("\r\n{\"at\": 0, \"path\": \"/A\", \"create\": \"bool\"}\r\n  \n");
    EXPECT_THAT(m_reports, IsEmpty());
    EXPECT_EQ(report.used, 1U);
    EXPECT_EQ(report.skipped, 2U);
}

TEST_F(FeedSourceTest, ABadLineIsReportedWithItsNumberAndTheRunGoesOn)
{
    const auto report = run(R"({"at": 0, "path": "/A", "create": "number"}
broken

{"at": 5, "path": "/A", "set": 1}
)");
    EXPECT_THAT(m_reports, ElementsAre(AllOf(HasSubstr("feed: line 2: "), HasSubstr("not JSON"))));
    EXPECT_EQ(report.used, 2U);
    EXPECT_EQ(report.bad, 1U);
    EXPECT_EQ(value<values::ValueNumeric<double>>("/A").GetValue(), 1);
}

TEST_F(FeedSourceTest, ManyBadLinesAreCountedAndNotAllReported)
{
    std::string text;
    for (int line = 0; line < 25; ++line) {
        text += "broken\n";
    }
    EXPECT_EQ(run(text).bad, 25U);
    ASSERT_EQ(m_reports.size(), 21U);
    EXPECT_EQ(m_reports.back(), "feed: and 5 more bad lines");
}

TEST_F(FeedSourceTest, StrictEndsAtTheFirstBadLine)
{
    m_options.strict = true;
    const std::string create = "{\"at\": 0, \"path\": \"/A\", \"create\": \"bool\"}\n";
    EXPECT_THROW(run(create + "broken\n"), std::runtime_error);  // when it is read
    EXPECT_NE(m_tree.Find(QStringLiteral("/A")), nullptr);
    EXPECT_THROW(run(create), std::runtime_error);  // when it is carried out: there is one already
    EXPECT_THAT(m_reports, IsEmpty());
}

TEST_F(FeedSourceTest, TheHostLearnsOfWhatWasCreated)
{
    run(R"({"at": 0, "path": "/A", "create": "bool"}
{"at": 0, "path": "/A", "create": "bool"}
{"at": 0, "path": "/A", "set": true}
{"at": 0, "path": "/A/B", "create": "text"}
)");
    EXPECT_THAT(m_created, ElementsAre("/A", "/A/B"));
}

TEST_F(FeedSourceTest, ATimeThatGoesBackwardsIsABadLine)
{
    const auto report = run(R"({"at": 10, "path": "/A", "create": "number"}
{"at": 9.5, "path": "/A", "set": 1}
{"at": 10, "path": "/A", "set": 2}
)");
    EXPECT_THAT(m_reports, ElementsAre(AllOf(HasSubstr("line 2"), HasSubstr("expected 10 or later"))));
    EXPECT_EQ(report.used, 2U);
}

TEST_F(FeedSourceTest, ABadLineDoesNotSetTheTimeOfThoseBehindIt)
{
    const auto report = run(R"({"at": 1000, "path": "/A"}
{"at": 10, "path": "/A", "create": "number"}
)");
    EXPECT_EQ(report.used, 1U);
    EXPECT_EQ(report.bad, 1U);
}

TEST_F(FeedSourceTest, ALineLongerThanTheBoundIsBadAndPassedOver)
{
    constexpr std::size_t bound = 16 * 1024 * 1024;
    const auto report =
        run("{\"x\": \"" + std::string(bound, 'x') + "\"}\n{\"at\": 0, \"path\": \"/A\", \"create\": \"bool\"}\n");
    EXPECT_THAT(m_reports, ElementsAre(HasSubstr("feed: line 1: it is longer than 16 MiB")));
    EXPECT_EQ(report.used, 1U);
}

TEST_F(FeedSourceTest, DeepNestingIsABadLineLikeAnyOther)
{
    const auto report = run(std::string(1'000'000, '[') + "\n");
    EXPECT_EQ(report.bad, 1U);
}

TEST_F(FeedSourceTest, WhatDoesNotFitTheTreeIsABadLine)
{
    const auto report = run(R"({"at": 0, "path": "/N", "create": "number"}
{"at": 0, "path": "/T", "create": "text"}
{"at": 0, "path": "/S", "create": "selection", "items": [{"name": "a", "key": 1}]}
{"at": 0, "path": "/L", "create": "levels", "range": {"start": 0, "step": 1, "count": 2}}
{"at": 0, "path": "/B", "create": "bearings", "range": {"start": 0, "step": 1, "count": 2}}
{"at": 0, "path": "/N", "create": "number"}
{"at": 0, "path": "/X", "set": 1}
{"at": 0, "path": "/X", "remove": true}
{"at": 0, "path": "/T", "set": 1}
{"at": 0, "path": "/N", "set": "x"}
{"at": 0, "path": "/N", "set": true}
{"at": 0, "path": "/T", "lower": 1}
{"at": 0, "path": "/N", "offset": 1}
{"at": 0, "path": "/N", "select": "a"}
{"at": 0, "path": "/S", "select": "b"}
{"at": 0, "path": "/S", "select": 2}
{"at": 0, "path": "/S", "add": {"name": "a"}}
{"at": 0, "path": "/S", "delete": "b"}
{"at": 0, "path": "/N", "range": {"start": 0, "step": 1, "count": 2}}
{"at": 0, "path": "/N", "cells": []}
{"at": 0, "path": "/L", "cells": [1, 2, 3]}
{"at": 0, "path": "/L", "cells": [1], "first": 2}
{"at": 0, "path": "/L", "cells": [{"azimuth": 1}]}
{"at": 0, "path": "/B", "cells": [1]}
{"at": 0, "record": "On", "recorder": "nobody"}
)");
    EXPECT_EQ(report.used, 5U);
    EXPECT_EQ(report.bad, 20U);
    ASSERT_EQ(m_reports.size(), 20U);
    const std::vector<const char*> said = {"/N exists already",
                                           "/X does not exist",
                                           "/X does not exist",
                                           "needs a number value",
                                           "needs a text value",
                                           "needs a bool value",
                                           "needs a number",
                                           "was created with one",
                                           "needs a selection",
                                           "has no item \"b\"",
                                           "has no item with the key 2",
                                           "has an item \"a\" already",
                                           "has no item \"b\"",
                                           "needs a level or bearing map",
                                           "needs a level or bearing map",
                                           "/L has 2 channels: 3 cells from channel 0",
                                           "1 cells from channel 2",
                                           "takes numbers and null",
                                           "takes bearings and null",
                                           "no recorder \"nobody\""};
    for (std::size_t i = 0; i < said.size(); ++i) {
        EXPECT_THAT(m_reports[i], AllOf(HasSubstr("feed: line " + std::to_string(i + 6) + ": "), HasSubstr(said[i])));
    }
}

TEST_F(FeedSourceTest, ACreationThatFailsLeavesNothing)
{
    run(R"({"at": 0, "path": "/L", "create": "levels", "cells": [1]})");
    EXPECT_EQ(m_reports.size(), 1U);
    EXPECT_EQ(m_tree.Size(), 0U);
}

TEST_F(FeedSourceTest, AMissingFileIsSaidByPrepare)
{
    FeedOptions options;
    options.file = "/no/such/file";
    const auto source = makeFeedSource(options, {});
    EXPECT_THROW(source->prepare(), std::runtime_error);
}

}  // namespace
}  // namespace recstation
