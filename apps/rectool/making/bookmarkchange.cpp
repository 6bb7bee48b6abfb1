// Planning bookmarks among those that are there, and storing them.
#include "bookmarkchange.h"

#include <algorithm>
#include <optional>
#include <vector>

#include <QString>

#include "printing/output.h"
#include "printing/text.h"
#include "replay/recordingtime.h"

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

}  // namespace RecTool
