// Turning bearings by the heading; groups of the ten busiest channels and of all others.
#include "bearinggroups.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <utility>

#include <values/value.h>

#include "legendtext.h"
#include "printing/text.h"
#include "replay/measuredbearings.h"
#include "replay/recordedvalues.h"

namespace RecTool {

namespace {

constexpr const char* HeadingKeyword = "TRUEHEADING";
constexpr const char* FrequencyKeyword = "FREQUENCY";

/// Ten colours that are told apart also by the colour-blind, by and large.
constexpr std::array<QRgb, 10> Colours{0xff1f77b4, 0xffff7f0e, 0xff2ca02c, 0xffd62728, 0xff9467bd,
                                       0xff8c564b, 0xffe377c2, 0xff17becf, 0xffbcbd22, 0xff000000};
constexpr QRgb OthersColour = 0xffa0a4a8;

/// Takes over a recorded number; NaN for what is no finite one.
void takeNumber(const values::ValueBase* value, double& number)
{
    if (const auto* numeric = dynamic_cast<const values::ValueNumeric<double>*>(value)) {
        number = std::isfinite(numeric->GetValue()) ? numeric->GetValue() : std::nan("");
    }
}

}  // namespace

struct Bearings::Finder {
    std::optional<std::int32_t> bearings;
    std::optional<std::int32_t> heading;
    std::optional<std::int32_t> frequency;
    double headingDeg = std::nan("");
    double momentMs = 0;  // of the record being applied
    RecordedValues recorded;
    std::unique_ptr<MeasuredBearings> measured;
};

Bearings::Bearings(PlotSource& source, bool relative) : m_source(source), m_relative(relative)
{
    begin({});
}

Bearings::~Bearings() = default;

bool Bearings::areRecorded() const
{
    return std::any_of(m_finders.begin(), m_finders.end(), [](const Finder& finder) { return finder.bearings; });
}

void Bearings::begin(Show show)
{
    m_show = std::move(show);
    m_withoutHeading = 0;
    m_finders.clear();
    m_finders.resize(m_source.tracks().size());  // none is added, so that the listeners' references stay
    for (std::size_t track = 0; track < m_finders.size(); ++track) {
        Finder& finder = m_finders[track];
        finder.bearings = m_source.numberOf(track, DirectionFindingKeyword);
        finder.heading = m_relative ? std::nullopt : m_source.numberOf(track, HeadingKeyword);
        finder.frequency = m_source.numberOf(track, FrequencyKeyword);
        finder.measured = std::make_unique<MeasuredBearings>([this, &finder](const BearingChange& change) {
            if (m_source.isBefore(finder.momentMs) || !std::isfinite(change.bearing.azimuthDeg)) {
                return;
            }
            if (m_isTrue && std::isnan(finder.headingDeg)) {
                ++m_withoutHeading;
                return;
            }
            const double azimuth = change.bearing.azimuthDeg + (m_isTrue ? finder.headingDeg : 0);
            m_show({finder.measured->range().frequencyHz(change.channel), finder.momentMs, wrapped(azimuth)});
        });
    }
}

void Bearings::visit(const PlottedRecord& plotted)
{
    Finder& finder = m_finders[plotted.track];
    const Recording2::Inspection::Record& record = plotted.record;
    if (record.code == finder.heading) {
        takeNumber(finder.recorded.apply(record), finder.headingDeg);
        m_headingIsRecorded = m_headingIsRecorded || !std::isnan(finder.headingDeg);
    } else if (record.code == finder.frequency) {
        double frequencyHz = std::nan("");
        takeNumber(finder.recorded.apply(record), frequencyHz);
        finder.measured->tune(frequencyHz);
    } else if (record.code == finder.bearings) {
        finder.momentMs = plotted.momentMs;
        finder.measured->apply(record);
    }
}

void Bearings::replay(const Show& show)
{
    begin(show);
    m_source.walk([this](const PlottedRecord& record) { visit(record); });
}

std::uint64_t Bearings::passedOver() const
{
    std::uint64_t passedOver = 0;
    for (const Finder& finder : m_finders) {
        passedOver += finder.measured->passedOver();
    }
    return passedOver;
}

BearingGroups::BearingGroups(const BearingCount& count, const TimeSpan& span, int width, int height) : m_count(count)
{
    m_frequencies = count.most(Colours.size());
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    const std::size_t others = count.channels() - m_frequencies.size();
    m_groups.push_back({QStringLiteral("%1 other %2 (%3)")
                            .arg(others)
                            .arg(others == 1 ? "channel" : "channels")
                            .arg(QString::fromStdString(grouped(count.all() - bearingsOf(m_frequencies)))),
                        QColor(OthersColour), BearingPoints(span, columns, rows), 0});
    const std::vector<std::string> names = frequenciesAlike(m_frequencies);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string name = names[i] + " (" + grouped(count.of(m_frequencies[i])) + ')';
        m_groups.push_back({QString::fromStdString(name), QColor(Colours[i]), BearingPoints(span, columns, rows), 0});
    }
}

void BearingGroups::add(const ShownBearing& bearing)
{
    const std::size_t group = groupOf(bearing.frequencyHz);
    m_groups[group].points.add(bearing.momentMs, bearing.azimuthDeg);
    m_groups[group].lastAzimuthDeg = bearing.azimuthDeg;
}

std::vector<const PlottedGroup*> BearingGroups::shown() const
{
    std::vector<const PlottedGroup*> shown;
    for (std::size_t i = others() > 0 ? 0 : 1; i < m_groups.size(); ++i) {
        shown.push_back(&m_groups[i]);
    }
    return shown;
}

/// That of all others is the first.
std::size_t BearingGroups::groupOf(double frequencyHz) const
{
    const auto found = std::lower_bound(m_frequencies.begin(), m_frequencies.end(), frequencyHz);
    const bool isOwn = found != m_frequencies.end() && *found == frequencyHz;
    return isOwn ? static_cast<std::size_t>(found - m_frequencies.begin()) + 1 : 0;
}

std::uint64_t BearingGroups::bearingsOf(const std::vector<double>& frequencies) const
{
    std::uint64_t bearings = 0;
    for (const double hz : frequencies) {
        bearings += m_count.of(hz);
    }
    return bearings;
}

}  // namespace RecTool
