// Collecting recorded numbers as series, and drawing them as steps or as columns of pixels.
#include "levelpanel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "labels.h"
#include "printing/text.h"

namespace RecTool {

namespace {

constexpr const char* Hertz = "Hz";

bool isOneOf(std::initializer_list<std::string_view> keywords, const std::string& keyword)
{
    return std::find(keywords.begin(), keywords.end(), keyword) != keywords.end();
}

/// The middle of the values of a keyword that go round in a circle.
std::optional<double> middleOf(const std::string& keyword)
{
    constexpr double South = 180;
    if (isOneOf({"TRUEHEADING", "AZIMUTH", "AZIMUTHSTART", "AZIMUTHSTOP", "RFAZIMUTHRULER"}, keyword)) {
        return South;
    }
    return keyword == "LOCATIONLONGITUDE" ? std::optional(0.0) : std::nullopt;
}

}  // namespace

void Series::begin(const TimeSpan& span, int width)
{
    envelope.emplace(static_cast<std::size_t>(width), span, middleOf(keyword));
}

void Series::visit(const PlacedRecord& plotted)
{
    if (!(plotted.type == type)) {
        return;
    }
    if (const std::optional<double> number = plotted.number()) {
        envelope->add(plotted.momentMs, *number);
    } else {
        ++passedOver;
    }
}

std::optional<std::vector<Series>> wantedSeries(const Recordings& source, const std::vector<std::string>& types,
                                                const std::string& unit)
{
    const auto taken = source.takeTypes(types);
    if (!taken) {
        return std::nullopt;
    }
    std::vector<Series> all;
    for (const TrackType& type : *taken) {
        const std::string keyword = source.tracks()[type.track].names.label(type.code);
        all.push_back({type, keyword, unit.empty() ? unitOfKeyword(keyword) : unit, false, std::nullopt, 0});
    }
    return all;
}

std::string noNumbers(const PlotOptions& options, const Series& series)
{
    if (!std::isnan(series.envelope->lowest())) {
        return "";
    }
    if (series.passedOver > 0) {
        return "The records of " + series.keyword + " hold no numbers.";
    }
    if (series.envelope->records() > 0) {
        return series.keyword + " was not measured: its records hold no number that is one.";
    }
    return noRecord(options, series.keyword);
}

LevelPanel::LevelPanel(Picture& picture, const Series& series)
    : Panel(picture), m_series(series), m_envelope(*series.envelope), m_unit(QString::fromStdString(series.unit))
{
    auto* layout = new QCPLayoutGrid;
    picture.body().addElement(m_row, 0, layout);
    layout->setRowSpacing(0);
    m_rect = picture.addAxisRect(*layout, 1, 0);
    setTimeAcross(picture, *m_rect, m_row, picture.width() - TimeAxisAround);
    chooseScale();
    addLabel(*layout);
    m_envelope.hasPoints() ? drawPoints() : drawColumns();
    setNumberTicks(picture, valueAxis(), picture.height());
}

/// Beside the axis where there is but one panel; several are too low for it.
void LevelPanel::addLabel(QCPLayoutGrid& layout)
{
    const QString label = QString::fromStdString(m_picture.source().labelled(m_series.type.track, m_series.keyword));
    const QString whole = m_unit.isEmpty() ? label : QStringLiteral("%1 (%2)").arg(label, m_unit);
    const bool isAlone = m_picture.rows() == 1;
    layout.setRowStretchFactor(0, AsLittleAsPossible);  // also where nothing is in it
    m_rect->setMinimumMargins(isAlone ? QMargins(8, 12, 34, 8) : QMargins(8, 2, 34, 2));
    if (isAlone) {
        valueAxis().setLabel(whole);
        return;
    }
    QCPTextElement* title = m_picture.addText(layout, 0, 0, whole);
    title->setTextFlags(Qt::AlignLeft | Qt::AlignBottom);
    title->setMargins(QMargins(8, 4, 0, 0));
}

/// Frequencies are recorded in Hz and read in MHz.
void LevelPanel::chooseScale()
{
    const double lowest = m_envelope.lowest();
    const double highest = m_envelope.highest();
    if (m_series.unit == Hertz) {
        const FrequencyUnit unit = usualUnit(std::max(std::abs(lowest), std::abs(highest)));
        m_scale = unit.hz;
        m_unit = QString::fromLatin1(unit.name);
    }
    if (!std::isnan(lowest)) {
        constexpr double Room = 0.06;
        constexpr double Least = 1e-9;
        const double low = lowest / m_scale;
        const double high = highest / m_scale;
        const double least = std::max(std::abs(high) * Least, std::numeric_limits<double>::min());
        const double room = high - low > least ? (high - low) * Room : std::max(1.0, std::abs(high) * Least * 10);
        valueAxis().setRange(low - room, high + room);
    }
}

QCPGraph& LevelPanel::addGraph(QCPGraph* graph, QCPGraph::LineStyle style)
{
    graph->setPen(QPen(QColor(0x1f, 0x4e, 0x9c), 1.2));
    graph->setLineStyle(style);
    graph->removeFromLegend();
    return *graph;
}

/// Every value, from its record to the next one.
void LevelPanel::drawPoints()
{
    const std::vector<Envelope::Point>& points = m_envelope.points();
    QCPGraph& graph = addGraph(new QCPGraph(&timeAxis(), &valueAxis()), QCPGraph::lsStepLeft);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Envelope::Point& point = points[i];
        if (i > 0 && m_envelope.passesSeam(points[i - 1].value, point.value)) {
            graph.addData(point.timeMs, points[i - 1].value / m_scale);
            graph.addData(point.timeMs, std::numeric_limits<double>::quiet_NaN());
        }
        graph.addData(point.timeMs, point.value / m_scale);
    }
    if (!points.empty()) {
        graph.addData(m_picture.source().span().toMs, points.back().value / m_scale);
    }
    constexpr std::size_t FewPoints = 60;
    constexpr double Size = 5;
    if (points.size() <= FewPoints) {
        QCPGraph& marks = addGraph(new WholePoints(&timeAxis(), &valueAxis()), QCPGraph::lsNone);
        marks.setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssDisc, Size));
        for (const Envelope::Point& point : points) {
            marks.addData(point.timeMs, point.value / m_scale);
        }
    }
}

/// From the lowest to the highest value of each column.
void LevelPanel::drawColumns()
{
    const std::size_t columns = m_envelope.columns().size();
    const double width = m_picture.source().span().width() / static_cast<double>(columns);
    // A value that does not change is still a line of a pixel.
    const double least = valueAxis().range().size() / m_picture.height() / 2;
    QCPGraph& middles = addGraph(new QCPGraph(&timeAxis(), &valueAxis()), QCPGraph::lsNone);
    auto* bars = new QCPErrorBars(&timeAxis(), &valueAxis());
    for (std::size_t i = 0; i < columns; ++i) {
        const double time = m_picture.source().span().fromMs + width * (static_cast<double>(i) + 0.5);
        for (const Envelope::Bar& bar : m_envelope.bars(i)) {
            middles.addData(time, (bar.lowest + bar.highest) / 2 / m_scale);
            bars->addData(std::max(least, (bar.highest - bar.lowest) / 2 / m_scale));
        }
    }
    bars->removeFromLegend();
    bars->setDataPlottable(&middles);
    bars->setWhiskerWidth(0);
    bars->setSymbolGap(0);
    bars->setPen(middles.pen());
    bars->setAntialiased(false);
}

Json LevelPanel::json() const
{
    Json json = {{"type", "level"}};
    json.update(m_picture.deviceJson(m_series.type.track));
    json.update({{"keyword", m_series.keyword},
                 {"unit", m_series.unit},
                 {"records", m_envelope.records()},
                 {"min", m_envelope.lowest()},
                 {"max", m_envelope.highest()}});
    json.update(placeInTimeline(*m_rect));
    return json;
}

ExitCode LevelPanel::tellPassedOver(ExitCode result) const
{
    return withPassedOver(m_picture.source().file(), m_series.keyword, "numbers", m_series.passedOver, result);
}

}  // namespace RecTool
