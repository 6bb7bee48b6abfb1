// plot bearings: azimuths over time and as seen from above.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <iostream>
#include <optional>
#include <utility>

#include <values/value.h>

#include "../measuredbearings.h"
#include "../text.h"
#include "axes.h"
#include "bearingpoints.h"
#include "picture.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

constexpr const char* HeadingKeyword = "TRUEHEADING";
constexpr double Circle = 360;
constexpr double Pi = 3.14159265358979323846;

/// Ten colours that are told apart also by the colour-blind, by and large.
constexpr std::array<QRgb, 10> Colours{0xff1f77b4, 0xffff7f0e, 0xff2ca02c, 0xffd62728, 0xff9467bd,
                                       0xff8c564b, 0xffe377c2, 0xff17becf, 0xffbcbd22, 0xff000000};
constexpr QRgb OthersColour = 0xffa0a4a8;

/// A bearing as it is drawn.
struct Shown {
    double frequencyHz;
    std::uint64_t timeMs;
    double azimuthDeg;
};

/// The bearings of a recording, relative to the antenna or to true north.
class Bearings {
public:
    Bearings(PlotSource& source, bool relative)
        : m_source(source),
          m_bearings(source.names().numberOf(DirectionFindingKeyword)),
          m_heading(relative ? std::nullopt : source.names().numberOf(HeadingKeyword))
    {
    }

    [[nodiscard]] bool areRecorded() const { return m_bearings.has_value(); }

    /// One pass.
    void replay(const std::function<void(const Shown&)>& show)
    {
        m_withoutHeading = 0;
        double heading = std::nan("");
        bool headingIsRecorded = false;
        const MeasuredBearings* map = nullptr;
        MeasuredBearings replay([&](const BearingChange& change) {
            const bool inSpan = change.timeMs >= m_source.span().fromMs;
            if (!inSpan || !std::isfinite(change.bearing.azimuthDeg)) {
                return;
            }
            if (m_isTrue && std::isnan(heading)) {
                ++m_withoutHeading;
                return;
            }
            const double azimuth = change.bearing.azimuthDeg + (m_isTrue ? heading : 0);
            show({map->range().frequencyHz(change.channel), change.timeMs, wrapped(azimuth)});
        });
        map = &replay;
        RecordedValues recorded;
        m_source.walk([&](const Inspection::Record& record) {
            if (record.code == m_heading) {
                const values::ValueBase* value = recorded.apply(record);
                if (value != nullptr && value->GetType() == values::ValueType::Numeric) {
                    heading = static_cast<const values::ValueNumeric<double>&>(*value).GetValue();
                    headingIsRecorded = headingIsRecorded || std::isfinite(heading);
                    heading = std::isfinite(heading) ? heading : std::nan("");
                }
            } else if (record.code == m_bearings) {
                replay.apply(record);
            }
        });
        m_passedOver = replay.passedOver();
        m_headingIsRecorded = headingIsRecorded;
    }

    /// Whether a pass met a heading.
    [[nodiscard]] bool headingIsRecorded() const { return m_headingIsRecorded; }
    /// From now on azimuths are those from true north.
    void makeTrue() { m_isTrue = true; }
    [[nodiscard]] bool areTrue() const { return m_isTrue; }
    [[nodiscard]] std::uint64_t passedOver() const { return m_passedOver; }
    /// Bearings in front of the first heading, which have no true azimuth.
    [[nodiscard]] std::uint64_t withoutHeading() const { return m_withoutHeading; }

private:
    PlotSource& m_source;
    std::optional<std::int32_t> m_bearings;
    std::optional<std::int32_t> m_heading;
    bool m_isTrue = false;
    bool m_headingIsRecorded = false;
    std::uint64_t m_passedOver = 0;
    std::uint64_t m_withoutHeading = 0;
};

/// Points of one colour.
struct Group {
    QString name;
    QColor colour;
    BearingPoints points;
    double lastAzimuthDeg = 0;
};

/// The channels with the most bearings, each in its colour; in front of them all others in grey.
class Groups {
public:
    Groups(const BearingCount& count, const TimeSpan& span, int width, int height) : m_count(count)
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
        for (const double hz : m_frequencies) {
            const std::string name = frequency(hz) + " (" + grouped(count.of(hz)) + ')';
            m_groups.push_back({QString::fromStdString(name), QColor(Colours[m_groups.size() - 1]),
                                BearingPoints(span, columns, rows), 0});
        }
    }
    void add(const Shown& bearing)
    {
        const std::size_t group = groupOf(bearing.frequencyHz);
        m_groups[group].points.add(bearing.timeMs, bearing.azimuthDeg);
        m_groups[group].lastAzimuthDeg = bearing.azimuthDeg;
    }
    [[nodiscard]] double lastAzimuthDeg(double frequencyHz) const
    {
        return m_groups[groupOf(frequencyHz)].lastAzimuthDeg;
    }
    [[nodiscard]] std::size_t others() const { return m_count.channels() - m_frequencies.size(); }
    [[nodiscard]] const std::vector<double>& frequencies() const { return m_frequencies; }
    /// Those that are drawn.
    [[nodiscard]] std::vector<const Group*> shown() const
    {
        std::vector<const Group*> shown;
        for (std::size_t i = others() > 0 ? 0 : 1; i < m_groups.size(); ++i) {
            shown.push_back(&m_groups[i]);
        }
        return shown;
    }

private:
    /// That of all others is the first.
    [[nodiscard]] std::size_t groupOf(double frequencyHz) const
    {
        const auto found = std::lower_bound(m_frequencies.begin(), m_frequencies.end(), frequencyHz);
        const bool isOwn = found != m_frequencies.end() && *found == frequencyHz;
        return isOwn ? static_cast<std::size_t>(found - m_frequencies.begin()) + 1 : 0;
    }
    [[nodiscard]] std::uint64_t bearingsOf(const std::vector<double>& frequencies) const
    {
        std::uint64_t bearings = 0;
        for (const double hz : frequencies) {
            bearings += m_count.of(hz);
        }
        return bearings;
    }

    const BearingCount& m_count;
    std::vector<double> m_frequencies;
    std::vector<Group> m_groups;
};

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

/// Whether the view from above stands beside that over time, or below it.
bool viewsAreBeside(const Picture& picture)
{
    constexpr int Wide = 900;
    return picture.width() >= Wide;
}

/// Azimuth up, time across.
QCPAxisRect* addTimeView(Picture& picture, const PlotSource& source, const Groups& groups, bool areTrue,
                         QCPAxisRect& rect)
{
    QCPAxis& time = *rect.axis(QCPAxis::atBottom);
    QCPAxis& azimuth = *rect.axis(QCPAxis::atLeft);
    QCPAxis& elapsed = *rect.axis(QCPAxis::atTop);
    for (QCPAxis* axis : rect.axes()) {
        axis->setVisible(true);
        axis->setSubTicks(false);
    }
    rect.axis(QCPAxis::atRight)->setTicks(false);
    const int width = viewsAreBeside(picture) ? picture.width() / 2 : picture.width() * 4 / 5;
    setTimeAxis(picture, time, source, TimeScale::Clock, width);
    setTimeAxis(picture, elapsed, source, TimeScale::Elapsed, width);
    elapsed.setTicks(hasClock(source));
    elapsed.setLabel(hasClock(source) ? elapsed.label() : QString());
    azimuth.setRange(0, Circle);
    azimuth.setLabel(azimuthLabel(areTrue));
    const QSharedPointer<QCPAxisTickerFixed> ticker(new QCPAxisTickerFixed);
    constexpr double Step = 45;
    ticker->setTickStep(Step);
    azimuth.setTicker(ticker);
    azimuth.setNumberPrecision(0);
    for (const Group* group : groups.shown()) {
        auto* graph = new QCPGraph(&time, &azimuth);
        graph->setName(group->name);
        graph->setLineStyle(QCPGraph::lsNone);
        graph->setScatterStyle(dot(group->colour));
        for (const BearingPoints::Point& point : group->points.points()) {
            graph->addData(static_cast<double>(point.timeMs), point.azimuthDeg);
        }
    }
    return &rect;
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
        for (int degrees = 0; degrees < static_cast<int>(Circle); degrees += Step) {
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
        for (int degrees = 0; degrees < static_cast<int>(Circle); degrees += Step) {
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
        Text text{directionName(degrees, m_areTrue), std::sin(degrees * Pi / (Circle / 2)),
                  std::cos(degrees * Pi / (Circle / 2)), 0, 0};
        text.width = m_picture.widthOf(text.name);
        text.away = Gap + (std::abs(text.x) * text.width + std::abs(text.y) * m_picture.lineHeight()) / 2;
        return text;
    }

    Picture& m_picture;
    bool m_areTrue;
};

/// A bearing points to where it was taken from; the later, the farther from the middle.
/// @param rect laid out: its size says how large the circle is
void addPolarView(Picture& picture, const PlotSource& source, const Groups& groups, bool areTrue, QCPAxisRect& rect)
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
    for (int degrees = 0; degrees < static_cast<int>(Circle); degrees += Directions::Step) {
        const double angle = degrees * Pi / (Circle / 2);
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
    for (const Group* group : groups.shown()) {
        auto* curve = new QCPCurve(&x, &y);
        curve->removeFromLegend();
        curve->setLineStyle(QCPCurve::lsNone);
        curve->setScatterStyle(dot(group->colour));
        for (const BearingPoints::Point& point : group->points.points()) {
            const double part = static_cast<double>(point.timeMs - source.span().fromMs) / source.span().width();
            const double distance = Middle + (1 - Middle) * part;
            const double angle = point.azimuthDeg * Pi / (Circle / 2);
            curve->addData(distance * std::sin(angle), distance * std::cos(angle));
        }
    }
}

/// The whole picture: over time, from above, and what the colours mean. @return where the view from above is
QCPAxisRect* draw(Picture& picture, const PlotSource& source, const Groups& groups, bool areTrue)
{
    const bool beside = viewsAreBeside(picture);
    QCPLayoutGrid& body = picture.body();
    QCPAxisRect* times = picture.addAxisRect(body, 0, 0);
    times->setMinimumMargins(QMargins(8, 8, 34, 8));
    addTimeView(picture, source, groups, areTrue, *times);

    auto* side = new QCPLayoutGrid;
    body.addElement(beside ? 0 : 1, beside ? 1 : 0, side);
    const int columns = beside ? 2 : 1;
    const int rows = (static_cast<int>(groups.shown().size()) + columns - 1) / columns;
    const int legendHeight = rows * (picture.lineHeight() + 6) + 10;
    const int square = std::min(picture.height() * (beside ? 6 : 4) / 10, picture.width() * (beside ? 38 : 60) / 100);
    QCPAxisRect* polar = picture.addAxisRect(*side, 0, 0);
    polar->setAutoMargins(QCP::msNone);
    polar->setMinimumSize(square, square);
    polar->setMaximumSize(square, square);
    QCPTextElement* caption =
        picture.addText(beside ? *side : body, beside ? 1 : 2, 0,
                        areTrue ? QStringLiteral("True north at the top; the later, the farther out")
                                : QStringLiteral("Antenna's zero at the top; the later, the farther out"));
    caption->setMargins(QMargins(0, 0, 0, 6));

    auto* legendColumn = new QCPLayoutGrid;
    side->addElement(beside ? 2 : 0, beside ? 0 : 1, legendColumn);
    auto* legend = new QCPLegend;
    legendColumn->addElement(0, 0, legend);
    legendColumn->addElement(1, 0, new QCPLayoutElement(&picture.plot()));  // takes what the legend does not need
    legend->setLayer(QStringLiteral("legend"));
    legend->setFont(picture.font());
    legend->setBorderPen(Qt::NoPen);
    legend->setFillOrder(QCPLegend::foColumnsFirst);
    legend->setRowSpacing(2);
    legend->setWrap(columns);
    for (int i = 0; i < picture.plot().graphCount(); ++i) {
        picture.plot().graph(i)->addToLegend(legend);
    }
    legend->setMaximumSize(QWIDGETSIZE_MAX, legendHeight);
    picture.layOut();
    addPolarView(picture, source, groups, areTrue, *polar);
    return polar;
}

void print(const PlotBearingsOptions& options, const PlotSource& source, const Bearings& bearings,
           const BearingCount& count, const Groups& groups, const QCPAxisRect& view, const QCPAxisRect& fromAbove)
{
    Json channels = Json::array();
    for (const double hz : groups.frequencies()) {
        channels.push_back(
            {{"frequencyHz", hz}, {"bearings", count.of(hz)}, {"lastAzimuthDeg", groups.lastAzimuthDeg(hz)}});
    }
    Json json = pictureJson(options, source);
    json["reference"] = bearings.areTrue() ? "true-north" : "antenna";
    json["bearings"] = count.all();
    json["channels"] = std::move(channels);
    json["otherChannels"] = groups.others();
    json["withoutHeading"] = bearings.withoutHeading();
    json["view"] = {{"columns", view.width()}, {"rows", view.height()}, {"left", view.left()}, {"top", view.top()}};
    const QCPAxis& up = *fromAbove.axis(QCPAxis::atLeft);
    const QPoint middle = fromAbove.center();
    json["circle"] = {{"x", middle.x()}, {"y", middle.y()}, {"radius", fromAbove.height() / up.range().size()}};
    std::cout << dump(json, 2) << '\n';
}

}  // namespace

ExitCode plotBearings(const PlotBearingsOptions& options)
{
    if (const ExitCode checked = checkPicture(options); checked != ExitCode::Fine) {
        return checked;
    }
    constexpr int Passes = 2;
    PlotSource source(options, Passes);
    if (source.state() != ExitCode::Fine) {
        return source.state();
    }
    Bearings bearings(source, options.relative);
    if (!bearings.areRecorded()) {
        return source.refuse(std::string("There is no type ") + DirectionFindingKeyword + " in the recording.");
    }
    BearingCount count;
    bearings.replay([&](const Shown& bearing) { count.add(bearing.frequencyHz); });
    if (count.all() == 0) {
        return source.refuse(options.from.empty() && options.to.empty() ? "There is no bearing in the recording."
                                                                        : "There is no bearing in the span.");
    }
    if (bearings.headingIsRecorded()) {
        bearings.makeTrue();
    }
    Groups groups(count, source.span(), options.width, options.height);
    bearings.replay([&](const Shown& bearing) { groups.add(bearing); });

    const DrawingApplication application;
    Picture picture(options, source,
                    bearings.areTrue() ? QStringLiteral("True bearings (DFSPECTRUM, TRUEHEADING)")
                                       : QStringLiteral("Bearings (DFSPECTRUM)"));
    const QCPAxisRect* fromAbove = draw(picture, source, groups, bearings.areTrue());
    picture.layOut();
    markBookmarks(picture, *picture.plot().graph(0)->keyAxis(), source);
    const ExitCode result = picture.save();
    if (result == ExitCode::Fine && options.json) {
        print(options, source, bearings, count, groups, *picture.plot().graph(0)->keyAxis()->axisRect(), *fromAbove);
    }
    if (bearings.withoutHeading() > 0) {
        complain(options.file, "Bearings left out because they are older than the first heading: " +
                                   grouped(bearings.withoutHeading()) + "; see --relative.");
    }
    return source.end(withPassedOver(options.file, DirectionFindingKeyword, "bearings", bearings.passedOver(), result));
}

}  // namespace RecTool
