// plot level: numbers over time.
#include <array>
#include <cmath>
#include <iostream>
#include <memory>
#include <set>
#include <string_view>

#include <values/value.h>

#include "../recordedvalues.h"
#include "../text.h"
#include "axes.h"
#include "envelope.h"
#include "picture.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;

namespace {

constexpr const char* LevelKeyword = "LEVEL";

/// What the numbers of a keyword are counted in; empty where that is not fixed or there is no unit.
const char* unitOf(std::string_view keyword)
{
    struct Known {
        std::string_view keyword;
        const char* unit;
    };
    constexpr const char* Degrees = "\u00b0";
    constexpr std::array Units{
        Known{"LEVEL", "dB"},
        Known{"FIELDSTRENGTH", "dB"},
        Known{"ATTENUATION", "dB"},
        Known{"STARTLEVEL", "dB"},
        Known{"STOPLEVEL", "dB"},
        Known{"IFSTARTLEVEL", "dB"},
        Known{"IFSTOPLEVEL", "dB"},
        Known{"IFLEVELTHRESHOLD", "dB"},
        Known{"FREQUENCY", "Hz"},
        Known{"FREQOFFSET", "Hz"},
        Known{"STARTFREQ", "Hz"},
        Known{"STOPFREQ", "Hz"},
        Known{"STEPFREQ", "Hz"},
        Known{"BANDWIDTH", "Hz"},
        Known{"DFBANDWIDTH", "Hz"},
        Known{"AFBANDWIDTH", "Hz"},
        Known{"AZIMUTH", Degrees},
        Known{"AZIMUTHSTART", Degrees},
        Known{"AZIMUTHSTOP", Degrees},
        Known{"ELEVATION", Degrees},
        Known{"ELEVATIONSTART", Degrees},
        Known{"ELEVATIONSTOP", Degrees},
        Known{"RFAZIMUTHRULER", Degrees},
        Known{"RFELEVATIONRULER", Degrees},
        Known{"TRUEHEADING", Degrees},
        Known{"PITCH", Degrees},
        Known{"ROLL", Degrees},
        Known{"LOCATIONLATITUDE", Degrees},
        Known{"LOCATIONLONGITUDE", Degrees},
        Known{"ALTITUDE", "m"},
    };
    for (const Known& known : Units) {
        if (known.keyword == keyword) {
            return known.unit;
        }
    }
    return "";
}

const values::ValueNumeric<double>* asNumber(const values::ValueBase* value)
{
    const bool isNumber = value != nullptr && (value->GetType() == values::ValueType::Numeric ||
                                               value->GetType() == values::ValueType::NumericWithOffset);
    return isNumber ? static_cast<const values::ValueNumeric<double>*>(value) : nullptr;
}

/// A type that is drawn.
struct Series {
    std::int32_t code = 0;
    std::string keyword;
    Envelope envelope;
    std::uint64_t passedOver = 0;  // records that are no number
};

/// Where a panel is among the others.
struct PanelPlace {
    int row = 0;
    bool isFirst = true;
    bool isLast = true;
    QCPMarginGroup* sides = nullptr;  // all panels are as wide
};

class LevelPanel {
public:
    LevelPanel(Picture& picture, const PlotSource& source, const PlotLevelOptions& options, const Series& series,
               const PanelPlace& place)
        : m_picture(picture),
          m_source(source),
          m_series(series),
          m_unit(QString::fromStdString(options.unit.empty() ? unitOf(series.keyword) : options.unit)),
          m_rect(picture.addAxisRect(picture.body(), place.row, 0))
    {
        m_rect->setMinimumMargins(QMargins(8, 12, 34, 8));
        QCPAxis& time = timeAxis();
        for (QCPAxis* axis : m_rect->axes()) {
            axis->setVisible(true);
            axis->setSubTicks(false);
        }
        m_rect->axis(QCPAxis::atRight)->setTicks(false);
        setTimeAxis(picture, time, source, TimeScale::Clock, picture.width() - 120);
        QCPAxis& above = *m_rect->axis(QCPAxis::atTop);
        setTimeAxis(picture, above, source, TimeScale::Elapsed, picture.width() - 120);
        // What is the same for all panels stands above and below them.
        const bool hasElapsed = place.isFirst && hasClock(source);
        above.setTickLabels(hasElapsed);
        above.setTicks(hasClock(source));
        above.setLabel(hasElapsed ? above.label() : QString());
        time.setTickLabels(place.isLast);
        time.setLabel(place.isLast ? time.label() : QString());
        m_rect->setMarginGroup(QCP::msLeft | QCP::msRight, place.sides);
        const QString keyword = QString::fromStdString(series.keyword);
        valueAxis().setLabel(m_unit.isEmpty() ? keyword : QStringLiteral("%1 (%2)").arg(keyword, m_unit));
        draw();
        setNumberTicks(picture, valueAxis(), picture.height());
    }
    void finishAxes() { setNumberTicks(m_picture, valueAxis(), m_rect->height()); }
    void mark() { markBookmarks(m_picture, timeAxis(), m_source); }

private:
    [[nodiscard]] QCPAxis& timeAxis() { return *m_rect->axis(QCPAxis::atBottom); }
    [[nodiscard]] QCPAxis& valueAxis() { return *m_rect->axis(QCPAxis::atLeft); }

    QCPGraph* addGraph()
    {
        auto* graph = new QCPGraph(&timeAxis(), &valueAxis());
        graph->setPen(QPen(QColor(0x1f, 0x4e, 0x9c), 1.2));
        return graph;
    }

    void draw()
    {
        double low = m_series.envelope.lowest();
        double high = m_series.envelope.highest();
        if (std::isnan(low)) {
            low = 0;
            high = 1;
        }
        constexpr double Room = 0.06;
        constexpr double Least = 1e-9;
        const double least = std::max(std::abs(high) * Least, std::numeric_limits<double>::min());
        const double room = high - low > least ? (high - low) * Room : std::max(1.0, std::abs(high) * Least * 10);
        valueAxis().setRange(low - room, high + room);
        m_series.envelope.hasPoints() ? drawPoints() : drawColumns();
    }

    /// Every value, from its record to the next one.
    void drawPoints()
    {
        QCPGraph* graph = addGraph();
        graph->setLineStyle(QCPGraph::lsStepLeft);
        for (const Envelope::Point& point : m_series.envelope.points()) {
            graph->addData(static_cast<double>(point.timeMs), point.value);
        }
        if (!m_series.envelope.points().empty()) {
            graph->addData(static_cast<double>(m_source.span().toMs), m_series.envelope.points().back().value);
        }
        constexpr std::size_t FewPoints = 60;
        if (m_series.envelope.points().size() <= FewPoints) {
            auto* marks = addGraph();
            marks->setLineStyle(QCPGraph::lsNone);
            marks->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssDisc, 5));
            for (const Envelope::Point& point : m_series.envelope.points()) {
                marks->addData(static_cast<double>(point.timeMs), point.value);
            }
        }
    }

    /// From the lowest to the highest value of each column.
    void drawColumns()
    {
        const std::vector<Envelope::Column>& columns = m_series.envelope.columns();
        const double width = m_source.span().width() / static_cast<double>(columns.size());
        // A value that does not change is still a line of a pixel.
        const double least = valueAxis().range().size() / m_picture.height() / 2;
        QCPGraph* middles = addGraph();
        auto* bars = new QCPErrorBars(&timeAxis(), &valueAxis());
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const double time = static_cast<double>(m_source.span().fromMs) + width * (static_cast<double>(i) + 0.5);
            if (!std::isnan(columns[i].lowest)) {
                middles->addData(time, (columns[i].lowest + columns[i].highest) / 2);
                bars->addData(std::max(least, (columns[i].highest - columns[i].lowest) / 2));
            }
        }
        middles->setLineStyle(QCPGraph::lsNone);
        bars->setDataPlottable(middles);
        bars->setWhiskerWidth(0);
        bars->setSymbolGap(0);
        bars->setPen(middles->pen());
        bars->setAntialiased(false);
    }

    Picture& m_picture;
    const PlotSource& m_source;
    const Series& m_series;
    QString m_unit;
    QCPAxisRect* m_rect;
};

std::optional<std::vector<Series>> wantedSeries(const PlotLevelOptions& options, const PlotSource& source)
{
    const auto numbers = takeTypes(
        options.file, options.types.empty() ? std::vector<std::string>{LevelKeyword} : options.types, source.names());
    if (!numbers) {
        return std::nullopt;
    }
    std::vector<Series> series;
    for (const std::int32_t number : *numbers) {
        series.push_back({number, source.names().label(number),
                          Envelope(static_cast<std::size_t>(options.width), source.span()), 0});
    }
    return series;
}

void replay(PlotSource& source, std::vector<Series>& all)
{
    RecordedValues recorded;
    source.walk([&](const Inspection::Record& record) {
        for (Series& series : all) {
            if (series.code != record.code) {
                continue;
            }
            if (const auto* number = asNumber(recorded.apply(record))) {
                series.envelope.add(record.timeMs, number->GetValue());
            } else {
                ++series.passedOver;
            }
        }
    });
    for (Series& series : all) {
        series.envelope.finish();
    }
}

void print(const PlotLevelOptions& options, const PlotSource& source, const std::vector<Series>& all)
{
    Json json = pictureJson(options, source);
    json["series"] = Json::array();
    for (const Series& series : all) {
        const Envelope& envelope = series.envelope;
        json["series"].push_back({{"keyword", series.keyword},
                                  {"code", series.code},
                                  {"unit", options.unit.empty() ? unitOf(series.keyword) : options.unit},
                                  {"records", envelope.records()},
                                  {"min", envelope.lowest()},
                                  {"max", envelope.highest()},
                                  {"drawn", envelope.hasPoints() ? "values" : "envelope"}});
    }
    std::cout << dump(json, 2) << '\n';
}

QString title(const std::vector<Series>& all)
{
    QStringList keywords;
    for (const Series& series : all) {
        keywords << QString::fromStdString(series.keyword);
    }
    return keywords.join(QStringLiteral(", ")) + QStringLiteral(" over time");
}

/// A panel for each series, one below the other.
void draw(Picture& picture, const PlotSource& source, const PlotLevelOptions& options, const std::vector<Series>& all,
          QCPMarginGroup& sides)
{
    std::vector<std::unique_ptr<LevelPanel>> panels;
    for (const Series& series : all) {
        const bool isLast = panels.size() + 1 == all.size();
        const PanelPlace place{static_cast<int>(panels.size()), panels.empty(), isLast, &sides};
        panels.push_back(std::make_unique<LevelPanel>(picture, source, options, series, place));
    }
    picture.layOut();
    for (const auto& panel : panels) {
        panel->finishAxes();
    }
    picture.layOut();
    for (const auto& panel : panels) {
        panel->mark();
    }
}

/// Why a series cannot be drawn.
std::string nothingToDraw(const PlotLevelOptions& options, const Series& series)
{
    if (series.passedOver > 0) {
        return "The records of " + series.keyword + " hold no numbers.";
    }
    const bool all = options.from.empty() && options.to.empty();
    return "There is no record of " + series.keyword + (all ? " in the recording." : " in or before the span.");
}

}  // namespace

ExitCode plotLevel(const PlotLevelOptions& options)
{
    if (const ExitCode checked = checkPicture(options); checked != ExitCode::Fine) {
        return checked;
    }
    PlotSource source(options, 1);
    if (source.state() != ExitCode::Fine) {
        return source.state();
    }
    std::optional<std::vector<Series>> all = wantedSeries(options, source);
    if (!all) {
        return ExitCode::Usage;
    }
    replay(source, *all);
    for (const Series& series : *all) {
        if (std::isnan(series.envelope.lowest())) {
            return source.refuse(nothingToDraw(options, series));
        }
    }
    const DrawingApplication application;
    Picture picture(options, source, title(*all));
    QCPMarginGroup sides(&picture.plot());
    draw(picture, source, options, *all, sides);
    ExitCode result = picture.save();
    if (result == ExitCode::Fine && options.json) {
        print(options, source, *all);
    }
    for (const Series& series : *all) {
        result = withPassedOver(options.file, series.keyword, "numbers", series.passedOver, result);
    }
    return source.end(result);
}

}  // namespace RecTool
