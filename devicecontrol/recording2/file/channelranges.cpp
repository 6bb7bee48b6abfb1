// The search for the record of a definition among those of its moment.
#include "channelranges.h"

#include <limits>
#include <string_view>

#include "../recordmodel.h"

namespace Recording2 {

namespace {

// How a record that carries a channel range is known.
bool carriesChannelRange(const CVTCmdData& record)
{
    return std::string_view(record.strData(), record.strDataLen()).find("34;") != std::string_view::npos;
}

}  // namespace

void RangeWalk::startAnew()
{
    m_moment = {};
    m_damagedBytes = 0;
}

bool RangeWalk::next(const std::set<std::uint64_t>& ranges, RecordReader& reader, CVTCmdData& record,
                     unsigned long long& time)
{
    constexpr unsigned long long InitialStateTime = 10;
    const std::uint64_t* const definition = m_place.in(ranges);
    if (definition == nullptr || readTooMuch(reader)) {
        return false;
    }
    time = *definition;
    // The first definition of a recording may have been moved off the time of the initial states.
    const bool atInitialState = time == InitialStateTime + 1 && reader.hasRecordAt(InitialStateTime);
    std::uint64_t t = atInitialState ? InitialStateTime : time;
    readFrom(reader, t, record);
    if (carriesChannelRange(record)) {
        time = t;
    }
    m_place.advance(ranges);
    return !m_place.atEnd();
}

// Sound records together are no longer than the file: what is damaged is bounded.
bool RangeWalk::readTooMuch(const RecordReader& reader) const
{
    constexpr std::int64_t MostPasses = 16;
    return m_damagedBytes > 0 && m_damagedBytes > MostPasses * reader.fileSize();
}

bool RangeWalk::read(RecordReader& reader, CVTCmdData& record, std::uint64_t time)
{
    const std::int64_t bytesBefore = reader.bytesRead();
    const bool hasData = reader.readAt(record, time) > 0;
    const std::int64_t bytes = reader.bytesRead() - bytesBefore;
    if (bytes > 0 && !reader.isAsIndexed(time, bytes)) {
        m_damagedBytes += bytes;
    }
    return hasData;
}

// Reads from a time on up to the record that carries a channel range, or the last one of the moment. Records of one
// moment stand at consecutive milliseconds: the range may be in any of them. Several definitions may name one moment,
// whose records are then not looked through again.
void RangeWalk::readFrom(RecordReader& reader, std::uint64_t& time, CVTCmdData& record)
{
    const bool hasData = read(reader, record, time);
    if (carriesChannelRange(record)) {
        return;
    }
    if (m_moment.covers(time)) {
        for (const std::uint64_t other : {m_moment.lastRead, m_moment.last}) {
            if (other > time) {
                read(reader, record, other);
                time = other;
            }
        }
        return;
    }
    m_moment = {time, time, hasData ? time : 0};
    while (time < std::numeric_limits<std::uint64_t>::max() && reader.hasRecordAt(time + 1) &&
           !carriesChannelRange(record) && !readTooMuch(reader)) {
        ++time;
        m_moment.last = time;
        m_moment.lastRead = read(reader, record, time) ? time : m_moment.lastRead;
    }
}

}  // namespace Recording2
