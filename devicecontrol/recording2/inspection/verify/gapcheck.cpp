// The check of what stands between the blocks and after them.
#include <algorithm>

#include "../../format/layout.h"
#include "../strict/fieldreader.h"
#include "../strict/tables.h"
#include "checks.h"

namespace Recording2::Inspection {

namespace {

/// Whether the blocks stand one after the other, and what stands where no block is.
class GapCheck {
public:
    GapCheck(InputFile& source, const Summary& summary, Remarks& remarks)
        : m_source(source), m_summary(summary), m_remarks(remarks)
    {
    }

    void run()
    {
        for (const Block& block : blocks()) {
            if (m_end != 0 && block.begin > m_end) {
                between(block);
            }
            m_end = block.end;
            m_last = block.kind;
        }
        if (m_end != 0 && m_end < m_summary.fileSize) {
            behindAll();
        }
        const Header& h = m_summary.header;
        if (h.positions.bookmarkTable != 0 && h.positions.bookmarkTable == h.positions.channelRangeTable) {
            m_remarks.damage(offsetInFile(h.positions.bookmarkTable),
                             "The channel range table and the bookmark table begin at the same place.");
        }
    }

private:
    enum class Kind : std::uint8_t { Header, Types, Records, Times, ChannelRanges, Bookmarks };
    struct Block {
        Kind kind = Kind::Header;
        std::int64_t begin = 0;
        std::int64_t end = 0;  // 0 when it is not known
    };

    /// The blocks that lie within the file, in their order.
    [[nodiscard]] std::vector<Block> blocks() const
    {
        const Header& h = m_summary.header;
        const TableEnds& ends = m_summary.ends;
        std::vector<Block> all = {
            {Kind::Types, h.positions.typeTable, ends.types},
            {Kind::Records, h.positions.firstRecord, recordsEnd(m_summary.header, m_summary.fileSize)},
            {Kind::Times, h.positions.timeTable, ends.times},
            {Kind::ChannelRanges, h.positions.channelRangeTable, ends.channelRanges},
            {Kind::Bookmarks, h.positions.bookmarkTable, ends.bookmarks}};
        const auto outside = [&](const Block& block) {
            return block.begin < Format::HeaderAreaBytes || block.begin >= m_summary.fileSize;
        };
        all.erase(std::remove_if(all.begin(), all.end(), outside), all.end());
        std::stable_sort(all.begin(), all.end(), [](const Block& a, const Block& b) { return a.begin < b.begin; });
        return all;
    }

    void between(const Block& next)
    {
        const bool inFrontOfRecords = m_last == Kind::Header || m_last == Kind::Types;
        if (isLeftByClearing(next.begin)) {
            return;
        }
        if (inFrontOfRecords && next.kind == Kind::Records && holdsTypeTables(next.begin)) {
            m_remarks.note(m_end, "A further type table stands in front of the records; readers do not find it.");
            return;
        }
        m_remarks.damage(m_end,
                         numbered(static_cast<std::uint64_t>(next.begin - m_end), "byte belongs", "bytes belong") +
                             " to no table: a position or a table is wrong.");
    }

    void behindAll()
    {
        if (isLeftByClearing(m_summary.fileSize)) {
            return;
        }
        const auto bytes = static_cast<std::uint64_t>(m_summary.fileSize - m_end);
        if (m_last == Kind::ChannelRanges) {
            m_remarks.damage(m_end, "The channel range table ends with a time that is 0 or negative, but " +
                                        numbered(bytes, "byte follows.", "bytes follow."));
        } else {
            m_remarks.note(m_end, numbered(bytes, "byte stands", "bytes stand") + " behind all tables.");
        }
    }

    /// Clearing the channel ranges leaves bytes of 0, and up to 7 of them behind the end of the file.
    [[nodiscard]] bool isLeftByClearing(std::int64_t end)
    {
        return m_last == Kind::ChannelRanges && FieldReader(m_source, m_end, end).holdsOnly(m_end, end, '\0');
    }

    [[nodiscard]] bool holdsTypeTables(std::int64_t end)
    {
        FieldReader fields(m_source, m_end, end);
        while (fields.left() > 0) {
            std::int32_t entries = 0;
            if (!fields.number(entries) || entries < 0) {
                return false;
            }
            TypeEntry entry;
            for (std::int32_t i = 0; i < entries; ++i) {
                if (!readTypeEntry(fields, entry)) {
                    return false;
                }
            }
        }
        return true;
    }

    [[nodiscard]] std::int64_t offsetInFile(std::int64_t position) const
    {
        return std::clamp<std::int64_t>(position, 0, m_summary.fileSize);
    }

    InputFile& m_source;
    const Summary& m_summary;
    Remarks& m_remarks;
    Kind m_last = Kind::Header;
    std::int64_t m_end = Format::HeaderAreaBytes;
};

}  // namespace

void checkGaps(InputFile& source, const Summary& summary, Remarks& remarks)
{
    GapCheck(source, summary, remarks).run();
}

}  // namespace Recording2::Inspection
