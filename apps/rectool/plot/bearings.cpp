// Turning bearings by the heading; groups of the ten busiest channels and of all others.
#include "bearings.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "frequencyunits.h"
#include "printing/text.h"

namespace RecTool {

namespace {

/// Ten colours that are told apart also by the colour-blind, by and large.
constexpr std::array<QRgb, 10> Colours{0xff1f77b4, 0xffff7f0e, 0xff2ca02c, 0xffd62728, 0xff9467bd,
                                       0xff8c564b, 0xffe377c2, 0xff17becf, 0xffbcbd22, 0xff000000};
constexpr QRgb OthersColour = 0xffa0a4a8;

/// Takes over a recorded number; NaN for what is no finite one.
void takeNumber(const PlacedRecord& plotted, double& number)
{
    if (const std::optional<double> recorded = plotted.number()) {
        number = std::isfinite(*recorded) ? *recorded : std::nan("");
    }
}

}  // namespace

Bearings::Bearings(Recordings& source, bool relative) : m_source(source), m_relative(relative)
{
    beginPass();
}

bool Bearings::areRecorded() const
{
    return std::any_of(m_finders.begin(), m_finders.end(), [](const Finder& finder) { return finder.bearings; });
}

void Bearings::beginPass()
{
    m_withoutHeading = 0;
    m_finders.clear();
    m_finders.resize(m_source.tracks().size());  // none is added, so that the listeners' references stay
    for (std::size_t track = 0; track < m_finders.size(); ++track) {
        Finder& finder = m_finders[track];
        const TypeNames& names = m_source.tracks()[track].names;
        finder.bearings = names.numberOf(DirectionFindingKeyword);
        finder.heading = m_relative ? std::nullopt : names.numberOf("TRUEHEADING");
        finder.frequency = names.numberOf("FREQUENCY");
        finder.measured =
            std::make_unique<MeasuredBearings>([this, &finder](const BearingChange& change) { take(finder, change); });
    }
}

void Bearings::visit(const PlacedRecord& plotted)
{
    Finder& finder = m_finders[plotted.type.track];
    if (plotted.type.code == finder.heading) {
        takeNumber(plotted, finder.headingDeg);
        m_headingIsRecorded = m_headingIsRecorded || !std::isnan(finder.headingDeg);
    } else if (plotted.type.code == finder.frequency) {
        double frequencyHz = std::nan("");
        takeNumber(plotted, frequencyHz);
        finder.measured->tune(frequencyHz);
    } else if (plotted.type.code == finder.bearings) {
        finder.momentMs = plotted.momentMs;
        finder.measured->apply(plotted.record);
    }
}

void Bearings::take(const Finder& finder, const BearingChange& change)
{
    if (m_source.isBefore(finder.momentMs) || !std::isfinite(change.bearing.azimuthDeg)) {
        return;
    }
    if (m_areTrue && std::isnan(finder.headingDeg)) {
        ++m_withoutHeading;
        return;
    }
    const double hz = finder.measured->range().frequencyHz(change.channel);
    if (m_groups.empty()) {
        ++m_counts[hz];
        ++m_count;
        m_firstMs = std::min(m_firstMs, finder.momentMs);
        return;
    }
    const auto own = std::find_if(m_groups.begin(), m_groups.end(),
                                  [hz](const PlottedGroup& group) { return group.frequencyHz == hz; });
    PlottedGroup& group = own == m_groups.end() ? m_groups.front() : *own;
    group.lastAzimuthDeg = wrapped(change.bearing.azimuthDeg + (m_areTrue ? finder.headingDeg : 0));
    group.points.add(finder.momentMs, group.lastAzimuthDeg);
}

void Bearings::endCounting()
{
    m_source.reach(m_firstMs, m_source.span().toMs);
    m_areTrue = m_headingIsRecorded;
    beginPass();
}

void Bearings::beginGroups(int width, int height)
{
    const std::vector<double> own = busiest(m_counts, Colours.size());
    const std::vector<std::string> names = frequenciesAlike(own);
    const BearingPoints none(m_source.span(), static_cast<std::size_t>(width), static_cast<std::size_t>(height));
    m_others = m_counts.size() - own.size();
    std::uint64_t left = m_count;
    for (std::size_t i = 0; i < own.size(); ++i) {
        const std::uint64_t count = m_counts.at(own[i]);
        left -= count;
        const QString name = QString::fromStdString(names[i] + " (" + grouped(count) + ')');
        m_groups.push_back({own[i], count, name, QColor(Colours[i]), none});
    }
    if (m_others > 0) {
        const QString name = QStringLiteral("%1 other %2 (%3)")
                                 .arg(m_others)
                                 .arg(m_others == 1 ? "channel" : "channels")
                                 .arg(QString::fromStdString(grouped(left)));
        m_groups.insert(m_groups.begin(), {std::nullopt, left, name, QColor(OthersColour), none});
    }
}

ExitCode Bearings::tellLeftOut(ExitCode result) const
{
    if (m_withoutHeading > 0) {
        complain(m_source.file(), "Bearings left out because no heading was known then: " + grouped(m_withoutHeading) +
                                      "; see --relative.");
    }
    std::uint64_t passedOver = 0;
    for (const Finder& finder : m_finders) {
        passedOver += finder.measured->passedOver();
    }
    return withPassedOver(m_source.file(), DirectionFindingKeyword, "bearings", passedOver, result);
}

}  // namespace RecTool
