// CFileAccess: reading, bookmarks and channel ranges of a finished one.
#include <typeinfo>
#include <unordered_set>
#include <utility>

#include <vkbase/trace.h>

#include "fileaccess.h"
#include "fileaccess_p.h"
#include "filenames.h"
#include "traces.h"

namespace Recording2 {

namespace {

// Adds the entries of the block at the cursor. Past the end of the file there is nothing more to read, whatever the
// count says. A file may hold very many, and a table searches its entries one by one: numbers that are there are known
// here. What a derived table does with an entry is its own affair.
void readTypes(Format::Cursor& cursor, CVTTypesData& types)
{
    const bool isPlain = typeid(types) == typeid(CVTTypesData);
    std::unordered_set<std::int32_t> numbers;
    for (const S_TYPES& type : types.get_vector()) {
        numbers.insert(type.typeNumber);
    }
    std::int32_t count = 0;
    cursor.readNumber(count);
    for (std::int32_t i = 0; i < count && !cursor.atEnd(); ++i) {
        Format::TypeEntryRecord entry;
        Format::readTypeEntry(cursor, entry);
        S_TYPES type(entry.typeNumber, entry.valueType, std::move(entry.keyword), std::move(entry.valuePath));
        if (!isPlain) {
            types.add_item(std::move(type));
        } else if (numbers.insert(type.typeNumber).second) {
            types.get_vector().push_back(std::move(type));
        }
    }
}

}  // namespace

unsigned long long CFileAccess::read(CHeaderData& header)
{
    return d->shared->finished != nullptr && d->shared->finished->readHeader(d->own, header) ? 1 : 0;
}

unsigned long long CFileAccess::read(CVTTypesData& types)
{
    OpenInput* input = d->goodInput();
    if (input == nullptr) {
        return 0;
    }
    try {
        input->cursor.seek(d->own.positions.typeTable);
        readTypes(input->cursor, types);
        return 1;
    } catch (...) {  // a derived table may throw anything
        return 0;
    }
}

void CFileAccess::readTables()
{
    if (d->shared->finished != nullptr) {
        d->shared->finished->readTables(d->own);
    }
}

unsigned long long CFileAccess::read(CVTCmdData& record)
{
    return d->reader().read(record);
}

unsigned long long CFileAccess::readAndReturnTimeOfCurrentCmd(CVTCmdData& record)
{
    return d->reader().readAndReturnItsTime(record);
}

unsigned long long CFileAccess::read(CVTCmdData& record, unsigned long long time)
{
    return d->reader().read(record, time);
}

unsigned long long CFileAccess::readfirst(CVTCmdData& record)
{
    return d->reader().readFirst(record);
}

unsigned long long CFileAccess::readnext(CVTCmdData& record)
{
    return d->reader().read(record, 0);
}

unsigned long long CFileAccess::readfirst(CVTCmdData& record, std::int32_t code)
{
    return d->reader().readFirst(record, code);
}

unsigned long long CFileAccess::readnext(CVTCmdData& record, std::int32_t code)
{
    return d->reader().readNext(record, code);
}

unsigned long long CFileAccess::readprev(CVTCmdData& record, unsigned long long time)
{
    return d->reader().readBefore(record, time);
}

bool CFileAccess::AtEndOfRecords() const
{
    return d->reader().atEnd();
}

void CFileAccess::GoToFirstRecord()
{
    if (d->shared->finished != nullptr && d->shared->finished->input() != nullptr) {
        d->shared->finished->input()->cursor.seek(d->own.positions.firstRecord);
    }
}

void CFileAccess::addBookmark(unsigned long long time, std::string text)
{
    if (time != 0 && d->shared->tables != nullptr) {
        d->own.bookmarksChanged = true;
        d->shared->tables->bookmarks.emplace(time, std::move(text));
    }
}

void CFileAccess::removeBookmark(unsigned long long time)
{
    if (time != 0 && d->shared->tables != nullptr) {
        d->own.bookmarksChanged = true;
        d->shared->tables->bookmarks.erase(time);
    }
}

void CFileAccess::BookmarkTableToBegin()
{
    if (d->shared->tables != nullptr) {
        d->own.bookmark.toBegin(d->shared->tables->bookmarks);
    }
}

bool CFileAccess::getNextBookmark(unsigned long long& time, std::string& text)
{
    const auto* bookmark = d->shared->tables == nullptr ? nullptr : d->own.bookmark.in(d->shared->tables->bookmarks);
    if (bookmark == nullptr) {
        return false;
    }
    time = bookmark->first;
    text = bookmark->second;
    d->own.bookmark.advance(d->shared->tables->bookmarks);
    return !d->own.bookmark.atEnd();
}

bool CFileAccess::bookmarksAvailable() const
{
    return d->goodInput() != nullptr && !d->shared->tables->bookmarks.empty();
}

void CFileAccess::Private::tellIfFailed(ChangeResult result, const char* failure) const
{
    tellLeftOut();
    if (result == ChangeResult::Failed && Traces::enabled()) {
        _Q_TraceOld(failure, FileNames::fromBytes(path).toUtf8().constData());
    }
}

void CFileAccess::writeBookmarks()
{
    if (d->shared->finished != nullptr) {
        d->tellIfFailed(d->shared->finished->storeBookmarks(d->own), "Error writing bookmarks for recording file %s");
    }
}

void CFileAccess::addChannelRangeDef(unsigned long long time)
{
    if (time != 0 && d->shared->tables != nullptr) {
        d->shared->tables->channelRanges.insert(time);
    }
}

bool CFileAccess::channelRangeDefAvailable() const
{
    return d->goodInput() != nullptr && d->own.positions.channelRangeTable != 0;
}

void CFileAccess::CRDTableToBegin()
{
    d->own.rangeWalk.startAnew();
    if (d->shared->tables != nullptr) {
        d->own.rangeWalk.toBegin(d->shared->tables->channelRanges);
    }
}

bool CFileAccess::readNextChannelRangeDef(CVTCmdData& cmd, unsigned long long& time)
{
    RecordReader reader = d->reader();
    return d->shared->tables != nullptr && d->own.rangeWalk.next(d->shared->tables->channelRanges, reader, cmd, time);
}

void CFileAccess::clearChannelRangeDef()
{
    if (d->shared->finished != nullptr) {
        d->shared->finished->clearChannelRanges(d->own);
    }
}

void CFileAccess::rebuildChannelRangeDef()
{
    if (d->shared->finished != nullptr) {
        d->tellIfFailed(d->shared->finished->storeChannelRanges(d->own), "Error rebuilding CRD for recording file %s");
    }
}

bool CFileAccess::rewriteTogether(const std::function<void()>& change, const std::function<void()>& readBack)
{
    return d->shared->finished != nullptr && d->shared->finished->changeTogether(d->own, change, readBack);
}

}  // namespace Recording2
