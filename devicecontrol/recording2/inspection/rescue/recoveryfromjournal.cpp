// Recovery by the journal: every record that it knows is looked up and compared, and those that it lost are looked for.
#include <algorithm>
#include <utility>

#include "../../file/files.h"
#include "../filename.h"
#include "../strict/fieldreader.h"
#include "../strict/tables.h"
#include "recoverysteps.h"

namespace Recording2::Inspection {

namespace {

/// The way with a journal.
class FromJournal {
public:
    FromJournal(const Task& task, JournalContent journal)
        : m_task(task),
          m_journal(std::move(journal)),
          m_file(native(task.recording), InputFile::Size::AtOpening),
          m_bytes(m_file, m_journal),
          m_fields(m_bytes, 0, m_bytes.size())
    {
        m_task.report.journalComplete = m_journal.complete;
    }

    Found run()
    {
        readHeader();
        readTypes();
        m_task.output.file.begin(m_found.types);
        const std::vector<Format::Journal::Entry>& entries = m_journal.entries;
        for (std::size_t number = 0; number < entries.size() && m_goesOn; ++number) {
            if (entries[number].sound) {
                takeKnown(number);
                showProgress();
            }
        }
        if (!m_journal.complete && m_goesOn) {
            m_task.report.notes.emplace_back(
                "The journal is damaged or was cut off: records that it does not know are "
                "taken from the recording itself");
            walk(m_at, m_file.size());  // not in the tail, of which nothing tells where it ends
        }
        tellLosses();
        m_found.lengthMs =
            lengthFrom(m_found.header.startMs, std::max(m_found.header.stopMs, lastWriteMs(m_task.recording)));
        return std::move(m_found);
    }
    [[nodiscard]] bool provesItself() const { return m_known > 0 || m_journal.entries.empty(); }

private:
    void readHeader()
    {
        if (m_journal.header) {
            m_found.header = *m_journal.header;
        } else {
            m_found.header.majorVersion = Format::OldestMajorVersion;
            m_task.report.lost.emplace_back("the header, which is damaged in the journal");
        }
        if (m_journal.stopMs) {
            m_found.header.stopMs = *m_journal.stopMs;
        }
        m_found.stopKnown = m_journal.complete && m_journal.header && (m_journal.stopMs || m_journal.entries.empty());
    }

    /// The block of types, and with it where the records begin: a walk from another place would take types for records.
    void readTypes()
    {
        const auto& said = m_journal.types;
        const std::int64_t firstKnown = firstKnownRecord();
        m_at = said ? static_cast<std::int64_t>(said->end) : firstKnown;
        if (!said && m_journal.complete && firstKnown == Format::HeaderAreaBytes) {
            return;  // a recording without types
        }
        const std::int64_t end = walkTypes();
        const bool sound = end != 0 && (said ? hasChecksum(*said) : true);
        if (!sound) {
            m_found.types.clear();
            m_task.report.lost.emplace_back("the names of the types");
        } else if (!said) {
            m_at = end;
        }
    }
    [[nodiscard]] std::int64_t firstKnownRecord()
    {
        const auto& all = m_journal.entries;
        const auto first = std::find_if(all.begin(), all.end(), [](const auto& entry) { return entry.sound; });
        return first == all.end() ? m_bytes.size() : first->position;
    }
    [[nodiscard]] bool hasChecksum(const Format::Journal::Types& said) const
    {
        return said.begin == std::uint64_t{Format::HeaderAreaBytes} &&
               areTypesOf(said, m_journal.identity, m_found.types);
    }
    /// @return where the types end, 0 when they are not whole
    std::int64_t walkTypes()
    {
        Summary types;
        types.fileSize = m_bytes.size();
        types.header.positions.typeTable = Format::HeaderAreaBytes;
        readTypeTable(m_bytes, types);
        if (types.ends.types == 0) {
            return 0;
        }
        m_found.types.resize(static_cast<std::size_t>(types.ends.types - Format::HeaderAreaBytes));
        m_bytes.readAt(Format::HeaderAreaBytes, m_found.types.data(), m_found.types.size());
        return types.ends.types;
    }

    void takeKnown(std::size_t number)
    {
        const Format::Journal::Entry& entry = m_journal.entries[number];
        walk(m_at, entry.position);
        const std::optional<std::int64_t> end = read(entry.position, m_bytes.size());
        if (end && isRecordOf(entry, m_journal.identity, number, m_record.code, m_record.data)) {
            m_task.output.add(m_record, entry.timeMs, entry.channelRange);
            m_at = *end;
            ++m_known;
        } else {
            ++m_task.report.lostRecords;
            m_at = entry.position;
            m_skip = true;
        }
    }

    /// Takes the whole records between two positions; nobody knows their times.
    void walk(std::int64_t from, std::int64_t to)
    {
        if (std::exchange(m_skip, false)) {
            return;  // what begins there is a record that was lost
        }
        while (from < to && m_goesOn) {
            const std::optional<std::int64_t> end = read(from, to);
            if (!end) {
                m_lostBytes += to - from;
                return;
            }
            m_task.output.add(m_record, std::nullopt, false);
            from = *end;
            m_at = from;
            showProgress();
        }
    }

    /// Reads the record there. @return where it ends
    std::optional<std::int64_t> read(std::int64_t position, std::int64_t bound)
    {
        if (m_fields.position() != position) {
            m_fields.seek(position);
        }
        m_fields.endAt(bound);
        const bool sound = m_fields.record(m_record.code, m_record.data);
        return sound ? std::optional<std::int64_t>(m_fields.position()) : std::nullopt;
    }

    void tellLosses()
    {
        Recovery& report = m_task.report;
        const std::int64_t missing = m_journal.tailStart.value_or(0) - m_file.size();
        const std::string why = missing > 0
                                    ? ": the recording was cut off, " +
                                          counted(static_cast<std::uint64_t>(missing), "byte") + " of it are missing"
                                    : ": the bytes are not those that were recorded";
        if (report.lostRecords > 0) {
            report.lost.push_back(counted(report.lostRecords, "record") + why);
        }
        if (m_lostBytes > 0) {
            report.lost.push_back(counted(static_cast<std::uint64_t>(m_lostBytes), "byte") +
                                  " that are no whole record");
        }
        const auto unknown = m_task.output.file.records() - m_known;
        if (unknown > 0) {
            report.lost.push_back("the exact time of " + counted(unknown, "record"));
        }
        if (!m_journal.complete && report.lost.empty()) {
            report.lost.emplace_back("perhaps the last records: the journal does not tell where they ended");
        }
    }

    void showProgress()
    {
        if (m_at >= m_nextProgress) {
            m_nextProgress = m_at + ProgressBytes;
            m_goesOn = m_task.goOn(m_at, m_bytes.size());
        }
    }

    const Task& m_task;
    JournalContent m_journal;
    InputFile m_file;
    UnclosedBytes m_bytes;
    FieldReader m_fields;
    Found m_found;
    Record m_record;
    std::int64_t m_at = 0;
    std::int64_t m_nextProgress = ProgressBytes;
    std::int64_t m_lostBytes = 0;
    std::uint64_t m_known = 0;
    bool m_skip = false;
    bool m_goesOn = true;
};

}  // namespace

std::optional<Found> takeFromJournal(const Task& task, JournalContent journal)
{
    FromJournal way(task, std::move(journal));
    Found found = way.run();
    return way.provesItself() ? std::optional(std::move(found)) : std::nullopt;
}

}  // namespace Recording2::Inspection
