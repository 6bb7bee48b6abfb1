// Random recordings, split or not: every answer is what rectool says of the files.
#include <cstring>
#include <random>

#include "answerstest.h"
#include "randomrecording.h"
#include "rectool/replay/linesofbearing.h"

namespace AnswersTests {
namespace {

constexpr double FirstStart = 1'700'000'000'000;
constexpr std::uint64_t Length = 60'000;

/// A recording in three files, of which each begins half a second after the end of the one before.
class RecViewProperty : public AnswersTest, public testing::WithParamInterface<unsigned> {
protected:
    void SetUp() override
    {
        for (unsigned i = 0; i < 3; ++i) {
            RandomRecording random{.startMs = static_cast<std::uint64_t>(FirstStart) + i * (Length + 500),
                                   .lengthMs = Length,
                                   .seed = 3 * GetParam() + i};
            starts.push_back(static_cast<double>(random.startMs));
            files.push_back(path("split" + std::to_string(i) + ".rec"));
            writeRandomRecording(files.back(), random);
            records.push_back(recordsOf(files.back()));
        }
        open();
        waitUntilMade(Id);
    }
    std::map<std::string, std::string> query(double from, double to, const std::string& type)
    {
        return {{"recording", Id}, {"from", json(from).dump()}, {"to", json(to).dump()}, {"type", type}};
    }
    [[nodiscard]] double end() const { return starts.back() + Length; }

    /// All records of a type, each with the start of its file.
    [[nodiscard]] std::vector<std::pair<double, json>> recordsOfType(const std::string& keyword) const
    {
        std::vector<std::pair<double, json>> found;
        for (std::size_t file = 0; file < records.size(); ++file) {
            for (const json& record : records[file]) {
                if (record["keyword"] == keyword) {
                    found.emplace_back(starts[file], record);
                }
            }
        }
        return found;
    }
    /// When what a record tells was measured.
    static double moment(const json& record, double start)
    {
        const double stamp = record["value"].value("timeStampUs", 0.0) / 1000;
        return stamp > start ? stamp : start + double(record["timeMs"]);
    }

    static constexpr const char* Id = "split0";
    std::vector<double> starts;
    std::vector<std::string> files;
    std::vector<std::vector<json>> records;
};

TEST_P(RecViewProperty, SplitsAreOneRecordingWithAllThatTheyHold)
{
    const json list = askJson("recordings");
    ASSERT_EQ(list["recordings"].size(), 1U);
    EXPECT_EQ(list["recordings"][0]["files"].size(), 3U);
    EXPECT_EQ(list["recordings"][0]["startMs"], FirstStart);
    EXPECT_EQ(list["recordings"][0]["endMs"], end());
    EXPECT_TRUE(list["problems"].empty()) << list["problems"];
}

TEST_P(RecViewProperty, TheStateAtAnyMomentIsThatOfRectool)
{
    std::mt19937 engine(GetParam());
    for (int i = 0; i < 30; ++i) {
        const std::size_t file = engine() % 3;
        const std::uint64_t time = engine() % Length;
        EXPECT_EQ(stateAt(Id, starts[file] + double(time))["state"], stateOf(files[file], time)["state"])
            << file << " at " << time;
    }
}

TEST_P(RecViewProperty, EveryRecordIsReachedInBothDirections)
{
    double ms = 0;
    for (std::size_t file = 0; file < 3; ++file) {
        for (const json& record : records[file]) {
            const json next = recordAt(Id, ms, 1);
            ASSERT_EQ(next["record"], record) << file;
            ms = next["ms"];
        }
    }
    for (std::size_t file = 3; file-- > 0;) {
        for (auto record = records[file].rbegin(); record != records[file].rend(); ++record) {
            ASSERT_EQ(recordAt(Id, ms)["record"], *record);
            ms = recordAt(Id, ms, -1).value("ms", ms);
        }
    }
}

TEST_P(RecViewProperty, NumbersAreThoseOfTheRecords)
{
    const json values = askJson("values", query(FirstStart, end(), "LEVEL"));
    std::vector<double> ms;
    std::vector<double> levels;
    for (const auto& [start, record] : recordsOfType("LEVEL")) {
        ms.push_back(start + double(record["timeMs"]));
        levels.push_back(record["value"]["value"]);
    }
    EXPECT_EQ(values["ms"], json(ms));
    EXPECT_EQ(values["last"], json(levels));
    EXPECT_EQ(values["exact"], true);
    auto fewer = query(FirstStart, end(), "LEVEL");
    fewer["columns"] = "3";
    const json few = askJson("values", fewer);
    EXPECT_LT(few["ms"].size(), 13U);
    EXPECT_EQ(*std::max_element(few["max"].begin(), few["max"].end()), *std::max_element(levels.begin(), levels.end()));
    EXPECT_EQ(*std::min_element(few["min"].begin(), few["min"].end()), *std::min_element(levels.begin(), levels.end()));
}

TEST_P(RecViewProperty, TextsAreToldWhenTheyChange)
{
    for (const char* keyword : {"DEVICE_CAPTION", "MODULATION", "SQUELCHSTATE"}) {
        std::vector<double> ms;
        json last;
        for (const auto& [start, record] : recordsOfType(keyword)) {
            if (record["value"]["value"] != last) {
                ms.push_back(start + double(record["timeMs"]));
                last = record["value"]["value"];
            }
        }
        const json values = askJson("values", query(FirstStart, end(), keyword));
        std::vector<double> told;
        for (const json& change : values["changes"]) {
            told.push_back(change["ms"]);
        }
        EXPECT_EQ(told, ms) << keyword;
        EXPECT_EQ(values["more"], 0);
    }
}

TEST_P(RecViewProperty, TheSweepInForceIsThatOfTheRecords)
{
    std::optional<double> previous;
    for (const auto& [start, record] : recordsOfType("RFSPECTRUM")) {
        const double ms = moment(record, start);
        const json sweep = askJson("sweep", {{"recording", Id}, {"type", "RFSPECTRUM"}, {"at", json(ms).dump()}});
        ASSERT_EQ(sweep["ms"], ms);
        EXPECT_EQ(sweep["channels"], record["value"]["range"]);
        EXPECT_EQ(sweep["levels"], record["value"]["cells"]);
        EXPECT_EQ(sweep["timeMs"], record["timeMs"]);
        EXPECT_EQ(sweep["previousMs"], previous ? json(*previous) : json());
        previous = ms;
    }
}

TEST_P(RecViewProperty, TheCsvHasALineForEverySweep)
{
    RecView::Response response = ask("csv", query(0, end(), "RFSPECTRUM"));
    ASSERT_EQ(response.status, 200) << response.body;
    std::string text;
    for (std::string piece; response.more(piece);) {
        text += piece;
    }
    std::istringstream lines(text);
    std::string line;
    for (const auto& [start, record] : recordsOfType("RFSPECTRUM")) {
        ASSERT_TRUE(std::getline(lines, line));
        if (line.starts_with("time_utc_ms")) {
            ASSERT_TRUE(std::getline(lines, line));
        }
        std::string expected = json(moment(record, start)).dump();
        expected = expected.ends_with(".0") ? expected.substr(0, expected.size() - 2) : expected;
        for (const json& level : record["value"]["cells"]) {
            expected += ',' + (level.is_null() ? "" : level.dump());
        }
        ASSERT_EQ(line, expected);
    }
    EXPECT_FALSE(std::getline(lines, line)) << line;
}

TEST_P(RecViewProperty, BearingsAreThoseOfTheMap)
{
    const json all = askJson("bearings", {{"recording", Id}, {"from", "0"}, {"to", json(end()).dump()}});
    EXPECT_EQ(all["leftOut"], 0);
    std::size_t count = 0;
    for (std::size_t file = 0; file < 3; ++file) {
        const Recording2::Inspection::Summary summary = Recording2::Inspection::inspect(files[file]);
        const RecTool::TakenBearings taken = RecTool::takeBearings(files[file], summary, {});
        for (const RecTool::TakenBearing& bearing : taken.bearings) {
            ASSERT_LT(count, all["bearings"].size());
            const json& told = all["bearings"][count++];
            EXPECT_EQ(told["timeMs"], bearing.timeMs);
            EXPECT_EQ(told["hz"], bearing.frequencyHz);
            EXPECT_EQ(told["azimuth"], bearing.bearing.azimuthDeg);
            EXPECT_EQ(told["lat"], bearing.line.from.latitudeDeg);
            EXPECT_EQ(told["trueAzimuth"], bearing.headingDeg ? json(bearing.line.azimuthDeg) : json());
        }
    }
    EXPECT_EQ(count, all["bearings"].size());
    const json few =
        askJson("bearings", {{"recording", Id}, {"from", "0"}, {"to", json(end()).dump()}, {"limit", "7"}});
    EXPECT_EQ(few["bearings"].size(), 7U);
    EXPECT_EQ(few["leftOut"], count - 7);
}

TEST_P(RecViewProperty, TheHighestLevelOfAViewIsThatOfTheSweeps)
{
    auto asked = query(FirstStart, end(), "RFSPECTRUM");
    asked.insert({{"columns", "50"}, {"rows", "20"}});
    for (const char* exact : {"0", "1"}) {
        asked["exact"] = exact;
        const RecView::Response view = ask("view", asked);
        ASSERT_EQ(view.status, 200) << view.body;
        std::uint32_t size = 0;
        std::memcpy(&size, view.body.data(), sizeof(size));
        ASSERT_EQ(size % 4, 0U);
        const json about = json::parse(view.body.substr(4, size));
        ASSERT_EQ(view.body.size(), 4 + size + 50 * 20 * sizeof(float));
        EXPECT_EQ(about["made"], 1);
        double highest = -1000;
        for (const auto& [start, record] : recordsOfType("RFSPECTRUM")) {
            for (const json& level : record["value"]["cells"]) {
                highest = level.is_null() ? highest : std::max(highest, double(level));
            }
        }
        EXPECT_NEAR(about["highest"], highest, 0.001);
    }
}

INSTANTIATE_TEST_SUITE_P(AtRandom, RecViewProperty, testing::Values(1U, 2U, 3U));

}  // namespace
}  // namespace AnswersTests
