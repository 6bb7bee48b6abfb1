// Channel range definitions: which records describe the channels that the receiver was set to.
#include <algorithm>
#include <limits>
#include <string_view>

#include "file/blocks.h"
#include "fileaccess.h"
#include "fileaccess_p.h"

namespace Recording2 {

namespace {

// How a record that carries a channel range is known.
bool carriesChannelRange(const CVTCmdData& record)
{
    return std::string_view(record.strData(), record.strDataLen()).find("34;") != std::string_view::npos;
}

}  // namespace

void CFileAccess::addChannelRangeDef(unsigned long long time)
{
    if (time != 0 && d->shared->channelRangeTimes != nullptr) {
        d->shared->channelRangeTimes->insert(time);
    }
}

bool CFileAccess::channelRangeDefAvailable() const
{
    return d->goodInput() != nullptr && d->shared->channelRangeTimes != nullptr && d->shared->index != nullptr &&
           d->positions.channelRangeTable != 0;
}

void CFileAccess::Private::startRanges()
{
    rangeScan = {};
    damagedRangeBytes = 0;
}

void CFileAccess::CRDTableToBegin()
{
    d->startRanges();
    if (d->shared->channelRangeTimes != nullptr) {
        d->channelRangeCursor.toBegin(*d->shared->channelRangeTimes);
    }
}

bool CFileAccess::readNextChannelRangeDef(CVTCmdData& cmd, unsigned long long& time)
{
    constexpr unsigned long long InitialStateTime = 10;
    if (d->shared->channelRangeTimes == nullptr || d->channelRangeCursor.atEnd() ||
        d->damagedRangeBytes > d->mostRangeBytes()) {
        return false;
    }
    const std::set<std::uint64_t>& times = *d->shared->channelRangeTimes;
    const auto definition = d->channelRangeCursor.in(times);
    if (definition == times.end()) {
        return false;
    }
    time = *definition;
    // The first definition of a recording may have been moved off the time of the initial states.
    std::uint64_t t = time == InitialStateTime + 1 && d->isIndexed(InitialStateTime) ? InitialStateTime : time;
    d->readRangeFrom(t, cmd);
    if (carriesChannelRange(cmd)) {
        time = t;
    }
    d->channelRangeCursor.advance(times);
    return !d->channelRangeCursor.atEnd();
}

bool CFileAccess::Private::isIndexed(std::uint64_t time) const
{
    return shared->index != nullptr && shared->index->contains(time);
}

std::int64_t CFileAccess::Private::mostRangeBytes()
{
    constexpr std::int64_t MostPasses = 16;
    return shared->input == nullptr ? 0 : MostPasses * shared->input->file.size();
}

// Whether a record that was read from one place up to here is as a sound file has it: it stands under its time and ends
// where the next one begins. Then all records together are no longer than the file.
bool CFileAccess::Private::isSoundForRange(std::uint64_t time, std::int64_t begin) const
{
    const auto rank = shared->index == nullptr ? std::nullopt : shared->index->rankOf(begin);
    if (!rank || !isIndexed(time)) {
        return false;
    }
    const auto next = shared->index->byPosition(*rank + 1);
    return shared->input->cursor.position() <= (next ? next->position : positions.timeTable);
}

bool CFileAccess::Private::readForRange(CVTCmdData& record, std::uint64_t time)
{
    const std::int64_t bytesBefore = bytesRead;
    const bool hasData = readAt(record, time) > 0;
    const std::int64_t bytes = bytesRead - bytesBefore;
    if (bytes > 0 && !isSoundForRange(time, shared->input->cursor.position() - bytes)) {
        damagedRangeBytes += bytes;
    }
    return hasData;
}

// Reads from a time on up to the record that carries a channel range, or the last one of the moment. Records of one
// moment stand at consecutive milliseconds: the range may be in any of them. Several definitions may name one moment,
// whose records are then not looked through again.
void CFileAccess::Private::readRangeFrom(std::uint64_t& time, CVTCmdData& record)
{
    const bool hasData = readForRange(record, time);
    if (carriesChannelRange(record)) {
        return;
    }
    if (rangeScan.covers(time)) {
        for (const std::uint64_t other : {rangeScan.lastRead, rangeScan.last}) {
            if (other > time) {
                readForRange(record, other);
                time = other;
            }
        }
        return;
    }
    rangeScan = {time, time, hasData ? time : 0};
    const std::int64_t most = mostRangeBytes();
    while (time < std::numeric_limits<std::uint64_t>::max() && isIndexed(time + 1) && !carriesChannelRange(record) &&
           damagedRangeBytes <= most) {
        ++time;
        rangeScan.last = time;
        rangeScan.lastRead = readForRange(record, time) ? time : rangeScan.lastRead;
    }
}

void CFileAccess::ReadCRDTable()
{
    if (!channelRangeDefAvailable()) {
        return;
    }
    Format::Cursor& cursor = d->shared->input->cursor;
    cursor.seek(d->positions.channelRangeTable);
    const std::int64_t bound = d->positions.bookmarkTable == 0 ? Format::LastPosition : d->positions.bookmarkTable;
    std::uint64_t time = 0;
    while (!cursor.atEnd() && cursor.position() < bound) {
        cursor.readTime(time);
        if (static_cast<std::int64_t>(time) <= 0) {
            break;
        }
        d->shared->channelRangeTimes->insert(time);
    }
    cursor.seek(d->positions.firstRecord);
}

void CFileAccess::WriteCRDTable()
{
    OutputFile* output = d->goodOutput();
    if (output == nullptr || d->shared->channelRangeTimes == nullptr || d->shared->channelRangeTimes->empty()) {
        return;
    }
    if (d->positions.channelRangeTable != 0) {
        seekToTable(*output, d->positions.channelRangeTable, output->position());
    }
    if (!d->begin(d->positions.channelRangeTable)) {
        return;
    }
    for (const std::uint64_t time : *d->shared->channelRangeTimes) {
        Blocks::appendTime(*output, time);
    }
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
    if (d->shared->channelRangeTimes != nullptr) {
        d->shared->channelRangeTimes->clear();
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
