// Writing a new recording: its name while it is written, its blocks in their order, its name at last.
#include "recordingwriter.h"

#include <algorithm>
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
    m_positions.typeTable = types.empty() ? 0 : here();
    m_file->append(types);
    return m_file->error();
}

void RecordingWriter::add(std::int32_t code, std::string_view data)
{
    m_starts.push_back(here());
    Blocks::appendRecord(*m_file, code, data);
}

void RecordingWriter::end(Format::HeaderRecord& header, const ClosingTables& tables)
{
    if (!m_starts.empty()) {
        m_positions.firstRecord = m_starts.front();
        m_positions.timeTable = here();
    }
    for (std::size_t i = 0; i < m_starts.size(); ++i) {
        Blocks::appendTimeEntry(*m_file, tables.times[i], m_starts[i]);
    }
    m_positions.channelRangeTable = tables.ranges.empty() ? 0 : here();
    Blocks::appendTimes(*m_file, tables.ranges);
    m_positions.bookmarkTable = tables.bookmarks.empty() ? 0 : here();
    Blocks::appendBookmarks(*m_file, tables.bookmarks);
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

// What lies further shows when the file is read back.
std::int32_t RecordingWriter::here() const
{
    return static_cast<std::int32_t>(std::min(m_file->position(), Format::LastPosition));
}

}  // namespace Recording2
