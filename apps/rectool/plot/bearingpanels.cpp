// Drawing azimuths over time, and the view from above with its rings and directions.
#include "bearingpanels.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "labels.h"
#include "printing/text.h"

namespace RecTool {

namespace {

/// Ten colours that are told apart also by the colour-blind, by and large.
constexpr std::array<QRgb, 10> Colours{0xff1f77b4, 0xffff7f0e, 0xff2ca02c, 0xffd62728, 0xff9467bd,
                                       0xff8c564b, 0xffe377c2, 0xff17becf, 0xffbcbd22, 0xff000000};
constexpr QRgb OthersColour = 0xffa0a4a8;

constexpr int FullTurn = 360;
constexpr int Step = 30;         // of the directions that have a name
constexpr double Middle = 0.08;  // of the circle: the first bearings have a direction too
constexpr QRgb Faint = 0xffc8ccd0;

/// Where an azimuth points to, on a circle.
QPointF pointAt(double degrees, double radius)
{
    constexpr double Pi = 3.14159265358979323846;
    const double angle = degrees * Pi / (FullTurn / 2.0);
    return {radius * std::sin(angle), radius * std::cos(angle)};
}

QCPScatterStyle dot(const QColor& colour)
{
    constexpr double Size = 5;
    return {QCPScatterStyle::ssDisc, colour, colour, Size};
}

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

AzimuthPanel::AzimuthPanel(Picture& picture, const Bearings& bearings, int pixels, const QMargins& margins,
                           bool withLabels)
    : Panel(picture),
      m_bearings(bearings),
      m_rect(*picture.addAxisRect(picture.body(), m_row, 0)),
      m_withLabels(withLabels)
{
    constexpr double Ticks = 45;
    m_rect.setMinimumMargins(margins);
    setTimeAcross(picture, m_rect, m_row, pixels);
    QCPAxis& azimuth = *m_rect.axis(QCPAxis::atLeft);
    azimuth.setRange(0, FullTurn);
    azimuth.setLabel(bearings.areTrue() ? QStringLiteral("Bearing (\u00b0 from true north)")
                                        : QStringLiteral("Azimuth (\u00b0 from the antenna's zero)"));
    const QSharedPointer<QCPAxisTickerFixed> ticker(new QCPAxisTickerFixed);
    ticker->setTickStep(Ticks);
    azimuth.setTicker(ticker);
    azimuth.setNumberPrecision(0);
    for (const PlottedGroup& group : bearings.groups()) {
        auto* graph = new WholePoints(m_rect.axis(QCPAxis::atBottom), &azimuth);
        graph->setName(group.name);
        graph->setLineStyle(QCPGraph::lsNone);
        graph->setScatterStyle(dot(group.colour));
        for (const BearingPoints::Point& point : group.points.points()) {
            graph->addData(point.timeMs, point.azimuthDeg);
        }
    }
}

Json AzimuthPanel::json() const
{
    Json json = {{"type", "bearings"},
                 {"reference", m_bearings.areTrue() ? "true-north" : "antenna"},
                 {"bearings", m_bearings.count()}};
    json.update(placeInTimeline(m_rect));
    return json;
}

FromAbovePanel::FromAbovePanel(Picture& picture, const Bearings& bearings, QCPLayoutGrid& grid, int square)
    : Panel(picture),
      m_bearings(bearings),
      m_rect(*picture.addAxisRect(grid, 0, 0)),
      m_x(*m_rect.axis(QCPAxis::atBottom)),
      m_y(*m_rect.axis(QCPAxis::atLeft))
{
    m_rect.setAutoMargins(QCP::msNone);
    m_rect.setMinimumSize(square, square);
    m_rect.setMaximumSize(square, square);
}

struct FromAbovePanel::Name {
    QString text;
    QPointF direction;  // on a circle of 1
    double width;
    double away;  // its middle from the circle, in pixels
};

FromAbovePanel::Name FromAbovePanel::nameOf(int degrees) const
{
    constexpr double Gap = 3;
    const bool isLetter = m_bearings.areTrue() && degrees % 90 == 0;
    const QString text =
        isLetter ? QStringLiteral("NESW").mid(degrees / 90, 1) : QString::number(degrees) + QChar(0xb0);
    const QPointF direction = pointAt(degrees, 1);
    const double width = m_picture.widthOf(text);
    return {text, direction, width,
            Gap + (std::abs(direction.x()) * width + std::abs(direction.y()) * m_picture.lineHeight()) / 2};
}

/// Of the largest circle that has its names around it within the square; pixels.
double FromAbovePanel::largestRadius() const
{
    constexpr double Small = 1e-9;
    const double square = std::min(m_rect.width(), m_rect.height());
    double largest = square / 2;
    for (int degrees = 0; degrees < FullTurn; degrees += Step) {
        const Name name = nameOf(degrees);
        for (const auto& [part, size] :
             {std::pair(std::abs(name.direction.x()), name.width),
              std::pair(std::abs(name.direction.y()), static_cast<double>(m_picture.lineHeight()))}) {
            const double room = (square - size) / 2 - name.away * part;
            largest = part > Small ? std::min(largest, room / part) : largest;
        }
    }
    return largest;
}

void FromAbovePanel::addRing(double radius)
{
    auto* ring = m_picture.addItem<QCPItemEllipse>("grid");
    for (QCPItemPosition* position : {ring->topLeft, ring->bottomRight}) {
        position->setAxes(&m_x, &m_y);
    }
    ring->topLeft->setCoords(-radius, radius);
    ring->bottomRight->setCoords(radius, -radius);
    ring->setPen(QPen(QColor(radius < 1 ? Faint : 0xff60666c)));
}

/// A spoke and its name.
void FromAbovePanel::addDirection(int degrees, double radius)
{
    const Name name = nameOf(degrees);
    auto* spoke = m_picture.addItem<QCPItemLine>("grid");
    auto* label = m_picture.addItem<QCPItemText>("grid");
    for (QCPItemPosition* position : {spoke->start, spoke->end, label->position}) {
        position->setAxes(&m_x, &m_y);
        position->setType(QCPItemPosition::ptPlotCoords);
    }
    spoke->start->setCoords(name.direction * Middle);
    spoke->end->setCoords(name.direction);
    spoke->setPen(QPen(QColor(Faint)));
    label->position->setCoords(name.direction * (1 + name.away / radius));
    label->setText(name.text);
    label->setFont(m_picture.font());
}

void FromAbovePanel::addGroup(const PlottedGroup& group)
{
    const TimeSpan& span = m_picture.source().span();
    auto* curve = new QCPCurve(&m_x, &m_y);
    curve->removeFromLegend();
    curve->setLineStyle(QCPCurve::lsNone);
    curve->setScatterStyle(dot(group.colour));
    for (const BearingPoints::Point& point : group.points.points()) {
        const double part = (point.timeMs - span.fromMs) / span.width();
        const QPointF place = pointAt(point.azimuthDeg, Middle + (1 - Middle) * part);
        curve->addData(place.x(), place.y());
    }
}

void FromAbovePanel::finish()
{
    const double radius = largestRadius();
    for (QCPAxis* axis : m_rect.axes()) {
        axis->setVisible(false);
        axis->grid()->setVisible(false);
    }
    m_x.setRange(-m_rect.width() / radius / 2, m_rect.width() / radius / 2);
    m_y.setRange(-m_rect.height() / radius / 2, m_rect.height() / radius / 2);
    for (const double part : {0.25, 0.5, 0.75, 1.0}) {
        addRing(Middle + (1 - Middle) * part);
    }
    for (int degrees = 0; degrees < FullTurn; degrees += Step) {
        addDirection(degrees, radius);
    }
    for (const PlottedGroup& group : m_bearings.groups()) {
        addGroup(group);
    }
}

Json FromAbovePanel::json() const
{
    const QPoint middle = m_rect.center();
    return {{"x", middle.x()}, {"y", middle.y()}, {"radius", m_rect.height() / m_y.range().size()}};
}

}  // namespace RecTool
