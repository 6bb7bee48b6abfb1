// The verb "cat": the records of a recording, one a line, by time and type; also those that are still to come.
#include <chrono>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <recording2/inspection/filename.h>
#include <recording2/inspection/following.h>
#include <recording2/inspection/inspection.h>
#include <recording2/inspection/scan.h>

#include "catlines.h"
#include "commandline/verb.h"
#include "commands.h"
#include "printing/output.h"
#include "replay/walk.h"
#include "system/interrupt.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
namespace fs = std::filesystem;

namespace {

std::optional<Inspection::Header> headerOf(const fs::path& path)
{
    const std::string name = Inspection::utf8(path);
    if (path.extension() == ".rec") {
        const Inspection::Summary head = Inspection::inspectHead(name);
        return head.readability == Inspection::Readability::Ok ? std::optional(head.header) : std::nullopt;
    }
    std::string problem;
    const auto growing = path.extension() == ".tmp" ? Inspection::Following::open(name, problem) : std::nullopt;
    return growing ? std::optional(growing->header()) : std::nullopt;
}

bool goesOn(const Inspection::Header& before, const Inspection::Header& next)
{
    constexpr std::uint64_t LongestGapMs = 10'000;
    return next.deviceName == before.deviceName && next.deviceType == before.deviceType &&
           next.startMs > before.startMs && next.startMs >= before.stopMs &&
           next.startMs - before.stopMs <= LongestGapMs;
}

/// The file in the same directory in which the recorder goes on: of the same device, begun at most 10 s after the
/// other's stop, the first of these. Empty when there is none (yet).
/// @param file as it is named now
std::string nextFileOf(const std::string& file, const Inspection::Header& header)
{
    constexpr std::chrono::minutes Rounding(1);  // of times in directories
    const fs::path own = Inspection::native(file);
    std::error_code error;
    const fs::file_time_type written = fs::last_write_time(own, error);
    std::string found;
    std::uint64_t foundMs = 0;
    for (fs::directory_iterator entry(own.parent_path().empty() ? "." : own.parent_path(), error);
         !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::error_code none;
        const bool isOlder = entry->last_write_time(none) + Rounding < written;
        const fs::path path = own.parent_path() / entry->path().filename();
        const auto next = isOlder || path == own ? std::nullopt : headerOf(path);
        if (next && goesOn(header, *next) && (found.empty() || next->startMs < foundMs)) {
            found = Inspection::utf8(path);
            foundMs = next->startMs;
        }
    }
    return found;
}

using Inspection::Following;

/// Shows what is there and what comes, file after file, until it ends or somebody ends it.
class Follower {
public:
    explicit Follower(const CatOptions& options) : m_options(options) {}

    ExitCode run()
    {
        ExitCode result = open(m_options.file);
        while (result == ExitCode::Fine && m_following) {
            result = showAll();
            if (result != ExitCode::Fine || !m_following) {
                break;
            }
            if (m_following->state() == Following::State::Growing) {
                wait();
            } else {
                result = end();
            }
        }
        if (m_lines != nullptr) {
            m_lines->tellLeftOut();
        }
        return finish(result);
    }

private:
    ExitCode open(const std::string& file)
    {
        std::string problem;
        m_following = Following::open(file, problem);
        if (!m_following) {
            complain(file, problem);
            return ExitCode::CannotRead;
        }
        m_file = file;
        m_saidTimesMiss = false;
        return ExitCode::Fine;
    }

    /// The types are known before the first record, the header with them.
    bool makeLines()
    {
        if (m_lines != nullptr && m_isBegun) {
            return true;
        }
        Inspection::Summary known;
        known.header = m_following->header();
        known.types = m_following->types();
        std::unique_ptr<CatLines> lines = CatLines::make(m_options, m_file, known);
        if (lines == nullptr) {
            return false;
        }
        if (m_lines == nullptr) {
            lines->begin();
        } else {
            m_lines->tellLeftOut();
            lines->takeSpanOf(*m_lines, known.header.startMs, m_startMs);
        }
        m_startMs = known.header.startMs;
        m_lines = std::move(lines);
        m_isBegun = true;
        return true;
    }

    /// @return Fine to go on; without a follower where nothing more is wanted
    ExitCode showAll()
    {
        if (!m_following->types().empty() && m_following->header().startMs != 0 && !makeLines()) {
            return ExitCode::Usage;
        }
        tellWhetherTimesMiss();
        Inspection::Record record;
        while (m_following->next(record)) {
            if (!makeLines()) {
                return ExitCode::Usage;
            }
            m_lines->startsAt(m_following->header().startMs);
            if (!m_lines->show(record, [] {}) || !canPrint() || Interrupt::requested()) {
                m_following.reset();
                return ExitCode::Fine;
            }
        }
        std::cout.flush();
        return ExitCode::Fine;
    }

    void tellWhetherTimesMiss()
    {
        if (!m_saidTimesMiss && !m_following->timesKnown()) {
            complain(m_file, withoutTimes());
            m_saidTimesMiss = true;
        }
    }

    void wait()
    {
        constexpr std::chrono::milliseconds BetweenLooks(50);
        if (Interrupt::requested() || !canPrint()) {
            m_following.reset();
        } else {
            std::this_thread::sleep_for(BetweenLooks);
        }
    }

    /// Goes on with the next file, if there is one. @return what the end of this one means
    ExitCode end()
    {
        if (!makeLines()) {
            return ExitCode::Usage;
        }
        const std::vector<Inspection::Finding> damage = m_following->findings();
        const Following ended = *std::exchange(m_following, std::nullopt);
        complain(m_file, damage);
        switch (ended.state()) {
            case Following::State::Growing:
            case Following::State::Closed:
                break;
            case Following::State::Abandoned:
                complain(m_file,
                         "Its recorder ended without closing it; `rectool recover` makes a recording of what was "
                         "accepted.");
                return ExitCode::CannotRead;
            case Following::State::Removed:
                complain(m_file, "The file was taken away while it was being written.");
                return ExitCode::CannotRead;
        }
        const ExitCode result = soundness(damage);
        const std::string next = ended.finalPath().empty() ? "" : nextFile(ended);
        if (next.empty() || result != ExitCode::Fine) {
            return result;
        }
        complain(m_file, "It is complete and goes on in " + printedName(next) + ".");
        m_isBegun = false;
        return open(next);
    }

    /// The recorder makes the next file as soon as it has closed this one.
    std::string nextFile(const Following& ended)
    {
        constexpr int MostLooks = 20;
        std::string next = nextFileOf(ended.finalPath(), ended.header());
        const bool wasGrowing = m_file.ends_with(".tmp");
        for (int look = 0; look < MostLooks && wasGrowing && next.empty() && !Interrupt::requested(); ++look) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            next = nextFileOf(ended.finalPath(), ended.header());
        }
        return next;
    }

    const CatOptions& m_options;
    Interrupt m_interrupt;
    std::string m_file;
    std::optional<Following> m_following;
    std::unique_ptr<CatLines> m_lines;
    std::uint64_t m_startMs = 0;
    bool m_isBegun = false;  // the lines are those of this file
    bool m_saidTimesMiss = false;
};

}  // namespace

ExitCode cat(const CatOptions& options)
{
    if (options.follow) {
        return Follower(options).run();
    }
    PresentRecording recording;
    if (!recording.open(options.file)) {
        complain(options.file, recording.summary().problem);
        return ExitCode::CannotRead;
    }
    const std::unique_ptr<CatLines> lines = CatLines::make(options, options.file, recording.summary());
    if (lines == nullptr) {
        return ExitCode::Usage;
    }
    lines->begin();
    Progress progress(options.file);
    const std::vector<Inspection::Finding> findings = recording.walk(
        [&](const Inspection::Record& record) { return lines->show(record, [&] { progress.clear(); }) && canPrint(); },
        progress.callback());
    progress.clear();
    recording.tellWhetherBeingWritten();
    complain(options.file, findings);
    lines->tellLeftOut();
    return finish(soundness(findings));
}

void addCat(const Syntax& program)
{
    Verb verb(program, "cat", "Show the records, one a line: time, keyword, value", cat);
    CatOptions& options = verb.options();
    verb.span("Begin at this time", "End at this time, which is shown too");
    verb.types("Only this keyword or type number; may be given several times");
    const Option time = verb.text("--time", options.time,
                                  "Times as milliseconds of the recording (offset), or as the clock showed them in UTC "
                                  "(utc) or here (local)")
                            .oneOf({"offset", "utc", "local"})
                            .showDefault();
    const Option json = verb.json("Print one JSON object a line").excludes(time);  // it has timeMs
    verb.flag("--csv", options.csv, "Print plain values as CSV; maps have no line there").excludes(json);
    verb.flag(
        "-f,--follow", options.follow,
        "Of a recording that is being written also what comes, as it is accepted, until it is closed; a file that "
        "it goes on in, too");
    verb.paged();
    verb.examples({"cat recording.rec", "cat recording.rec --from 60000 --to 65000 --type LEVEL --type FREQUENCY",
                   "cat recording.rec --time utc --csv --type LEVEL", "cat --json recording.rec",
                   "cat --follow --type LEVEL running.tmp"});
}

}  // namespace RecTool
