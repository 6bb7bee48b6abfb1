// Lines of CSV, one a level or number, as tables of statistics programs want them.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <values/maps.h>

#include "export.h"
#include "exporttime.h"

namespace RecTool {

class CsvLong {
public:
    CsvLong(NewFile& file, ExportedRecords& records, ExportTime time);

    void add(const PlacedRecord& placed, const values::ValueBase& value);
    [[nodiscard]] std::uint64_t lines() const { return m_lines; }

private:
    /// The texts of a range's frequencies, each with the comma behind it, one after the other.
    struct Frequencies {
        values::ChannelRange range;
        std::string texts;
        std::vector<std::size_t> ends;

        void take(const values::ChannelRange& newRange);
    };
    void addLevels(const TrackType& type, const LevelMap& map);

    NewFile& m_file;
    ExportedRecords& m_records;
    ExportTime m_time;
    std::map<std::pair<std::size_t, std::int32_t>, Frequencies> m_frequencies;
    std::string m_begin;  // of the record's lines
    std::string m_text;
    std::uint64_t m_lines = 0;
};

}  // namespace RecTool
