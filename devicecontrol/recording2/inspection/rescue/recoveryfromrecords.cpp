// Recovery without a journal: the records that follow the types, without the last one's end and without their times.
#include "../recordingname.h"
#include "recoverysteps.h"

namespace Recording2::Inspection {

namespace {

void fillHeader(const Task& task, const Header& said, Found& found)
{
    Format::HeaderRecord& header = found.header;
    header.majorVersion = Format::OldestMajorVersion;
    if (said.majorVersion >= Format::OldestMajorVersion) {  // a file that was closed, but not given its name
        header = said;
        header.positions = {};
        found.stopKnown = true;
        found.lengthMs = lengthFrom(said.startMs, said.stopMs);
        return;
    }
    header.startMs = startInName(task.recording).value_or(0);
    found.lengthMs = lengthFrom(header.startMs, lastWriteMs(task.recording));
}

/// @return how many have no time
std::uint64_t copyRecords(const Task& task, const Salvage& salvage)
{
    std::uint64_t unknown = 0;
    std::int64_t nextProgress = 0;
    const auto take = [&](const Record& record, std::optional<std::uint64_t> time, bool channelRange) {
        unknown += time ? 0U : 1U;
        task.output.add(record, time, channelRange);
        if (record.position < nextProgress) {
            return true;
        }
        nextProgress = record.position + ProgressBytes;
        return task.goOn(record.position, salvage.records.back().position);
    };
    task.report.lostRecords += readSalvaged(task.recording, salvage, take);
    return unknown;
}

void tellLosses(const Salvage& salvage, std::uint64_t unknown, std::vector<std::string>& lost)
{
    std::int64_t bytes = 0;
    for (const LostBytes& some : salvage.lostBytes) {
        bytes += some.bytes;
    }
    if (bytes > 0) {
        lost.push_back(counted(static_cast<std::uint64_t>(bytes), "byte") + " that are no whole record");
    }
    if (unknown > 0) {
        lost.push_back("the exact time of " + counted(unknown, "record"));
    }
    if (!salvage.lostHeaderFields.empty()) {
        lost.emplace_back("the header");
    }
    if (salvage.typesLost) {
        lost.emplace_back("names of types");
    }
    if (salvage.channelRangesLost) {
        lost.emplace_back("the channel range table");
    }
}

}  // namespace

Found takeFromRecords(const Task& task, const Salvage& salvage)
{
    Found found;
    fillHeader(task, salvage.header, found);
    if (!salvage.types.empty()) {
        found.types = Format::typeTable(salvage.types);
    }
    task.output.file.begin(found.types);
    const std::uint64_t unknown = copyRecords(task, salvage);
    tellLosses(salvage, unknown, task.report.lost);
    return found;
}

}  // namespace Recording2::Inspection
