// What zelvod tells of a run, in JSON and in words, and when.
#include <nlohmann/json.hpp>

#include "service.h"
#include "support/testing.h"

using Zelvo::MoverReport;

TEST(ZelvodReport, IsNewsWhenSomethingWasDoneOrTheProblemChanged)
{
    MoverReport report;
    report.waiting = 3;
    EXPECT_FALSE(Zelvod::isNews(report, QString()));
    EXPECT_TRUE(Zelvod::isNews(report, "storage away"));
    report.problem = QStringLiteral("storage away");
    EXPECT_TRUE(Zelvod::isNews(report, QString()));
    EXPECT_FALSE(Zelvod::isNews(report, "storage away"));
    report.moved = 1;
    EXPECT_TRUE(Zelvod::isNews(report, "storage away"));
}

TEST(ZelvodReport, HasEveryFieldInJson)
{
    MoverReport report;
    report.moved = 2;
    report.bytes = 300;
    report.failed = 1;
    report.waiting = 4;
    report.removed = 5;
    report.problem = QStringLiteral("\u00e4 \"b\"");
    report.nextRunMs = 1'000;
    report.messages = QStringList("line\nfeed");
    const std::string line = Zelvod::jsonLine(report, 0);
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    EXPECT_EQ(nlohmann::json::parse(line), nlohmann::json::parse(R"({"time": "1970-01-01T00:00:00.000Z", "moved": 2,
        "bytes": 300, "failed": 1, "waiting": 4, "removed": 5, "problem": "ä \"b\"",
        "nextTry": "1970-01-01T00:00:01.000Z", "messages": ["line\nfeed"]})"));
}

TEST(ZelvodReport, TellsPeopleFailuresAndWhatWasMoved)
{
    MoverReport report;
    report.moved = 1;
    report.bytes = 300;
    report.waiting = 2;
    report.messages = QStringList("x: is missing");
    EXPECT_EQ(Zelvod::text(report, QString(), false), "x: is missing\nmoved 1 file, 300 bytes; 2 files waiting\n");
    EXPECT_EQ(Zelvod::text(report, QString(), true), "x: is missing\n");
    EXPECT_EQ(Zelvod::text(MoverReport(), QString(), false), QString());
    EXPECT_EQ(Zelvod::text(MoverReport(), "away", true), "all is well again\n");
}
