// Joining levels to the position in force when they were measured.
#include "fieldtrack.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "replay/frequencies.h"
#include "replay/linesofbearing.h"
#include "replay/spectra.h"

namespace RecTool {

namespace {

constexpr double TunedWithinHz = 1000;  // plain levels count while FREQUENCY is that near to the channel

struct PlaceAt {
    double momentMs = 0;
    std::optional<Geo::Position> place;
};

/// Where every device was, by time.
std::vector<std::vector<PlaceAt>> findPlaces(Recordings& recordings)
{
    std::vector<std::vector<PlaceAt>> all(recordings.tracks().size());
    std::vector<StationValues> stations = stationValues(recordings);
    recordings.walk([&](const PlacedRecord& placed) {
        StationValues& station = stations[placed.type.track];
        std::vector<PlaceAt>& here = all[placed.type.track];
        if (!station.apply(placed.record) || station.position() == (here.empty() ? std::nullopt : here.back().place)) {
            return;
        }
        if (!here.empty() && here.back().momentMs >= placed.momentMs) {
            here.pop_back();  // latitude and longitude are records of their own
        }
        here.push_back({placed.momentMs, station.position()});
    });
    return all;
}

/// A type whose levels are wanted, and what there is of them.
class FieldFollower {
public:
    FieldFollower(const Recordings& recordings, const TrackType& type, double hz, const std::vector<PlaceAt>& places)
        : m_type(type), m_hz(hz), m_places(places)
    {
        const Track& track = recordings.tracks()[type.track];
        m_found.device = track.device;
        m_found.keyword = keywordOf(track.names, type.code);
        m_found.hz = hz;
    }

    [[nodiscard]] FieldTrack& found() { return m_found; }
    void take(const PlacedRecord& placed, std::optional<double> tunedHz, bool isBefore)
    {
        if (!(placed.type == m_type)) {
            return;
        }
        if (const std::optional<double> number = placed.number()) {
            m_found.isPlain = true;
            if (!isBefore && tunedHz && std::abs(*tunedHz - m_hz) <= TunedWithinHz && std::isfinite(*number)) {
                add(*number, placed.momentMs);
            }
            return;
        }
        const LevelMap* map = placed.carriedLevels();
        const auto channel = map == nullptr ? std::nullopt : channelAt(map->GetChannelRange(), m_hz);
        if (channel && !isBefore && std::isfinite(map->GetCells()[*channel])) {
            m_found.hz = map->GetChannelRange().frequencyHz(*channel);
            add(double{map->GetCells()[*channel]}, placed.momentMs);
        }
    }

private:
    void add(double level, double momentMs)
    {
        constexpr double PerDecade = 10;
        const auto after = std::upper_bound(m_places.begin(), m_places.end(), momentMs,
                                            [](double ms, const PlaceAt& place) { return ms < place.momentMs; });
        if (after == m_places.begin() || !std::prev(after)->place) {
            ++m_found.withoutPosition;
            return;
        }
        const PlaceAt& at = *std::prev(after);
        if (m_found.points.empty() || m_found.points.back().positionMs != at.momentMs) {
            m_found.points.push_back({at.place->latitudeDeg, at.place->longitudeDeg, at.momentMs, 0, level, level, 0,
                                      momentMs, momentMs, momentMs});
        }
        FieldPoint& point = m_found.points.back();
        ++point.levels;
        point.powers += std::pow(PerDecade, level / PerDecade);
        point.lowest = std::min(point.lowest, level);
        point.lastMs = momentMs;
        if (level > point.highest) {
            point.highest = level;
            point.highestMs = momentMs;
        }
    }

    TrackType m_type;
    double m_hz;
    const std::vector<PlaceAt>& m_places;
    FieldTrack m_found;
};

/// All that may be a level: spectra first, as they are shown.
std::vector<TrackType> typesOfLevels(const Recordings& recordings)
{
    std::vector<TrackType> types;
    for (const Spectrum& spectrum : wantedSpectra(recordings).value_or(std::vector<Spectrum>())) {
        types.push_back(spectrum.type);
    }
    for (std::size_t track = 0; track < recordings.tracks().size(); ++track) {
        for (const char* keyword : {"LEVEL", "FIELDSTRENGTH"}) {
            if (const auto code = recordings.tracks()[track].names.numberOf(keyword)) {
                types.push_back({track, *code});
            }
        }
    }
    return types;
}

bool hasLevels(const FieldTrack& track)
{
    return !track.points.empty() || track.withoutPosition > 0;
}

}  // namespace

double FieldPoint::mean() const
{
    constexpr double PerDecade = 10;
    return PerDecade * std::log10(powers / static_cast<double>(levels));
}

std::vector<FieldTrack> trackField(Recordings& recordings, double hz)
{
    const std::vector<std::vector<PlaceAt>> places = findPlaces(recordings);
    const auto other = std::find_if(places.begin(), places.end(), [](const auto& device) { return !device.empty(); });
    std::vector<FieldFollower> followers;
    for (const TrackType& type : typesOfLevels(recordings)) {
        const bool isOwn = !places[type.track].empty() || other == places.end();
        followers.emplace_back(recordings, type, hz, isOwn ? places[type.track] : *other);
    }
    std::vector<StationValues> stations = stationValues(recordings);
    recordings.walk([&](const PlacedRecord& placed) {
        StationValues& station = stations[placed.type.track];
        if (!station.apply(placed.record)) {
            for (FieldFollower& follower : followers) {
                follower.take(placed, station.frequencyHz(), recordings.isBefore(placed.momentMs));
            }
        }
    });
    std::vector<FieldTrack> found;
    for (FieldFollower& follower : followers) {
        if (hasLevels(follower.found())) {
            found.push_back(std::move(follower.found()));
        }
    }
    const bool isOfSpectra =
        std::any_of(found.begin(), found.end(), [](const FieldTrack& track) { return !track.isPlain; });
    if (isOfSpectra) {
        std::erase_if(found, [](const FieldTrack& track) { return track.isPlain; });
    }
    return found;
}

}  // namespace RecTool
