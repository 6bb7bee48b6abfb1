// What can still be taken out of a file whose header or tables are damaged, for the tools of this project.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "../inspection.h"

namespace Recording2::Inspection {

/// A record that is whole.
struct SalvagedRecord {
    std::int64_t position = 0;
    std::optional<std::uint64_t> timeMs;  ///< what the time table says, where it can be believed
};

/// Bytes among the records that belong to no whole record.
struct LostBytes {
    std::int64_t offset = 0;
    std::int64_t bytes = 0;
};

/// Times ascend strictly wherever they stand.
struct Salvage {
    std::string problem;  ///< one sentence when not Ok
    Header header;        ///< what is damaged in it is 0 or empty; the positions are where the blocks were found
    std::vector<std::string> lostHeaderFields;  ///< "the step width"
    std::vector<TypeEntry> types;
    std::vector<SalvagedRecord> records;  ///< in the order of the file; 24 bytes each
    std::vector<LostBytes> lostBytes;
    std::vector<std::uint64_t> channelRangeTimes;  ///< of records with a time
    std::vector<Bookmark> bookmarks;
    std::uint64_t lostBookmarks = 0;  ///< as many as can be told
    Readability readability = Readability::Ok;
    bool typesLost = false;          ///< not all types could be read
    bool cutOff = false;             ///< the file ends before a block that its header names
    bool channelRangesLost = false;  ///< there were others, or there may have been
    bool bookmarksLost = false;      ///< there were others
};

/// Reads a file as far as anything can be made of it.
/// - Header: fields after a damaged one are found again; the positions also from the end of the header.
/// - Blocks whose position is damaged are looked for: types at 500, records after the types, the time table where the
///   records end or where it names the first record, the others after it.
/// - Records: one after the other; after damage from the next one on that the time table names. A record that
///   contradicts the time table is not whole.
/// - Times: those of the largest set of entries whose times ascend with their positions.
/// @param progress of the records
Salvage salvage(const std::string& path, const Progress& progress = {});

/// The same for a recording whose header was never written too: its readability is then Ok. The types must stand at 500
/// and be whole, as every recorder stores them: nothing else tells where the records begin.
Salvage salvageUnclosed(const std::string& path, const Progress& progress = {});

/// Takes a record, its time where it can be believed, and whether the channel range table names it.
/// @return false to stop
using TakeRecord = std::function<bool(const Record&, std::optional<std::uint64_t>, bool)>;

/// Reads the records of a salvage one after the other; the record object is reused.
/// @return how many are not there any more
std::uint64_t readSalvaged(const std::string& path, const Salvage& salvage, const TakeRecord& take);

}  // namespace Recording2::Inspection
