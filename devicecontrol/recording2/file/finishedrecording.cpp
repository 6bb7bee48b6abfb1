// Loading header and tables, and storing a change of them.
#include "finishedrecording.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>

#include "../format/layout.h"
#include "blocks.h"
#include "headerconversion.h"

namespace Recording2 {

namespace {

// Goes to a table that is to be rewritten. A position after the end of the file is a failure: everything between would
// have to be filled.
void seekToTable(OutputFile& output, std::int64_t position, std::int64_t end)
{
    constexpr std::int64_t Nowhere = -1;
    output.seek(position <= end ? position : Nowhere);
}

// Goes to a table that the file has; reading then begins with the first record.
template <typename Read>
void readTable(OpenInput* input, std::int32_t table, std::int32_t firstRecord, const Read& read)
{
    if (table != 0 && input != nullptr) {
        input->cursor.seek(table);
        read(*input);
        input->cursor.seek(firstRecord);
    }
}

// Up to a bound, the first time that is 0 or negative, or the end of the file.
void readChannelRanges(Format::Cursor& cursor, std::int64_t bound, std::set<std::uint64_t>& times)
{
    std::uint64_t time = 0;
    while (!cursor.atEnd() && cursor.position() < bound) {
        cursor.readTime(time);
        if (static_cast<std::int64_t>(time) <= 0) {
            break;
        }
        times.insert(time);
    }
}

// Up to the end of the file.
void readBookmarks(Format::Cursor& cursor, std::map<std::uint64_t, std::string>& bookmarks)
{
    std::uint64_t time = 0;
    std::string text;
    while (!cursor.atEnd()) {
        std::int64_t length = 0;  // what a longer table left may end within an entry: that has no text either
        cursor.readTime(time);
        cursor.readNumber(length);
        if (length > 0) {
            cursor.readBytes(text, length);
            bookmarks.emplace(time, text);
        }
    }
}

}  // namespace

FinishedRecording::FinishedRecording(std::filesystem::path path, RecordingTables& tables)
    : m_path(std::move(path)), m_tables(tables), m_input(std::make_unique<OpenInput>(m_path))
{
}

bool FinishedRecording::begin(CopyState& own, bool readTables)
{
    constexpr int MostAgain = 10;  // when somebody changes the tables while they are read
    CHeaderData header;
    if (!m_input->good() || !readHeader(own, header)) {
        return false;
    }
    if (readTables) {
        loadTables(own);
        for (int again = 0; again < MostAgain && !m_input->file.isUnchanged(); ++again) {
            readAnew(own);
            readTablesAnew(own);
        }
    }
    return true;
}

Format::HeaderStatus FinishedRecording::tryHeader(CopyState& own, CHeaderData& header)
{
    Format::Cursor& cursor = m_input->cursor;
    const std::int64_t back = cursor.position();
    cursor.seek(0);
    Format::HeaderRecord record = toRecord(header, own.positions);
    record.majorVersion = 0;  // a version that cannot be read is none, whatever the object held
    record.minorVersion = 0;
    const Format::HeaderStatus status = Format::readHeader(cursor, record);
    if (status == Format::HeaderStatus::Ok) {
        fromRecord(record, header);
        own.positions = record.positions;
    }
    cursor.seek(back);
    return status;
}

bool FinishedRecording::readHeader(CopyState& own, CHeaderData& header)
{
    if (goodInput() == nullptr) {
        return false;
    }
    try {
        return tryHeader(own, header) == Format::HeaderStatus::Ok;
    } catch (const std::exception&) {
        own.valid = false;
        return false;
    }
}

void FinishedRecording::readTables(CopyState& own)
{
    if (goodInput() == nullptr) {
        return;
    }
    m_input->cursor.invalidate();  // another process may have stored a table
    CHeaderData header;
    if (readHeader(own, header)) {
        loadTables(own);
    }
}

void FinishedRecording::loadTables(CopyState& own)
{
    const Format::Positions& positions = own.positions;
    own.rangeWalk.startAnew();
    readTable(goodInput(), positions.timeTable, positions.firstRecord,
              [&](OpenInput& input) { readTimeTable(input, positions, *m_tables.index); });
    readTable(goodInput(), positions.channelRangeTable, positions.firstRecord, [&](OpenInput& input) {
        const std::int32_t bookmarks = positions.bookmarkTable;
        readChannelRanges(input.cursor, bookmarks == 0 ? Format::LastPosition : bookmarks, m_tables.channelRanges);
    });
    readTable(goodInput(), positions.bookmarkTable, positions.firstRecord,
              [&](OpenInput& input) { readBookmarks(input.cursor, m_tables.bookmarks); });
    m_tablesCut = m_input->file.readFailed();
}

// What the object holds is then what the file holds.
void FinishedRecording::readTablesAnew(CopyState& own)
{
    m_tables = RecordingTables();
    own.bookmarksChanged = false;
    readTables(own);
}

// Who changes the file by what was read of it must not go by less than it holds.
void FinishedRecording::failIfNotRead()
{
    if (m_together && (m_input == nullptr || !m_input->file.good() || m_input->file.readFailed())) {
        m_output->fail(System::CannotRead);
    }
}

// Of changes made together one that cannot be made is the failure of all.
bool FinishedRecording::canChange()
{
    const bool can = goodInput() != nullptr && !m_tablesCut;
    if (!can && m_together) {
        m_output->fail(System::CannotRead);
    }
    return can;
}

// Once it is this object's turn, reading shows the file as it is, with what was changed so far.
OutputFile* FinishedRecording::openForUpdate(CopyState& own)
{
    if (!m_together) {
        m_input.reset();
        m_output = std::make_unique<OutputFile>(m_path, OpenMode::Update);
        readAnew(own);
    }
    return goodOutput();
}

// Stores what was changed, or leaves that to whoever changes more.
bool FinishedRecording::reopenForReading(CopyState& own)
{
    bool stored = goodOutput() != nullptr;
    if (!m_together) {
        stored = stored && m_output->close();
        m_output.reset();
    }
    readAnew(own);
    return stored;
}

void FinishedRecording::readAnew(CopyState& own)
{
    own.rangeWalk.startAnew();
    failIfNotRead();
    m_input = std::make_unique<OpenInput>(m_path);
    failIfNotRead();
    if (goodOutput() != nullptr) {
        m_output->flush();
        m_input->file.show(m_output->changed());
    }
}

// Not a recording is left alone, and one that is being written is not waited for.
void FinishedRecording::requireHeader(CopyState& own, CHeaderData& header)
{
    m_input->cursor.invalidate();
    if (tryHeader(own, header) != Format::HeaderStatus::Ok) {
        throw std::runtime_error("no readable header");
    }
}

// The header area is written whole with the record in it.
ChangeResult FinishedRecording::rewrite(CopyState& own, const std::function<void(OutputFile&)>& write)
{
    if (!canChange()) {
        return ChangeResult::None;
    }
    const Format::Positions positions = own.positions;
    bool stored = false;
    try {
        CHeaderData header;
        requireHeader(own, header);
        if (OutputFile* output = openForUpdate(own)) {
            requireHeader(own, header);  // another process may have stored a table meanwhile
            write(*output);
            if (output->good()) {
                Format::HeaderRecord record = toRecord(header, own.positions);
                Format::endTextsAtNul(record);  // else the file would be lost
                output->seek(0);
                output->append(Format::headerArea(record));
            }
        }
        stored = reopenForReading(own);
    } catch (const std::exception&) {
        discardChange(own);
    }
    if (!stored) {
        own.positions = positions;
    }
    return stored ? ChangeResult::Stored : ChangeResult::Failed;
}

void FinishedRecording::discardChange(CopyState& own)
{
    if (m_output == nullptr) {
        return;
    }
    if (m_together) {
        m_output->fail(System::InvalidPosition);
    } else {
        m_output.reset();
    }
    readAnew(own);
}

ChangeResult FinishedRecording::storeBookmarks(CopyState& own)
{
    const ChangeResult result = rewrite(own, [&](OutputFile& output) { writeBookmarks(own, output); });
    own.bookmarksChanged = own.bookmarksChanged && result != ChangeResult::Stored;
    return result;
}

void FinishedRecording::writeBookmarks(CopyState& own, OutputFile& output)
{
    output.seekToEnd();
    const std::int64_t end = output.position();
    std::int32_t& position = own.positions.bookmarkTable;
    if (position != 0) {
        seekToTable(output, position, end);
    }
    Blocks::appendBookmarks(output, {position, own.leftOut}, m_tables.bookmarks);
    // What the old table had more than the new one reads as entries without a text.
    while (output.good() && output.position() < end) {
        output.append({"0", 1});
    }
}

ChangeResult FinishedRecording::storeChannelRanges(CopyState& own)
{
    return rewrite(own, [&](OutputFile& output) { writeChannelRanges(own, output); });
}

void FinishedRecording::writeChannelRanges(CopyState& own, OutputFile& output)
{
    output.seekToEnd();
    if (!output.good() || m_tables.channelRanges.empty()) {
        return;
    }
    std::int32_t& position = own.positions.channelRangeTable;
    if (position != 0) {
        seekToTable(output, position, output.position());
    }
    Blocks::appendChannelRanges(output, {position, own.leftOut}, m_tables.channelRanges);
}

void FinishedRecording::clearChannelRanges(CopyState& own)
{
    if (!canChange()) {
        return;
    }
    if (OutputFile* output = openForUpdate(own)) {
        CHeaderData header;  // another object may have stored a table meanwhile; one that cannot be read tells nothing
        m_input->cursor.invalidate();
        static_cast<void>(readHeader(own, header));
        output->seekToEnd();
        const std::int64_t end = output->position();
        const std::int32_t bookmarks = own.positions.bookmarkTable;
        const std::int64_t bound = bookmarks == 0 ? end : std::min<std::int64_t>(end, bookmarks);
        seekToTable(*output, own.positions.channelRangeTable, end);
        while (output->good() && output->position() < bound) {
            output->commit(Format::putInt64(output->reserve(), 0));
        }
    }
    m_tables.channelRanges.clear();
    reopenForReading(own);
}

bool FinishedRecording::changeTogether(CopyState& own, const std::function<void()>& change,
                                       const std::function<void()>& readBack)
{
    if (goodInput() == nullptr || m_together) {
        return false;
    }
    CHeaderData header;
    m_input->cursor.invalidate();
    if (tryHeader(own, header) != Format::HeaderStatus::Ok) {  // one that is being written is not waited for
        return false;
    }
    bool stored = false;
    std::exception_ptr thrown;
    try {
        if (openForUpdate(own) != nullptr) {
            m_together = true;
            readTablesAnew(own);
            if (canChange()) {
                change();
                failIfNotRead();
                stored = m_output->store();
            }
            if (stored && readBack) {
                readBack();
            }
        }
    } catch (...) {
        thrown = std::current_exception();
    }
    m_together = false;
    m_output.reset();
    readAnew(own);
    readTablesAnew(own);
    if (thrown != nullptr) {
        std::rethrow_exception(thrown);
    }
    return stored;
}

}  // namespace Recording2
