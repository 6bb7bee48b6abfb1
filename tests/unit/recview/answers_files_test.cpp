// Files that are damaged, appear, vanish, or were never closed; and many questions at the same time.
#include <atomic>
#include <iterator>
#include <random>

#include "answerstest.h"
#include "randomrecording.h"

namespace AnswersTests {
namespace {

using namespace testing;

class RecViewFiles : public AnswersTest {
protected:
    void writeBytes(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
    }
    [[nodiscard]] std::string bytesOf(const std::string& name) const
    {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Every path, about all of a recording. @return the statuses
    std::vector<int> askEverything(const std::string& id)
    {
        const std::map<std::string, std::string> span{
            {"recording", id}, {"from", "0"}, {"to", "1700000200000"}, {"type", "RFSPECTRUM"}};
        const auto with = [](std::map<std::string, std::string> query, const std::string& name,
                             const std::string& value) {
            query[name] = value;
            return query;
        };
        const std::map<std::string, std::string> moment{{"recording", id}, {"at", "1700000030000"}};
        auto noType = span;
        noType.erase("type");
        std::vector<int> statuses{
            ask("state", moment).status,
            ask("record", moment).status,
            ask("record", with(moment, "step", "1")).status,
            ask("sweep", with(moment, "type", "RFSPECTRUM")).status,
            ask("spectrum", span).status,
            ask("channel", with(span, "hz", "88000000")).status,
            ask("values", with(span, "type", "LEVEL")).status,
            ask("values", with(span, "type", "DEVICE_CAPTION")).status,
            ask("bearings", noType).status,
            ask("bookmarks", {{"recording", id}}).status,
            ask("view", with(with(span, "columns", "20"), "rows", "10")).status,
        };
        RecView::Response csv = ask("csv", span);
        statuses.push_back(csv.status);
        for (std::string piece; csv.more && csv.more(piece);) {
        }
        return statuses;
    }
};

TEST_F(RecViewFiles, ARecordingThatAppearsIsListedAndOneThatVanishesIsNot)
{
    open();
    EXPECT_TRUE(askJson("recordings")["recordings"].empty());
    writeRandomRecording(path("one.rec"), {});
    waitUntil([&] { return askJson("recordings")["recordings"].size() == 1; });
    waitUntilMade("one");
    ASSERT_TRUE(QFile::remove(QString::fromStdString(path("one.rec"))));
    for (const int status : askEverything("one")) {
        EXPECT_THAT(status, AnyOf(200, 404, 503));
    }
    waitUntil([&] { return askJson("recordings")["recordings"].empty(); });
    EXPECT_THAT(refusal(404, "state", {{"recording", "one"}, {"at", "1"}}), HasSubstr("no recording"));
}

TEST_F(RecViewFiles, ARecordingThatWasNeverClosedIsAProblemWithARemedy)
{
    writeBytes("dead.tmp", std::string(499, '0') + "#");
    writeBytes("other.rec", "nothing of the kind");
    open();
    const json list = askJson("recordings");
    EXPECT_TRUE(list["recordings"].empty());
    ASSERT_EQ(list["problems"].size(), 2U) << list;
    EXPECT_THAT(std::string(list["problems"][0]["error"]), HasSubstr("rectool recover"));
    EXPECT_EQ(list["problems"][1]["error"], "This is not a recording.");
}

TEST_F(RecViewFiles, OfADamagedRecordingWhatCanBeReadIsShownAndTold)
{
    writeRandomRecording(path("whole.rec"), {});
    const std::string whole = bytesOf("whole.rec");
    std::string damaged = whole;
    std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(damaged.size() / 2), 400, '~');
    writeBytes("damaged.rec", damaged);
    QFile::remove(QString::fromStdString(path("whole.rec")));
    open();
    waitUntilMade("damaged");
    const json list = askJson("recordings");
    ASSERT_EQ(list["problems"].size(), 1U) << list;
    EXPECT_EQ(list["problems"][0]["name"], "damaged.rec");
    EXPECT_EQ(askJson("state", {{"recording", "damaged"}, {"at", "1700000060000"}})["state"],
              stateOf(path("damaged.rec"), 60'000)["state"]);
    const auto statuses = askEverything("damaged");
    EXPECT_THAT(statuses, testing::Each(200));
}

TEST_F(RecViewFiles, NoDamageBringsItDown)
{
    writeRandomRecording(path("whole.rec"), {.changes = 60});
    const std::string whole = bytesOf("whole.rec");
    QFile::remove(QString::fromStdString(path("whole.rec")));
    std::mt19937 engine(7);
    constexpr int Files = 25;
    for (int i = 0; i < Files; ++i) {
        std::string bytes = whole;
        for (unsigned hits = 1 + engine() % 4; hits > 0; --hits) {
            const std::size_t place = i % 2 == 0 ? engine() % 900 : engine() % bytes.size();
            bytes[place] = static_cast<char>(engine());
        }
        bytes.resize(i % 5 == 0 ? engine() % bytes.size() : bytes.size());
        writeBytes("damaged" + std::to_string(i) + ".rec", bytes);
    }
    open();
    const json list = askJson("recordings");
    EXPECT_GE(list["recordings"].size() + list["problems"].size(), 1U);
    for (const json& recording : list["recordings"]) {
        for (const int status : askEverything(recording["id"])) {
            EXPECT_THAT(status, AnyOf(200, 400, 404, 503));
        }
    }
}

TEST_F(RecViewFiles, ABookmarkOfADamagedRecordingIsRefusedAndTheFileStaysAsItIs)
{
    writeRandomRecording(path("one.rec"), {});
    std::string damaged = bytesOf("one.rec");
    std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(damaged.size() / 2), 400, '~');
    writeBytes("one.rec", damaged);
    open(true);
    const RecView::Response response =
        post({{"recording", "one"}, {"action", "add"}, {"ms", 1'700'000'001'000}, {"text", "here"}});
    EXPECT_EQ(response.status, 409);
    EXPECT_THAT(response.body, HasSubstr("Nothing was changed."));
    EXPECT_EQ(bytesOf("one.rec"), damaged);
}

TEST_F(RecViewFiles, AWrongChangeOfABookmarkIsASentence)
{
    writeRandomRecording(path("one.rec"), {});
    const std::string before = bytesOf("one.rec");
    open(true);
    const json good{{"recording", "one"}, {"action", "add"}, {"ms", 1'700'000'001'000}, {"text", "here"}};
    const auto with = [&](const char* name, const json& value) {
        json body = good;
        body[name] = value;
        return post(body).status;
    };
    EXPECT_EQ(with("recording", "two"), 404);
    EXPECT_EQ(with("recording", 1), 400);
    EXPECT_EQ(with("action", "burn"), 400);
    EXPECT_EQ(with("action", "rename"), 400);
    EXPECT_EQ(with("action", "remove"), 400);
    EXPECT_EQ(with("ms", "x"), 400);
    EXPECT_EQ(with("ms", 1e300), 400);
    EXPECT_EQ(with("ms", 0), 400);
    EXPECT_EQ(with("ms", 1'800'000'000'000), 400);
    EXPECT_EQ(with("text", ""), 400);
    EXPECT_EQ(with("text", "\u4f60"), 400);
    EXPECT_EQ(with("text", nullptr), 400);
    EXPECT_EQ(bytesOf("one.rec"), before);
    EXPECT_EQ(post(good).status, 200);
}

TEST_F(RecViewFiles, ManyAskAtTheSameTimeAndGetTheSameAnswers)
{
    for (unsigned i = 0; i < 3; ++i) {
        writeRandomRecording(path("file" + std::to_string(i) + ".rec"),
                             {.startMs = 1'700'000'000'000ULL + i * 60'500, .seed = i + 1});
    }
    open(true);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 15; ++i) {
                const std::vector<int> statuses = askEverything("file0");
                wrong += std::any_of(statuses.begin(), statuses.end(),
                                     [](int status) { return status >= 500 && status != 503; });
                if (thread == 0) {
                    wrong += post({{"recording", "file0"},
                                   {"action", "add"},
                                   {"ms", 1'700'000'001'000 + i},
                                   {"text", "here"}})
                                 .status != 200;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(askJson("bookmarks", {{"recording", "file0"}})["bookmarks"].size(), 15U);
}

}  // namespace
}  // namespace AnswersTests
