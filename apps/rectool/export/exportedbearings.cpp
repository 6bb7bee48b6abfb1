// Following bearings, positions and headings through all records, also those before the span.
#include "exportedbearings.h"

#include <cmath>
#include <utility>

namespace RecTool {

ExportedBearings::ExportedBearings(const Recordings& recordings, ExportedRecords& records, Visit visit)
    : m_recordings(recordings), m_visit(std::move(visit)), m_places(recordings)
{
    for (std::size_t track = 0; track < recordings.tracks().size(); ++track) {
        m_codes.push_back(recordings.tracks()[track].names.numberOf(DirectionFindingKeyword));
        const bool isWanted = m_codes.back() && records.isWanted({track, *m_codes.back()});
        m_finders.push_back(isWanted ? std::make_unique<MeasuredBearings>(
                                           [this, track](const BearingChange& change) { tell(track, change); })
                                     : nullptr);
    }
    records.lookAtAll([this](const PlacedRecord& placed) { take(placed); });
}

void ExportedBearings::take(const PlacedRecord& placed)
{
    const std::size_t track = placed.type.track;
    if (m_codes[track] != placed.type.code) {
        m_places.apply(placed);
    } else if (m_finders[track] != nullptr) {
        const double tunedHz = m_places.frequencyHz(track);
        m_now = &placed;
        m_finders[track]->tune(std::isfinite(tunedHz) ? tunedHz : 0);
        m_finders[track]->apply(placed.record);
    }
}

void ExportedBearings::tell(std::size_t track, const BearingChange& change)
{
    if (std::isfinite(change.bearing.azimuthDeg) && !m_recordings.isBefore(m_now->momentMs)) {
        ++m_count;
        m_visit({*m_now, m_finders[track]->range().frequencyHz(change.channel), change.bearing, m_places.place(track),
                 m_places.headingDeg(track)});
    }
}

}  // namespace RecTool
