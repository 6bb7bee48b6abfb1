// Reading: header, type table, time table, and stepping through the records.
#include <algorithm>
#include <typeinfo>
#include <unordered_set>
#include <utility>

#include "fileaccess.h"
#include "fileaccess_p.h"
#include "format/layout.h"

namespace Recording2 {

namespace {

/// Adds types to a table. A table may have very many and searches them one by one: numbers that are there are known
/// here.
class TypeAdder {
public:
    explicit TypeAdder(CVTTypesData& types) : m_types(types), m_isPlain(typeid(types) == typeid(CVTTypesData))
    {
        if (m_isPlain) {
            for (const S_TYPES& type : types.get_vector()) {
                m_numbers.insert(type.typeNumber);
            }
        }
    }
    void add(S_TYPES type)
    {
        if (!m_isPlain) {  // what a derived table does with it is its own affair
            m_types.add_item(std::move(type));
        } else if (m_numbers.insert(type.typeNumber).second) {
            m_types.get_vector().push_back(std::move(type));
        }
    }

private:
    CVTTypesData& m_types;
    bool m_isPlain;
    std::unordered_set<std::int32_t> m_numbers;
};

// How many entries a sound table that ends there may have. Its positions are about as wide as that of the last record.
std::size_t mostTimeEntries(const Format::Positions& positions, std::int64_t end)
{
    constexpr std::int64_t ShortestRecord = 5;
    const auto narrow = static_cast<std::int64_t>(Format::TimeBytes + std::to_string(positions.timeTable).size() - 1);
    const std::int64_t records = (std::int64_t{positions.timeTable} - positions.firstRecord) / ShortestRecord;
    const std::int64_t entries = (end - positions.timeTable) / narrow;
    return static_cast<std::size_t>(std::max<std::int64_t>(0, std::min(records, entries)));
}

}  // namespace

Format::HeaderStatus CFileAccess::Private::readHeader(CHeaderData& header)
{
    Format::Cursor& cursor = shared->input->cursor;
    const std::int64_t back = cursor.position();
    cursor.seek(0);
    Format::HeaderRecord record = toRecord(header, positions);
    record.majorVersion = 0;  // a version that cannot be read is none, whatever the object held
    record.minorVersion = 0;
    const Format::HeaderStatus status = Format::readHeader(cursor, record);
    if (status == Format::HeaderStatus::Ok) {
        fromRecord(record, header);
        positions = record.positions;
    }
    cursor.seek(back);
    return status;
}

unsigned long long CFileAccess::read(CHeaderData& header)
{
    if (d->goodInput() == nullptr) {
        return 0;
    }
    try {
        return d->readHeader(header) == Format::HeaderStatus::Ok ? 1 : 0;
    } catch (const std::exception&) {
        d->valid = false;
        return 0;
    }
}

unsigned long long CFileAccess::read(CVTTypesData& types)
{
    OpenInput* input = d->goodInput();
    if (input == nullptr) {
        return 0;
    }
    try {
        Format::Cursor& cursor = input->cursor;
        cursor.seek(d->positions.typeTable);
        std::int32_t count = 0;
        cursor.readNumber(count);
        TypeAdder adder(types);
        // Past the end of the file there is nothing more to read, whatever the count says.
        for (std::int32_t i = 0; i < count && !cursor.atEnd(); ++i) {
            Format::TypeEntryRecord entry;
            Format::readTypeEntry(cursor, entry);
            adder.add({entry.typeNumber, entry.valueType, std::move(entry.keyword), std::move(entry.valuePath)});
        }
        return 1;
    } catch (const std::exception&) {
        return 0;
    }
}

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
    d->startRanges();
    ReadTimeTable();
    ReadCRDTable();
    ReadBookmarkTable();
    d->shared->tablesCut = d->shared->input->file.readFailed();
}

void CFileAccess::ReadTimeTable()
{
    OpenInput* input = d->goodInput();
    if (input == nullptr || d->shared->index == nullptr || d->positions.timeTable == 0) {
        return;
    }
    Format::Cursor& cursor = input->cursor;
    cursor.seek(d->positions.timeTable);
    const std::int64_t bound =
        d->positions.channelRangeTable == 0 ? Format::LastPosition : d->positions.channelRangeTable;
    for (const auto memory :
         d->shared->index->reserve(mostTimeEntries(d->positions, std::min(bound, input->file.size())))) {
        System::expectUse(memory);
    }
    Format::readTimeEntries(cursor, bound, [&index = *d->shared->index](std::uint64_t time, std::int32_t position) {
        index.add(time, position);
    });
    cursor.seek(d->positions.firstRecord);
}

std::int32_t CFileAccess::Private::readRecord(OpenInput& input, CVTCmdData& record)
{
    Format::RecordHead head;
    Format::readRecordHead(input.cursor, head);
    if (head.dataLength > 0) {
        record.set_cmd(head.code);
        input.cursor.readBytes(record.m_data, head.dataLength);
    }
    return head.dataLength;
}

std::uint64_t CFileAccess::Private::timeHere() const
{
    const OpenInput& input = *shared->input;
    return input.cursor.atEnd() || shared->index == nullptr ? 0 : shared->index->timeAt(input.cursor.position());
}

unsigned long long CFileAccess::read(CVTCmdData& record)
{
    OpenInput* input = d->goodInput();
    if (input == nullptr) {
        return 0;
    }
    d->readRecord(*input, record);
    return d->timeHere();
}

unsigned long long CFileAccess::readAndReturnTimeOfCurrentCmd(CVTCmdData& record)
{
    OpenInput* input = d->goodInput();
    if (input == nullptr) {
        return 0;
    }
    const std::uint64_t time = d->timeHere();
    d->readRecord(*input, record);
    return time;
}

unsigned long long CFileAccess::read(CVTCmdData& record, unsigned long long time)
{
    return d->readAt(record, time) > 0 ? d->timeHere() : 0;
}

std::int32_t CFileAccess::Private::readAt(CVTCmdData& record, std::uint64_t time)
{
    OpenInput* input = goodInput();
    if (input == nullptr) {
        return 0;
    }
    if (time != 0 && shared->index != nullptr) {
        if (const auto entry = shared->index->atOrAfterOrLast(time)) {
            input->cursor.seek(entry->position);
        }
    }
    if (atEndOfRecords()) {
        return 0;
    }
    const std::int64_t begin = input->cursor.position();
    const std::int32_t length = readRecord(*input, record);
    bytesRead += input->cursor.position() - begin;
    return length;
}

bool CFileAccess::Private::atEndOfRecords() const
{
    const OpenInput* input = goodInput();
    return input == nullptr || input->cursor.position() >= positions.timeTable;
}

bool CFileAccess::AtEndOfRecords() const
{
    return d->atEndOfRecords();
}

void CFileAccess::GoToFirstRecord()
{
    if (d->shared->input != nullptr) {
        d->shared->input->cursor.seek(d->positions.firstRecord);
    }
}

unsigned long long CFileAccess::readfirst(CVTCmdData& record)
{
    if (d->goodInput() == nullptr || d->shared->index == nullptr ||
        !d->shared->index->rankOf(d->positions.firstRecord)) {
        return 0;
    }
    return read(record, static_cast<unsigned long long>(d->shared->index->timeAt(d->positions.firstRecord)));
}

unsigned long long CFileAccess::readnext(CVTCmdData& record)
{
    return read(record, 0ULL);
}

unsigned long long CFileAccess::readfirst(CVTCmdData& record, std::int32_t code)
{
    constexpr unsigned long long GiveUpFrom = 100;  // a time, not a count: callers depend on it
    OpenInput* input = d->goodInput();
    if (input == nullptr || d->shared->index == nullptr) {
        return 0;
    }
    const std::int64_t fileSize = input->file.size();
    const std::int64_t bytesBefore = d->bytesRead;
    const Index::TimeIndex& index = *d->shared->index;
    auto rank = index.rankOf(d->positions.firstRecord);
    if (!rank) {
        return 0;
    }
    unsigned long long following = 0;
    for (auto entry = index.byPosition(*rank); entry && following < GiveUpFrom; entry = index.byPosition(++*rank)) {
        following = read(record, static_cast<unsigned long long>(entry->time));
        if (code == 0 || code == record.cmd()) {
            if (const auto previous = index.before(following)) {
                return previous->time;
            }
        }
        if (d->bytesRead - bytesBefore > fileSize) {  // records of a damaged index overlap: there may be no end to them
            return 0;
        }
    }
    return 0;
}

unsigned long long CFileAccess::readnext(CVTCmdData& record, std::int32_t code)
{
    if (d->shared->index == nullptr) {
        return 0;
    }
    for (;;) {
        const unsigned long long following = read(record, 0ULL);
        if (record.cmd() == code) {
            if (const auto previous = d->shared->index->before(following)) {
                return previous->time;
            }
        }
        if (following == 0) {
            return 0;
        }
    }
}

unsigned long long CFileAccess::readprev(CVTCmdData& record, unsigned long long time)
{
    if (d->goodInput() == nullptr || d->shared->index == nullptr) {
        return 0;
    }
    const auto previous = d->shared->index->before(time);
    if (!previous) {
        return 0;
    }
    read(record, static_cast<unsigned long long>(previous->time));
    return previous->time;
}

}  // namespace Recording2
