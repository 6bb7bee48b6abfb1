// Reading the records of a finished recording: one after the other, by time, by type.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

#include "../format/cursor.h"
#include "../format/layout.h"
#include "../index/timeindex.h"
#include "files.h"

namespace Recording2 {

class CVTCmdData;

/// A file that is read, with the cursor into it.
struct OpenInput {
    explicit OpenInput(const std::filesystem::path& path) : file(path), cursor(file) {}
    [[nodiscard]] bool good() const { return file.good() && !cursor.atEnd(); }

    InputFile file;
    Format::Cursor cursor;
};

/// Reads where the file stands, or goes to a time before. "The time here" is that of the record which begins here, 0
/// when none does. Made for one call and given away with it; what is without a file or at the end of it reads nothing.
class RecordReader {
public:
    /// @param input may be null, as may be the index; both must outlive the reader
    RecordReader(OpenInput* input, const Index::TimeIndex* index, const Format::Positions& positions)
        : m_input(input), m_index(index), m_positions(positions)
    {
    }

    std::uint64_t read(CVTCmdData& record);  ///< wherever it ends. @return the time here, after it
    std::uint64_t readAndReturnItsTime(CVTCmdData& record);
    /// Reads the record at the time, else the first later one, else the last; 0: the one here.
    /// @return the time here, after it; 0 at the end of the records
    std::uint64_t read(CVTCmdData& record, std::uint64_t time) { return readAt(record, time) > 0 ? timeHere() : 0; }
    /// The same. @return the length of its data that the file states
    std::int32_t readAt(CVTCmdData& record, std::uint64_t time);

    std::uint64_t readFirst(CVTCmdData& record);                       ///< @return the time here, after it
    std::uint64_t readFirst(CVTCmdData& record, std::int32_t code);    ///< @return its time
    std::uint64_t readNext(CVTCmdData& record, std::int32_t code);     ///< @return its time
    std::uint64_t readBefore(CVTCmdData& record, std::uint64_t time);  ///< @return its time

    [[nodiscard]] bool atEnd() const;  ///< of the records
    [[nodiscard]] bool hasRecordAt(std::uint64_t time) const { return m_index != nullptr && m_index->contains(time); }
    /// Whether the record that was just read is as a sound file has it: it stands under its time and ends where the
    /// next one begins. Then all records together are no longer than the file.
    [[nodiscard]] bool isAsIndexed(std::uint64_t time, std::int64_t bytes) const;
    [[nodiscard]] std::int64_t bytesRead() const { return m_bytesRead; }  ///< by time
    [[nodiscard]] std::int64_t fileSize() const { return m_input == nullptr ? 0 : m_input->file.size(); }

private:
    [[nodiscard]] bool good() const { return m_input != nullptr && m_input->good(); }
    enum class Way { InOrder, ByTime };
    std::int32_t readHere(CVTCmdData& record, Way way);
    [[nodiscard]] std::uint64_t timeHere() const;

    OpenInput* m_input;
    const Index::TimeIndex* m_index;
    const Format::Positions& m_positions;
    std::int64_t m_bytesRead = 0;
};

/// Adds the pairs of the time table to the index, up to the table after it or the end of the file.
void readTimeTable(OpenInput& input, const Format::Positions& positions, Index::TimeIndex& index);

}  // namespace Recording2
