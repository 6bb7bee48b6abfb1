// What a recording file really holds, byte by byte: for the tools of this project only, not installed.
//
// Unlike CFileAccess, which reads a file as replay needs it, this reports what is written and where, checks it and
// tells damage from absence. Memory: the time table (16 bytes a record); records are walked one at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "../format/layout.h"

namespace Recording2::Inspection {

/// Why a file cannot be read at all, or Ok. Ok does not mean sound: see the findings.
enum class Readability : std::uint8_t {
    Ok,
    Missing,      ///< there is no such file
    Unreadable,   ///< a directory, a device, or a file that could not be opened
    Empty,        ///< a file without any byte
    OldFormat,    ///< a recording whose major version is below 2
    NoRecording,  ///< something else
    Truncated,    ///< the file ends within its header
    NeverClosed,  ///< the header was never written; records may follow, their times are lost
};

using Header = Format::HeaderRecord;
using TypeEntry = Format::TypeEntryRecord;
using TimeEntry = Format::TimeEntryRecord;
/// Called now and then with the bytes that are done and the bytes in all; may be empty.
using Progress = std::function<void(std::int64_t, std::int64_t)>;

struct Bookmark {
    std::uint64_t timeMs = 0;
    std::string text;  ///< any bytes

    friend bool operator==(const Bookmark&, const Bookmark&) = default;
};

/// Where what could be read of each table ends, 0 for one that is absent or damaged.
struct TableEnds {
    std::int32_t header = 0;  ///< of its record, at most 500 in a sound file
    std::int64_t types = 0;
    std::int64_t times = 0;          ///< after the entry of the last record
    std::int64_t channelRanges = 0;  ///< after the last time; the zeros of an earlier table may follow
    std::int64_t bookmarks = 0;      ///< after the zeros of an earlier table
};

/// Something that a sound file would not show.
struct Finding {
    std::int64_t offset = 0;  ///< where in the file
    std::string text;         ///< one sentence in English
};

/// The header and the tables of a file, with every damage found in them.
struct Summary {
    Readability readability = Readability::Ok;
    std::string problem;  ///< one sentence when not Ok
    std::int64_t fileSize = 0;
    Header header;
    std::vector<std::int64_t> headerFields;  ///< their offsets, up to the first damaged one
    std::vector<TypeEntry> types;
    std::vector<TimeEntry> times;
    std::vector<std::uint64_t> channelRangeTimes;
    std::vector<Bookmark> bookmarks;
    TableEnds ends;
    std::vector<Finding> findings;
};

/// Reads header and tables. Never throws for what a file holds; lengths and counts written in the file are bounded by
/// the bytes that remain. path: in UTF-8 on Windows, and
/// elsewhere as the system has it; so are the other paths here.
Summary inspect(const std::string& path);

struct Record {
    std::int64_t position = 0;
    std::uint64_t timeMs = 0;  ///< from the time table; 0 when the table does not name this record
    std::int32_t code = 0;
    std::string data;
};

/// Reads the records one after the other in file order, from the first to the time table. After damaged bytes reading
/// goes on at the next record that the time table names. For a file that cannot be read there is no record.
class RecordReader {
public:
    /// @param summary of the same file; must outlive the reader
    RecordReader(const std::string& path, const Summary& summary);
    RecordReader(RecordReader&& other) noexcept;
    RecordReader& operator=(RecordReader&& other) noexcept;
    ~RecordReader();

    /// @return false when there is no further record; the record then holds nothing of use
    bool next(Record& record);
    [[nodiscard]] std::int64_t bytesRead() const;
    [[nodiscard]] std::int64_t bytesInAll() const;  ///< of all records
    /// What is damaged in the records so far, and, after the last one, how they differ from the time table.
    [[nodiscard]] const std::vector<Finding>& findings() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// Walks the records as RecordReader reads them. The record object is reused.
/// @param visit returns false to stop
/// @return what is damaged in the records, and, after a whole walk, how they differ from the time table
std::vector<Finding> walkRecords(const std::string& path, const Summary& summary,
                                 const std::function<bool(const Record&)>& visit, const Progress& progress = {});

}  // namespace Recording2::Inspection
