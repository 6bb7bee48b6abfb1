// Drawing heat maps and tracks.
#include "earthplot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "axes.h"
#include "geo/heatgrid.h"
#include "geo/shapes.h"
#include "picture.h"
#include "printing/text.h"

namespace RecTool {

namespace {

/// The longest of 1, 2, 5, 10, ... that is no more.
double roundLength(double mostM)
{
    const double decade = std::pow(10, std::floor(std::log10(mostM)));
    return decade * (5 * decade <= mostM ? 5 : 2 * decade <= mostM ? 2 : 1);
}

QString lengthText(double metres)
{
    constexpr double PerKm = 1000;
    return metres < PerKm ? QStringLiteral("%1 m").arg(metres) : QStringLiteral("%1 km").arg(metres / PerKm);
}

class EarthPanel : public Panel {
public:
    /// A kilometre is as long in both directions, and all of the area is seen. The map stays as large as it is now.
    void keepPlace() override
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
    void finish() override
    {
        setNumberTicks(m_picture, longitudes(), m_rect->width());
        setNumberTicks(m_picture, latitudes(), m_rect->height());
        if (m_bar != nullptr) {
            setNumberTicks(m_picture, *m_bar->axis(), m_rect->height());
        }
    }
    /// A line as long as a round number of metres, at the lower left.
    void mark() override
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

protected:
    /// @param area that is shown at least @param below a line under the map
    EarthPanel(Picture& picture, const Geo::Area& area, const QString& below)
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

    /// The bar beside the map.
    QCPColorScale& addBar(const QCPColorGradient& gradient, const QCPRange& range, const QString& label)
    {
        m_bar = m_picture.addBar(*m_strip, 1, gradient, label, m_margins);
        m_bar->setDataRange(range);
        m_rect->setMarginGroup(QCP::msTop | QCP::msBottom, &m_margins);
        setNumberTicks(m_picture, *m_bar->axis(), m_picture.height());
        return *m_bar;
    }
    /// Of a longitude on the axis, which may go beyond 180.
    [[nodiscard]] double across(double longitudeDeg) const
    {
        const double middle = m_area.middle().longitudeDeg;
        return middle + std::remainder(longitudeDeg - middle, 360.0);
    }
    /// Positions of one kind, with their entry in the legend.
    QCPGraph& addPoints(const QString& name, const QCPScatterStyle& style)
    {
        auto* graph = new QCPGraph(&longitudes(), &latitudes());
        graph->setLineStyle(QCPGraph::lsNone);
        graph->setScatterStyle(style);
        graph->setName(name);
        graph->removeFromLegend();
        return *graph;
    }
    void addPosition(QCPGraph& graph, const Geo::Position& position) const
    {
        graph.addData(across(position.longitudeDeg), position.latitudeDeg);
    }
    void addOutline(const std::vector<Geo::Path>& rings, const QPen& pen)
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
    void addLegend()
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
    [[nodiscard]] QCPAxis& longitudes() const { return *m_rect->axis(QCPAxis::atBottom); }
    [[nodiscard]] QCPAxis& latitudes() const { return *m_rect->axis(QCPAxis::atLeft); }
    [[nodiscard]] Json placeJson() const
    {
        Json json = placeInTimeline(*m_rect);
        json.update({{"west", longitudes().range().lower},
                     {"east", longitudes().range().upper},
                     {"south", latitudes().range().lower},
                     {"north", latitudes().range().upper}});
        return json;
    }

    QCPAxisRect* m_rect;     // NOLINT: for all panels
    QCPLayoutGrid* m_strip;  // NOLINT: map and bar

private:
    Geo::Area m_area;
    QCPMarginGroup m_margins;
    QCPColorScale* m_bar = nullptr;
};

/// White to dark red: the more, the darker.
QCPColorGradient heatColours()
{
    constexpr std::array<QRgb, 6> Stops{0xffffffe5, 0xfffee391, 0xfffe9929, 0xffec5a14, 0xffbd2206, 0xff5c0610};
    return gradientOf(Stops);
}

QString spanText(const Recordings& recordings, double firstMs, double lastMs)
{
    const bool isKnown = recordings.startMs() != 0;
    const auto text = [&](double ms) {
        const double moment = std::max(0.0, ms + (isKnown ? static_cast<double>(recordings.startMs()) : 0.0));
        const auto whole = static_cast<std::uint64_t>(std::llround(moment));
        return isKnown ? utc(whole) : duration(whole);
    };
    return QString::fromStdString("from " + text(firstMs) + " to " + text(lastMs));
}

class HeatPanel final : public EarthPanel {
public:
    HeatPanel(Picture& picture, const MapOptions& options, const Heat& heat)
        : EarthPanel(picture, heat.grid->area(), sentence(picture.source(), options, heat)), m_heat(heat)
    {
        addCells(addBar(heatColours(), QCPRange(0, std::max(heat.highest(), 1.0)),
                        QStringLiteral("Evidence for a transmitter (log likelihood ratio)")));
        constexpr std::size_t Few = 20;
        const bool areFew = heat.stations.size() < Few;
        QCPGraph& stations =
            addPoints(QStringLiteral("Direction finder"),
                      areFew ? QCPScatterStyle(QCPScatterStyle::ssTriangle, QPen(Qt::white, 1), QColor(0xff0050b4), 11)
                             : QCPScatterStyle(QCPScatterStyle::ssCircle, QPen(Qt::NoPen), QColor(0xff0050b4), 4));
        for (const HeatStation& station : heat.stations) {
            addPosition(stations, station.position);
        }
        addFixes();
        addLegend();
    }
    [[nodiscard]] Json json() const override
    {
        Json json = {{"type", "heat"},
                     {"bearings", m_heat.used},
                     {"cells", {m_heat.grid->columns(), m_heat.grid->rows()}},
                     {"highestEvidence", m_heat.highest()},
                     {"firstMs", msJson(m_heat.firstMs)},
                     {"lastMs", msJson(m_heat.lastMs)}};
        json.update(placeJson());
        return json;
    }

private:
    static QString sentence(const Recordings& recordings, const MapOptions& options, const Heat& heat)
    {
        constexpr double PerKm = 1000;
        QString text = QString::fromStdString(counted(heat.used, "bearing"));
        if (options.frequencyHz > 0) {
            text += QStringLiteral(" at ") + QString::fromStdString(frequency(options.frequencyHz));
        }
        return text + QStringLiteral(" ") + spanText(recordings, heat.firstMs, heat.lastMs) +
               QStringLiteral(", standard deviation %1°, reach %2 km")
                   .arg(heat.settings.sigmaDeg)
                   .arg(QString::fromStdString(number(heat.settings.reachM / PerKm, 3)));
    }

    void addCells(QCPColorScale& bar)
    {
        constexpr double Unseen = 1e-3;  // evidence of a cell that no bearing says anything of
        const Geo::HeatGrid& grid = *m_heat.grid;
        const Geo::Position first = grid.areaOf(0, 0).middle();
        const Geo::Position last = grid.areaOf(grid.columns() - 1, grid.rows() - 1).middle();
        auto* map = new QCPColorMap(&longitudes(), &latitudes());
        map->data()->setSize(static_cast<int>(grid.columns()), static_cast<int>(grid.rows()));
        map->data()->setRange(QCPRange(first.longitudeDeg, last.longitudeDeg),
                              QCPRange(first.latitudeDeg, last.latitudeDeg));
        for (std::size_t row = 0; row < grid.rows(); ++row) {
            for (std::size_t column = 0; column < grid.columns(); ++column) {
                const double evidence = grid.at(column, row).evidence;
                map->data()->setCell(static_cast<int>(column), static_cast<int>(row),
                                     evidence < Unseen ? std::numeric_limits<double>::quiet_NaN() : evidence);
            }
        }
        map->setInterpolate(false);
        map->setAntialiased(false);
        map->setColorScale(&bar);
        map->removeFromLegend();
    }

    void addFixes()
    {
        const bool isThere = std::any_of(m_heat.groups.begin(), m_heat.groups.end(),
                                         [](const BearingGroup& group) { return group.fix() != nullptr; });
        if (!isThere) {
            return;
        }
        const QPen pen(Qt::black, 1.5);
        QCPGraph& fixes = addPoints(QStringLiteral("Fix, 95 % ellipse"),
                                    QCPScatterStyle(QCPScatterStyle::ssPlus, pen, Qt::NoBrush, 11));
        for (const BearingGroup& group : m_heat.groups) {
            if (const Geo::Fix* fix = group.fix()) {
                addPosition(fixes, fix->position);
                addOutline(Geo::ellipseRings(fix->position, fix->ellipse), QPen(Qt::black, 1));
            }
        }
    }

    const Heat& m_heat;
};

class FieldPanel final : public EarthPanel {
public:
    FieldPanel(Picture& picture, const MapOptions& options, const FieldTrack& track, const Geo::Area& area)
        : EarthPanel(picture, area, sentence(picture.source(), track)), m_track(track), m_range(levelsOf(track))
    {
        const QCPColorGradient colours = levelColours();
        m_rect->setBackground(QColor(0xffe8eaec));
        addBar(colours, m_range,
               QStringLiteral("Level (%1), highest at a position").arg(QString::fromStdString(options.unit)));
        addLevels(colours);
    }
    [[nodiscard]] Json json() const override
    {
        Json json = {{"type", "track"},
                     {"device", m_track.device},
                     {"keyword", m_track.keyword},
                     {"frequencyHz", m_track.hz},
                     {"points", m_track.points.size()},
                     {"colourFrom", hundredths(m_range.lower)},
                     {"colourTo", hundredths(m_range.upper)}};
        json.update(placeJson());
        return json;
    }

private:
    static QString sentence(const Recordings& recordings, const FieldTrack& track)
    {
        std::uint64_t levels = 0;
        for (const FieldPoint& point : track.points) {
            levels += point.levels;
        }
        return QString::fromStdString(ofDevice(track.device, track.keyword) + " at " + frequency(track.hz) + ", " +
                                      counted(levels, "level") + " at " + counted(track.points.size(), "position") +
                                      ' ') +
               spanText(recordings, track.points.front().firstMs, track.points.back().lastMs);
    }
    static QCPRange levelsOf(const FieldTrack& track)
    {
        constexpr double Least = 1;
        QCPRange range(track.points.front().highest, track.points.front().highest);
        for (const FieldPoint& point : track.points) {
            range.expand(point.highest);
        }
        return range.size() < Least ? QCPRange(range.center() - Least / 2, range.center() + Least / 2) : range;
    }

    /// A graph a colour, the highest levels on top.
    void addLevels(QCPColorGradient colours)
    {
        constexpr std::size_t Steps = 64;
        constexpr std::size_t Few = 2000;
        constexpr double Large = 9;
        constexpr double Small = 6;
        const bool areFew = m_track.points.size() < Few;
        std::array<QCPGraph*, Steps> graphs{};
        for (std::size_t i = 0; i < Steps; ++i) {
            const double share = static_cast<double>(i) / (Steps - 1);
            const QColor colour(colours.color(share, QCPRange(0, 1)));
            graphs.at(i) = &addPoints(
                {}, QCPScatterStyle(QCPScatterStyle::ssCircle, areFew ? QPen(QColor(60, 60, 60), 0.5) : QPen(Qt::NoPen),
                                    colour, areFew ? Large : Small));
        }
        for (const FieldPoint& point : m_track.points) {
            const double share = (point.highest - m_range.lower) / m_range.size();
            const auto colour = static_cast<std::size_t>(std::lround(std::clamp(share, 0.0, 1.0) * (Steps - 1)));
            addPosition(*graphs.at(colour), {point.latitudeDeg, point.longitudeDeg});
        }
    }

    const FieldTrack& m_track;
    QCPRange m_range;
};

}  // namespace

ExitCode drawHeat(const MapOptions& options, Recordings& recordings, const Heat& heat)
{
    constexpr std::size_t LikeLines = 2;
    const auto tell = [](const Picture& picture, Json& json) { json["panels"] = picture.panelsJson(); };
    const auto title = QStringLiteral("Where bearings meet");
    return drawPanels<HeatPanel>(options, recordings, title, LikeLines, std::span(&heat, 1), tell, options);
}

ExitCode drawField(const MapOptions& options, Recordings& recordings, const std::vector<FieldTrack>& tracks)
{
    constexpr std::size_t LikeLines = 3;
    constexpr double Around = 0.05;
    constexpr double LeastM = 50;
    const std::optional<int> height = heightFor(options, LikeLines * tracks.size());
    if (!height) {
        return ExitCode::Usage;
    }
    Picture picture(options, *height, recordings, QStringLiteral("Levels where they were measured"), tracks.size());
    for (const FieldTrack& track : tracks) {
        Geo::AreaAround around;
        for (const FieldPoint& point : track.points) {
            around.add({point.latitudeDeg, point.longitudeDeg});
        }
        const Geo::Area bare = around.area(0).value_or(Geo::Area());
        const double heightM = (bare.northDeg - bare.southDeg) * Geo::degreeLengths(bare.middle().latitudeDeg).northM;
        const double widthM = (bare.eastDeg - bare.westDeg) * Geo::degreeLengths(bare.middle().latitudeDeg).eastM;
        const auto area = around.area(std::max(std::max(heightM, widthM) * Around, LeastM));
        if (!area) {
            return recordings.refuse("Positions beyond 85 degrees of latitude are not drawn: GeoJSON has them.");
        }
        picture.addPanel<FieldPanel>(options, track, *area);
    }
    return picture.draw([&](Json& json) { json["panels"] = picture.panelsJson(); });
}

}  // namespace RecTool
