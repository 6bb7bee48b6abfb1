// The answers to /api/bookmarks: those of all files of a recording, and changes of them.

#include <nlohmann/json.hpp>

#include "context.h"
#include "jsontext.h"
#include "rectool/making/filechange.h"
#include "rectool/printing/output.h"
#include "rectool/printing/text.h"

namespace RecView {

namespace Inspection = Recording2::Inspection;
using RecTool::ExitCode;

namespace {

struct PostedChange {
    std::string recording;
    std::string action;
    double ms = 0;
    std::string text;     // before a renaming, too; may be missing then
    std::string newText;  // of a renaming
};

template <typename Value>
Value memberOf(const nlohmann::json& body, const char* name, const char* what)
{
    const auto found = body.find(name);
    if (found != body.end()) {
        try {
            return found->get<Value>();
        } catch (const nlohmann::json::exception&) {
            throw Refusal(400, std::string("\"") + name + "\" is not " + what + ".");
        }
    }
    throw Refusal(400, std::string("\"") + name + "\" is missing.");
}

PostedChange parsedChange(const std::string& body)
{
    const nlohmann::json json = nlohmann::json::parse(body, nullptr, false);
    if (!json.is_object()) {
        throw Refusal(400, "The body is not a JSON object.");
    }
    PostedChange change;
    change.recording = memberOf<std::string>(json, "recording", "a text");
    change.action = memberOf<std::string>(json, "action", "a text");
    change.ms = memberOf<double>(json, "ms", "a number");
    if (change.action == "add") {
        change.text = memberOf<std::string>(json, "text", "a text");
    } else if (change.action == "rename") {
        change.newText = memberOf<std::string>(json, "newText", "a text");
    } else if (change.action != "remove") {
        throw Refusal(400, "\"action\" is none of add, rename, remove.");
    }
    return change;
}

Inspection::Summary readTables(const RecordedFile& file)
{
    Inspection::Summary summary = Inspection::inspect(file.path);
    if (summary.readability != Inspection::Readability::Ok) {
        throw Refusal(404, file.name + ": " + summary.problem);
    }
    return summary;
}

Response listOf(const Timeline& timeline)
{
    Response response;
    std::string& out = response.body;
    JsonObject object(out);
    object.member("bookmarks") += '[';
    bool isFirst = true;
    for (const FilePointer& file : timeline.files) {
        if (file->live) {
            continue;
        }
        for (const Inspection::Bookmark& bookmark : readTables(*file).bookmarks) {
            out += isFirst ? "" : ",";
            isFirst = false;
            JsonObject entry(out);
            entry.members("ms", sinceEpoch(*file, static_cast<double>(bookmark.timeMs)));
            entry.members("text", RecTool::fromLatin1(bookmark.text), "file", file->name);
        }
    }
    out += ']';
    return response;
}

/// The file that a bookmark at a moment belongs to.
const RecordedFile& fileOf(const Timeline& timeline, double ms)
{
    const RecordedFile& file = *timeline.files[timeline.fileAt(ms)];
    if (file.live) {
        throw Refusal(409, file.name + " is being written; bookmarks can be set when it is closed.");
    }
    if (ms < timeline.startMs() || ms > timeline.endMs()) {
        throw Refusal(400, "\"ms\" does not lie in the recording.");
    }
    return file;
}

/// Of what failed.
int statusOf(ExitCode code)
{
    return code == ExitCode::Usage ? 400 : code == ExitCode::Damaged ? 409 : 500;
}

/// Exactly as `rectool bookmark` does it: the file is checked whole, changed with its original kept, and read back.
void change(const RecordedFile& file, const PostedChange& posted)
{
    const RecTool::Complaints complaints;
    RecTool::FileChange fileChange(file.path, true);
    const auto time = static_cast<std::uint64_t>(std::llround(posted.ms - static_cast<double>(file.startMs)));
    ExitCode result = fileChange.check();
    if (result == ExitCode::Fine) {
        result = posted.action == "add"      ? RecTool::storeBookmark(fileChange, time, posted.text)
                 : posted.action == "rename" ? RecTool::renameBookmark(fileChange, time, posted.newText)
                                             : RecTool::dropBookmark(fileChange, time);
    }
    if (result != ExitCode::Fine) {
        throw Refusal(statusOf(result), complaints.text());
    }
}

Response changeBookmarks(const Context& context, const Request& request)
{
    if (!context.options.edit) {
        throw Refusal(403, "Bookmarks can be changed where recview was started with --edit.");
    }
    const PostedChange posted = parsedChange(request.body);
    const ListingPointer listing = context.catalog.listing();
    const Timeline* timeline = listing->find(posted.recording);
    if (timeline == nullptr) {
        throw Refusal(404, "There is no recording of this name any more, or there never was.");
    }
    const std::lock_guard lock(context.changing);
    change(fileOf(*timeline, posted.ms), posted);
    return listOf(*timeline);
}

}  // namespace

Response answerBookmarks(const Context& context, const Request& request)
{
    if (request.method == "POST") {
        const Parameters none(request, {});
        return changeBookmarks(context, request);
    }
    const Parameters parameters(request, {"recording"});
    return listOf(*askedRecording(context, parameters).timeline);
}

}  // namespace RecView
