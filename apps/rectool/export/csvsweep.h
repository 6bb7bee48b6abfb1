// CSV as sweep programs of receivers write it, a sweep a record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <values/maps.h>

#include "export.h"
#include "exporttime.h"

namespace RecTool {

/// The rows of a sweep: channels that lie side by side are one. A channel is the middle of its bin.
class SweepRows {
public:
    struct Row {
        std::vector<std::size_t> channels;  ///< ascending by frequency
        std::string band;                   ///< "lowest, highest, bin width, samples" as the row has it
    };

    /// @return why the form cannot hold the range; empty when it can
    [[nodiscard]] std::string take(const values::ChannelRange& range);
    [[nodiscard]] const std::vector<Row>& rows() const { return m_rows; }
    [[nodiscard]] double lowHz() const { return m_lowHz; }
    [[nodiscard]] double highHz() const { return m_highHz; }

private:
    void close(const values::ChannelRange& range, double widthHz);

    std::vector<Row> m_rows;
    double m_lowHz = 0;
    double m_highHz = 0;
};

class CsvSweep {
public:
    CsvSweep(NewFile& file, ExportedRecords& records, ExportTime time)
        : m_file(file), m_records(records), m_time(std::move(time))
    {
    }

    /// What is no spectrum has no place in the form.
    void add(const PlacedRecord& placed, const values::ValueBase& value);
    [[nodiscard]] std::uint64_t sweeps() const { return m_sweeps; }
    /// Why what was added cannot be written; empty when it can.
    [[nodiscard]] const std::string& problem() const { return m_problem; }
    /// Sweeps that readers of the form take for more of the one before.
    [[nodiscard]] std::uint64_t joined() const { return m_joined; }

private:
    void takeRange(const LevelMap& map);

    NewFile& m_file;
    ExportedRecords& m_records;
    ExportTime m_time;
    std::optional<TrackType> m_type;  // of the only spectrum
    std::optional<values::ChannelRange> m_range;
    SweepRows m_rows;
    double m_lastHighHz = 0;  // of the sweep written last
    std::string m_text;
    std::string m_problem;
    std::uint64_t m_sweeps = 0;
    std::uint64_t m_joined = 0;
};

}  // namespace RecTool
