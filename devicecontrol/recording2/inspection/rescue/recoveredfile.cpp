// Writing what was recovered: records, the tables that closing writes, and only then the name.
#include "recoveredfile.h"

#include <algorithm>

#include "../filename.h"
#include "../verify/verification.h"

namespace Recording2::Inspection {

RecoveredFile::RecoveredFile(const std::string& output, System::FileMode mode)
    : m_output(output), m_mode(mode | OwnerReadsAndWrites)
{
}

RecoveredFile::~RecoveredFile()
{
    m_file.reset();
    if (m_made) {
        System::removeFile(native(m_part));
    }
}

void RecoveredFile::begin(const std::string& types)
{
    makePart();
    static_cast<void>(m_file->lock());  // whoever looks for parts that are left lets it be
    m_file->append(Format::headerArea());
    m_positions.typeTable = types.empty() ? 0 : here();
    m_file->append(types);
}

void RecoveredFile::add(const Record& record, std::optional<std::uint64_t> time, bool channelRange)
{
    if (m_positions.firstRecord == 0) {
        m_positions.firstRecord = here();
    }
    m_starts.push_back(here());
    m_times.push_back(time);
    m_ranges.push_back(channelRange);
    m_file->commit(
        Format::putRecordHead(m_file->reserve(), record.code, static_cast<std::uint32_t>(record.data.size())));
    m_file->append(record.data);
}

RepairedTimes RecoveredFile::end(Found& found, std::uint64_t periodMs)
{
    RepairedTimes times = repairTimes(m_times, found.lengthMs, periodMs);
    writeTables(times.times);
    if (!found.stopKnown && !times.times.empty()) {
        found.header.stopMs = found.header.startMs + times.times.back();
    }
    found.header.positions = m_positions;
    std::string record;
    Format::appendHeader(record, found.header);
    m_bytes = m_file->position();
    m_file->seek(0);
    m_file->append(record);
    m_file->force();
    m_file->close();
    return times;
}

std::string RecoveredFile::finish()
{
    if (!m_file->good()) {
        return System::errorText(m_file->error()) + '.';
    }
    const Verification read = verify(m_part);
    if (read.readability != Readability::Ok || read.records != records()) {
        return "Read back, it does not hold what was written.";
    }
    const System::Error error = System::renameToNew(native(m_part), native(m_output));
    if (error != 0) {
        return "It cannot be given its name: " + System::errorText(error) + '.';
    }
    m_made = false;
    return "";
}

// Without a suffix that anybody takes for a recording.
void RecoveredFile::makePart()
{
    m_part = m_output + ".part";
    int number = 1;
    do {
        m_file = std::make_unique<OutputFile>(native(m_part), OpenMode::New, m_mode);
        m_made = m_file->good();
        m_part = m_made ? m_part : m_output + ".part" + std::to_string(++number);
    } while (m_file->error() == System::NameTaken);
}

std::int32_t RecoveredFile::here() const
{
    return static_cast<std::int32_t>(std::min(m_file->position(), Format::LastPosition));
}

void RecoveredFile::writeTables(const std::vector<std::uint64_t>& times)
{
    m_positions.timeTable = times.empty() ? 0 : here();
    for (std::size_t i = 0; i < times.size(); ++i) {
        m_file->commit(Format::putTimeEntry(m_file->reserve(), times[i], m_starts[i]));
    }
    for (std::size_t i = 0; i < times.size(); ++i) {
        if (!m_ranges[i]) {
            continue;
        }
        m_positions.channelRangeTable = m_positions.channelRangeTable == 0 ? here() : m_positions.channelRangeTable;
        m_file->commit(Format::putTime(m_file->reserve(), times[i]));
    }
}

}  // namespace Recording2::Inspection
