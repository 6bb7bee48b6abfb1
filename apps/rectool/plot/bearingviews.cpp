// Drawing azimuths over time, and the polar view with its rings and directions.
#include "bearingviews.h"

#include <algorithm>
#include <cmath>

namespace RecTool {

namespace {

constexpr double FullTurn = 360;
constexpr double Pi = 3.14159265358979323846;

QCPScatterStyle dot(const QColor& colour)
{
    constexpr double Size = 5;
    return {QCPScatterStyle::ssDisc, colour, colour, Size};
}

QString azimuthLabel(bool areTrue)
{
    return areTrue ? QStringLiteral("Bearing (\u00b0 from true north)")
                   : QStringLiteral("Azimuth (\u00b0 from the antenna's zero)");
}

void addRing(Picture& picture, QCPAxisRect& rect, double radius)
{
    auto* ring = picture.addItem<QCPItemEllipse>("grid");
    for (QCPItemPosition* position : {ring->topLeft, ring->bottomRight}) {
        position->setAxes(rect.axis(QCPAxis::atBottom), rect.axis(QCPAxis::atLeft));
    }
    ring->topLeft->setCoords(-radius, radius);
    ring->bottomRight->setCoords(radius, -radius);
    ring->setPen(QPen(QColor(radius < 1 ? 0xffc8ccd0 : 0xff60666c)));
}

QString directionName(int degrees, bool areTrue)
{
    if (areTrue && degrees % 90 == 0) {
        return QStringLiteral("NESW").mid(degrees / 90, 1);
    }
    return QString::number(degrees) + QChar(0xb0);
}

/// The names of the directions, just outside of the circle.
class Directions {
public:
    Directions(Picture& picture, bool areTrue) : m_picture(picture), m_areTrue(areTrue) {}

    /// The radius of the largest circle that has its names around it within a square; pixels.
    [[nodiscard]] double radius(double square) const
    {
        double largest = square / 2;
        for (int degrees = 0; degrees < static_cast<int>(FullTurn); degrees += Step) {
            const Text text = textOf(degrees);
            const double across = (square - text.width) / 2 - text.awayX();
            const double up = (square - m_picture.lineHeight()) / 2 - text.awayY();
            largest = std::abs(text.x) > Small ? std::min(largest, across / std::abs(text.x)) : largest;
            largest = std::abs(text.y) > Small ? std::min(largest, up / std::abs(text.y)) : largest;
        }
        return largest;
    }
    /// @param radius of the circle, which is 1 in coordinates; pixels
    void add(QCPAxisRect& rect, double radius)
    {
        for (int degrees = 0; degrees < static_cast<int>(FullTurn); degrees += Step) {
            const Text text = textOf(degrees);
            auto* label = m_picture.addItem<QCPItemText>("grid");
            label->position->setAxes(rect.axis(QCPAxis::atBottom), rect.axis(QCPAxis::atLeft));
            label->position->setType(QCPItemPosition::ptPlotCoords);
            label->position->setCoords(text.x * (1 + text.away / radius), text.y * (1 + text.away / radius));
            label->setText(text.name);
            label->setFont(m_picture.font());
        }
    }

    static constexpr int Step = 30;

private:
    static constexpr double Small = 1e-9;
    struct Text {
        QString name;
        double x;  // where it points to, on a circle of 1
        double y;
        double width;
        double away;  // its middle from the circle
        [[nodiscard]] double awayX() const { return away * std::abs(x); }
        [[nodiscard]] double awayY() const { return away * std::abs(y); }
    };
    [[nodiscard]] Text textOf(int degrees) const
    {
        constexpr double Gap = 3;
        Text text{directionName(degrees, m_areTrue), std::sin(degrees * Pi / (FullTurn / 2)),
                  std::cos(degrees * Pi / (FullTurn / 2)), 0, 0};
        text.width = m_picture.widthOf(text.name);
        text.away = Gap + (std::abs(text.x) * text.width + std::abs(text.y) * m_picture.lineHeight()) / 2;
        return text;
    }

    Picture& m_picture;
    bool m_areTrue;
};

}  // namespace

void drawAzimuths(const BearingGroups& groups, bool areTrue, QCPAxisRect& rect)
{
    QCPAxis& time = *rect.axis(QCPAxis::atBottom);
    QCPAxis& azimuth = *rect.axis(QCPAxis::atLeft);
    azimuth.setRange(0, FullTurn);
    azimuth.setLabel(azimuthLabel(areTrue));
    const QSharedPointer<QCPAxisTickerFixed> ticker(new QCPAxisTickerFixed);
    constexpr double Step = 45;
    ticker->setTickStep(Step);
    azimuth.setTicker(ticker);
    azimuth.setNumberPrecision(0);
    for (const PlottedGroup* group : groups.shown()) {
        auto* graph = new WholePoints(&time, &azimuth);
        graph->setName(group->name);
        graph->setLineStyle(QCPGraph::lsNone);
        graph->setScatterStyle(dot(group->colour));
        for (const BearingPoints::Point& point : group->points.points()) {
            graph->addData(point.timeMs, point.azimuthDeg);
        }
    }
}

void addPolarView(Picture& picture, const PlotSource& source, const BearingGroups& groups, bool areTrue,
                  QCPAxisRect& rect)
{
    constexpr double Middle = 0.08;  // the first bearings have a direction too
    Directions directions(picture, areTrue);
    const double radius = directions.radius(std::min(rect.width(), rect.height()));
    const double edgeX = rect.width() / radius / 2;
    const double edgeY = rect.height() / radius / 2;
    QCPAxis& x = *rect.axis(QCPAxis::atBottom);
    QCPAxis& y = *rect.axis(QCPAxis::atLeft);
    for (QCPAxis* axis : rect.axes()) {
        axis->setVisible(false);
        axis->grid()->setVisible(false);
    }
    x.setRange(-edgeX, edgeX);
    y.setRange(-edgeY, edgeY);
    for (const double part : {0.25, 0.5, 0.75, 1.0}) {
        addRing(picture, rect, Middle + (1 - Middle) * part);
    }
    for (int degrees = 0; degrees < static_cast<int>(FullTurn); degrees += Directions::Step) {
        const double angle = degrees * Pi / (FullTurn / 2);
        auto* spoke = picture.addItem<QCPItemLine>("grid");
        for (QCPItemPosition* position : {spoke->start, spoke->end}) {
            position->setAxes(&x, &y);
            position->setType(QCPItemPosition::ptPlotCoords);
        }
        spoke->start->setCoords(Middle * std::sin(angle), Middle * std::cos(angle));
        spoke->end->setCoords(std::sin(angle), std::cos(angle));
        spoke->setPen(QPen(QColor(0xffc8ccd0)));
    }
    directions.add(rect, radius);
    for (const PlottedGroup* group : groups.shown()) {
        auto* curve = new QCPCurve(&x, &y);
        curve->removeFromLegend();
        curve->setLineStyle(QCPCurve::lsNone);
        curve->setScatterStyle(dot(group->colour));
        for (const BearingPoints::Point& point : group->points.points()) {
            const double part = (point.timeMs - source.span().fromMs) / source.span().width();
            const double distance = Middle + (1 - Middle) * part;
            const double angle = point.azimuthDeg * Pi / (FullTurn / 2);
            curve->addData(distance * std::sin(angle), distance * std::cos(angle));
        }
    }
}

}  // namespace RecTool
