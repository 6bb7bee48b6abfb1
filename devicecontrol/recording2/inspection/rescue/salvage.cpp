// Salvaging: header, positions of the blocks, times, records and what was noted, each as far as it is whole.
#include "salvage.h"

#include <algorithm>
#include <utility>

#include "../../format/layout.h"
#include "../filename.h"
#include "salvageparts.h"

namespace Recording2::Inspection {

namespace {

void salvageBlocks(InputFile& source, const SalvagedHeader& header, Salvage& result, const Progress& progress)
{
    const std::int32_t shift = salvagePositions(source, header.shift, result);
    const SalvagedTimes times = salvageTimes(source, result.header, shift);
    if (result.header.positions.firstRecord >= Format::HeaderAreaBytes) {
        salvageRecords(source, times, result, progress);
    }
    salvageNotes(source, header.positionsKnown, times.end, result);
}

Salvage salvageAs(const std::string& path, bool alsoUnclosed, const Progress& progress)
{
    const Summary head = inspectHead(path);
    const bool unclosed = alsoUnclosed && head.readability == Readability::NeverClosed;
    Salvage result;
    if (head.readability != Readability::Ok && !unclosed) {
        result.readability = head.readability;
        result.problem = head.problem;
        return result;
    }
    InputFile source(native(path), InputFile::Size::AtOpening);
    if (!source.good()) {
        result.readability = Readability::Unreadable;
        result.problem = "The file cannot be opened any more.";
    } else if (unclosed) {
        result.lostHeaderFields.emplace_back("all");  // so that every block is looked for
        salvageBlocks(source, {}, result, progress);
        result.channelRangesLost = result.channelRangesLost && !result.records.empty();
    } else {
        salvageBlocks(source, salvageHeader(source, result), result, progress);
    }
    return result;
}

}  // namespace

Salvage salvageUnclosed(const std::string& path, const Progress& progress)
{
    return salvageAs(path, true, progress);
}

Salvage salvage(const std::string& path, const Progress& progress)
{
    return salvageAs(path, false, progress);
}

std::uint64_t readSalvaged(const std::string& path, const Salvage& salvage, const TakeRecord& take)
{
    InputFile source(native(path), InputFile::Size::AtOpening);
    FieldReader fields(source, 0, source.size());
    const std::vector<std::uint64_t>& ranges = salvage.channelRangeTimes;
    std::uint64_t missing = 0;
    Record record;
    for (const SalvagedRecord& salvaged : salvage.records) {
        record.position = salvaged.position;
        if (fields.position() != salvaged.position) {
            fields.seek(salvaged.position);
        }
        const auto time = salvaged.timeMs;
        if (!fields.record(record.code, record.data)) {
            ++missing;
        } else if (!take(record, time, time && std::binary_search(ranges.begin(), ranges.end(), *time))) {
            break;
        }
    }
    return missing;
}

}  // namespace Recording2::Inspection
