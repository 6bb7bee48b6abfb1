// What is told of a run: its progress, its files, its remarks, its exit code, its JSON.
#include <nlohmann/json.hpp>

#include "progress.h"
#include "summary.h"
#include "support/testing.h"

namespace RecStation {
namespace {

Summary goodSummary()
{
    FileReport file;
    file.path = QStringLiteral("/x/a.rec");
    file.state = FileReport::State::Finished;
    file.bytes = 1'500;
    file.records = 12;
    Summary summary;
    summary.files.push_back({"receiver", file});
    summary.sources.push_back({"feed", {5, 1, 0}});
    summary.recordedMs = 4'000;
    summary.changes = 20;
    return summary;
}

TEST(Summary, AGoodRunNamesItsFilesAndHasNoRemarks)
{
    const Summary summary = goodSummary();
    EXPECT_EQ(summary.exitCode(), ExitCode::Success);
    EXPECT_EQ(summary.fileLines(), "receiver: /x/a.rec (1.5 kB, 12 records)\n");
    EXPECT_TRUE(summary.remarks().isEmpty());
}

TEST(Summary, TheCountsOfLinesAreToldWhenAskedFor)
{
    Summary summary = goodSummary();
    EXPECT_TRUE(summary.remarks(true).isEmpty());
    summary.sources[0].report.lines = true;
    EXPECT_TRUE(summary.remarks(false).isEmpty());
    EXPECT_EQ(summary.remarks(true), QStringList("feed: 5 used, 1 skipped, 0 bad"));
}

TEST(Summary, WhatWentWrongIsARemarkAndDecidesTheExitCode)
{
    struct {
        std::function<void(Summary&)> goWrong;
        ExitCode exitCode;
        QString remark;
    } const cases[]{
        {[](Summary& s) { s.sources[0].report.bad = 2; }, ExitCode::Incomplete, "feed: 5 used, 1 skipped, 2 bad"},
        {[](Summary& s) { s.files[0].report.problem = "not renamed"; }, ExitCode::Incomplete, "/x/a.rec: not renamed"},
        {[](Summary& s) { s.failure = "the disk is full"; }, ExitCode::CannotRun, "the disk is full"}};
    for (const auto& [goWrong, exitCode, remark] : cases) {
        Summary summary = goodSummary();
        goWrong(summary);
        EXPECT_EQ(summary.exitCode(), exitCode) << remark.toStdString();
        EXPECT_EQ(summary.remarks(), QStringList(remark));
        EXPECT_FALSE(summary.fileLines().isEmpty()) << remark.toStdString();
    }
}

TEST(Summary, ARunWithoutAnyRecordingIsIncomplete)
{
    Summary summary = goodSummary();
    summary.files.clear();
    EXPECT_EQ(summary.exitCode(), ExitCode::Incomplete);
    EXPECT_EQ(summary.remarks().size(), 1);
}

TEST(Summary, AnArchivedFileIsNamedByItsAddress)
{
    Summary summary = goodSummary();
    summary.files[0].report.state = FileReport::State::Archived;
    summary.files[0].report.address = QStringLiteral("zelvo:///group/1");
    summary.archive.emplace().moved = 1;
    EXPECT_EQ(summary.exitCode(), ExitCode::Success);
    EXPECT_EQ(summary.fileLines(), "receiver: zelvo:///group/1 (1.5 kB, 12 records)\n");
    EXPECT_TRUE(summary.remarks().isEmpty());
    const auto json = nlohmann::json::parse(summary.json());
    EXPECT_EQ(json.at("archive"), (nlohmann::json{{"moved", 1}, {"waiting", 0}, {"unregistered", 0}}));
    EXPECT_EQ(json.at("files")[0].at("state"), "archived");
    EXPECT_EQ(json.at("files")[0].at("address"), "zelvo:///group/1");
}

TEST(Summary, WhatTheArchiveHasNotMovedIsARemarkAndNoFailure)
{
    Summary summary = goodSummary();
    Summary::Archive& archive = summary.archive.emplace();
    archive.waiting = 2;
    archive.problem = QStringLiteral("the storage is away");
    EXPECT_EQ(summary.exitCode(), ExitCode::Success);
    EXPECT_EQ(summary.remarks(), QStringList("archive: 2 recordings not moved yet: the storage is away"));
    archive.waiting = 0;
    archive.unregistered = 1;
    EXPECT_EQ(summary.remarks(), QStringList(QStringLiteral("archive: 1 recording not registered, and not going to be "
                                                            "moved: the storage is away")));
}

TEST(Summary, OfLiveSourcesLossesReconnectsAndLagAreToldAndMakeNoFailure)
{
    Summary summary = goodSummary();
    SourceReport& report = summary.sources[0].report;
    report.live = true;
    report.lost = 3;
    report.reconnects = 1;
    report.lag = Lag{12'340, 1'500'000};
    EXPECT_EQ(summary.exitCode(), ExitCode::Success);
    EXPECT_EQ(summary.remarks().value(0), QStringLiteral("feed: 5 used, 1 skipped, 0 bad, 3 lost, 1 reconnect; 12.3 ms "
                                                         "behind its own clock, at most 1500.0 ms"));
    const auto source = nlohmann::json::parse(summary.json())["sources"][0];
    EXPECT_EQ(source, nlohmann::json::parse(R"({"name": "feed", "used": 5, "skipped": 1, "bad": 0, "lost": 3,
        "reconnects": 1, "lagMs": {"middle": 12.34, "most": 1500.0}})"));
    report.lag = Lag{-7'500'000'000, -7'400'000'000};
    EXPECT_TRUE(summary.remarks().value(0).endsWith("; its clock is 2 h 05 min ahead of this one"));
}

TEST(Summary, APeerOfWhichNothingCameIsNamedAndMakesItIncomplete)
{
    Summary summary = goodSummary();
    EXPECT_FALSE(summary.areAllSilent());
    SourceReport report;
    report.live = report.silent = true;
    report.missing = "127.0.0.1:4532: cannot connect: Connection refused";
    summary.sources.push_back({"rig", report});
    EXPECT_FALSE(summary.areAllSilent());
    EXPECT_EQ(summary.exitCode(), ExitCode::Incomplete);
    EXPECT_EQ(summary.remarks(),
              QStringList("rig: nothing ever came from 127.0.0.1:4532: cannot connect: Connection refused"));
    EXPECT_EQ(nlohmann::json::parse(summary.json())["sources"][1]["missing"], report.missing);
    summary.sources.erase(summary.sources.begin());
    EXPECT_TRUE(summary.areAllSilent());
}

TEST(Summary, TheJsonFormHasEverything)
{
    Summary summary = goodSummary();
    summary.files[0].report.problem = QStringLiteral("not renamed");
    const auto json = nlohmann::json::parse(summary.json());
    EXPECT_EQ(json, nlohmann::json::parse(R"({
        "files": [{"recorder": "receiver", "path": "/x/a.rec", "state": "finished", "bytes": 1500, "records": 12,
                   "problem": "not renamed"}],
        "sources": [{"name": "feed", "used": 5, "skipped": 1, "bad": 0}],
        "recordedMs": 4000, "changes": 20, "exitCode": 3})"));
}

TEST(LagText, HasTheUnitThatItsSizeMakesSenseIn)
{
    EXPECT_EQ(lagText(12'340), "12.3 ms");
    EXPECT_EQ(lagText(-1'500'000), "-1500.0 ms");
    EXPECT_EQ(lagText(12'340'000), "12.3 s");
    EXPECT_EQ(lagText(7'499'000'000), "2 h 05 min");
    EXPECT_EQ(lagText(-11 * 60 * 1'000'000LL), "-11 min");
    EXPECT_EQ(lagText(12 * 86'400 * 1'000'000LL), "12 days");
}

TEST(Progress, BytesAreWrittenAsAPersonWould)
{
    EXPECT_EQ(byteText(0), "0 bytes");
    EXPECT_EQ(byteText(999), "999 bytes");
    EXPECT_EQ(byteText(1'500), "1.5 kB");
    EXPECT_EQ(byteText(4'200'000), "4.2 MB");
    EXPECT_EQ(byteText(2'000'000'000'000'000), "2000.0 TB");
}

TEST(Progress, DurationsNameHoursAndMinutesWhenThereAreAny)
{
    EXPECT_EQ(durationText(0), "0.000 s");
    EXPECT_EQ(durationText(2'250), "2.250 s");
    EXPECT_EQ(durationText(62'250), "1 min 02.250 s");
    EXPECT_EQ(durationText(3'662'250), "1 h 01 min 02.250 s");
}

TEST(Progress, TheLineTellsElapsedRecordsBytesAndRate)
{
    EXPECT_EQ(progressText({62'250, 12'345, 4'200'000}, 2'000),
              "1 min 02.250 s recorded, 12345 records, 4.2 MB, 2.1 MB/s");
    EXPECT_EQ(progressText({}, 0), "0.000 s recorded, 0 records, 0 bytes, 0 bytes/s");
}

}  // namespace
}  // namespace RecStation
