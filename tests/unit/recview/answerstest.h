// What tests of answers share: a folder of recordings, who answers about them, and what rectool prints of them.
#pragma once

#include <condition_variable>
#include <mutex>

#include <nlohmann/json.hpp>

#include "answers/answers.h"
#include "rectool/verbs/commands.h"
#include "support/files.h"

namespace AnswersTests {

using nlohmann::json;

class AnswersTest : public testing::Test {
protected:
    AnswersTest()
    {
        m_events.listen([this](const std::string& name, const std::string& content) {
            const std::lock_guard lock(m_mutex);
            m_told[name].push_back(json::parse(content));
            m_changed.notify_all();
        });
    }
    ~AnswersTest() override { m_events.listen({}); }

    [[nodiscard]] std::string folder() const { return m_folder.path().toStdString(); }
    [[nodiscard]] std::string path(const std::string& name) const { return folder() + "/" + name; }

    void open(bool edit = false)
    {
        RecView::Options options;
        options.paths = {folder()};
        options.edit = edit;
        options.cacheDirectory = m_cache.path().toStdString();
        m_answers = std::make_unique<RecView::Answers>(options, m_events);
    }
    RecView::Response ask(const std::string& what, std::map<std::string, std::string> query = {})
    {
        return (*m_answers)({"GET", "/api/" + what, std::move(query), ""});
    }
    json askJson(const std::string& what, std::map<std::string, std::string> query = {})
    {
        const RecView::Response response = ask(what, std::move(query));
        EXPECT_EQ(response.status, 200) << response.body;
        return json::parse(response.body);
    }
    json stateAt(const std::string& id, double ms)
    {
        return askJson("state", {{"recording", id}, {"at", json(ms).dump()}});
    }
    /// The record in force at a time, or the one that is so many steps from it.
    json recordAt(const std::string& id, double ms, int step = 0)
    {
        std::map<std::string, std::string> query{{"recording", id}, {"at", json(ms).dump()}};
        if (step != 0) {
            query["step"] = std::to_string(step);
        }
        return askJson("record", query);
    }
    /// The sentence of a refusal.
    std::string refusal(int status, const std::string& what, std::map<std::string, std::string> query = {})
    {
        const RecView::Response response = ask(what, std::move(query));
        EXPECT_EQ(response.status, status) << response.body;
        return json::parse(response.body)["error"];
    }
    RecView::Response post(const json& body) { return (*m_answers)({"POST", "/api/bookmarks", {}, body.dump()}); }

    /// Waits until what is asked for is so; it is asked again whenever something was told.
    void waitUntil(const std::function<bool()>& isSo)
    {
        constexpr std::chrono::seconds Patience{60};
        const auto end = std::chrono::steady_clock::now() + Patience;
        std::size_t seen = told();
        while (!isSo()) {
            std::unique_lock lock(m_mutex);
            const bool came = m_changed.wait_until(lock, end, [&] { return toldNow() != seen; });
            seen = toldNow();
            ASSERT_TRUE(came) << "nothing more is told";
        }
    }
    /// Asks for the overviews of a recording, and waits for all of them.
    void waitUntilMade(const std::string& id)
    {
        const json it = find(id);
        static_cast<void>(
            ask("bearings", {{"recording", id}, {"from", it["startMs"].dump()}, {"to", it["endMs"].dump()}}));
        waitUntil([&] { return find(id)["made"] == 1.0; });
    }
    json find(const std::string& id)
    {
        const json list = askJson("recordings");
        for (const json& one : list["recordings"]) {
            if (one["id"] == id) {
                return one;
            }
        }
        throw std::runtime_error("there is no " + id + ": " + list.dump());
    }
    void close() { m_answers.reset(); }

private:
    std::size_t told()
    {
        const std::lock_guard lock(m_mutex);
        return toldNow();
    }
    std::size_t toldNow() const
    {
        std::size_t count = 0;
        for (const auto& [name, all] : m_told) {
            count += all.size();
        }
        return count;
    }

    QTemporaryDir m_folder;
    QTemporaryDir m_cache;
    RecView::Events m_events;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<std::string, std::vector<json>> m_told;
    std::unique_ptr<RecView::Answers> m_answers;
};

/// What a verb prints.
template <typename Options>
std::string printed(RecTool::ExitCode (*verb)(const Options&), const Options& options)
{
    testing::internal::CaptureStdout();
    static_cast<void>(verb(options));
    return testing::internal::GetCapturedStdout();
}

inline json stateOf(const std::string& file, std::uint64_t at)
{
    RecTool::StateOptions options;
    options.file = file;
    options.at = std::to_string(at);
    options.json = true;
    return json::parse(printed(RecTool::state, options));
}

inline std::vector<json> recordsOf(const std::string& file)
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

}  // namespace AnswersTests
