// The verbs "bookmark add", "bookmark rm" and "bookmark list".
#include <functional>
#include <iostream>

#include "commandline/verb.h"
#include "commands.h"
#include "making/filechange.h"
#include "printing/json.h"
#include "printing/output.h"
#include "printing/text.h"
#include "replay/recordingtime.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

struct BookmarkOptions {
    std::string file;
    std::string time;  ///< a time of the recording
    std::string text;  ///< of one that is added
    bool yes = false;  ///< change the file without asking
};

/// The steps that adding and removing share. @param change is made where file and time are fine
ExitCode changeBookmarks(const BookmarkOptions& options,
                         const std::function<ExitCode(FileChange&, std::uint64_t time)>& change)
{
    FileChange file(options.file, options.yes);
    std::uint64_t time = 0;
    const ExitCode checked = file.check();
    if (checked != ExitCode::Fine) {
        return checked;
    }
    return requireTime("TIME", options.time, file.summary(), time) ? change(file, time) : ExitCode::Usage;
}

ExitCode addBookmark(const BookmarkOptions& options)
{
    return changeBookmarks(
        options, [&](FileChange& file, std::uint64_t time) { return storeBookmark(file, time, options.text); });
}

ExitCode removeBookmark(const BookmarkOptions& options)
{
    return changeBookmarks(options, dropBookmark);
}

}  // namespace

ExitCode listBookmarks(const ListOptions& options)
{
    Inspection::Summary summary;
    if (!readSummary(options.file, summary)) {
        return ExitCode::CannotRead;
    }
    if (options.json) {
        printJson({{"file", shownName(options.file)}, {"bookmarks", toJson(summary.bookmarks)}});
    } else if (summary.bookmarks.empty()) {
        std::cout << "The recording has no bookmark.\n";
    } else {
        Table table("rll", {"Time", "Clock", "Text"});
        for (const Inspection::Bookmark& bookmark : summary.bookmarks) {
            table.add({std::to_string(bookmark.timeMs), utc(summary.header.startMs + bookmark.timeMs),
                       oneLine(fromLatin1(bookmark.text))});
        }
        table.print();
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
