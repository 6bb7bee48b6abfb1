// A header and a type table out of memory.
#include "blocktext.h"

#include <algorithm>

#include "../inspection.h"
#include "tables.h"

namespace Recording2::Inspection {

namespace {

/// Bytes in memory; whatever stands in front of their position is 0.
class TextSource final : public Format::ByteSource {
public:
    explicit TextSource(const std::string& text, std::int64_t begin = 0) : m_text(text), m_begin(begin) {}
    std::size_t readAt(std::int64_t offset, char* out, std::size_t size) override
    {
        const auto front = static_cast<std::size_t>(std::max<std::int64_t>(0, m_begin - offset));
        const std::size_t filled = std::min(front, size);
        std::fill_n(out, filled, '\0');
        const auto from = static_cast<std::size_t>(std::max<std::int64_t>(0, offset - m_begin));
        return filled + m_text.copy(out + filled, size - filled, std::min(from, m_text.size()));
    }
    [[nodiscard]] std::int64_t size() override { return m_begin + static_cast<std::int64_t>(m_text.size()); }

private:
    const std::string& m_text;
    std::int64_t m_begin;
};

}  // namespace

std::optional<Format::HeaderRecord> parseHeader(const std::string& text)
{
    TextSource source(text);
    Format::Cursor cursor(source, text.size() + 1);
    Format::HeaderRecord record;
    const bool sound = text.size() <= std::size_t{Format::HeaderAreaBytes} &&
                       Format::readHeader(cursor, record) == Format::HeaderStatus::Ok;
    return sound ? std::optional<Format::HeaderRecord>(record) : std::nullopt;
}

TypesText parseTypes(const std::string& text)
{
    TextSource source(text, Format::HeaderAreaBytes);
    Summary types;
    types.fileSize = source.size();
    types.header.positions.typeTable = Format::HeaderAreaBytes;
    readTypeTable(source, types);
    const std::int64_t end = types.ends.types;
    return end == 0 ? TypesText() : TypesText{types.types, static_cast<std::size_t>(end - Format::HeaderAreaBytes)};
}

}  // namespace Recording2::Inspection
