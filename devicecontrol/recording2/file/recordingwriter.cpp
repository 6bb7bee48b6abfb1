// Writing a new recording: its name while it is written, its blocks in their order, its name at last.
#include "recordingwriter.h"

#include <system_error>
#include <utility>

#include "blocks.h"

namespace Recording2 {

RecordingWriter::RecordingWriter(std::filesystem::path output, System::FileMode mode)
    : m_output(std::move(output)), m_mode(mode)
{
}

// Without a suffix that anybody takes for a recording.
System::Error RecordingWriter::begin(const std::string& types)
{
    for (int number = 1; m_file == nullptr || m_file->error() == System::NameTaken; ++number) {
        m_part = m_output;
        m_part += number == 1 ? std::string(".part") : ".part" + std::to_string(number);
        m_file = std::make_unique<OutputFile>(m_part, OpenMode::New, m_mode);
    }
    m_made = m_file->good();
    if (m_made && m_lock.open(m_part, System::Access::Read) == 0) {
        static_cast<void>(m_lock.lock());  // of a file that was made just now
    }
    m_file->append(Format::headerArea());
    m_positions.typeTable = types.empty() ? 0 : Format::HeaderAreaBytes;
    m_file->append(types);
    return m_file->error();
}

void RecordingWriter::add(std::int32_t code, std::string_view data)
{
    if (m_file->position() > Format::LastPosition) {
        m_file->fail(System::FileTooLarge);
    }
    m_starts.push_back(static_cast<std::int32_t>(m_file->position()));
    Blocks::appendRecord(*m_file, code, data);
}

void RecordingWriter::end(Format::HeaderRecord& header, const ClosingTables& tables)
{
    m_positions.firstRecord = m_starts.empty() ? 0 : m_starts.front();
    bool leftOut = false;
    Blocks::appendTimeTable(*m_file, {m_positions.timeTable, leftOut}, m_starts.size(), [&](std::size_t i) {
        return Index::TimeEntry{tables.times[i], m_starts[i]};
    });
    Blocks::appendChannelRanges(*m_file, {m_positions.channelRangeTable, leftOut}, tables.ranges);
    Blocks::appendBookmarks(*m_file, {m_positions.bookmarkTable, leftOut}, tables.bookmarks);
    if (leftOut) {
        m_file->fail(System::FileTooLarge);
    }
    m_bytes = m_file->position();
    header.positions = m_positions;
    m_file->seek(0);
    m_file->append(Format::headerArea(header));
}

System::Error RecordingWriter::close(bool fsync)
{
    if (fsync) {
        m_file->fsync();
    }
    m_file->close();
    return m_file->error();
}

System::Error RecordingWriter::takeName(bool replace)
{
    const System::Error error =
        replace ? System::renameReplacing(m_part, m_output) : System::renameToNew(m_part, m_output);
    m_made = m_made && error != 0;
    return error;
}

System::Error RecordingWriter::discard()
{
    m_file.reset();
    m_lock.close();
    return std::exchange(m_made, false) ? System::removeFile(m_part) : 0;
}

}  // namespace Recording2
