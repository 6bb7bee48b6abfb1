// Following position, heading and bearings record by record, and joining them to lines.
#include "linesofbearing.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

constexpr double FullCircleDeg = 360;
constexpr unsigned long long UsPerMs = 1000;

}  // namespace

std::optional<Geo::Position> positionOf(std::optional<double> latitudeDeg, std::optional<double> longitudeDeg)
{
    constexpr double PoleDeg = 90;
    const double latitude = latitudeDeg.value_or(0);
    const double longitude = longitudeDeg.value_or(0);
    // Written so that numbers that are none are no place.
    const bool isPlace = latitudeDeg && longitudeDeg && (latitude != 0 || longitude != 0) &&
                         std::abs(latitude) <= PoleDeg && std::abs(longitude) <= FullCircleDeg;
    return isPlace ? std::optional(Geo::Position{latitude, std::remainder(longitude, FullCircleDeg)}) : std::nullopt;
}

StationValues::StationValues(const TypeNames& names)
    : m_latitude{names.numberOf("LOCATIONLATITUDE"), {}},
      m_longitude{names.numberOf("LOCATIONLONGITUDE"), {}},
      m_heading{names.numberOf("TRUEHEADING"), {}},
      m_frequency{names.numberOf("FREQUENCY"), {}}
{
}

bool StationValues::apply(const Inspection::Record& record)
{
    for (Number* number : {&m_latitude, &m_longitude, &m_heading, &m_frequency}) {
        if (number->code == record.code) {
            number->is = plainNumber(m_recorded.apply(record));
            return true;
        }
    }
    return false;
}

std::optional<double> StationValues::headingDeg() const
{
    return m_heading.is && std::isfinite(*m_heading.is) ? m_heading.is : std::nullopt;
}

std::vector<StationValues> stationValues(const Recordings& recordings)
{
    std::vector<StationValues> all;
    for (const Track& track : recordings.tracks()) {
        all.emplace_back(track.names);
    }
    return all;
}

BearingTaker::BearingTaker(const TypeNames& names, std::uint64_t startMs, Listener listener)
    : m_code(names.numberOf(DirectionFindingKeyword)),
      m_station(names),
      m_startMs(startMs),
      m_listener(std::move(listener))
{
}

void BearingTaker::apply(const Inspection::Record& record)
{
    if (record.timeMs == 0 || m_station.apply(record) || m_code != record.code) {
        return;
    }
    m_momentMs = momentMs(record, m_startMs);
    m_measured.tune(m_station.frequencyHz().value_or(0));
    m_measured.apply(record);
}

void BearingTaker::take(const BearingChange& change)
{
    if (!std::isfinite(change.bearing.azimuthDeg)) {
        return;
    }
    const std::optional<Geo::Position> position = m_station.position();
    TakenBearing taken;
    taken.channel = change.channel;
    taken.frequencyHz = m_measured.range().frequencyHz(change.channel);
    taken.bearing = change.bearing;
    taken.timeMs = change.timeMs;
    taken.measuredUs = change.measuredUs != 0 ? change.measuredUs : (m_startMs + change.timeMs) * UsPerMs;
    taken.headingDeg = m_station.headingDeg();
    const double trueDeg = std::fmod(change.bearing.azimuthDeg + taken.headingDeg.value_or(0), FullCircleDeg);
    taken.line = {position.value_or(Geo::Position()), trueDeg < 0 ? trueDeg + FullCircleDeg : trueDeg};
    m_listener({taken, position.has_value(), m_momentMs, m_measured.range()});
}

bool hasBearings(const Recordings& recordings)
{
    return std::any_of(recordings.tracks().begin(), recordings.tracks().end(),
                       [](const Track& track) { return track.names.numberOf(DirectionFindingKeyword).has_value(); });
}

AllBearings::AllBearings(const Recordings& recordings, Listener listener) : m_listener(std::move(listener))
{
    for (const Track& track : recordings.tracks()) {
        m_takers.emplace_back(track.names, recordings.startMs(),
                              [this](const BearingTaker::Taken& taken) { m_listener(*m_now, taken); });
    }
}

void AllBearings::apply(const PlacedRecord& placed)
{
    m_now = &placed;
    m_takers[placed.type.track].apply(placed.record);
}

std::uint64_t AllBearings::passedOver() const
{
    return std::accumulate(m_takers.begin(), m_takers.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const BearingTaker& taker) { return sum + taker.passedOver(); });
}

TakenBearings takeBearings(const std::string& file, const Inspection::Summary& summary, const Span& span)
{
    TakenBearings taken;
    BearingTaker taker(TypeNames(summary.types), summary.header.startMs, [&](const BearingTaker::Taken& one) {
        if (one.momentMs < firstMoment(span.from) || one.momentMs > static_cast<double>(span.to)) {
            return;
        }
        if (one.hasPosition) {
            taken.bearings.push_back(one.bearing);
        } else {
            ++taken.withoutPosition;
        }
    });
    taken.findings = walk(file, summary, [&](const Inspection::Record& record) {
        taker.apply(record);
        return true;  // what was measured in the span may be filed after it
    });
    taken.passedOver = taker.passedOver();
    return taken;
}

}  // namespace RecTool
