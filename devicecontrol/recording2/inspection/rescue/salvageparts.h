// The steps of salvaging, in their order. Each reads its part of the file and goes on after what is damaged.
#pragma once

#include <cstdint>
#include <vector>

#include "../../file/files.h"
#include "../scan.h"
#include "../strict/fieldreader.h"
#include "salvage.h"

namespace Recording2::Inspection {

/// A table that there is, but not where it should be.
constexpr std::int32_t NowhereInFile = -1;

/// How far the header leads to the rest of the file.
struct SalvagedHeader {
    bool positionsKnown = false;
    std::int32_t shift = 0;  ///< by which the positions in the file are wrong, because bytes were inserted or lost
};

/// What the time table names, ascending by position.
struct SalvagedTimes {
    std::vector<TimeEntry> entries;
    bool isSound = false;  ///< every byte of the table belongs to an entry
    std::int64_t end = 0;  ///< after the last entry
};

/// 1. The fields of the header. Those that are damaged are named in the result.
SalvagedHeader salvageHeader(InputFile& source, Salvage& result);

/// 2. Where the blocks are, by the header and by what stands there: the positions in the result's header, and its
/// types.
/// @return the shift with what was found after the header
std::int32_t salvagePositions(InputFile& source, std::int32_t shift, Salvage& result);

/// 3. The time table.
SalvagedTimes salvageTimes(InputFile& source, const Header& header, std::int32_t shift);

/// 4. The records that are whole, their times where they can be believed, and the bytes that are lost.
void salvageRecords(InputFile& source, const SalvagedTimes& times, Salvage& result, const Progress& progress);

/// 5. Channel ranges and bookmarks, which stand after the times.
void salvageNotes(InputFile& source, bool positionsKnown, std::int64_t timesEnd, Salvage& result);

}  // namespace Recording2::Inspection
