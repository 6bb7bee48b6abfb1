// Where the blocks of a damaged file are: where the header says, or where something looks like them.
#include "salvageparts.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

#include "../../format/layout.h"
#include "../strict/tables.h"

namespace Recording2::Inspection {

namespace {

/// Finds where the blocks are, by the header and by what stands there.
class BlockSearch {
public:
    /// @param shift by which the positions in the file's tables are wrong
    BlockSearch(InputFile& source, std::int32_t shift, Salvage& result)
        : m_source(source), m_header(result.header), m_result(result), m_shift(shift)
    {
    }

    void run()
    {
        const Header& said = m_header;
        m_result.cutOff = std::max({said.positions.typeTable, said.positions.firstRecord, said.positions.timeTable,
                                    said.positions.channelRangeTable, said.positions.bookmarkTable}) >= size();
        readTypes();
        findRecords();
        findTimes();
        Header& h = m_header;
        for (std::int32_t* position : {&h.positions.channelRangeTable, &h.positions.bookmarkTable}) {
            const bool possible = *position > std::max(h.positions.timeTable, Format::HeaderAreaBytes - 1);
            if (*position != 0 && (!possible || *position >= m_source.size())) {
                *position = NowhereInFile;
            }
        }
    }

    /// The same, with what was found after the header.
    [[nodiscard]] std::int32_t shift() const { return m_shift; }

private:
    [[nodiscard]] bool isInFile(std::int64_t position) const
    {
        return position >= Format::HeaderAreaBytes && position < size();
    }
    [[nodiscard]] std::int64_t size() const { return m_source.size(); }

    bool readTypesAt(std::int64_t position)
    {
        Summary types;
        types.fileSize = size();
        types.header.positions.typeTable = static_cast<std::int32_t>(position);
        types.header.positions.firstRecord = m_header.positions.firstRecord;
        readTypeTable(m_source, types);
        m_typesEnd = types.ends.types;
        m_result.types = std::move(types.types);
        m_result.typesLost = !types.findings.empty() || m_typesEnd == 0;
        return m_typesEnd != 0;
    }

    void readTypes()
    {
        if (m_header.positions.typeTable == 0 && m_header.positions.firstRecord == Format::HeaderAreaBytes) {
            return;  // a recording without types
        }
        const bool said = isInFile(m_header.positions.typeTable) && readTypesAt(m_header.positions.typeTable);
        if (!said && !(m_header.positions.typeTable == 0 && m_result.lostHeaderFields.empty())) {
            std::vector<TypeEntry> some = std::move(m_result.types);
            if (!readTypesAt(Format::HeaderAreaBytes) && m_result.types.size() < some.size()) {
                m_result.types = std::move(some);
            }
        }
    }

    [[nodiscard]] bool isRecord(std::int64_t position)
    {
        FieldReader fields(m_source, position, size(), Format::MaxRecordHeadBytes);
        return isInFile(position) && fields.endOfRecord(position) != 0;
    }

    void findRecords()
    {
        const bool wereSome = m_header.positions.firstRecord != 0 || m_header.positions.timeTable != 0 ||
                              !m_result.lostHeaderFields.empty();
        if (!wereSome || isRecord(m_header.positions.firstRecord)) {
            return;
        }
        if (followShift()) {
            return;
        }
        for (const std::int64_t position : {m_typesEnd, firstOfTimes(m_header.positions.timeTable)}) {
            if (isRecord(position)) {
                m_header.positions.firstRecord = static_cast<std::int32_t>(position);
                return;
            }
        }
        if (!isInFile(m_header.positions.firstRecord)) {
            // Damage begins with the first record: the walk finds the next.
            m_header.positions.firstRecord =
                static_cast<std::int32_t>(m_typesEnd != 0 ? m_typesEnd : firstOfTimes(m_header.positions.timeTable));
        }
    }

    /// Whether everything from the records on stands a little before or after its place, because bytes of the types
    /// were lost or inserted.
    bool followShift()
    {
        constexpr std::int32_t Most = 100;
        const std::int32_t first = m_header.positions.firstRecord;
        const std::int32_t times = m_header.positions.timeTable;
        if (!isInFile(first) || times <= first || times > Format::LastPosition - Most) {
            return false;
        }
        for (std::int32_t shift = -Most; shift <= Most; ++shift) {
            if (shift != 0 && firstOfTimes(times + shift) == first && isRecord(first + shift)) {
                m_header.positions.firstRecord = first + shift;
                m_header.positions.timeTable = times + shift;
                moveBy(shift);
                return true;
            }
        }
        return false;
    }

    /// The position that an entry of a time table names, 0 when there is no entry.
    [[nodiscard]] std::int64_t firstOfTimes(std::int64_t position)
    {
        if (!isInFile(position)) {
            return 0;
        }
        FieldReader fields(m_source, position, size(), Format::MaxTimeEntryBytes);
        std::uint64_t time = 0;
        std::int32_t record = 0;
        const bool sound = fields.time(time) && fields.number(record);
        return sound && record >= Format::HeaderAreaBytes && record < position ? record + m_shift : 0;
    }

    void findTimes()
    {
        const std::int64_t first = m_header.positions.firstRecord;
        if (!isInFile(first)) {
            m_header.positions.timeTable = 0;
            return;
        }
        const std::int64_t said = m_header.positions.timeTable;
        if (said > first && isInFile(said) && firstOfTimes(said) != 0) {
            return;
        }
        const std::int64_t end = chainEnd(first);
        if (end == said) {
            return;
        }
        constexpr std::int64_t MostShift = 4096;
        const std::int64_t named = firstOfTimes(end);
        std::int64_t found = end;
        if (named != 0 && std::abs(first - named) <= MostShift) {
            moveBy(static_cast<std::int32_t>(first - named));
        } else {
            found = search(first);
        }
        m_header.positions.timeTable = static_cast<std::int32_t>(found);
    }

    /// Bytes were inserted or lost between the header and the records.
    void moveBy(std::int32_t shift)
    {
        m_shift += shift;
        for (std::int32_t* position : {&m_header.positions.channelRangeTable, &m_header.positions.bookmarkTable}) {
            if (isInFile(*position)) {
                *position += shift;
            }
        }
    }

    std::int64_t chainEnd(std::int64_t first)
    {
        FieldReader fields(m_source, first, size());
        std::int64_t position = first;
        for (std::int64_t end = first; end != 0 && end < size(); end = fields.endOfRecord(position)) {
            position = end;
        }
        return position;
    }

    /// The first place at which an entry names the first record and the next entry another one.
    std::int64_t search(std::int64_t first)
    {
        constexpr std::size_t TimeValueBytes = 8;
        const std::string named = Format::Separator + std::to_string(first - m_shift) + Format::Separator;
        constexpr std::size_t WindowBytes = std::size_t{1} << 20U;
        std::string window(WindowBytes, '\0');
        for (std::int64_t at = first; at < size();
             at += static_cast<std::int64_t>(WindowBytes - Format::MaxTimeEntryBytes)) {
            const std::size_t got = m_source.readAt(at, window.data(), window.size());
            const std::string_view bytes(window.data(), got);
            for (std::size_t i = bytes.find(named); i != std::string_view::npos; i = bytes.find(named, i + 1)) {
                const std::int64_t entry = at + static_cast<std::int64_t>(i - std::min(i, TimeValueBytes));
                const std::int64_t next = at + static_cast<std::int64_t>(i + named.size());
                if (i >= TimeValueBytes && firstOfTimes(entry) == first &&
                    (firstOfTimes(next) > first || next == size())) {
                    return entry;
                }
            }
            if (got < window.size()) {
                break;
            }
        }
        return 0;
    }

    InputFile& m_source;
    Header& m_header;
    Salvage& m_result;
    std::int32_t m_shift;
    std::int64_t m_typesEnd = 0;
};

}  // namespace

std::int32_t salvagePositions(InputFile& source, std::int32_t shift, Salvage& result)
{
    BlockSearch blocks(source, shift, result);
    blocks.run();
    return blocks.shift();
}

}  // namespace Recording2::Inspection
