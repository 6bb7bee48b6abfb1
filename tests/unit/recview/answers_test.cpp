// What the viewer answers: what rectool says of the same recordings, and one sentence for every wrong request.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <QTemporaryDir>
#include <nlohmann/json.hpp>

#include "answers/answers.h"
#include "rectool/verbs/commands.h"
#include "support/samplerecording.h"

namespace {

using nlohmann::json;
using RecView::Answers;
using RecView::Events;
using RecView::Request;
using RecView::Response;
using testing::HasSubstr;

constexpr double Start = 1'700'000'000'000;  // 2023-11-14 22:13:20 UTC

class RecViewAnswers : public testing::Test {
protected:
    std::string path(const std::string& name) const { return (m_folder.path() + "/").toStdString() + name; }

    void open(bool edit = false)
    {
        RecView::Options options;
        options.paths = {m_folder.path().toStdString()};
        options.edit = edit;
        options.cacheDirectory = m_cache.path().toStdString();
        m_answers = std::make_unique<Answers>(options, m_events);
    }
    Response ask(const std::string& what, std::map<std::string, std::string> query = {})
    {
        return (*m_answers)({"GET", "/api/" + what, std::move(query), ""});
    }
    json askJson(const std::string& what, std::map<std::string, std::string> query = {})
    {
        const Response response = ask(what, std::move(query));
        EXPECT_EQ(response.status, 200) << response.body;
        return json::parse(response.body);
    }
    /// The sentence of a refusal.
    std::string refusal(int status, const std::string& what, std::map<std::string, std::string> query = {})
    {
        const Response response = ask(what, std::move(query));
        EXPECT_EQ(response.status, status) << response.body;
        return json::parse(response.body)["error"];
    }
    Response post(const json& body) { return (*m_answers)({"POST", "/api/bookmarks", {}, body.dump()}); }

    static std::string at(double timeMs) { return json(Start + timeMs).dump(); }

private:
    QTemporaryDir m_folder;
    QTemporaryDir m_cache;
    Events m_events;
    std::unique_ptr<Answers> m_answers;
};

/// What a verb prints.
template <typename Options>
std::string printed(RecTool::ExitCode (*verb)(const Options&), const Options& options)
{
    testing::internal::CaptureStdout();
    static_cast<void>(verb(options));
    return testing::internal::GetCapturedStdout();
}

json stateOf(const std::string& file, std::uint64_t at)
{
    RecTool::StateOptions options;
    options.file = file;
    options.at = std::to_string(at);
    options.json = true;
    return json::parse(printed(RecTool::state, options));
}

std::vector<json> recordsOf(const std::string& file)
{
    RecTool::CatOptions options;
    options.file = file;
    options.json = true;
    std::istringstream lines(printed(RecTool::cat, options));
    std::vector<json> records;
    for (std::string line; std::getline(lines, line);) {
        records.push_back(json::parse(line));
    }
    return records;
}

TEST_F(RecViewAnswers, TheListTellsWhatARecordingHolds)
{
    writeSampleRecording(path("sample.rec"));
    open();
    const json list = askJson("recordings");
    EXPECT_EQ(list["edit"], false);
    ASSERT_EQ(list["recordings"].size(), 1U);
    const json& recording = list["recordings"][0];
    EXPECT_EQ(recording["id"], "sample");
    EXPECT_EQ(recording["live"], false);
    EXPECT_EQ(recording["spectra"][0]["keyword"], "RFSPECTRUM");
    EXPECT_EQ(recording["hasBearings"], true);
    std::map<std::string, std::string> kinds;
    for (const json& value : recording["values"]) {
        kinds[value["keyword"]] = value["kind"];
    }
    EXPECT_EQ(kinds["FREQUENCY"], "number");
    EXPECT_EQ(kinds["MODULATION"], "selection");
    EXPECT_EQ(kinds["DEVICE_CAPTION"], "text");
    EXPECT_TRUE(list["problems"].empty());
}

TEST_F(RecViewAnswers, TheStateIsThatOfRectool)
{
    writeSampleRecording(path("sample.rec"));
    open();
    const double start = askJson("recordings")["recordings"][0]["startMs"];
    for (const std::uint64_t time : {0U, 9U, 10U, 16U, 899U, 900U, 1000U, 1999U, 2000U, 9999U}) {
        const json state = askJson("state", {{"recording", "sample"}, {"at", json(start + double(time)).dump()}});
        const json expected = stateOf(path("sample.rec"), time);
        EXPECT_EQ(state["state"], expected["state"]) << time;
        EXPECT_EQ(state["atMs"], expected["atMs"]);
    }
}

TEST_F(RecViewAnswers, RecordsAreSteppedThroughOneByOne)
{
    writeSampleRecording(path("sample.rec"));
    open();
    const double start = askJson("recordings")["recordings"][0]["startMs"];
    const std::vector<json> records = recordsOf(path("sample.rec"));
    double ms = start;
    for (const json& expected : records) {
        const json next = askJson("record", {{"recording", "sample"}, {"at", json(ms).dump()}, {"step", "1"}});
        EXPECT_EQ(next["record"], expected);
        ms = next["ms"];
        EXPECT_EQ(ms, start + double(expected["timeMs"]));
        EXPECT_EQ(askJson("record", {{"recording", "sample"}, {"at", json(ms).dump()}})["record"], expected);
    }
    EXPECT_THAT(refusal(404, "record", {{"recording", "sample"}, {"at", json(ms).dump()}, {"step", "1"}}),
                HasSubstr("no record after"));
    for (auto expected = records.rbegin() + 1; expected != records.rend(); ++expected) {
        const json before = askJson("record", {{"recording", "sample"}, {"at", json(ms).dump()}, {"step", "-1"}});
        EXPECT_EQ(before["record"], *expected);
        ms = before["ms"];
    }
    EXPECT_THAT(refusal(404, "record", {{"recording", "sample"}, {"at", json(ms).dump()}, {"step", "-1"}}),
                HasSubstr("no record before"));
}

TEST_F(RecViewAnswers, ABookmarkIsAddedRenamedAndRemovedAsRectoolDoesIt)
{
    writeSampleRecording(path("sample.rec"));
    open(true);
    const double start = askJson("recordings")["recordings"][0]["startMs"];
    json change{{"recording", "sample"}, {"action", "add"}, {"ms", start + 1000}, {"text", "al<b>arm"}};
    Response response = post(change);
    ASSERT_EQ(response.status, 200) << response.body;
    EXPECT_EQ(json::parse(response.body)["bookmarks"][0]["text"], "al<b>arm");
    EXPECT_EQ(askJson("bookmarks", {{"recording", "sample"}})["bookmarks"][0]["ms"], start + 1000);
    EXPECT_THAT(printed(RecTool::listBookmarks, {path("sample.rec"), false}), HasSubstr("al<b>arm"));
    EXPECT_EQ(post(change).status, 400) << "There is one already.";

    change = {{"recording", "sample"}, {"action", "rename"}, {"ms", start + 1000}, {"newText", "clear"}};
    ASSERT_EQ(post(change).status, 200);
    EXPECT_THAT(printed(RecTool::listBookmarks, {path("sample.rec"), false}), HasSubstr("clear"));

    change = {{"recording", "sample"}, {"action", "remove"}, {"ms", start + 1000}};
    response = post(change);
    ASSERT_EQ(response.status, 200) << response.body;
    EXPECT_TRUE(json::parse(response.body)["bookmarks"].empty());
}

TEST_F(RecViewAnswers, BookmarksCannotBeChangedWithoutEdit)
{
    writeSampleRecording(path("sample.rec"));
    open();
    const Response response = post({{"recording", "sample"}, {"action", "remove"}, {"ms", Start}});
    EXPECT_EQ(response.status, 403);
    EXPECT_THAT(response.body, HasSubstr("--edit"));
}

TEST_F(RecViewAnswers, WhatIsWrongWithARequestIsASentenceThatNamesTheParameter)
{
    writeSampleRecording(path("sample.rec"));
    open();
    EXPECT_THAT(refusal(400, "state"), HasSubstr("\"recording\" is missing"));
    EXPECT_THAT(refusal(404, "state", {{"recording", "other"}, {"at", "1"}}), HasSubstr("no recording"));
    EXPECT_THAT(refusal(400, "state", {{"recording", "sample"}}), HasSubstr("\"at\" is missing"));
    for (const char* wrong : {"x", "nan", "inf", "1e300", "1 ", "0x10", "--1"}) {
        EXPECT_THAT(refusal(400, "state", {{"recording", "sample"}, {"at", wrong}}), HasSubstr("\"at\"")) << wrong;
    }
    EXPECT_THAT(refusal(400, "state", {{"recording", "sample"}, {"at", "1"}, {"<b>", "1"}}), HasSubstr("<b>"));
    EXPECT_THAT(refusal(400, "record", {{"recording", "sample"}, {"at", "1"}, {"step", "2"}}), HasSubstr("\"step\""));
    EXPECT_THAT(refusal(400, "bearings", {{"recording", "sample"}, {"from", "2"}, {"to", "1"}}), HasSubstr("\"from\""));
    EXPECT_EQ(ask("other").status, 404);
    EXPECT_EQ((*this).post({1, 2}).status, 403);
}

}  // namespace
