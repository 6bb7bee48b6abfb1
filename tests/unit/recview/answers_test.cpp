// What the viewer answers: what rectool says of the same recordings, and one sentence for every wrong request.
#include "answerstest.h"
#include "support/recordingbytes.h"
#include "support/samplerecording.h"

namespace AnswersTests {
namespace {

using RecView::Response;
using testing::HasSubstr;

constexpr double Start = 1'700'000'000'000;  // 2023-11-14 22:13:20 UTC

class RecViewAnswers : public AnswersTest {
protected:
    /// With the sample recording. @return when it began
    double openSample(bool edit = false)
    {
        writeSampleRecording(path("sample.rec"));
        open(edit);
        return askJson("recordings")["recordings"][0]["startMs"];
    }
};

TEST_F(RecViewAnswers, TheListTellsWhatARecordingHolds)
{
    openSample();
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
    const double start = openSample();
    for (const std::uint64_t time : {0U, 9U, 10U, 16U, 899U, 900U, 1000U, 1999U, 2000U, 9999U}) {
        const json state = stateAt("sample", start + double(time));
        const json expected = stateOf(path("sample.rec"), time);
        EXPECT_EQ(state["state"], expected["state"]) << time;
        EXPECT_EQ(state["atMs"], expected["atMs"]);
    }
}

TEST_F(RecViewAnswers, RecordsAreSteppedThroughOneByOne)
{
    const double start = openSample();
    const std::vector<json> records = recordsOf(path("sample.rec"));
    double ms = start;
    for (const json& expected : records) {
        const json next = recordAt("sample", ms, 1);
        EXPECT_EQ(next["record"], expected);
        ms = next["ms"];
        EXPECT_EQ(ms, start + double(expected["timeMs"]));
        EXPECT_EQ(recordAt("sample", ms)["record"], expected);
    }
    EXPECT_THAT(recordAt("sample", ms, 1)["nothing"], HasSubstr("no record after"));
    for (auto expected = records.rbegin() + 1; expected != records.rend(); ++expected) {
        const json before = recordAt("sample", ms, -1);
        EXPECT_EQ(before["record"], *expected);
        ms = before["ms"];
    }
    EXPECT_THAT(recordAt("sample", ms, -1)["nothing"], HasSubstr("no record before"));
}

TEST_F(RecViewAnswers, ABookmarkIsAddedRenamedAndRemovedAsRectoolDoesIt)
{
    const double start = openSample(true);
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

/// What is kept of a recording is bounded: what changes most must not take the track's room.
TEST_F(RecViewAnswers, TheTrackGoesToTheEndWhateverElseChanges)
{
    constexpr int Seconds = 400;
    TestSupport::ReferenceRecording recording;
    recording.types({{25, 3, "LOCATIONLATITUDE", "/LOCATIONLATITUDE"},
                     {26, 3, "LOCATIONLONGITUDE", "/LOCATIONLONGITUDE"},
                     {47, 2, "DEVICE_CAPTION", "/DEVICE_CAPTION"}});
    std::uint64_t ms = 0;
    for (int second = 0; second < Seconds; ++second) {
        const std::string fraction = std::to_string(1000 + second);
        recording.record(25, "3;49." + fraction + ",-90,90", ++ms);
        recording.record(26, "3;11." + fraction + ",-180,180", ++ms);
        for (const std::uint64_t end = static_cast<std::uint64_t>(second + 1) * 1000; ms + 50 <= end;) {
            ms += 50;
            recording.record(47, "2;caption " + std::to_string(ms), ms);
        }
    }
    TestSupport::HeaderFields header{.startMs = static_cast<std::uint64_t>(Start)};
    header.stopMs = header.startMs + ms;
    std::ofstream(path("drive.rec"), std::ios::binary) << recording.close(header);
    open();
    waitUntilMade("drive");
    const json found = askJson(
        "bearings", {{"recording", "drive"}, {"from", json(Start).dump()}, {"to", json(Start + double(ms)).dump()}});
    ASSERT_FALSE(found["positions"].empty());
    EXPECT_GT(found["positions"].back()["ms"], Start + 1000.0 * (Seconds - 5));
    EXPECT_EQ(found["positions"].back()["lat"], 49.1399);
}

TEST_F(RecViewAnswers, BookmarksCannotBeChangedWithoutEdit)
{
    openSample();
    const Response response = post({{"recording", "sample"}, {"action", "remove"}, {"ms", Start}});
    EXPECT_EQ(response.status, 403);
    EXPECT_THAT(response.body, HasSubstr("--edit"));
}

TEST_F(RecViewAnswers, WhatIsWrongWithARequestIsASentenceThatNamesTheParameter)
{
    openSample();
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
    EXPECT_EQ(post({1, 2}).status, 403);
}

}  // namespace
}  // namespace AnswersTests
