// Differences between two moments of a recording.
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "randomrecording.h"
#include "rectooltesting.h"
#include "support/recordingbytes.h"
#include "support/samplerecording.h"

namespace {

using namespace RecToolTests;
using nlohmann::json;
using RecTool::ExitCode;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class Diff : public testing::Test {
protected:
    std::string sample()
    {
        std::string path = m_folder.file("sample.rec");
        writeSampleRecording(path);
        return path;
    }
    std::string store(const TestSupport::ReferenceRecording& recording)
    {
        std::string path = m_folder.file("made.rec");
        writeBytes(path, recording.close());
        return path;
    }
    static Result diff(const std::string& file, std::uint64_t from, std::uint64_t to)
    {
        return run([&] { return RecTool::diff({file, std::to_string(from), std::to_string(to), false, false}); });
    }
    static json diffToJson(const std::string& file, std::uint64_t from, std::uint64_t to, bool all = false)
    {
        const Result result = run([&] {
            return RecTool::diff({file, std::to_string(from), std::to_string(to), all, true});
        });
        return json::parse(result.out).at("types");
    }

    Folder m_folder;
};

class RandomDiff : public Diff, public testing::WithParamInterface<std::uint32_t> {};

/// A value without what may change although nothing that was measured does.
json content(json value)
{
    if (value.is_object()) {
        value.erase("timeStampUs");
    }
    return value;
}

}  // namespace

TEST_F(Diff, ShowsWhatDiffersAndHowOftenItChanged)
{
    const Result result = diff(sample(), 950, 2000);
    EXPECT_EQ(result.exitCode, ExitCode::Fine);
    EXPECT_THAT(result.out, AllOf(HasSubstr("1 channel differs, most by 30 dB at 88.075 MHz"), HasSubstr("-31.5"),
                                  HasSubstr("two\\nlines"), Not(HasSubstr("FREQUENCY"))));
    const json types = diffToJson(sample(), 950, 2000);
    ASSERT_EQ(types.size(), 3U);
    EXPECT_EQ(types[1].at("keyword"), "LEVEL");
    EXPECT_EQ(types[1].at("growth"), -1.25);
    EXPECT_THAT(result.out, HasSubstr("-1.25\n")) << "how much a plain number changed";
    EXPECT_EQ(types[1].at("before").at("value").at("value"), -30.25);
    EXPECT_EQ(types[1].at("after").at("value").at("value"), -31.5);
    EXPECT_EQ(types[1].at("records"), 1);
    EXPECT_EQ(types[1].at("lastMs"), 1500);
    EXPECT_EQ(types[0].at("map").at("channels"), 1);
    EXPECT_EQ(types[0].at("map").at("rangeChanged"), false);
    EXPECT_EQ(types[0].at("map").at("largest"),
              (json{{"channel", 3}, {"frequencyHz", 88'075'000.0}, {"levelDb", 30.0}}));
}

TEST_F(Diff, NothingDifferentIsSaid)
{
    EXPECT_EQ(diff(sample(), 1000, 1499).out, "Nothing is different.\n");
    EXPECT_EQ(diff(sample(), 1000, 1000).out, "Nothing is different.\n");
    EXPECT_THAT(diffToJson(sample(), 1000, 1499), IsEmpty());
    EXPECT_EQ(diffToJson(sample(), 1000, 1499, true).size(), 7U);
}

TEST_F(Diff, ATypeThatHasNoRecordYetIsOnlyThere)
{
    const json types = diffToJson(sample(), 10, 11);
    ASSERT_EQ(types.size(), 1U);
    EXPECT_EQ(types[0].at("before"), nullptr);
    EXPECT_EQ(types[0].at("after").at("value").at("value"), -30.25);
    EXPECT_THAT(diff(sample(), 10, 11).out, HasSubstr("-30.25"));
}

TEST_F(Diff, BearingsAreComparedOnTheCircle)
{
    const std::string file = store(TestSupport::ReferenceRecording()
                                       .types({{20, 7, "DFSPECTRUM", "/D"}})
                                       .record(20, "7;1|34;1e6,1e6,3|50;350,1/100,1/,,-60/", 10)
                                       .record(20, "7;2|51;0,20,1/110,1/", 20)
                                       .record(20, "7;3", 25)
                                       .record(20, "7;3|34;2e6,1e6,1|50;1/", 30));
    EXPECT_EQ(diffToJson(file, 10, 20)[0].at("map").at("largest"),
              (json{{"channel", 0}, {"frequencyHz", 1e6}, {"azimuthDeg", 30.0}}));
    EXPECT_EQ(diffToJson(file, 10, 20)[0].at("map").at("channels"), 2);
    EXPECT_EQ(diff(file, 20, 25).out, "Nothing is different.\n") << "measured again with the same result";
    EXPECT_EQ(diffToJson(file, 20, 30)[0].at("map").at("rangeChanged"), true);
    EXPECT_THAT(diff(file, 20, 30).out, HasSubstr("the channel range changed"));
}

TEST_F(Diff, WhatLooksTheSameButIsNotIsShownAsItIsRecorded)
{
    const std::string file = store(TestSupport::ReferenceRecording()
                                       .types({{36, 3, "LEVEL", "/L"}, {37, 3, "ODD", "/O"}})
                                       .record(36, "3;1,0,9", 10)
                                       .record(37, "odd", 11)
                                       .record(36, "3;1,0,10", 20)
                                       .record(37, "odder", 21));
    EXPECT_THAT(diff(file, 15, 20).out, HasSubstr("recorded as \"3;1,0,9\" and \"3;1,0,10\""));
    EXPECT_THAT(diff(file, 20, 21).out, AllOf(HasSubstr("\"odd\""), HasSubstr("\"odder\"")));
    EXPECT_EQ(diff(file, 10, 10).out, "Nothing is different.\n");
}

TEST_F(Diff, WrongMomentsAreWrongUsage)
{
    EXPECT_EQ(diff(sample(), 20, 10).exitCode, ExitCode::Usage);
    EXPECT_THAT(diff(sample(), 20, 10).err, HasSubstr("--from lies behind --to."));
    EXPECT_EQ(run([&] { return RecTool::diff({sample(), "soon", "10", false, false}); }).exitCode, ExitCode::Usage);
    EXPECT_EQ(diff(m_folder.file("nothing.rec"), 1, 2).exitCode, ExitCode::CannotRead);
}

TEST_F(Diff, DamageIsTold)
{
    std::string bytes = bytesOf(sample());
    bytes[bytes.find("3;-31.5") - 5] = 'x';
    const std::string damaged = m_folder.file("damaged.rec");
    writeBytes(damaged, bytes);
    EXPECT_EQ(diff(damaged, 10, 3000).exitCode, ExitCode::Damaged);
}

TEST_P(RandomDiff, ListsExactlyTheTypesWhoseStatesDiffer)
{
    const std::string file = m_folder.file("random.rec");
    writeRandomRecording(file, {.seed = GetParam(), .damagedTexts = true});
    for (std::uint64_t from = 5; from < 400; from += 37) {
        const std::uint64_t to = from + std::uint64_t{60} * GetParam();
        for (const json& type : diffToJson(file, from, to, true)) {
            const json& before = type.at("before");
            const json& after = type.at("after");
            const bool understood = !before.is_null() && !before.at("value").is_null() && !after.at("value").is_null();
            const bool same = understood ? content(before.at("value")) == content(after.at("value"))
                                         : !before.is_null() && before.at("data") == after.at("data");
            EXPECT_EQ(type.at("differs"), !same) << type.at("keyword") << " from " << from << " to " << to;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomDiff, testing::Range(1U, 5U));
