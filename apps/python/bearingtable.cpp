// Walking the records of a direction finder into columns.
#include "bearingtable.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include <values/value.h>

#include "rectool/replay/measuredbearings.h"

namespace RecPython {

namespace {

class BearingsReader {
public:
    explicit BearingsReader(Reading& reading) : m_reading(reading), m_types(reading.types()) {}

    [[nodiscard]] FoundBearings read();

private:
    void visit(const RecTool::PlacedRecord& placed);
    void tune(const RecTool::PlacedRecord& placed);
    void beginPart(std::size_t part);
    void add(const RecTool::BearingChange& change);

    Reading& m_reading;
    std::vector<RecTool::TrackType> m_types;
    std::unique_ptr<RecTool::MeasuredBearings> m_measured;  // of the file that is read
    std::size_t m_part = 0;
    std::int64_t m_sinceStartUs = 0;  // of the record that is read
    bool m_isBefore = false;
    FoundBearings m_found;
    Patience m_patience;
};

FoundBearings BearingsReader::read()
{
    m_reading.recordings().walk([this](const RecTool::PlacedRecord& placed) {
        m_patience.next();
        if (std::find(m_types.begin(), m_types.end(), placed.type) != m_types.end()) {
            visit(placed);
        } else if (m_reading.isWanted(placed.type.track)) {
            tune(placed);
        }
    });
    m_found.notUnderstood += m_measured == nullptr ? 0 : m_measured->passedOver();
    m_found.keyword = m_reading.keywordOf(m_types.front());
    m_found.device = m_reading.deviceOf(m_types.front().track);
    m_found.startUs = m_reading.startUs();
    m_found.damage = m_reading.damage();
    return std::move(m_found);
}

void BearingsReader::beginPart(std::size_t part)
{
    if (m_measured == nullptr || part != m_part) {
        m_found.notUnderstood += m_measured == nullptr ? 0 : m_measured->passedOver();
        m_measured =
            std::make_unique<RecTool::MeasuredBearings>([this](const RecTool::BearingChange& change) { add(change); });
        m_part = part;
    }
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
    Reading reading(request);
    BearingsReader reader(reading);
    const Kept quiet;
    return reader.read();
}

}  // namespace RecPython
