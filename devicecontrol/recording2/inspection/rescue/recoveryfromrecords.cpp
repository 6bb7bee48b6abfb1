// Recovery without a journal: the records that follow the types, without the last one's end and without their times.
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
        std::int64_t nextProgress = 0;
        const auto take = [&](const Record& record, std::optional<std::uint64_t> time, bool channelRange) {
            m_unknown += time ? 0U : 1U;
            m_task.output.add(record, time, channelRange);
            if (record.position < nextProgress) {
                return true;
            }
            nextProgress = record.position + ProgressBytes;
            return m_task.goOn(record.position, m_salvage.records.back().position);
        };
        m_task.report.lostRecords += readSalvaged(m_task.recording, m_salvage, take);
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
