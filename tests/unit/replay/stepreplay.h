// Replays a recording step by step on a plain list of its records: which texts a bearing map is given, in order.
#pragma once

#include "support/testing.h"

namespace ReplayTests {

/// A record as it lies in the file.
struct StoredRecord {
    std::uint64_t time = 0;
    std::int32_t code = 0;
    std::string text;
    bool isDefinition = false;
    bool indexed = true;  ///< whether the time table names it
};

/// What a replay reads of a recording. Written without the library under test, to judge it.
class StepReplay {
public:
    /// @param records in file order, times ascending
    explicit StepReplay(std::vector<StoredRecord> records);

    /// The texts that a request for the offsets (milliseconds) applies, the channel range in force first.
    /// @param toTheEnd the stop is that of the recording
    [[nodiscard]] std::vector<std::string> texts(std::uint64_t start, std::uint64_t stop, bool toTheEnd = false);

private:
    std::uint64_t read(std::uint64_t time, StoredRecord& record);
    StoredRecord definitionAt(std::uint64_t& time);
    std::string rangeAt(std::uint64_t offset);

    std::vector<StoredRecord> m_records;
    std::map<std::uint64_t, std::size_t> m_index;  // time to place in the file
    std::set<std::uint64_t> m_definitions;
    std::size_t m_here = 0;
};

}  // namespace ReplayTests
