// Following position, heading and bearings record by record, and joining them to lines.
#include "linesofbearing.h"

#include <cmath>
#include <utility>

#include <values/value.h>

#include "replay/measuredbearings.h"
#include "replay/measuredtime.h"
#include "replay/place.h"
#include "replay/recordedvalues.h"
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

/// Nothing for what is no place on earth.
std::optional<Geo::Position> positionOf(std::optional<double> latitudeDeg, std::optional<double> longitudeDeg)
{
    const bool onEarth = latitudeDeg && longitudeDeg && isPlace(*latitudeDeg, *longitudeDeg);
    return onEarth ? std::optional(Geo::Position{*latitudeDeg, std::remainder(*longitudeDeg, FullCircleDeg)})
                   : std::nullopt;
}

constexpr unsigned long long UsPerMs = 1000;

}  // namespace

struct BearingTaker::Private {
    Private(const TypeNames& names, std::uint64_t start, Listener told)
        : bearings(names.numberOf(DirectionFindingKeyword)),
          latitude(names, "LOCATIONLATITUDE"),
          longitude(names, "LOCATIONLONGITUDE"),
          heading(names, "TRUEHEADING"),
          frequency(names, "FREQUENCY"),
          startMs(start),
          listener(std::move(told))
    {
    }

    void take(const BearingChange& change)
    {
        if (!std::isfinite(change.bearing.azimuthDeg)) {
            return;
        }
        const std::optional<Geo::Position> position = positionOf(latitude.get(), longitude.get());
        TakenBearing taken;
        taken.channel = change.channel;
        taken.frequencyHz = measured.range().frequencyHz(change.channel);
        taken.bearing = change.bearing;
        taken.timeMs = change.timeMs;
        taken.measuredUs = change.measuredUs != 0 ? change.measuredUs : (startMs + change.timeMs) * UsPerMs;
        taken.headingDeg = heading.get();
        if (taken.headingDeg && !std::isfinite(*taken.headingDeg)) {
            taken.headingDeg.reset();
        }
        const double trueDeg = std::fmod(change.bearing.azimuthDeg + taken.headingDeg.value_or(0), FullCircleDeg);
        taken.line = {position.value_or(Geo::Position()), trueDeg < 0 ? trueDeg + FullCircleDeg : trueDeg};
        listener({taken, position.has_value(), momentOfRecordMs, measured.range()});
    }

    std::optional<std::int32_t> bearings;
    RecordedNumber latitude;
    RecordedNumber longitude;
    RecordedNumber heading;
    RecordedNumber frequency;
    MeasuredBearings measured{[this](const BearingChange& change) { take(change); }};
    std::uint64_t startMs;
    Listener listener;
    double momentOfRecordMs = 0;
};

BearingTaker::BearingTaker(const TypeNames& names, std::uint64_t startMs, Listener listener)
    : d(std::make_unique<Private>(names, startMs, std::move(listener)))
{
}

BearingTaker::~BearingTaker() = default;

void BearingTaker::apply(const Inspection::Record& record)
{
    if (record.timeMs == 0) {
        return;
    }
    for (RecordedNumber* number : {&d->latitude, &d->longitude, &d->heading, &d->frequency}) {
        number->apply(record);
    }
    if (d->bearings == record.code) {
        d->momentOfRecordMs = momentMs(record, d->startMs);
        d->measured.tune(d->frequency.get().value_or(0));
        d->measured.apply(record);
    }
}

std::optional<Geo::Position> BearingTaker::position() const
{
    return positionOf(d->latitude.get(), d->longitude.get());
}

std::uint64_t BearingTaker::passedOver() const
{
    return d->measured.passedOver();
}

TakenBearings takeBearings(const std::string& file, const Inspection::Summary& summary, std::uint64_t fromMs,
                           std::uint64_t toMs)
{
    TakenBearings taken;
    BearingTaker taker(TypeNames(summary.types), summary.header.startMs, [&](const BearingTaker::Taken& one) {
        if (one.momentMs < firstMoment(fromMs) || one.momentMs > static_cast<double>(toMs)) {
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
