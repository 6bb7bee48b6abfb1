// Drawing heat maps and tracks.
#include "earthplot.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "earthpanel.h"
#include "levelcolours.h"
#include "printing/text.h"
#include "printing/units.h"

namespace RecTool {

namespace {

constexpr double Unseen = 1e-3;  // evidence of a cell that no bearing says anything of

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
    const std::optional<int> height = heightFor(options, LikeLines);
    if (!height) {
        return ExitCode::Usage;
    }
    Picture picture(options, *height, recordings, QStringLiteral("Where bearings meet"), 1);
    picture.addPanel<HeatPanel>(options, heat);
    return picture.draw([&](Json& json) { json["panels"] = picture.panelsJson(); });
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
