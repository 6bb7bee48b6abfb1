// Writing: type table, records, and at close the tables and the header.
#include <algorithm>
#include <limits>

#include <vkbase/trace.h>

#include "file/blocks.h"
#include "fileaccess.h"
#include "fileaccess_p.h"
#include "filenames.h"
#include "format/layout.h"

namespace Recording2 {

// The tables must fit after the records too, or a full file could not be read by time.
bool CFileAccess::Private::fits(std::int64_t bytes)
{
    const auto records = static_cast<std::int64_t>(shared->index->size()) + 1;
    const auto ranges = static_cast<std::int64_t>(shared->channelRanges->size()) + 1;
    const std::int64_t tables = records * Format::WidestTimeEntryBytes + ranges * std::int64_t{Format::TimeBytes};
    return bytes + tables <= Format::LastPosition - shared->output->position();
}

bool CFileAccess::Private::begin(std::int32_t& position)
{
    const std::int64_t here = shared->output->position();
    if (position != 0) {
        return true;
    }
    if (here > Format::LastPosition) {
        refuse();
        return false;
    }
    position = static_cast<std::int32_t>(here);
    return true;
}

// What no position could name is left out, so that what was recorded before stays a sound file.
void CFileAccess::Private::refuse()
{
    if (shared->positionsExhausted) {
        return;
    }
    shared->positionsExhausted = true;
    if (FileAccessTrace::enabled()) {
        _Q_Trace(QStringLiteral("CFileAccess: recording file is full, what does not fit is left out: ") +
                     FileNames::fromBytes(path),
                 FileAccessTrace::Source, __LINE__);
    }
}

unsigned long long CFileAccess::write(CVTTypesData& types)
{
    OutputFile* output = d->goodOutput();
    if (output == nullptr) {
        return 0;
    }
    const std::string block = Format::typeTable(types.get_vector());
    if (!d->fits(static_cast<std::int64_t>(block.size()))) {
        d->refuse();
        return 0;
    }
    const std::int32_t before = d->positions.typeTable;
    d->begin(d->positions.typeTable);
    output->append(block);
    if (!d->accept()) {
        d->positions.typeTable = before;
    } else if (before == 0 && d->shared->journal != nullptr) {
        d->shared->journal->setTypes(d->positions.typeTable, block);
    }
    return 0;
}

unsigned long long CFileAccess::write(CVTCmdData& record, unsigned long long time, bool isChannelRangeDef)
{
    AppendRecord(record, time, isChannelRangeDef);
    return 0;
}

void CFileAccess::AppendRecord(const CVTCmdData& record, std::uint64_t time, bool isChannelRangeDef)
{
    OutputFile* output = d->goodOutput();
    if (output == nullptr) {
        return;
    }
    std::uint64_t t = std::max(time, d->lastTime);
    const std::uint32_t length = record.strDataLen();
    if (length == 0) {
        d->lastTime = t;
        return;
    }
    Index::TimeIndex& index = *d->shared->index;
    bool free = !index.contains(t);
    while (!free && t < std::numeric_limits<std::uint64_t>::max()) {
        free = !index.contains(++t);
    }
    if (!free || !d->fits(static_cast<std::int64_t>(Format::MaxRecordHeadBytes) + length)) {
        d->refuse();
        return;
    }
    Journal* const journal = d->shared->journal.get();
    if (journal != nullptr) {
        output->fail(journal->makeRoom());
    }
    const auto position = static_cast<std::int32_t>(output->position());
    const std::string_view data(record.strData(), length);
    Blocks::appendRecord(*output, record.cmd(), data);
    if (!d->accept()) {
        return;
    }
    if (d->positions.firstRecord == 0) {
        d->positions.firstRecord = position;
    }
    index.add(t, position);
    if (isChannelRangeDef) {
        d->shared->channelRanges->add(t);
    }
    d->lastTime = t;
    if (journal != nullptr) {
        journal->accept(t, position, isChannelRangeDef, record.cmd(), data);
        if (d->shared->forced) {
            d->forceWhenDue();
        }
    }
}

unsigned long long CFileAccess::write(CHeaderData& header)
{
    OutputFile* output = d->goodOutput();
    if (output == nullptr) {
        return 0;
    }
    std::string block;
    Format::appendHeader(block, toRecord(header, d->positions));
    output->seek(0);
    output->append(block);
    return 0;
}

void CFileAccess::WriteTimeTable()
{
    OutputFile* output = d->goodOutput();
    if (output == nullptr || d->shared->index == nullptr || d->shared->index->empty() ||
        !d->begin(d->positions.timeTable)) {
        return;
    }
    const Index::TimeIndex& index = *d->shared->index;
    for (std::size_t rank = 0; rank < index.size(); ++rank) {
        const Index::TimeEntry entry = index.byTime(rank);
        Blocks::appendTimeEntry(*output, entry.time, entry.position);
    }
}

}  // namespace Recording2
