// Every bad example of doc/feed.md is refused; that the others run is tested with the program.
#include <values/tree.h>

#include "scheduler.h"
#include "sources/feed/feedsource.h"
#include "support/documentexamples.h"
#include "support/textinput.h"

namespace RecStation {
namespace {

// Runs a feed in a tree that has the status values of a recorder; what is created is collected.
SourceReport run(const std::string& text, std::vector<std::string>& created)
{
    SimulatedClock clock;
    values::Tree tree;
    values::ValuePtr<values::Value<bool>> directionFinding;
    directionFinding.Attach("/Devices/Rx1Status/REC_DF");
    StationHooks host;
    host.switchRecorder = [](const QString& name, bool) { return name != QStringLiteral("nobody"); };
    host.created = [&created](const QString& path) { created.push_back(path.toStdString()); };
    host.report = [](const QString& /*sentence*/) {};
    const auto open = [text] { return TestSupport::textInput(text); };
    Scheduler scheduler(clock);
    constexpr unsigned long long Start = 1'772'352'000'000'000;
    scheduler.add(std::make_unique<FeedSource>(open, Start, FeedOptions(), host));
    scheduler.prepare();
    try {
        while (scheduler.nextTime()) {
            scheduler.step();
        }
    } catch (const std::runtime_error&) {
        EXPECT_EQ(scheduler.sources().front()->report().used, 0U);
    }
    return scheduler.sources().front()->report();
}

TEST(FeedDocument, EveryBadExampleIsBad)
{
    const auto examples = TestSupport::documentExamples(FEED_DOCUMENT, "jsonl bad", true);
    ASSERT_EQ(examples.size(), 1U);
    std::vector<std::string> created;
    const SourceReport report = run(examples.front(), created);
    EXPECT_EQ(report.used, 0U);
    EXPECT_EQ(report.bad, static_cast<std::uint64_t>(std::count(examples[0].begin(), examples[0].end(), '\n')));
}

TEST(FeedSource, TheHostLearnsOfWhatWasCreated)
{
    std::vector<std::string> created;
    run(R"({"at": 0, "path": "/A", "create": "bool"}
{"at": 0, "path": "/A", "create": "bool"}
{"at": 0, "path": "/A", "set": true}
{"at": 0, "path": "/A/B", "create": "text"}
)",
        created);
    EXPECT_THAT(created, testing::ElementsAre("/A", "/A/B"));
}

}  // namespace
}  // namespace RecStation
