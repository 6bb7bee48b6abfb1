// That going on from a checkpoint gives what applying all records gives.
#include <pyramid/checkpoints.h>
#include <rectool/printing/recordjson.h>
#include "madeoverview.h"

namespace RecViewTests {
namespace {

using namespace RecView;

std::string inWords(const RecTool::InForce& state)
{
    std::string words;
    for (const auto& [code, last] : state.entries()) {
        words += std::to_string(code) + ' ' + std::to_string(last.record.timeMs) + ' ' +
                 std::to_string(last.record.position) + ' ' + last.record.data + ' ';
        if (last.value != nullptr) {
            RecTool::appendJson(words, *last.value);
        }
        for (const std::string& text : state.completeTexts(code)) {
            words += ' ' + text;
        }
        words += '\n';
    }
    return words;
}

TEST(States, AtAnyTimeAreThoseOfAllRecordsUpToThen)
{
    for (const std::uint32_t seed : {21U, 22U}) {
        const auto records = RandomRecording(seed).make(5000);
        MadeOverview made(records);
        const Overview& overview = made.finish();
        RecTool::InForce plain;
        std::size_t next = 0;
        std::mt19937 random(seed);
        for (std::size_t i = 0; i < records->all().size(); i += 1 + random() % 200) {
            const std::uint64_t timeMs = records->all()[i].timeMs + random() % 3;
            for (; next < records->all().size() && records->all()[next].timeMs <= timeMs; ++next) {
                plain.apply(records->all()[next]);
            }
            ASSERT_EQ(inWords(overview.stateAt(static_cast<double>(StartMs + timeMs))), inWords(plain))
                << seed << ' ' << i;
        }
        EXPECT_TRUE(overview.stateAt(Start + 5).entries().empty());
    }
}

TEST(States, AreCompleteOnAWalkFromTheMiddle)
{
    const auto records = RandomRecording(23).make(4000);
    MadeOverview made(records);
    const Overview& overview = made.finish();
    RecTool::InForce plain;
    std::map<std::int64_t, std::string> wordsOf;
    for (const Record& record : records->all()) {
        plain.apply(record);
        wordsOf[record.position] = record.position % 7 == 0 ? inWords(plain) : "";
    }
    const std::uint64_t from = records->all()[2500].timeMs;
    const std::uint64_t to = records->all()[3000].timeMs;
    std::size_t visited = 2500;
    overview.walk({static_cast<double>(StartMs + from), static_cast<double>(StartMs + to)},
                  [&](const Record& record, const RecTool::InForce& state) {
                      EXPECT_EQ(record.position, records->all()[visited].position);
                      const std::string& words = wordsOf[record.position];
                      EXPECT_TRUE(words.empty() || words == inWords(state)) << visited;
                      ++visited;
                      return true;
                  });
    EXPECT_EQ(visited, 3001U);
}

TEST(States, OfCheckpointsAreThoseOfAllRecordsBefore)
{
    const auto records = std::make_shared<MemoryRecords>();
    const auto range = values::ChannelRange::Even(100e6, 25e3, 1000);
    std::vector<float> levels(1000, -90);
    for (std::uint64_t i = 0; i < 2000; ++i) {
        levels[i % 1000] = static_cast<float>(i % 60);
        const std::string text = levelsText(range, levels, 0, i == 0);
        records->add(1, 10 + 3 * i, text);
        if (i % 3 != 0) {
            records->add(1, 11 + 3 * i, text.substr(0, text.size() - 3));  // a cell is missing
        }
        records->add(7, 12 + 3 * i, "3;" + std::to_string(i) + ",0,1");
    }
    MadeOverview made(records);
    const Overview& overview = made.finish();
    const CheckpointReader reader(overview.store());
    RecTool::InForce plain;
    std::size_t applied = 0;
    std::size_t compared = 0;
    for (const Record& record : records->all()) {
        const auto checkpoint = reader.before(static_cast<double>(StartMs + record.timeMs));
        if (!checkpoint || checkpoint->next.number == applied) {
            continue;
        }
        for (; applied < checkpoint->next.number; ++applied) {
            plain.apply(records->all()[applied]);
        }
        const Restored from = restored(reader, checkpoint, std::nullopt, sourceOf(records));
        EXPECT_EQ(from.next.position, records->all()[applied].position);
        EXPECT_EQ(inWords(from.state), inWords(plain)) << applied;
        EXPECT_EQ(from.state.load().channels, plain.load().channels);
        EXPECT_LE(from.state.load().textBytes, plain.load().textBytes);
        ++compared;
    }
    EXPECT_GE(compared, 5U);
}

TEST(States, OfASweepKnowItsNeighbours)
{
    const auto records = RandomRecording(24).make(3000);
    MadeOverview made(records);
    const Overview& overview = made.finish();
    const std::vector<PlainSweep> sweeps = plainSweeps(records->all(), 1);
    for (std::size_t i = 1; i + 1 < sweeps.size(); i += 17) {
        if (sweeps[i].momentMs == sweeps[i + 1].momentMs) {
            continue;
        }
        const std::optional<Sweep> sweep = overview.sweepAt(1, sweeps[i].momentMs + 0.0005);
        ASSERT_TRUE(sweep.has_value());
        EXPECT_EQ(sweep->momentMs, sweeps[i].momentMs);
        EXPECT_EQ(sweep->range, sweeps[i].range);
        EXPECT_EQ(sweep->nextMs, sweeps[i + 1].momentMs);
        ASSERT_TRUE(sweep->previousMs.has_value());
        EXPECT_LE(*sweep->previousMs, sweeps[i].momentMs);
        EXPECT_TRUE(std::equal(sweep->levels.begin(), sweep->levels.end(), sweeps[i].levels.begin(),
                               sweeps[i].levels.end(),
                               [](float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }));
    }
    EXPECT_FALSE(overview.sweepAt(1, Start).has_value());
    EXPECT_FALSE(overview.sweepAt(99, Start + 1e6).has_value());
}

TEST(States, AreRightWhileARecordingGrowsToo)
{
    const auto records = RandomRecording(25).make(2000);
    MadeOverview made(records);
    RecTool::InForce plain;
    for (const Record& record : records->all()) {
        plain.apply(record);
    }
    EXPECT_EQ(inWords(made.growing().stateAt(1e15)), inWords(plain));
}

}  // namespace
}  // namespace RecViewTests
