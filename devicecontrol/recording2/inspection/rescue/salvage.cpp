// Salvaging: header, positions of the blocks, times, records and what was noted, each as far as it is whole.
#include "salvage.h"

#include <utility>

#include "../../format/layout.h"
#include "../filename.h"
#include "salvageparts.h"

namespace Recording2::Inspection {

namespace {

void salvageBlocks(InputFile& source, const SalvagedHeader& header, Salvage& result,
                   const std::function<void(std::int64_t, std::int64_t)>& progress)
{
    const std::int32_t shift = salvagePositions(source, header.shift, result);
    const SalvagedTimes times = salvageTimes(source, result.header, shift);
    if (result.header.positions.firstRecord >= Format::HeaderAreaBytes) {
        salvageRecords(source, times, result, progress);
    }
    salvageNotes(source, header.positionsKnown, times.end, result);
}

}  // namespace

Salvage salvageUnclosed(const std::string& path, const std::function<void(std::int64_t, std::int64_t)>& progress)
{
    Salvage result = salvage(path, progress);
    if (result.readability != Readability::NeverClosed) {
        return result;
    }
    result = Salvage();
    InputFile source(native(path), InputFile::Size::AtOpening);
    if (source.good()) {
        result.lostHeaderFields.emplace_back("all");  // so that every block is looked for
        salvageBlocks(source, {}, result, progress);
        result.channelRangesLost = result.channelRangesLost && !result.records.empty();
    } else {
        result.readability = Readability::Unreadable;
        result.problem = "The file cannot be opened any more.";
    }
    return result;
}

Salvage salvage(const std::string& path, const std::function<void(std::int64_t, std::int64_t)>& progress)
{
    Salvage result;
    {
        const Summary summary = inspect(path);
        result.readability = summary.readability;
        result.problem = summary.problem;
    }
    if (result.readability != Readability::Ok) {
        return result;
    }
    InputFile source(native(path), InputFile::Size::AtOpening);
    if (!source.good()) {
        result.readability = Readability::Unreadable;
        result.problem = "The file cannot be opened any more.";
        return result;
    }
    const SalvagedHeader header = salvageHeader(source, result);
    salvageBlocks(source, header, result, progress);
    return result;
}

struct SalvageReader::Private {
    explicit Private(const std::string& path)
        : source(native(path), InputFile::Size::AtOpening), fields(source, 0, source.size())
    {
    }

    InputFile source;
    FieldReader fields;
};

SalvageReader::SalvageReader(const std::string& path) : d(std::make_unique<Private>(path))
{
}

SalvageReader::~SalvageReader() = default;

bool SalvageReader::read(std::int64_t position, Record& record)
{
    if (!d->source.good()) {
        return false;
    }
    if (d->fields.position() != position) {
        d->fields.seek(position);
    }
    record.position = position;
    return d->fields.record(record.code, record.data);
}

}  // namespace Recording2::Inspection
