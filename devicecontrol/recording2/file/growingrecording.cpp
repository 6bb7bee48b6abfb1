// Appending records, each of them whole or not at all, and what closes the file.
#include "growingrecording.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "blocks.h"

namespace Recording2 {

GrowingRecording::GrowingRecording(const std::filesystem::path& path, OpenMode mode, System::FileMode fileMode,
                                   RecordingTables& tables)
    : m_path(path), m_tables(tables), m_file(path, mode, fileMode)
{
}

void GrowingRecording::keepJournal(std::unique_ptr<Journal> journal, bool fsyncs)
{
    m_journal = std::move(journal);
    m_file.keepTailIn(m_journal.get());
    m_fsyncs = fsyncs;
    m_lastFsync = std::chrono::steady_clock::now();
}

void GrowingRecording::begin()
{
    m_file.append(Format::headerArea());
    m_file.flush();
    m_acceptedEnd = m_file.position();
}

// The tables must fit after the records too, or a full file could not be read by time.
bool GrowingRecording::fits(std::int64_t bytes) const
{
    const auto records = static_cast<std::int64_t>(m_tables.index->size()) + 1;
    const auto ranges = static_cast<std::int64_t>(m_tables.channelRanges.size()) + 1;
    const std::int64_t tables = records * Format::WidestTimeEntryBytes + ranges * std::int64_t{Format::TimeBytes};
    return bytes + tables <= Format::LastPosition - m_file.position();
}

// Whether what was appended is whole; it is then part of the recording.
bool GrowingRecording::accept()
{
    if (!m_file.good()) {
        return false;
    }
    m_acceptedEnd = m_file.position();
    return true;
}

void GrowingRecording::appendTypes(CopyState& own, const std::string& block)
{
    if (!m_file.good()) {
        return;
    }
    if (!fits(static_cast<std::int64_t>(block.size()))) {
        own.leftOut = true;
        return;
    }
    const auto position = static_cast<std::int32_t>(m_file.position());
    m_file.append(block);
    if (!accept() || own.positions.typeTable != 0) {
        return;
    }
    own.positions.typeTable = position;
    if (m_journal != nullptr) {
        m_journal->setTypes(position, block);
    }
}

void GrowingRecording::append(CopyState& own, std::int32_t code, std::string_view data, std::uint64_t time,
                              bool channelRange)
{
    if (!m_file.good()) {
        return;
    }
    std::uint64_t t = std::max(time, own.lastTime);
    if (data.empty()) {
        own.lastTime = t;
        return;
    }
    Index::TimeIndex& index = *m_tables.index;
    bool free = !index.contains(t);
    while (!free && t < std::numeric_limits<std::uint64_t>::max()) {
        free = !index.contains(++t);
    }
    if (!free || !fits(static_cast<std::int64_t>(Format::MaxRecordHeadBytes + data.size()))) {
        own.leftOut = true;
        return;
    }
    if (m_journal != nullptr) {
        m_file.fail(m_journal->makeRoom());
    }
    const auto position = static_cast<std::int32_t>(m_file.position());
    Blocks::appendRecord(m_file, code, data);
    if (!accept()) {
        return;
    }
    if (own.positions.firstRecord == 0) {
        own.positions.firstRecord = position;
    }
    index.add(t, position);
    if (channelRange) {
        m_tables.channelRanges.insert(t);
    }
    own.lastTime = t;
    if (m_journal != nullptr) {
        m_journal->accept(t, position, channelRange, code, data);
        if (m_fsyncs) {
            fsyncWhenDue();
        }
    }
}

void GrowingRecording::fsyncWhenDue()
{
    constexpr std::chrono::seconds Interval(1);
    const auto now = std::chrono::steady_clock::now();
    if (now - m_lastFsync < Interval) {
        return;
    }
    m_lastFsync = now;
    m_file.fsync();  // first the data, or the journal would promise what the device does not have
    if (m_file.good()) {
        m_file.fail(m_journal->fsync());
    }
}

void GrowingRecording::resume()
{
    if (m_journal != nullptr) {
        m_journal->giveBackReserve();  // should this fail and space be short, writing the tables fails and tells
    }
    if (!m_file.good()) {
        m_file.resumeAt(m_acceptedEnd);
        m_resumed = true;
    }
}

void GrowingRecording::writeTables(CopyState& own)
{
    const Index::TimeIndex& index = *m_tables.index;
    Blocks::appendTimeTable(m_file, {own.positions.timeTable, own.leftOut}, index.size(),
                            [&](std::size_t rank) { return index.byTime(rank); });
    Blocks::appendChannelRanges(m_file, {own.positions.channelRangeTable, own.leftOut}, m_tables.channelRanges);
    if (m_resumed) {
        m_file.endHere();
    }
}

void GrowingRecording::writeHeader(const Format::HeaderRecord& header)
{
    if (!m_file.good()) {
        return;
    }
    std::string block;
    Format::appendHeader(block, header);
    m_file.seek(0);
    m_file.append(block);
}

void GrowingRecording::flush()
{
    if (m_fsyncs) {
        m_file.fsync();
    }
    m_file.flush();
}

bool GrowingRecording::close()
{
    return m_file.close();
}

void GrowingRecording::journalHeader(const Format::Positions& positions, Format::HeaderRecord header)
{
    if (m_journal != nullptr) {
        header.positions = positions;
        std::string record;
        Format::appendHeader(record, header);
        m_journal->setHeader(record);
    }
}

void GrowingRecording::journalStopTime(std::uint64_t milliseconds)
{
    if (m_journal != nullptr) {
        m_journal->setStopTime(milliseconds);
    }
}

System::Error GrowingRecording::removeJournal()
{
    if (m_journal == nullptr) {
        return 0;
    }
    const std::filesystem::path directory = m_path.parent_path();
    System::Error error = m_fsyncs ? System::fsyncDirectory(directory.empty() ? "." : directory) : 0;
    if (error == 0) {
        error = m_journal->remove();
    }
    m_journal.reset();
    return error;
}

}  // namespace Recording2
