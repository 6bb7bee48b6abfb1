// Records at the cursor or at a time, and the time table that says where they are.
#include "recordreader.h"

#include <algorithm>
#include <string>

#include <system/nativefile.h>

#include "../recordmodel.h"

namespace Recording2 {

// A damaged length below 0 is a record without data, but none for who reads by time.
std::int32_t RecordReader::readHere(CVTCmdData& record, Way way)
{
    Format::RecordHead head;
    Format::readRecordHead(m_input->cursor, head);
    if (way == Way::InOrder ? head.dataLength != 0 : head.dataLength > 0) {
        record.set_cmd(head.code);
    }
    if (head.dataLength > 0) {
        m_input->cursor.readBytes(record.m_data, head.dataLength);
    }
    return head.dataLength;
}

std::uint64_t RecordReader::timeHere() const
{
    return m_input->cursor.atEnd() || m_index == nullptr ? 0 : m_index->timeAt(m_input->cursor.position());
}

std::uint64_t RecordReader::read(CVTCmdData& record)
{
    if (!good()) {
        return 0;
    }
    readHere(record, Way::InOrder);
    return timeHere();
}

std::uint64_t RecordReader::readAndReturnItsTime(CVTCmdData& record)
{
    if (!good()) {
        return 0;
    }
    const std::uint64_t time = timeHere();
    readHere(record, Way::InOrder);
    return time;
}

std::int32_t RecordReader::readAt(CVTCmdData& record, std::uint64_t time)
{
    if (!good()) {
        return 0;
    }
    if (time != 0 && m_index != nullptr) {
        if (const auto entry = m_index->atOrAfterOrLast(time)) {
            m_input->cursor.seek(entry->position);
        }
    }
    if (atEnd()) {
        return 0;
    }
    const std::int64_t begin = m_input->cursor.position();
    const std::int32_t length = readHere(record, Way::ByTime);
    m_bytesRead += m_input->cursor.position() - begin;
    return length;
}

bool RecordReader::atEnd() const
{
    return !good() || m_input->cursor.position() >= m_positions.timeTable;
}

bool RecordReader::isAsIndexed(std::uint64_t time, std::int64_t bytes) const
{
    const std::int64_t end = m_input->cursor.position();
    const auto rank = m_index == nullptr ? std::nullopt : m_index->rankOf(end - bytes);
    if (!rank || !hasRecordAt(time)) {
        return false;
    }
    const auto next = m_index->byPosition(*rank + 1);
    return end <= (next ? next->position : m_positions.timeTable);
}

std::uint64_t RecordReader::readFirst(CVTCmdData& record)
{
    if (!good() || m_index == nullptr || !m_index->rankOf(m_positions.firstRecord)) {
        return 0;
    }
    return read(record, m_index->timeAt(m_positions.firstRecord));
}

std::uint64_t RecordReader::readFirst(CVTCmdData& record, std::int32_t code)
{
    constexpr std::uint64_t GiveUpFrom = 100;  // a time, not a count: callers depend on it
    if (!good() || m_index == nullptr) {
        return 0;
    }
    const std::int64_t mostBytes = 2 * fileSize();  // an entry at time 0 reads what is at the cursor once more
    auto rank = m_index->rankOf(m_positions.firstRecord);
    if (!rank) {
        return 0;
    }
    std::uint64_t following = 0;
    for (auto entry = m_index->byPosition(*rank); entry && following < GiveUpFrom;
         entry = m_index->byPosition(++*rank)) {
        following = read(record, entry->time);
        if (code == 0 || code == record.cmd()) {
            if (const auto previous = m_index->before(following)) {
                return previous->time;
            }
        }
        if (m_bytesRead > mostBytes) {  // records of a damaged index overlap: there may be no end to them
            return 0;
        }
    }
    return 0;
}

std::uint64_t RecordReader::readNext(CVTCmdData& record, std::int32_t code)
{
    if (m_index == nullptr) {
        return 0;
    }
    for (;;) {
        const std::uint64_t following = read(record, 0);
        if (record.cmd() == code) {
            if (const auto previous = m_index->before(following)) {
                return previous->time;
            }
        }
        if (following == 0) {
            return 0;
        }
    }
}

std::uint64_t RecordReader::readBefore(CVTCmdData& record, std::uint64_t time)
{
    if (!good() || m_index == nullptr) {
        return 0;
    }
    const auto previous = m_index->before(time);
    if (!previous) {
        return 0;
    }
    read(record, previous->time);
    return previous->time;
}

namespace {

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

void readTimeTable(OpenInput& input, const Format::Positions& positions, Index::TimeIndex& index)
{
    input.cursor.seek(positions.timeTable);
    const std::int64_t bound = positions.channelRangeTable == 0 ? Format::LastPosition : positions.channelRangeTable;
    for (const auto memory : index.reserve(mostTimeEntries(positions, std::min(bound, input.file.size())))) {
        System::expectUse(memory);
    }
    Format::readTimeEntries(input.cursor, bound,
                            [&](std::uint64_t time, std::int32_t position) { index.add(time, position); });
}

}  // namespace Recording2
