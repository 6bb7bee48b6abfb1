// Takes what a verb prints, and replays files into the state at each moment.
#include "rectooltesting.h"

#include <iterator>

#include <printing/json.h>
#include <replay/inforce.h>

namespace RecToolTests {

namespace Inspection = Recording2::Inspection;

namespace {

/// Takes what a stream prints while the object lives.
class Taken {
public:
    explicit Taken(std::ostream& stream) : m_stream(stream), m_before(stream.rdbuf(m_text.rdbuf())) {}
    Taken(const Taken&) = delete;
    Taken& operator=(const Taken&) = delete;
    ~Taken() { m_stream.rdbuf(m_before); }
    [[nodiscard]] std::string text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
    std::ostream& m_stream;
    std::streambuf* m_before;
};

}  // namespace

Result run(const std::function<RecTool::ExitCode()>& verb)
{
    const Taken out(std::cout);
    const Taken err(std::cerr);
    const RecTool::ExitCode exitCode = verb();
    return {exitCode, out.text(), err.text()};
}

Result cut(const std::string& file, const std::string& from, const std::string& to, const std::string& output)
{
    return run([&] { return RecTool::cut({file, from, to, output, false, false}); });
}

Result merge(const std::vector<std::string>& files, const std::string& output, bool separate)
{
    return run([&] { return RecTool::merge({files, output, separate, false, false}); });
}

std::vector<ClockedRecord> recordsOf(const std::string& file)
{
    const Inspection::Summary summary = Inspection::inspect(file);
    std::vector<ClockedRecord> records;
    Inspection::walkRecords(file, summary, [&](const Inspection::Record& record) {
        records.push_back({summary.header.startMs + record.timeMs, record.code, record.data});
        return true;
    });
    return records;
}

std::vector<std::pair<std::int32_t, std::string>> contentsOf(const std::vector<ClockedRecord>& records)
{
    std::vector<std::pair<std::int32_t, std::string>> contents;
    for (const ClockedRecord& record : records) {
        contents.emplace_back(record.code, record.data);
    }
    return contents;
}

History::History(const std::string& file)
{
    const Inspection::Summary summary = Inspection::inspect(file);
    const RecTool::TypeNames names(summary.types);
    RecTool::InForce inForce;
    State state;
    m_moments[0] = state;
    Inspection::walkRecords(file, summary, [&](const Inspection::Record& record) {
        inForce.apply(record);
        const Inspection::TypeEntry* type = names.find(record.code);
        const RecTool::LastRecord* last = inForce.find(record.code);
        if (last != nullptr) {
            const std::string key = std::to_string(record.code) + ' ' + (type != nullptr ? type->valuePath : "");
            state[key] = last->value != nullptr ? RecTool::toJson(*last->value).dump() : "data " + record.data;
            m_moments[summary.header.startMs + record.timeMs] = state;
        }
        return true;
    });
}

const State& History::at(std::uint64_t clockMs) const
{
    return std::prev(m_moments.upper_bound(clockMs))->second;
}

std::uint64_t firstDifference(const History& a, const History& b, std::uint64_t from, std::uint64_t to)
{
    std::map<std::uint64_t, bool> clocks{{from, true}, {to, true}};
    for (const History* history : {&a, &b}) {
        for (const auto& [clock, state] : history->moments()) {
            clocks[clock] = true;
        }
    }
    for (auto clock = clocks.lower_bound(from); clock != clocks.end() && clock->first <= to; ++clock) {
        if (a.at(clock->first) != b.at(clock->first)) {
            return clock->first;
        }
    }
    return 0;
}

std::map<std::uint64_t, std::string> bookmarksOf(const std::string& file)
{
    const Inspection::Summary summary = Inspection::inspect(file);
    std::map<std::uint64_t, std::string> bookmarks;
    for (const Inspection::Bookmark& bookmark : summary.bookmarks) {
        bookmarks[summary.header.startMs + bookmark.timeMs] = bookmark.text;
    }
    return bookmarks;
}

std::vector<std::string> Folder::names() const
{
    std::vector<std::string> names;
    for (const QString& name : QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name)) {
        names.push_back(name.toStdString());
    }
    return names;
}

}  // namespace RecToolTests
