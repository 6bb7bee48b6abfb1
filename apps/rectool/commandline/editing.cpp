// Verbs that change what was noted in a recording.
#include <string>

#include "verb.h"

namespace RecTool::CommandLine {

namespace {

void addBookmarkAdd(CLI::App& bookmark, Action& action)
{
    Verb<BookmarkAddOptions> verb(bookmark, "add", "Store a bookmark in the recording", addBookmark, action);
    verb.addTime("TIME", verb.options().time, TimeForms)->required();
    verb.app().add_option("TEXT", verb.options().text, "What to call it")->required();
    verb.addYes();
    verb.addExamples({"bookmark add recording.rec 61500 alarm",
                      "bookmark add recording.rec bookmark:alarm-500 \"before the alarm\" --yes"});
}

void addBookmarkRemove(CLI::App& bookmark, Action& action)
{
    Verb<BookmarkRemoveOptions> verb(bookmark, "rm", "Remove a bookmark from the recording", removeBookmark, action);
    verb.addTime("TIME", verb.options().time, TimeForms)->required();
    verb.addYes();
    verb.addExamples({"bookmark rm recording.rec 61500", "bookmark rm recording.rec bookmark:alarm --yes"});
}

void addBookmarkList(CLI::App& bookmark, Action& action)
{
    Verb<ListOptions> verb(bookmark, "list", "Show the bookmarks", listBookmarks, action);
    verb.addJson();
    verb.addExamples({"bookmark list recording.rec"});
}

void addRangeList(CLI::App& range, Action& action)
{
    Verb<ListOptions> verb(range, "list", "Show the records that the table names", listRanges, action);
    verb.addJson();
    verb.addExamples({"range list recording.rec"});
}

void addRangeClear(CLI::App& range, Action& action)
{
    Verb<RangeClearOptions> verb(range, "clear", "Empty the table", clearRanges, action);
    verb.addYes();
    verb.addExamples({"range clear recording.rec"});
}

void addRangeRebuild(CLI::App& range, Action& action)
{
    Verb<RangeRebuildOptions> verb(range, "rebuild", "Enter every record that carries a channel range", rebuildRanges,
                                   action);
    verb.addTypes("Records of this keyword or type number, instead of DFSPECTRUM; may be given several times");
    verb.addYes();
    verb.addExamples(
        {"range rebuild recording.rec", "range rebuild recording.rec --type DFSPECTRUM --type RFSPECTRUM --yes"});
}

}  // namespace

void addEditingVerbs(CLI::App& app, Action& action)
{
    CLI::App& bookmark = *app.add_subcommand("bookmark", "Add, remove and list bookmarks");
    bookmark.require_subcommand(1);
    addBookmarkAdd(bookmark, action);
    addBookmarkRemove(bookmark, action);
    addBookmarkList(bookmark, action);
    CLI::App& range = *app.add_subcommand("range", "List, clear and rebuild the table of channel ranges");
    range.require_subcommand(1);
    addRangeList(range, action);
    addRangeClear(range, action);
    addRangeRebuild(range, action);
}

}  // namespace RecTool::CommandLine
