// Walking the records of a direction finder into columns.
#include "bearingtable.h"

#include <cmath>
#include <memory>
#include <utility>

#include <values/value.h>

#include "rectool/replay/bearingreplay.h"

namespace RecPython {

namespace {

class BearingsReader {
public:
    explicit BearingsReader(const Request& request) : m_reading(request) {}

    [[nodiscard]] FoundBearings read();

private:
    void visit(const RecTool::PlacedRecord& placed);
    void tune(const RecTool::PlacedRecord& placed);
    void beginPart(std::size_t part);
    void endPart();
    void add(const RecTool::BearingChange& change);

    TypeReading m_reading;
    std::unique_ptr<RecTool::MeasuredBearings> m_measured;  // of the file that is read
    std::size_t m_part = 0;
    std::int64_t m_sinceStartUs = 0;  // of the record that is read
    bool m_isBefore = false;
    std::uint64_t m_notUnderstood = 0;
    FoundBearings m_found;
};

FoundBearings BearingsReader::read()
{
    m_reading.walk([this](const RecTool::PlacedRecord& placed, bool isOfType) {
        if (isOfType) {
            visit(placed);
        } else if (m_reading.isWanted(placed.type.track)) {
            tune(placed);
        }
    });
    endPart();
    static_cast<FoundType&>(m_found) = m_reading.found(m_notUnderstood);
    return std::move(m_found);
}

void BearingsReader::beginPart(std::size_t part)
{
    if (m_measured == nullptr || part != m_part) {
        endPart();
        m_measured =
            std::make_unique<RecTool::MeasuredBearings>([this](const RecTool::BearingChange& change) { add(change); });
        m_part = part;
    }
}

void BearingsReader::endPart()
{
    m_notUnderstood += m_measured == nullptr ? 0 : m_measured->passedOver();
}

void BearingsReader::visit(const RecTool::PlacedRecord& placed)
{
    beginPart(placed.part);
    m_sinceStartUs = m_reading.sinceStartUs(placed);
    m_isBefore = m_reading.recordings().isBefore(placed.momentMs);
    m_measured->apply(placed.record);
}

/// The frequency in force tells which of several cells was measured.
void BearingsReader::tune(const RecTool::PlacedRecord& placed)
{
    if (placed.record.code != m_reading.recordings().tracks()[placed.type.track].names.numberOf("FREQUENCY")) {
        return;
    }
    beginPart(placed.part);
    if (const auto frequencyHz = placed.number()) {
        m_measured->tune(*frequencyHz);
    }
}

void BearingsReader::add(const RecTool::BearingChange& change)
{
    if (m_isBefore || !std::isfinite(change.bearing.azimuthDeg)) {
        return;
    }
    m_found.sinceStartUs.push_back(m_sinceStartUs);
    m_found.frequenciesHz.push_back(m_measured->range().frequencyHz(change.channel));
    m_found.azimuthsDeg.push_back(change.bearing.azimuthDeg);
    m_found.elevationsDeg.push_back(change.bearing.elevationDeg);
    m_found.levelsDb.push_back(change.bearing.levelDb);
    m_found.qualities.push_back(change.bearing.quality);
}

}  // namespace

FoundBearings readBearings(const Request& request)
{
    return BearingsReader(request).read();
}

}  // namespace RecPython
