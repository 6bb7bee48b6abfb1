// The type table, then record after record.
#include "unjournaled.h"

#include <algorithm>
#include <string>

#include "../../format/layout.h"
#include "../strict/blocktext.h"

namespace Recording2::Inspection {

bool Unjournaled::next(Record& record)
{
    if (m_at == 0 && !readTypes()) {
        return false;
    }
    constexpr int MostLoads = 2;  // the second for the bytes that the first shows to be missing
    for (int load = 0; load <= MostLoads; ++load) {
        const auto bytes = m_window.at(m_at);
        // The tables behind the records may be there before the header that tells where they begin.
        if (bytes && bytes->end <= size() && isKnown(bytes->code)) {
            record.position = m_at;
            record.timeMs = 0;
            record.code = bytes->code;
            record.data = bytes->data;
            m_at = bytes->end;
            ++m_number;
            return true;
        }
        if (load < MostLoads) {
            m_window.load(*this, m_at);
        }
    }
    m_window.beginSmall();
    return false;
}

bool Unjournaled::readTypes()
{
    constexpr std::size_t MostBytes = std::size_t{256} * 1024;
    std::string text(MostBytes, '\0');
    text.resize(readAt(Format::HeaderAreaBytes, text.data(), text.size()));
    TypesText types = parseTypes(text);
    m_at = types.bytes == 0 ? 0 : Format::HeaderAreaBytes + static_cast<std::int64_t>(types.bytes);
    m_types = std::move(types.entries);
    return m_at != 0;
}

bool Unjournaled::isKnown(std::int32_t code) const
{
    return std::any_of(m_types.begin(), m_types.end(), [&](const TypeEntry& type) { return type.typeNumber == code; });
}

std::size_t Unjournaled::readAt(std::int64_t offset, char* out, std::size_t size)
{
    return m_recording.readAt(offset, out, size);
}

}  // namespace Recording2::Inspection
