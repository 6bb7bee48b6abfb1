// Bookmarks: moments of a finished recording, marked with a text.
#include <exception>
#include <stdexcept>
#include <utility>

#include <vkbase/trace.h>

#include "file/blocks.h"
#include "fileaccess.h"
#include "fileaccess_p.h"

namespace Recording2 {

void CFileAccess::addBookmark(unsigned long long time, std::string text)
{
    if (time == 0 || d->shared->bookmarks == nullptr) {
        return;
    }
    d->bookmarksChanged = true;
    d->shared->bookmarks->emplace(time, std::move(text));
}

void CFileAccess::removeBookmark(unsigned long long time)
{
    if (time == 0 || d->shared->bookmarks == nullptr) {
        return;
    }
    d->bookmarksChanged = true;
    d->shared->bookmarks->erase(time);
}

void CFileAccess::BookmarkTableToBegin()
{
    if (d->shared->bookmarks != nullptr) {
        d->bookmarkCursor.toBegin(*d->shared->bookmarks);
    }
}

bool CFileAccess::getNextBookmark(unsigned long long& time, std::string& text)
{
    if (d->shared->bookmarks == nullptr || d->bookmarkCursor.atEnd()) {
        return false;
    }
    const auto bookmark = d->bookmarkCursor.in(*d->shared->bookmarks);
    if (bookmark == d->shared->bookmarks->end()) {
        return false;
    }
    time = bookmark->first;
    text = bookmark->second;
    d->bookmarkCursor.advance(*d->shared->bookmarks);
    return !d->bookmarkCursor.atEnd();
}

bool CFileAccess::bookmarksAvailable() const
{
    return d->goodInput() != nullptr && d->shared->bookmarks != nullptr && !d->shared->bookmarks->empty() &&
           d->shared->index != nullptr;
}

void CFileAccess::ReadBookmarkTable()
{
    OpenInput* input = d->goodInput();
    if (input == nullptr || d->shared->bookmarks == nullptr || d->positions.bookmarkTable == 0) {
        return;
    }
    Format::Cursor& cursor = input->cursor;
    cursor.seek(d->positions.bookmarkTable);
    std::uint64_t time = 0;
    while (!cursor.atEnd()) {
        std::int64_t length = 0;  // what a longer table left may end within an entry: that has no text either
        cursor.readTime(time);
        cursor.readNumber(length);
        if (length > 0) {
            cursor.readBytes(d->shared->buffer, length);
            d->shared->bookmarks->emplace(time, d->shared->buffer);
        }
    }
    cursor.seek(d->positions.firstRecord);
}

void CFileAccess::WriteBookmarkTable()
{
    OutputFile* output = d->goodOutput();
    if (output == nullptr || d->shared->bookmarks == nullptr || d->shared->bookmarks->empty() ||
        !d->begin(d->positions.bookmarkTable)) {
        return;
    }
    for (const auto& [time, text] : *d->shared->bookmarks) {
        Blocks::appendBookmark(*output, time, text);
    }
}

void CFileAccess::writeBookmarks()
{
    const auto rewrite = [this](OutputFile& output) {
        output.seekToEnd();
        const std::int64_t end = output.position();
        if (d->positions.bookmarkTable != 0) {
            seekToTable(output, d->positions.bookmarkTable, end);
        }
        WriteBookmarkTable();
        // What the old table had more than the new one reads as entries without a text.
        while (output.good() && output.position() < end) {
            output.append({"0", 1});
        }
    };
    if (RewriteFinishedFile("Error writing bookmarks for recording file %s", rewrite)) {
        d->bookmarksChanged = false;
    }
}

}  // namespace Recording2
