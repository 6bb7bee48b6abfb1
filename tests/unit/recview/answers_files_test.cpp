// Files that are damaged, appear, vanish, or were never closed; and many questions at the same time.
#include <atomic>
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
        TestSupport::writeBytes(path(name), bytes);
    }
    [[nodiscard]] std::string bytesOf(const std::string& name) const { return TestSupport::bytesOf(path(name)); }
    /// What is in a random recording, of which no file is left.
    [[nodiscard]] std::string randomBytes(const RandomRecording& random = {}) const
    {
        writeRandomRecording(path("whole.rec"), random);
        std::string bytes = bytesOf("whole.rec");
        EXPECT_TRUE(QFile::remove(QString::fromStdString(path("whole.rec"))));
        return bytes;
    }
    /// The same with damage in the middle.
    [[nodiscard]] std::string damagedBytes() const
    {
        std::string bytes = randomBytes();
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), 400, '~');
        return bytes;
    }
    /// Every path, about all of a recording. @return the statuses
    std::vector<int> askEverything(const std::string& id)
    {
        using Query = std::map<std::string, std::string>;
        std::vector<int> statuses;
        const auto askWith = [&](const std::string& what, Query query, const Query& more = {}) {
            query.insert(more.begin(), more.end());
            statuses.push_back(ask(what, query).status);
        };
        const Query moment{{"recording", id}, {"at", "1700000030000"}};
        const Query span{{"recording", id}, {"from", "0"}, {"to", "1700000200000"}};
        const Query spectrum{{"type", "RFSPECTRUM"}};
        askWith("state", moment);
        askWith("record", moment);
        askWith("record", moment, {{"step", "1"}});
        askWith("sweep", moment, spectrum);
        askWith("spectrum", span, spectrum);
        askWith("channel", span, {{"type", "RFSPECTRUM"}, {"hz", "88000000"}});
        askWith("values", span, {{"type", "LEVEL"}});
        askWith("values", span, {{"type", "DEVICE_CAPTION"}});
        askWith("bearings", span);
        askWith("bookmarks", {{"recording", id}});
        askWith("view", span, {{"type", "RFSPECTRUM"}, {"columns", "20"}, {"rows", "10"}});
        RecView::Response csv =
            ask("csv", {{"recording", id}, {"from", "0"}, {"to", "1700000200000"}, {"type", "RFSPECTRUM"}});
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
    EXPECT_THAT(askEverything("one"), Each(AnyOf(200, 404, 503)));
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
    writeBytes("damaged.rec", damagedBytes());
    open();
    waitUntilMade("damaged");
    const json list = askJson("recordings");
    ASSERT_EQ(list["problems"].size(), 1U) << list;
    EXPECT_EQ(list["problems"][0]["name"], "damaged.rec");
    EXPECT_EQ(stateAt("damaged", 1'700'000'060'000)["state"], stateOf(path("damaged.rec"), 60'000)["state"]);
    EXPECT_THAT(askEverything("damaged"), Each(200));
}

TEST_F(RecViewFiles, NoDamageBringsItDown)
{
    const std::string whole = randomBytes({.changes = 60});
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
        EXPECT_THAT(askEverything(recording["id"]), Each(AnyOf(200, 400, 404, 503)));
    }
}

TEST_F(RecViewFiles, ABookmarkOfADamagedRecordingIsRefusedAndTheFileStaysAsItIs)
{
    const std::string damaged = damagedBytes();
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
    struct {
        const char* name;
        json value;
        int status = 400;
    } const wrong[]{{"recording", "two", 404}, {"recording", 1}, {"action", "burn"}, {"action", "rename"},
                    {"action", "remove"},      {"ms", "x"},      {"ms", 1e300},      {"ms", 0},
                    {"ms", 1'800'000'000'000}, {"text", ""},     {"text", "\u4f60"}, {"text", nullptr}};
    for (const auto& [name, value, status] : wrong) {
        json body = good;
        body[name] = value;
        EXPECT_EQ(post(body).status, status) << name << ' ' << value;
    }
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
