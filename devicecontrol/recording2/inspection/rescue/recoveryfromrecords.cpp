// Recovery without a journal: the records that follow the types, without the last one's end and without their times.
#include <algorithm>
#include <utility>

#include "../recordingname.h"
#include "recoverysteps.h"

namespace Recording2::Inspection {

namespace {

/// The way without one.
class FromRecords {
public:
    FromRecords(const Task& task, Salvage salvage) : m_task(task), m_salvage(std::move(salvage)) {}

    Found run()
    {
        Found found;
        fillHeader(found);
        if (!m_salvage.types.empty()) {
            found.types = Format::typeTable(m_salvage.types);
        }
        m_task.output.file.begin(found.types);
        copyRecords();
        tellLosses();
        return found;
    }

private:
    void fillHeader(Found& found) const
    {
        const Header& said = m_salvage.header;
        Format::HeaderRecord& header = found.header;
        header.majorVersion = Format::OldestMajorVersion;
        if (said.majorVersion >= Format::OldestMajorVersion) {  // a file that was closed, but not given its name
            header = said;
            header.positions = {};
            found.stopKnown = true;
            found.lengthMs = lengthFrom(said.startMs, said.stopMs);
            return;
        }
        header.startMs = startInName(m_task.recording).value_or(0);
        found.lengthMs = lengthFrom(header.startMs, lastWriteMs(m_task.recording));
    }

    void copyRecords()
    {
        SalvageReader reader(m_task.recording);
        Record record;
        std::int64_t nextProgress = 0;
        const std::vector<std::uint64_t>& ranges = m_salvage.channelRangeTimes;
        for (const SalvagedRecord& salvaged : m_salvage.records) {
            if (!reader.read(salvaged.position, record)) {
                ++m_task.report.lostRecords;
                continue;
            }
            const bool isRange = salvaged.timeMs && std::binary_search(ranges.begin(), ranges.end(), *salvaged.timeMs);
            m_unknown += salvaged.timeMs ? 0U : 1U;
            m_task.output.add(record, salvaged.timeMs, isRange);
            if (salvaged.position >= nextProgress) {
                nextProgress = salvaged.position + ProgressBytes;
                if (!m_task.goOn(salvaged.position, m_salvage.records.back().position)) {
                    return;
                }
            }
        }
    }

    void tellLosses() const
    {
        Recovery& report = m_task.report;
        std::int64_t bytes = 0;
        for (const LostBytes& lost : m_salvage.lostBytes) {
            bytes += lost.bytes;
        }
        if (bytes > 0) {
            report.lost.push_back(counted(static_cast<std::uint64_t>(bytes), "byte") + " that are no whole record");
        }
        if (m_unknown > 0) {
            report.lost.push_back("the exact time of " + counted(m_unknown, "record"));
        }
        if (!m_salvage.lostHeaderFields.empty()) {
            report.lost.emplace_back("the header");
        }
        if (m_salvage.typesLost) {
            report.lost.emplace_back("names of types");
        }
        if (m_salvage.channelRangesLost) {
            report.lost.emplace_back("the channel range table");
        }
    }

    const Task& m_task;
    Salvage m_salvage;
    std::uint64_t m_unknown = 0;
};

}  // namespace

Found takeFromRecords(const Task& task, Salvage salvage)
{
    return FromRecords(task, std::move(salvage)).run();
}

}  // namespace Recording2::Inspection
