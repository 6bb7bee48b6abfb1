// Axes of longitude and latitude with one scale, and a bar that says how long a kilometre is.
#include "earthpanel.h"

#include <algorithm>
#include <cmath>

#include "axes.h"

namespace RecTool {

namespace {

constexpr double FullTurnDeg = 360;

/// The longest of 1, 2, 5, 10, ... that is no more.
double roundLength(double mostM)
{
    const double decade = std::pow(10, std::floor(std::log10(mostM)));
    for (const double step : {5.0, 2.0}) {
        if (step * decade <= mostM) {
            return step * decade;
        }
    }
    return decade;
}

QString lengthText(double metres)
{
    constexpr double PerKm = 1000;
    return metres < PerKm ? QStringLiteral("%1 m").arg(metres) : QStringLiteral("%1 km").arg(metres / PerKm);
}

}  // namespace

EarthPanel::EarthPanel(Picture& picture, const Geo::Area& area, const QString& below)
    : Panel(picture), m_strip(new QCPLayoutGrid), m_area(area), m_margins(&picture.plot())
{
    auto* layout = new QCPLayoutGrid;
    picture.body().addElement(m_row, 0, layout);
    layout->addElement(0, 0, m_strip);
    m_rect = picture.addAxisRect(*m_strip, 0, 0);
    m_rect->setMinimumMargins(QMargins(8, 12, 8, 8));
    for (QCPAxis* axis : {m_rect->axis(QCPAxis::atTop), m_rect->axis(QCPAxis::atRight)}) {
        axis->setVisible(true);
        axis->setTicks(false);
        axis->setTickLabels(false);
    }
    m_strip->setColumnSpacing(8);
    longitudes().setLabel(QStringLiteral("Longitude (°, east is positive)"));
    latitudes().setLabel(QStringLiteral("Latitude (°, north is positive)"));
    QCPTextElement* text = picture.addText(*layout, 1, 0, picture.elided(below, picture.width() - 30));
    text->setMargins(QMargins(8, 0, 8, 6));
    layout->setRowStretchFactor(1, AsLittleAsPossible);
    longitudes().setRange(area.westDeg, area.eastDeg);
    latitudes().setRange(area.southDeg, area.northDeg);
    setNumberTicks(picture, longitudes(), picture.width());
    setNumberTicks(picture, latitudes(), picture.height());
}

QCPColorScale& EarthPanel::addBar(const QCPColorGradient& gradient, const QCPRange& range, const QString& label)
{
    m_bar = m_picture.addBar(*m_strip, 1, gradient, label, m_margins);
    m_bar->setDataRange(range);
    m_rect->setMarginGroup(QCP::msTop | QCP::msBottom, &m_margins);
    setNumberTicks(m_picture, *m_bar->axis(), m_picture.height());
    return *m_bar;
}

double EarthPanel::across(double longitudeDeg) const
{
    const double middle = m_area.middle().longitudeDeg;
    return middle + std::remainder(longitudeDeg - middle, FullTurnDeg);
}

/// A kilometre is as long in both directions, and all of the area is seen. The map stays as large as it is now.
void EarthPanel::keepPlace()
{
    const QSize size = m_rect->size();
    m_rect->setSizeConstraintRect(QCPLayoutElement::scrInnerRect);
    m_rect->setMinimumSize(size);
    m_rect->setMaximumSize(size);
    const Geo::Position middle = m_area.middle();
    const Geo::DegreeLengths degree = Geo::degreeLengths(middle.latitudeDeg);
    const double widthM = (m_area.eastDeg - m_area.westDeg) * degree.eastM;
    const double heightM = (m_area.northDeg - m_area.southDeg) * degree.northM;
    const double pixelM = std::max(widthM / m_rect->width(), heightM / m_rect->height());
    longitudes().setRange(middle.longitudeDeg, m_rect->width() * pixelM / degree.eastM, Qt::AlignCenter);
    latitudes().setRange(middle.latitudeDeg, m_rect->height() * pixelM / degree.northM, Qt::AlignCenter);
}

void EarthPanel::finish()
{
    setNumberTicks(m_picture, longitudes(), m_rect->width());
    setNumberTicks(m_picture, latitudes(), m_rect->height());
    if (m_bar != nullptr) {
        setNumberTicks(m_picture, *m_bar->axis(), m_rect->height());
    }
}

/// A line as long as a round number of metres, at the lower left.
void EarthPanel::mark()
{
    constexpr double Share = 0.25;  // of the width, at most
    constexpr int Aside = 14;
    constexpr int End = 4;
    const QCPRange width = longitudes().range();
    const double pixelM = width.size() * Geo::degreeLengths(latitudes().range().center()).eastM / m_rect->width();
    const double lengthM = roundLength(pixelM * m_rect->width() * Share);
    const QPointF from(m_rect->left() + Aside, m_rect->bottom() - Aside);
    const QPointF to = from + QPointF(lengthM / pixelM, 0);
    const QPen pen(Qt::black, 2);
    m_picture.addLine(from, to, pen);
    for (const QPointF& end : {from, to}) {
        m_picture.addLine(end - QPointF(0, End), end + QPointF(0, End), pen);
    }
    auto* label = m_picture.addItem<QCPItemText>();
    label->position->setPixelPosition((from + to) / 2 - QPointF(0, End));
    label->setPositionAlignment(Qt::AlignHCenter | Qt::AlignBottom);
    label->setText(lengthText(lengthM));
    label->setFont(m_picture.font());
}

QCPGraph& EarthPanel::addPoints(const QString& name, const QCPScatterStyle& style)
{
    auto* graph = new QCPGraph(&longitudes(), &latitudes());
    graph->setLineStyle(QCPGraph::lsNone);
    graph->setScatterStyle(style);
    graph->setName(name);
    graph->removeFromLegend();
    return *graph;
}

void EarthPanel::addPosition(QCPGraph& graph, const Geo::Position& position) const
{
    graph.addData(across(position.longitudeDeg), position.latitudeDeg);
}

void EarthPanel::addOutline(const std::vector<Geo::Path>& rings, const QPen& pen)
{
    for (const Geo::Path& ring : rings) {
        auto* curve = new QCPCurve(&longitudes(), &latitudes());
        curve->setPen(pen);
        curve->removeFromLegend();
        for (const Geo::Position& position : ring) {
            curve->addData(across(position.longitudeDeg), position.latitudeDeg);
        }
    }
}

/// Within the map, as its rect is as wide as it can be.
void EarthPanel::addLegend()
{
    auto* legend = new QCPLegend;
    m_rect->insetLayout()->addElement(legend, Qt::AlignTop | Qt::AlignRight);
    legend->setLayer(QStringLiteral("legend"));
    legend->setFont(m_picture.font());
    legend->setBrush(QColor(255, 255, 255, 220));
    legend->setBorderPen(QPen(QColor(200, 200, 200)));
    for (QCPGraph* graph : m_rect->graphs()) {
        if (!graph->name().isEmpty()) {
            graph->addToLegend(legend);
        }
    }
}

Json EarthPanel::placeJson() const
{
    Json json = placeInTimeline(*m_rect);
    json.update({{"west", longitudes().range().lower},
                 {"east", longitudes().range().upper},
                 {"south", latitudes().range().lower},
                 {"north", latitudes().range().upper}});
    return json;
}

}  // namespace RecTool
