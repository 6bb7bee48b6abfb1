// The verbs "bookmark add", "bookmark rm" and "bookmark list".
#include <algorithm>
#include <iostream>

#include <QString>

#include "commandline/verb.h"
#include "commands.h"
#include "making/filechange.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/table.h"
#include "printing/text.h"
#include "replay/recordingtime.h"
#include "replay/walk.h"

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

/// The steps that adding and removing share. Only what is wrong with the file or the time ends it here.
ExitCode checkBookmarkChange(FileChange& change, const std::string& timeText, std::uint64_t& time)
{
    const ExitCode checked = change.check();
    if (checked != ExitCode::Fine) {
        return checked;
    }
    return requireTime("TIME", timeText, change.summary(), time) ? ExitCode::Fine : ExitCode::Usage;
}

/// Puts the bookmark among those of the summary, unless it has no place there.
ExitCode plan(const FileChange& change, const Inspection::Bookmark& added, Inspection::Summary& summary)
{
    if (FileChange::rangesBehindBookmarks(summary)) {
        return change.refuse(ExitCode::CannotRead, RangesInTheWay);
    }
    const auto place = placeOf(added.timeMs, summary.bookmarks);
    if (place != summary.bookmarks.end() && place->timeMs == added.timeMs) {
        return change.refuse(ExitCode::Usage, "There is a bookmark at " + std::to_string(added.timeMs) +
                                                  " ms already: " + quoted(*place) + ".");
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
        return change.refuse(ExitCode::Usage, "There is no bookmark at " + std::to_string(time) + " ms.");
    }
    removed = *place;
    summary.bookmarks.erase(place);
    return ExitCode::Fine;
}

}  // namespace

ExitCode addBookmark(const BookmarkAddOptions& options)
{
    FileChange change(options.file, options.yes);
    std::uint64_t time = 0;
    const ExitCode result = checkBookmarkChange(change, options.time, time);
    if (result != ExitCode::Fine) {
        return result;
    }
    const std::optional<std::string> text = toLatin1(options.text);
    if (!text || text->empty()) {
        return change.refuse(ExitCode::Usage, "A bookmark needs a text, of Latin-1 characters.");
    }
    if (time == 0 || time > lastMoment(change.summary())) {
        return change.refuse(ExitCode::Usage, "A bookmark stands at 1 ms to " +
                                                  std::to_string(lastMoment(change.summary())) +
                                                  " ms, the length of the recording.");
    }
    const Inspection::Bookmark bookmark{time, *text};
    return change.make([&](Inspection::Summary& summary) { return plan(change, bookmark, summary); },
                       [&] { return "Add the bookmark " + quoted(bookmark) + " at " + std::to_string(time) + " ms"; },
                       [&](Recording2::CFileAccess& file, const Inspection::Summary&) {
                           file.addBookmark(time, *text);
                           file.writeBookmarks();
                       });
}

ExitCode removeBookmark(const BookmarkRemoveOptions& options)
{
    FileChange change(options.file, options.yes);
    std::uint64_t time = 0;
    const ExitCode result = checkBookmarkChange(change, options.time, time);
    if (result != ExitCode::Fine) {
        return result;
    }
    Inspection::Bookmark removed;
    return change.make([&](Inspection::Summary& summary) { return planRemoval(change, time, summary, removed); },
                       [&] { return "Remove the bookmark " + quoted(removed) + " at " + std::to_string(time) + " ms"; },
                       [&](Recording2::CFileAccess& file, const Inspection::Summary&) {
                           file.removeBookmark(time);
                           file.writeBookmarks();
                       });
}

ExitCode listBookmarks(const ListOptions& options)
{
    Inspection::Summary summary;
    if (!readSummary(options.file, summary)) {
        return ExitCode::CannotRead;
    }
    if (options.json) {
        Json bookmarks = Json::array();
        for (const Inspection::Bookmark& bookmark : summary.bookmarks) {
            bookmarks.push_back(toJson(bookmark));
        }
        std::cout << dump({{"file", shownName(options.file)}, {"bookmarks", std::move(bookmarks)}}, 2) << '\n';
    } else if (summary.bookmarks.empty()) {
        std::cout << "The recording has no bookmark.\n";
    } else {
        Table table({Table::Align::Right, Table::Align::Left, Table::Align::Left});
        table.add({"Time", "Clock", "Text"});
        for (const Inspection::Bookmark& bookmark : summary.bookmarks) {
            table.add({std::to_string(bookmark.timeMs), utc(summary.header.startMs + bookmark.timeMs),
                       oneLine(fromLatin1(bookmark.text))});
        }
        table.print(std::cout, "");
    }
    complain(options.file, summary.findings);
    return finish(soundness(summary.findings));
}

void addBookmarkVerbs(const Syntax& program)
{
    Syntax bookmark(program, "bookmark", "Add, remove and list bookmarks");
    bookmark.needsVerb();
    Verb add(bookmark, "add", "Store a bookmark in the recording", addBookmark);
    add.time("TIME", add.options().time, TimeForms).required();
    add.text("TEXT", add.options().text, "What to call it").required();
    add.yes();
    add.examples({"bookmark add recording.rec 61500 alarm",
                  "bookmark add recording.rec bookmark:alarm-500 \"before the alarm\" --yes"});
    Verb remove(bookmark, "rm", "Remove a bookmark from the recording", removeBookmark);
    remove.time("TIME", remove.options().time, TimeForms).required();
    remove.yes();
    remove.examples({"bookmark rm recording.rec 61500", "bookmark rm recording.rec bookmark:alarm --yes"});
    Verb list(bookmark, "list", "Show the bookmarks", listBookmarks);
    list.json();
    list.examples({"bookmark list recording.rec"});
}

}  // namespace RecTool
