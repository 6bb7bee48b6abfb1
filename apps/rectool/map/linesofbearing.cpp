// Following position, heading and bearings record by record, and joining them to lines.
#include "linesofbearing.h"

#include <cmath>
#include <utility>

#include <values/value.h>

#include "replay/measuredbearings.h"
#include "replay/measuredtime.h"
#include "replay/recordedvalues.h"
#include "replay/typenames.h"
#include "replay/walk.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

constexpr double FullCircleDeg = 360;

/// A recorded number, as it is in force.
class RecordedNumber {
public:
    RecordedNumber(const TypeNames& names, const char* keyword) : m_code(names.numberOf(keyword)) {}

    void apply(const Inspection::Record& record)
    {
        if (m_code != record.code) {
            return;
        }
        const auto* number = dynamic_cast<const values::ValueNumeric<double>*>(m_values.apply(record));
        m_number = number != nullptr ? std::optional(number->GetValue()) : std::nullopt;
    }
    /// Nothing where none was recorded, and where the last record is no number.
    [[nodiscard]] std::optional<double> get() const { return m_number; }

private:
    std::optional<std::int32_t> m_code;
    RecordedValues m_values;
    std::optional<double> m_number;
};

/// Nothing for what is no place on earth. 0, 0 is what values hold that nobody has set.
std::optional<Geo::Position> positionOf(std::optional<double> latitudeDeg, std::optional<double> longitudeDeg)
{
    constexpr double PoleDeg = 90;
    if (!latitudeDeg || !longitudeDeg || (*latitudeDeg == 0 && *longitudeDeg == 0)) {
        return std::nullopt;
    }
    // Written so that numbers that are none are no place.
    const bool onEarth = std::abs(*latitudeDeg) <= PoleDeg && std::abs(*longitudeDeg) <= FullCircleDeg;
    return onEarth ? std::optional(Geo::Position{*latitudeDeg, std::remainder(*longitudeDeg, FullCircleDeg)})
                   : std::nullopt;
}

class BearingTaker {
public:
    BearingTaker(const Inspection::Summary& summary, std::uint64_t fromMs, std::uint64_t toMs)
        : m_names(summary.types),
          m_bearings(m_names.numberOf(DirectionFindingKeyword)),
          m_latitude(m_names, "LOCATIONLATITUDE"),
          m_longitude(m_names, "LOCATIONLONGITUDE"),
          m_heading(m_names, "TRUEHEADING"),
          m_frequency(m_names, "FREQUENCY"),
          m_startMs(summary.header.startMs),
          m_fromMs(firstMoment(fromMs)),
          m_toMs(static_cast<double>(toMs))
    {
    }

    void apply(const Inspection::Record& record)
    {
        m_latitude.apply(record);
        m_longitude.apply(record);
        m_heading.apply(record);
        m_frequency.apply(record);
        if (m_bearings != record.code) {
            return;
        }
        m_momentMs = momentMs(record, m_startMs);
        m_measured.tune(m_frequency.get().value_or(0));
        m_measured.apply(record);
    }
    [[nodiscard]] TakenBearings result()
    {
        m_taken.passedOver = m_measured.passedOver();
        return std::move(m_taken);
    }

private:
    static constexpr unsigned long long UsPerMs = 1000;

    void take(const BearingChange& measured)
    {
        const auto& [channel, bearing, timeMs, measuredUs] = measured;
        if (m_momentMs < m_fromMs || m_momentMs > m_toMs || !std::isfinite(bearing.azimuthDeg)) {
            return;
        }
        const std::optional<Geo::Position> position = positionOf(m_latitude.get(), m_longitude.get());
        if (!position) {
            ++m_taken.withoutPosition;
            return;
        }
        TakenBearing taken;
        taken.channel = channel;
        taken.frequencyHz = m_measured.range().frequencyHz(channel);
        taken.bearing = bearing;
        taken.timeMs = timeMs;
        taken.measuredUs = measuredUs != 0 ? measuredUs : (m_startMs + timeMs) * UsPerMs;
        taken.headingDeg = m_heading.get();
        if (taken.headingDeg && !std::isfinite(*taken.headingDeg)) {
            taken.headingDeg.reset();
        }
        const double trueDeg = std::fmod(bearing.azimuthDeg + taken.headingDeg.value_or(0), FullCircleDeg);
        taken.line = {*position, trueDeg < 0 ? trueDeg + FullCircleDeg : trueDeg};
        m_taken.bearings.push_back(taken);
    }

    TypeNames m_names;
    std::optional<std::int32_t> m_bearings;
    RecordedNumber m_latitude;
    RecordedNumber m_longitude;
    RecordedNumber m_heading;
    RecordedNumber m_frequency;
    MeasuredBearings m_measured{[this](const BearingChange& measured) { take(measured); }};
    std::uint64_t m_startMs;
    double m_fromMs;
    double m_toMs;
    double m_momentMs = 0;  // of the record being applied
    TakenBearings m_taken;
};

}  // namespace

TakenBearings takeBearings(const std::string& file, const Inspection::Summary& summary, std::uint64_t fromMs,
                           std::uint64_t toMs)
{
    BearingTaker taker(summary, fromMs, toMs);
    std::vector<Inspection::Finding> findings = walk(file, summary, [&](const Inspection::Record& record) {
        const bool timeIsKnown = record.timeMs != 0;
        if (timeIsKnown) {
            taker.apply(record);
        }
        return true;  // what was measured in the span may be filed after it
    });
    TakenBearings taken = taker.result();
    taken.findings = std::move(findings);
    return taken;
}

}  // namespace RecTool
