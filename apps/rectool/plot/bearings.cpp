// Turning bearings by the heading; groups of the ten busiest channels and of all others.
#include "bearings.h"

#include <algorithm>
#include <array>

#include "frequencyunits.h"
#include "printing/text.h"

namespace RecTool {

namespace {

/// Ten colours that are told apart also by the colour-blind, by and large.
constexpr std::array<QRgb, 10> Colours{0xff1f77b4, 0xffff7f0e, 0xff2ca02c, 0xffd62728, 0xff9467bd,
                                       0xff8c564b, 0xffe377c2, 0xff17becf, 0xffbcbd22, 0xff000000};
constexpr QRgb OthersColour = 0xffa0a4a8;

}  // namespace

Bearings::Bearings(Recordings& source, bool relative) : m_source(source), m_relative(relative)
{
    beginPass();
}

void Bearings::beginPass()
{
    m_withoutHeading = 0;
    m_all.emplace(m_source, [this](const PlacedRecord& plotted, const BearingTaker::Taken& taken) {
        if (!m_source.isBefore(plotted.momentMs)) {
            take(taken.bearing, plotted.momentMs);
        }
    });
}

void Bearings::visit(const PlacedRecord& plotted)
{
    m_all->apply(plotted);
    m_headingIsRecorded = m_headingIsRecorded || (!m_relative && m_all->of(plotted.type.track).headingDeg());
}

void Bearings::take(const TakenBearing& bearing, double momentMs)
{
    if (m_areTrue && !bearing.headingDeg) {
        ++m_withoutHeading;
        return;
    }
    const double hz = bearing.frequencyHz;
    if (m_groups.empty()) {
        ++m_counts[hz];
        ++m_count;
        m_firstMs = std::min(m_firstMs, momentMs);
        return;
    }
    const auto own = std::find_if(m_groups.begin(), m_groups.end(),
                                  [hz](const PlottedGroup& group) { return group.frequencyHz == hz; });
    PlottedGroup& group = own == m_groups.end() ? m_groups.front() : *own;
    group.lastAzimuthDeg = wrapped(m_areTrue ? bearing.line.azimuthDeg : bearing.bearing.azimuthDeg);
    group.points.add(momentMs, group.lastAzimuthDeg);
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
    return withPassedOver(m_source.file(), DirectionFindingKeyword, "bearings", m_all->passedOver(), result);
}

}  // namespace RecTool
