// The check of the header: values that can be, and the filling after them.
#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "../../format/layout.h"
#include "checks.h"

namespace Recording2::Inspection {

namespace {

// The fields of the header by number, counted from 0.
constexpr std::size_t MinorVersionField = 1;
constexpr std::size_t StopFrequencyField = 3;
constexpr std::size_t StepWidthField = 4;
constexpr std::size_t MaxLevelField = 6;
constexpr std::size_t StartField = 7;
constexpr std::size_t StopField = 8;
constexpr std::size_t FieldCount = 18;

/// Whether what the fields of the header say can be.
class HeaderCheck {
public:
    HeaderCheck(const Summary& summary, Remarks& remarks)
        : m_header(summary.header), m_fields(summary.headerFields), m_end(summary.ends.header), m_remarks(remarks)
    {
    }

    void values()
    {
        const Header& h = m_header;
        if (h.minorVersion < 0) {
            m_remarks.damage(offset(MinorVersionField), "The minor version is negative.");
        } else if (h.majorVersion != Format::OldestMajorVersion || h.minorVersion != 0) {
            m_remarks.note(0, "The version is " + std::to_string(h.majorVersion) + '.' +
                                  std::to_string(h.minorVersion) + "; recorders write 2.0.");
        }
        note(h.startFrequencyHz > h.stopFrequencyHz, StopFrequencyField,
             "The stop frequency lies below the start frequency.");
        note(h.stepWidthHz < 0, StepWidthField, "The step width is negative.");
        note(h.minLevel > h.maxLevel, MaxLevelField, "The maximum level lies below the minimum level.");
        clock();
    }

    /// After the header record the area is as it was reserved.
    void filling(InputFile& source)
    {
        std::array<char, Format::HeaderAreaBytes> area{};
        if (m_fields.size() < FieldCount || m_end > Format::HeaderAreaBytes ||
            source.readAt(0, area.data(), area.size()) != area.size()) {
            return;
        }
        const std::string reserved = Format::headerArea();
        const auto* const differs = std::mismatch(area.begin() + m_end, area.end(), reserved.begin() + m_end).first;
        if (differs != area.end()) {
            m_remarks.damage(differs - area.begin(),
                             "The header area is not filled with 0 and a final # behind the header record.");
        }
    }

private:
    [[nodiscard]] std::int64_t offset(std::size_t field) const { return field < m_fields.size() ? m_fields[field] : 0; }
    void note(bool isSo, std::size_t field, const char* text)
    {
        if (isSo && field < m_fields.size()) {
            m_remarks.note(offset(field), text);
        }
    }
    void clock()
    {
        // A time stamp counts microseconds.
        constexpr std::uint64_t Latest = std::numeric_limits<std::uint64_t>::max() / 1000;
        if (m_fields.size() <= StopField) {
            return;
        }
        note(m_header.startMs == 0, StartField, "The header does not tell when the recording started.");
        note(m_header.stopMs == 0, StopField, "The header does not tell when the recording stopped.");
        for (const auto& [time, field] : {std::pair(m_header.startMs, StartField), {m_header.stopMs, StopField}}) {
            if (time > Latest) {
                m_remarks.damage(offset(field), "The start or stop time is later than any clock.");
            }
        }
        if (m_header.stopMs != 0 && m_header.stopMs < m_header.startMs) {
            m_remarks.damage(offset(StopField), "The recording stopped before it started.");
        }
    }

    const Header& m_header;
    const std::vector<std::int64_t>& m_fields;  // offsets
    std::int32_t m_end;
    Remarks& m_remarks;
};

}  // namespace

void checkHeader(InputFile& source, const Summary& summary, Remarks& remarks)
{
    HeaderCheck check(summary, remarks);
    check.values();
    check.filling(source);
}

}  // namespace Recording2::Inspection
