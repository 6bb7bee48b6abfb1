// The tables after the records: loaded, edited, and stored in the finished file.
#include <algorithm>

#include "fileaccess.h"
#include "fileaccess_p.h"
#include "format/layout.h"

namespace Recording2 {

void CFileAccess::readTables()
{
    if (d->goodInput() == nullptr) {
        return;
    }
    d->shared->input->cursor.invalidate();  // another process may have stored a table
    CHeaderData header;
    if (read(header) != 0) {
        LoadTables();
    }
}

void CFileAccess::LoadTables()
{
    d->rangeWalk.startAnew();
    ReadTimeTable();
    ReadCRDTable();
    ReadBookmarkTable();
    d->shared->tablesCut = d->shared->input->file.readFailed();
}

// Goes to a table that the file has; reading then begins with the first record.
template <typename Read>
void CFileAccess::Private::readTable(std::int32_t position, const Read& read)
{
    if (position != 0 && goodInput() != nullptr) {
        Format::Cursor& cursor = shared->input->cursor;
        cursor.seek(position);
        read(cursor);
        cursor.seek(positions.firstRecord);
    }
}

void CFileAccess::ReadTimeTable()
{
    d->readTable(d->positions.timeTable,
                 [&](Format::Cursor&) { readTimeTable(*d->shared->input, d->positions, *d->shared->index); });
}

void CFileAccess::ReadCRDTable()
{
    d->readTable(d->positions.channelRangeTable, [&](Format::Cursor& cursor) {
        const std::int32_t bookmarks = d->positions.bookmarkTable;
        d->shared->channelRanges->read(cursor, bookmarks == 0 ? Format::LastPosition : bookmarks);
    });
}

void CFileAccess::ReadBookmarkTable()
{
    d->readTable(d->positions.bookmarkTable, [&](Format::Cursor& cursor) { d->shared->bookmarks->read(cursor); });
}

void CFileAccess::addBookmark(unsigned long long time, std::string text)
{
    if (time == 0 || d->shared->bookmarks == nullptr) {
        return;
    }
    d->bookmarksChanged = true;
    d->shared->bookmarks->add(time, std::move(text));
}

void CFileAccess::removeBookmark(unsigned long long time)
{
    if (time == 0 || d->shared->bookmarks == nullptr) {
        return;
    }
    d->bookmarksChanged = true;
    d->shared->bookmarks->remove(time);
}

void CFileAccess::BookmarkTableToBegin()
{
    if (d->shared->bookmarks != nullptr) {
        d->shared->bookmarks->toBegin(d->bookmarkPlace);
    }
}

bool CFileAccess::getNextBookmark(unsigned long long& time, std::string& text)
{
    return d->shared->bookmarks != nullptr && d->shared->bookmarks->next(d->bookmarkPlace, time, text);
}

bool CFileAccess::bookmarksAvailable() const
{
    return d->goodInput() != nullptr && d->shared->bookmarks != nullptr && !d->shared->bookmarks->empty() &&
           d->shared->index != nullptr;
}

void CFileAccess::WriteBookmarkTable()
{
    OutputFile* output = d->goodOutput();
    if (output == nullptr || d->shared->bookmarks == nullptr || d->shared->bookmarks->empty() ||
        !d->begin(d->positions.bookmarkTable)) {
        return;
    }
    d->shared->bookmarks->write(*output);
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

void CFileAccess::addChannelRangeDef(unsigned long long time)
{
    if (time != 0 && d->shared->channelRanges != nullptr) {
        d->shared->channelRanges->add(time);
    }
}

bool CFileAccess::channelRangeDefAvailable() const
{
    return d->goodInput() != nullptr && d->shared->channelRanges != nullptr && d->shared->index != nullptr &&
           d->positions.channelRangeTable != 0;
}

void CFileAccess::CRDTableToBegin()
{
    d->rangeWalk.startAnew();
    if (d->shared->channelRanges != nullptr) {
        d->rangeWalk.toBegin(*d->shared->channelRanges);
    }
}

bool CFileAccess::readNextChannelRangeDef(CVTCmdData& cmd, unsigned long long& time)
{
    RecordReader reader = d->reader();
    return d->shared->channelRanges != nullptr && d->rangeWalk.next(*d->shared->channelRanges, reader, cmd, time);
}

void CFileAccess::WriteCRDTable()
{
    OutputFile* output = d->goodOutput();
    if (output == nullptr || d->shared->channelRanges == nullptr || d->shared->channelRanges->empty()) {
        return;
    }
    if (d->positions.channelRangeTable != 0) {
        seekToTable(*output, d->positions.channelRangeTable, output->position());
    }
    if (!d->begin(d->positions.channelRangeTable)) {
        return;
    }
    d->shared->channelRanges->write(*output);
}

// Without a table the position is 0 and the file is overwritten from its start: callers ask channelRangeDefAvailable.
void CFileAccess::clearChannelRangeDef()
{
    if (!CanRewrite()) {
        return;
    }
    if (OutputFile* output = OpenForUpdate()) {
        CHeaderData header;  // another object may have stored a table meanwhile; one that cannot be read tells nothing
        d->shared->input->cursor.invalidate();
        static_cast<void>(read(header));
        output->seekToEnd();
        const std::int64_t end = output->position();
        const std::int64_t bound =
            d->positions.bookmarkTable == 0 ? end : std::min<std::int64_t>(end, d->positions.bookmarkTable);
        seekToTable(*output, d->positions.channelRangeTable, end);
        while (output->good() && output->position() < bound) {
            output->commit(Format::OutInt64(output->reserve(), 0));
        }
    }
    if (d->shared->channelRanges != nullptr) {
        d->shared->channelRanges->clear();
    }
    ReopenForReading();
}

void CFileAccess::rebuildChannelRangeDef()
{
    RewriteFinishedFile("Error rebuilding CRD for recording file %s", [this](OutputFile& output) {
        output.seekToEnd();
        WriteCRDTable();
    });
}

}  // namespace Recording2
