// Channel range definitions: which records describe the channels that the receiver was set to.
#include <string_view>

#include "fileaccess.h"
#include "fileaccess_p.h"
#include "format/layout.h"

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

void CFileAccess::CRDTableToBegin()
{
    if (d->shared->channelRangeTimes != nullptr) {
        d->channelRangeCursor.toBegin(*d->shared->channelRangeTimes);
    }
}

bool CFileAccess::readNextChannelRangeDef(CVTCmdData& cmd, unsigned long long& time)
{
    constexpr unsigned long long InitialStateTime = 10;
    if (d->shared->channelRangeTimes == nullptr || d->channelRangeCursor.atEnd()) {
        return false;
    }
    const std::set<std::uint64_t>& times = *d->shared->channelRangeTimes;
    const auto definition = d->channelRangeCursor.in(times);
    if (definition == times.end()) {
        return false;
    }
    const auto exists = [&](std::uint64_t t) { return d->shared->index != nullptr && d->shared->index->contains(t); };
    time = *definition;
    // The first definition of a recording may have been moved off the time of the initial states.
    std::uint64_t t = time == InitialStateTime + 1 && exists(InitialStateTime) ? InitialStateTime : time;
    // Records of one moment stand at consecutive milliseconds: the range may be in any of them.
    for (bool more = true; more; more = exists(++t)) {
        read(cmd, static_cast<unsigned long long>(t));
        if (carriesChannelRange(cmd)) {
            time = t;
            break;
        }
    }
    d->channelRangeCursor.advance(times);
    return !d->channelRangeCursor.atEnd();
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
        output->seek(d->positions.channelRangeTable);
    }
    if (!d->begin(d->positions.channelRangeTable)) {
        return;
    }
    for (const std::uint64_t time : *d->shared->channelRangeTimes) {
        output->commit(Format::putTime(output->reserve(), time));
    }
}

// Without a table the position is 0 and the file is overwritten from its start: callers ask channelRangeDefAvailable.
void CFileAccess::clearChannelRangeDef()
{
    if (d->goodInput() == nullptr) {
        return;
    }
    if (OutputFile* output = OpenForUpdate()) {
        output->seekToEnd();
        const std::int64_t bound =
            d->positions.bookmarkTable == 0 ? output->position() : std::int64_t{d->positions.bookmarkTable};
        output->seek(d->positions.channelRangeTable);
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
