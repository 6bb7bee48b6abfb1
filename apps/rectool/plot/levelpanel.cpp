// Collecting recorded numbers as series, and drawing them as steps or as columns of pixels.
#include "levelpanel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>

#include <values/value.h>

#include "printing/text.h"

namespace RecTool {

namespace {

constexpr const char* Degrees = "\u00b0";
constexpr const char* Hertz = "Hz";

const values::ValueNumeric<double>* asNumber(const values::ValueBase* value)
{
    const bool isNumber = value != nullptr && (value->GetType() == values::ValueType::Numeric ||
                                               value->GetType() == values::ValueType::NumericWithOffset);
    return isNumber ? static_cast<const values::ValueNumeric<double>*>(value) : nullptr;
}

/// The middle of the values of a keyword that go round in a circle.
std::optional<double> middleOf(std::string_view keyword)
{
    constexpr double South = 180;
    for (const char* direction : {"TRUEHEADING", "AZIMUTH", "AZIMUTHSTART", "AZIMUTHSTOP", "RFAZIMUTHRULER"}) {
        if (keyword == direction) {
            return South;
        }
    }
    return keyword == "LOCATIONLONGITUDE" ? std::optional(0.0) : std::nullopt;
}

}  // namespace

std::string unitOf(const std::string& keyword)
{
    struct Known {
        std::string_view keyword;
        const char* unit;
    };
    constexpr std::array Units{
        Known{"LEVEL", "dB"},
        Known{"FIELDSTRENGTH", "dB"},
        Known{"ATTENUATION", "dB"},
        Known{"SQUELCHVALUE", "dB"},
        Known{"RFYLIMIT", "dB"},
        Known{"STARTLEVEL", "dB"},
        Known{"STOPLEVEL", "dB"},
        Known{"IFSTARTLEVEL", "dB"},
        Known{"IFSTOPLEVEL", "dB"},
        Known{"IFLEVELTHRESHOLD", "dB"},
        Known{"FREQUENCY", Hertz},
        Known{"FREQOFFSET", Hertz},
        Known{"STARTFREQ", Hertz},
        Known{"STOPFREQ", Hertz},
        Known{"STEPFREQ", Hertz},
        Known{"BANDWIDTH", Hertz},
        Known{"DFBANDWIDTH", Hertz},
        Known{"AFBANDWIDTH", Hertz},
        Known{"IFSPAN", Hertz},
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
        Known{"VELOCITY", "m/s"},
        Known{"QUALITY", "%"},
    };
    const auto known = std::find_if(Units.begin(), Units.end(), [&](const Known& k) { return k.keyword == keyword; });
    return known == Units.end() ? std::string() : known->unit;
}

std::vector<Series> makeSeries(const std::vector<PlotSource::TypeInTrack>& types, const std::string& unit,
                               const PlotSource& source, int width)
{
    std::vector<Series> all;
    for (const PlotSource::TypeInTrack& type : types) {
        const std::string keyword = source.tracks()[type.track].names.label(type.code);
        all.push_back({type.track, type.code, keyword, source.labelled(type.track, keyword),
                       unit.empty() ? unitOf(keyword) : unit,
                       Envelope(static_cast<std::size_t>(width), source.span(), middleOf(keyword)), 0});
    }
    return all;
}

void SeriesReplay::visit(const PlottedRecord& plotted)
{
    for (Series& series : m_all) {
        if (series.track != plotted.track || series.code != plotted.record.code) {
            continue;
        }
        if (const auto* number = asNumber(m_recorded[plotted.track].apply(plotted.record))) {
            series.envelope.add(plotted.momentMs, number->GetValue());
        } else {
            ++series.passedOver;
        }
    }
}

void SeriesReplay::finish()
{
    for (Series& series : m_all) {
        series.envelope.finish();
    }
}

std::string noNumbers(const PlotOptions& options, const Series& series)
{
    if (!std::isnan(series.envelope.lowest())) {
        return "";
    }
    if (series.passedOver > 0) {
        return "The records of " + series.keyword + " hold no numbers.";
    }
    if (series.envelope.records() > 0) {
        return series.keyword + " was not measured: its records hold no number that is one.";
    }
    const bool all = options.from.empty() && options.to.empty();
    return "There is no record of " + series.keyword + (all ? " in the recording." : " in or before the span.");
}

void setTimeAcross(Picture& picture, const PlotSource& source, const PanelPlace& place, QCPAxisRect& rect)
{
    constexpr int Sides = 120;
    QCPAxis& time = *rect.axis(QCPAxis::atBottom);
    QCPAxis& above = *rect.axis(QCPAxis::atTop);
    for (QCPAxis* axis : rect.axes()) {
        axis->setVisible(true);
        axis->setSubTicks(false);
    }
    rect.axis(QCPAxis::atRight)->setTicks(false);
    setTimeAxis(picture, time, source, TimeScale::Clock, picture.width() - Sides);
    setTimeAxis(picture, above, source, TimeScale::Elapsed, picture.width() - Sides);
    const bool hasElapsed = place.isFirst && hasClock(source);
    above.setTickLabels(hasElapsed);
    above.setTicks(hasClock(source));
    above.setLabel(hasElapsed ? above.label() : QString());
    time.setTickLabels(place.isLast);
    time.setLabel(place.isLast ? time.label() : QString());
    rect.setMarginGroup(QCP::msLeft | QCP::msRight, place.sides);
}

LevelPanel::LevelPanel(Picture& picture, const PlotSource& source, const Series& series, const PanelPlace& place)
    : m_picture(picture), m_source(source), m_series(series), m_unit(QString::fromStdString(series.unit))
{
    auto* layout = new QCPLayoutGrid;
    picture.body().addElement(place.row, 0, layout);
    layout->setRowSpacing(0);
    m_rect = picture.addAxisRect(*layout, 1, 0);
    m_rect->setMinimumMargins(QMargins(8, 12, 34, 8));
    setTimeAcross(picture, source, place, *m_rect);
    chooseScale();
    addLabel(*layout, place.isFirst && place.isLast);
    draw();
    setNumberTicks(picture, valueAxis(), picture.height());
}

/// Beside the axis where there is but one panel; several are too low for it.
void LevelPanel::addLabel(QCPLayoutGrid& layout, bool isAlone)
{
    const QString label = QString::fromStdString(m_series.label);
    const QString whole = m_unit.isEmpty() ? label : QStringLiteral("%1 (%2)").arg(label, m_unit);
    if (isAlone) {
        valueAxis().setLabel(whole);
        return;
    }
    QCPTextElement* title = m_picture.addText(layout, 0, 0, whole);
    title->setTextFlags(Qt::AlignLeft | Qt::AlignBottom);
    title->setMargins(QMargins(8, 4, 0, 0));
    m_rect->setMinimumMargins(QMargins(8, 2, 34, 2));
    constexpr double AsLittleAsPossible = 0.001;
    layout.setRowStretchFactor(0, AsLittleAsPossible);
}

/// Frequencies are recorded in Hz and read in MHz.
void LevelPanel::chooseScale()
{
    if (m_series.unit == Hertz) {
        const FrequencyUnit unit =
            usualUnit(std::max(std::abs(m_series.envelope.lowest()), std::abs(m_series.envelope.highest())));
        m_scale = unit.hz;
        m_unit = QString::fromLatin1(unit.name);
    }
}

void LevelPanel::draw()
{
    const double low = m_series.envelope.lowest() / m_scale;
    const double high = m_series.envelope.highest() / m_scale;
    if (!std::isnan(low)) {
        constexpr double Room = 0.06;
        constexpr double Least = 1e-9;
        const double least = std::max(std::abs(high) * Least, std::numeric_limits<double>::min());
        const double room = high - low > least ? (high - low) * Room : std::max(1.0, std::abs(high) * Least * 10);
        valueAxis().setRange(low - room, high + room);
    }
    m_series.envelope.hasPoints() ? drawPoints() : drawColumns();
}

/// Every value, from its record to the next one.
void LevelPanel::drawPoints()
{
    const std::vector<Envelope::Point>& points = m_series.envelope.points();
    auto* graph = addGraph<QCPGraph>();
    graph->removeFromLegend();
    graph->setLineStyle(QCPGraph::lsStepLeft);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Envelope::Point& point = points[i];
        if (i > 0 && m_series.envelope.passesSeam(points[i - 1].value, point.value)) {
            graph->addData(point.timeMs, points[i - 1].value / m_scale);
            graph->addData(point.timeMs, std::numeric_limits<double>::quiet_NaN());
        }
        graph->addData(point.timeMs, point.value / m_scale);
    }
    if (!points.empty()) {
        graph->addData(m_source.span().toMs, points.back().value / m_scale);
    }
    constexpr std::size_t FewPoints = 60;
    constexpr double Size = 5;
    if (points.size() <= FewPoints) {
        auto* marks = addGraph<WholePoints>();
        marks->removeFromLegend();
        marks->setLineStyle(QCPGraph::lsNone);
        marks->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssDisc, Size));
        for (const Envelope::Point& point : points) {
            marks->addData(point.timeMs, point.value / m_scale);
        }
    }
}

/// From the lowest to the highest value of each column.
void LevelPanel::drawColumns()
{
    const std::size_t columns = m_series.envelope.columns().size();
    const double width = m_source.span().width() / static_cast<double>(columns);
    // A value that does not change is still a line of a pixel.
    const double least = valueAxis().range().size() / m_picture.height() / 2;
    auto* middles = addGraph<QCPGraph>();
    middles->removeFromLegend();
    auto* bars = new QCPErrorBars(&timeAxis(), &valueAxis());
    bars->removeFromLegend();
    for (std::size_t i = 0; i < columns; ++i) {
        const double time = m_source.span().fromMs + width * (static_cast<double>(i) + 0.5);
        for (const Envelope::Bar& bar : m_series.envelope.bars(i)) {
            middles->addData(time, (bar.lowest + bar.highest) / 2 / m_scale);
            bars->addData(std::max(least, (bar.highest - bar.lowest) / 2 / m_scale));
        }
    }
    middles->setLineStyle(QCPGraph::lsNone);
    bars->setDataPlottable(middles);
    bars->setWhiskerWidth(0);
    bars->setSymbolGap(0);
    bars->setPen(middles->pen());
    bars->setAntialiased(false);
}

}  // namespace RecTool
