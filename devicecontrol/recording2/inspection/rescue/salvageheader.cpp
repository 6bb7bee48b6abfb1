// The header of a damaged file, field by field: after a damaged one the next is found again.
#include "salvageparts.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "../../format/layout.h"

namespace Recording2::Inspection {

namespace {

constexpr std::size_t TailFields = 6;  // five positions and the flag end the header

/// The header. A damaged number ends at its separator, a damaged time after its nine bytes; after a damaged text only
/// the end of the header is found again.
class HeaderSalvage {
public:
    HeaderSalvage(InputFile& source, Salvage& result)
        : m_fields(source, 0, source.size()), m_source(source), m_result(result), m_header(result.header)
    {
    }

    void read()
    {
        version("the major version", m_header.majorVersion);
        version("the minor version", m_header.minorVersion);
        number("the start frequency", m_header.startFrequencyHz);
        number("the stop frequency", m_header.stopFrequencyHz);
        number("the step width", m_header.stepWidthHz);
        number("the minimum level", m_header.minLevel);
        number("the maximum level", m_header.maxLevel);
        time("the start time", m_header.startMs);
        time("the stop time", m_header.stopMs);
        text("the job id", m_header.jobId);
        text("the device name", m_header.deviceName);
        text("the device type", m_header.deviceType);
        std::array<std::int32_t, TailFields> tail{};
        findFilling();
        m_positionsKnown = !m_lost && readTail(tail);
        if (m_positionsKnown && !m_record.empty() &&
            m_fields.position() != static_cast<std::int64_t>(m_record.size())) {
            loseTexts();  // their lengths do not lead to the end of the record
            m_positionsKnown = false;
        }
        m_positionsKnown = m_positionsKnown || findTail(tail);
        if (!m_positionsKnown) {
            m_result.lostHeaderFields.emplace_back("the positions of the tables");
            tail = {};
        }
        take(tail);
    }
    /// How far everything after the header area stands from where it should be, because bytes were inserted or lost.
    [[nodiscard]] std::int32_t shift() const { return m_shift; }
    [[nodiscard]] bool positionsKnown() const { return m_positionsKnown; }

private:
    template <typename Number>
    void number(const char* name, Number& target)
    {
        const std::int64_t begin = m_fields.position();
        if (m_lost || !m_fields.number(target)) {
            m_result.lostHeaderFields.emplace_back(name);
            if (!m_lost) {
                skipNumber(begin);
            }
        }
    }
    void version(const char* name, std::int16_t& target)  // as a wider number, where it is damaged
    {
        std::int32_t wide = target;
        number(name, wide);
        target = static_cast<std::int16_t>(wide);
    }
    void time(const char* name, std::uint64_t& target)
    {
        const std::int64_t begin = m_fields.position();
        if (m_lost || !m_fields.time(target)) {
            m_result.lostHeaderFields.emplace_back(name);
            m_fields.seek(begin + static_cast<std::int64_t>(Format::TimeBytes));
        }
    }
    void text(const char* name, std::string& target)
    {
        if (m_lost || !m_fields.text(target) || m_fields.position() > Format::HeaderAreaBytes) {
            m_lost = true;
            target.clear();
            m_result.lostHeaderFields.emplace_back(name);
        }
    }
    void loseTexts()
    {
        for (std::string* text : {&m_header.jobId, &m_header.deviceName, &m_header.deviceType}) {
            text->clear();
        }
        m_result.lostHeaderFields.insert(m_result.lostHeaderFields.end(),
                                         {"the job id", "the device name", "the device type"});
    }
    void skipNumber(std::int64_t begin)
    {
        for (std::int64_t at = begin; at < begin + static_cast<std::int64_t>(Format::MaxNumberBytes); ++at) {
            if (m_fields.holdsOnly(at, at + 1, Format::Separator)) {
                m_fields.seek(at + 1);
                return;
            }
        }
        m_lost = true;
    }

    bool readTail(std::array<std::int32_t, TailFields>& tail)
    {
        return std::all_of(tail.begin(), tail.end(), [&](std::int32_t& value) { return m_fields.number(value); });
    }

    /// The zeros after the header record and the separator that ends the area. Where the separator is tells by how
    /// much the file was shifted.
    void findFilling()
    {
        constexpr std::size_t Most = 100;  // bytes of shift
        std::string area(Format::HeaderAreaBytes + Most, '\0');
        area.resize(m_source.readAt(0, area.data(), area.size()));
        const std::size_t zeros = area.find("#00000000");
        constexpr std::size_t Expected = Format::HeaderAreaBytes - 1;
        const auto distance = [](std::size_t at) { return at > Expected ? at - Expected : Expected - at; };
        std::size_t end = 0;  // the separator after zeros that is nearest to its place
        for (std::size_t at = area.find("000#"); at != std::string::npos; at = area.find("000#", at + 1)) {
            constexpr std::size_t Zeros = 3;
            end = distance(at + Zeros) < distance(end) ? at + Zeros : end;
        }
        if (zeros == std::string::npos || distance(end) >= Most) {
            return;
        }
        m_record = area.substr(0, zeros + 1);
        // With the separator in its place it is the filling that is damaged.
        const bool inPlace = area[Format::HeaderAreaBytes - 1] == Format::Separator;
        m_shift = inPlace ? 0 : static_cast<std::int32_t>(end) - (Format::HeaderAreaBytes - 1);
    }
    void take(const std::array<std::int32_t, TailFields>& tail)
    {
        const auto moved = [&](std::int32_t position) {
            const bool isOne = position > 0 && position <= Format::LastPosition - std::abs(m_shift);
            return isOne ? position + m_shift : position;
        };
        m_header.positions.typeTable = moved(tail[0]);
        m_header.positions.firstRecord = moved(tail[1]);
        m_header.positions.timeTable = moved(tail[2]);
        m_header.positions.channelRangeTable = moved(tail[3]);
        m_header.positions.bookmarkTable = moved(tail[4]);
        m_header.automatic = tail[5] >= 1;
    }

    /// The last fields before the filling. The text before them ends without a mark: of the digits there, the
    /// position that recorders write is taken.
    bool findTail(std::array<std::int32_t, TailFields>& tail)
    {
        const std::string& record = m_record;
        std::size_t begin = record.empty() ? std::string::npos : record.size() - 1;  // a separator
        for (std::size_t i = 1; i < TailFields && begin != std::string::npos; ++i) {
            begin = begin == 0 ? std::string::npos : record.find_last_of(Format::Separator, begin - 1);
        }
        if (begin == std::string::npos || begin == 0) {
            return false;
        }
        // Here begin is the separator after the type table's position.
        const std::string recorders = std::to_string(Format::HeaderAreaBytes);
        const bool usual =
            begin >= recorders.size() && record.compare(begin - recorders.size(), recorders.size(), recorders) == 0;
        m_fields.seek(static_cast<std::int64_t>(begin - (usual ? recorders.size() : 1)));
        return readTail(tail);
    }

    FieldReader m_fields;
    InputFile& m_source;
    Salvage& m_result;
    Header& m_header;
    bool m_lost = false;  // where the next field begins
    bool m_positionsKnown = false;
    std::string m_record;  // with the last separator; empty when its end was not found
    std::int32_t m_shift = 0;
};

}  // namespace

SalvagedHeader salvageHeader(InputFile& source, Salvage& result)
{
    HeaderSalvage header(source, result);
    header.read();
    return {header.positionsKnown(), header.shift()};
}

}  // namespace Recording2::Inspection
