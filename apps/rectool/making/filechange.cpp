// Checking a recording whole, asking the user, rewriting its tables and comparing them; planning bookmarks among
// those that are there.
#include "filechange.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <vector>

#include <system/program.h>
#include <QString>

#include "printing/output.h"
#include "printing/text.h"
#include "replay/recordingtime.h"
#include "replay/walk.h"
#include "system/filenames.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

constexpr const char* RangesInTheWay =
    "The channel range table stands behind the bookmarks, which would be written over it.";

/// Where the first bookmark not before the time stands.
auto placeOf(std::uint64_t time, std::vector<Inspection::Bookmark>& bookmarks)
{
    return std::lower_bound(
        bookmarks.begin(), bookmarks.end(), time,
        [](const Inspection::Bookmark& bookmark, std::uint64_t moment) { return bookmark.timeMs < moment; });
}

/// A bookmark's text as files hold it; nothing when it has characters that they do not have.
std::optional<std::string> toLatin1(const std::string& utf8)
{
    const std::string latin1 = QString::fromStdString(utf8).toLatin1().toStdString();
    return fromLatin1(latin1) == utf8 ? std::optional(latin1) : std::nullopt;
}

std::string quoted(const Inspection::Bookmark& bookmark)
{
    return '"' + oneLine(fromLatin1(bookmark.text)) + '"';
}

std::string atTime(std::uint64_t time)
{
    return " at " + std::to_string(time) + " ms";
}

/// The text of a bookmark; nothing, told, where it cannot be one.
std::optional<std::string> takeText(const FileChange& change, const std::string& utf8)
{
    std::optional<std::string> text = toLatin1(utf8);
    if (!text || text->empty()) {
        change.refuse(ExitCode::Usage, "A bookmark needs a text, of Latin-1 characters.");
        return std::nullopt;
    }
    return text;
}

/// Puts the bookmark among those of the summary, unless it has no place there.
ExitCode plan(const FileChange& change, const Inspection::Bookmark& added, Inspection::Summary& summary)
{
    if (FileChange::rangesBehindBookmarks(summary)) {
        return change.refuse(ExitCode::CannotRead, RangesInTheWay);
    }
    const auto place = placeOf(added.timeMs, summary.bookmarks);
    if (place != summary.bookmarks.end() && place->timeMs == added.timeMs) {
        return change.refuse(ExitCode::Usage,
                             "There is a bookmark" + atTime(added.timeMs) + " already: " + quoted(*place) + ".");
    }
    summary.bookmarks.insert(place, added);
    return ExitCode::Fine;
}

/// Takes the bookmark at a time from those of the summary. @param removed receives it
ExitCode planRemoval(const FileChange& change, std::uint64_t time, Inspection::Summary& summary,
                     Inspection::Bookmark& removed)
{
    if (FileChange::rangesBehindBookmarks(summary)) {
        return change.refuse(ExitCode::CannotRead, RangesInTheWay);
    }
    const auto place = placeOf(time, summary.bookmarks);
    if (place == summary.bookmarks.end() || place->timeMs != time) {
        return change.refuse(ExitCode::Usage, "There is no bookmark" + atTime(time) + ".");
    }
    removed = *place;
    summary.bookmarks.erase(place);
    return ExitCode::Fine;
}

bool sameRecording(const Inspection::Summary& a, const Inspection::Summary& b)
{
    return a.header.startMs == b.header.startMs && a.header.stopMs == b.header.stopMs &&
           a.header.positions.firstRecord == b.header.positions.firstRecord &&
           a.header.positions.timeTable == b.header.positions.timeTable && a.types == b.types && a.times == b.times;
}

/// What is wrong with a file that was read back; empty when nothing is.
std::string difference(const Inspection::Summary& found, const Inspection::Summary& expected)
{
    if (found.readability != Inspection::Readability::Ok) {
        return found.problem;
    }
    if (!found.findings.empty()) {
        return found.findings.front().text;
    }
    if (!sameRecording(found, expected)) {
        return "The records are not those that were there before.";
    }
    if (found.bookmarks != expected.bookmarks) {
        return "The bookmarks are not those that should be there.";
    }
    return found.channelRangeTimes == expected.channelRangeTimes ? ""
                                                                 : "The channel ranges are not those that should be "
                                                                   "there.";
}

}  // namespace

ExitCode storeBookmark(FileChange& change, std::uint64_t time, const std::string& text)
{
    const std::optional<std::string> latin1 = takeText(change, text);
    if (!latin1) {
        return ExitCode::Usage;
    }
    if (time == 0 || time > lastMoment(change.summary())) {
        return change.refuse(ExitCode::Usage, "A bookmark stands at 1 ms to " +
                                                  std::to_string(lastMoment(change.summary())) +
                                                  " ms, the length of the recording.");
    }
    const Inspection::Bookmark bookmark{time, *latin1};
    return change.make([&](Inspection::Summary& summary) { return plan(change, bookmark, summary); },
                       [&] { return "Add the bookmark " + quoted(bookmark) + atTime(time); },
                       [&](Recording2::CFileAccess& file, const Inspection::Summary&) {
                           file.addBookmark(time, *latin1);
                           file.writeBookmarks();
                       });
}

ExitCode dropBookmark(FileChange& change, std::uint64_t time)
{
    Inspection::Bookmark removed;
    return change.make([&](Inspection::Summary& summary) { return planRemoval(change, time, summary, removed); },
                       [&] { return "Remove the bookmark " + quoted(removed) + atTime(time); },
                       [&](Recording2::CFileAccess& file, const Inspection::Summary&) {
                           file.removeBookmark(time);
                           file.writeBookmarks();
                       });
}

ExitCode renameBookmark(FileChange& change, std::uint64_t time, const std::string& text)
{
    const std::optional<std::string> latin1 = takeText(change, text);
    if (!latin1) {
        return ExitCode::Usage;
    }
    Inspection::Bookmark before;
    return change.make(
        [&](Inspection::Summary& summary) {
            const ExitCode removal = planRemoval(change, time, summary, before);
            return removal == ExitCode::Fine ? plan(change, {time, *latin1}, summary) : removal;
        },
        [&] { return "Rename the bookmark " + quoted(before) + atTime(time); },
        [&](Recording2::CFileAccess& file, const Inspection::Summary&) {
            file.removeBookmark(time);
            file.addBookmark(time, *latin1);
            file.writeBookmarks();
        });
}

ExitCode FileChange::refuse(ExitCode code, const std::string& reason) const
{
    complain(m_file, reason + " Nothing was changed.");
    return code;
}

ExitCode FileChange::check(const std::function<void(const Inspection::Record&)>& visit)
{
    if (!readSummary(m_file, m_summary)) {
        return ExitCode::CannotRead;
    }
    const std::vector<Inspection::Finding> findings = walk(m_file, m_summary, [&](const Inspection::Record& record) {
        if (visit) {
            visit(record);
        }
        return true;
    });
    if (!findings.empty()) {
        complain(m_file, findings);
        return refuse(ExitCode::Damaged, "A damaged file is not changed, to make nothing worse.");
    }
    return ExitCode::Fine;
}

ExitCode FileChange::confirm(const std::string& question) const
{
    if (m_yes) {
        return ExitCode::Fine;
    }
    if (!System::isTerminal(System::Stream::Input)) {
        return refuse(ExitCode::Usage, "There is no terminal to ask at; --yes changes the file without asking.");
    }
    std::cerr << printedName(m_file) << ": " << oneLine(question) << "? [y/N] " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    if (answer != "y" && answer != "Y" && answer != "yes") {
        return refuse(ExitCode::Usage, "Not confirmed.");
    }
    return ExitCode::Fine;
}

ExitCode FileChange::make(const Plan& plan, const std::function<std::string()>& question,
                          const std::function<void(Recording2::CFileAccess&, const Inspection::Summary&)>& store) const
{
    Inspection::Summary expected = m_summary;
    ExitCode result = plan(expected);
    if (result == ExitCode::Fine) {
        result = confirm(question());
    }
    if (result != ExitCode::Fine) {
        return result;
    }
    Recording2::CFileAccess file(forLibrary(m_file).c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    if (!file.IsValidFile()) {
        return refuse(ExitCode::CannotRead, "The file could not be opened.");
    }
    bool asked = false;
    std::string problem;
    const bool stored = file.rewriteTogether(
        [&] {
            asked = true;
            expected = Inspection::inspect(m_file);
            const Inspection::Summary now = expected;
            result = now.findings.empty() && sameRecording(now, m_summary)
                         ? plan(expected)
                         : refuse(ExitCode::CannotRead, "Another recording has taken the place of the file.");
            if (result == ExitCode::Fine) {
                store(file, now);
            }
        },
        [&] { problem = difference(Inspection::inspect(m_file), expected); });
    if (asked && result != ExitCode::Fine) {  // nothing was changed
        return result;
    }
    if (!stored) {
        return refuse(ExitCode::CannotRead,
                      asked ? "The change could not be stored. Is there space, and may a file be made beside this one?"
                            : "The change could not be stored: the file cannot be written.");
    }
    if (!problem.empty()) {
        complain(m_file, "The change could not be stored as it should be. Reading the file back: " + problem);
        return ExitCode::CannotRead;
    }
    return ExitCode::Fine;
}

bool FileChange::rangesBehindBookmarks(const Inspection::Summary& summary)
{
    const Inspection::Header& header = summary.header;
    return header.positions.bookmarkTable != 0 && header.positions.channelRangeTable > header.positions.bookmarkTable;
}

}  // namespace RecTool
