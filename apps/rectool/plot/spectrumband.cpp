// Laying out the panel of a spectrum, and painting its grid.
#include "spectrumband.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "levelcolours.h"

namespace RecTool {

SpectrumBand::SpectrumBand(Picture& picture, const PlotSource& source, const std::string& unit, Spectrum spectrum,
                           const PanelPlace& place)
    : m_picture(picture),
      m_source(source),
      m_spectrum(std::move(spectrum)),
      m_frequencies(axisPieces(m_spectrum.covered, 1).front()),
      m_unit(unitFor(std::max(std::abs(m_frequencies.lowHz), std::abs(m_frequencies.highHz)), m_frequencies.width())),
      m_rect(picture.addAxisRect(picture.body(), place.row, 0)),
      m_bar(new QCPColorScale(&picture.plot()))
{
    m_rect->setMinimumMargins(QMargins(8, 12, 0, 8));
    m_rect->setBackground(QBrush(QColor(NotMeasuredColour)));
    setTimeAcross(picture, source, place, *m_rect);
    QCPAxis& frequency = *m_rect->axis(QCPAxis::atLeft);
    frequency.setRange(m_frequencies.lowHz / m_unit.hz, m_frequencies.highHz / m_unit.hz);
    const QString label = QString::fromStdString(source.labelled(m_spectrum.track, m_spectrum.keyword));
    frequency.setLabel(
        QStringLiteral("%1 (%2)").arg(label, m_unit.name).replace(QStringLiteral(": "), QStringLiteral("\n")));
    for (QCPAxis* axis : m_rect->axes()) {
        axis->grid()->setVisible(false);
    }
    setNumberTicks(picture, frequency, picture.height() / 4);
    auto* beside = new QCPLayoutGrid;  // the column is as wide as the legend of bearings, the bar is not
    picture.body().addElement(place.row, 1, beside);
    beside->addElement(0, 0, m_bar);
    beside->addElement(0, 1, new QCPLayoutElement(&picture.plot()));
    m_bar->setBarWidth(14);
    m_bar->setType(QCPAxis::atRight);
    m_bar->axis()->setLabelFont(picture.font());
    m_bar->axis()->setTickLabelFont(picture.font());
    m_bar->setGradient(levelColours());
    m_bar->setLabel(QStringLiteral("Level (%1)").arg(QString::fromStdString(unit)));
    m_bar->setDataRange(QCPRange(-1888.8, -1088.8));  // for the first layout, the widest labels that may come
    m_bar->setMargins(QMargins(8, 0, 10, 0));
    m_bar->setMarginGroup(QCP::msTop | QCP::msBottom, &m_margins);
    m_rect->setMarginGroup(QCP::msTop | QCP::msBottom, &m_margins);
}

void SpectrumBand::makeGrid()
{
    constexpr int Fewest = 2;
    m_rect->setSizeConstraintRect(QCPLayoutElement::scrInnerRect);
    m_rect->setMinimumSize(m_rect->size());
    m_rect->setMaximumSize(m_rect->size());
    m_grid = std::make_unique<SpectrumGrid>(static_cast<std::size_t>(std::max(Fewest, m_rect->height())),
                                            static_cast<std::size_t>(std::max(Fewest, m_rect->width())), m_frequencies,
                                            m_source.span(), SpectrumGrid::Mode::Max);
}

void SpectrumBand::update(const LevelMap* map, double momentMs)
{
    if (map == nullptr) {
        ++m_passedOver;
    } else {
        m_grid->update(map->GetChannelRange(), map->GetCells(), momentMs);
    }
}

void SpectrumBand::finish()
{
    m_grid->finish();
    const std::optional<QCPRange> range = colourRange({m_grid.get()});
    m_bar->setDataRange(range.value_or(QCPRange(-1, 0)));
    m_bar->axis()->setTickLabels(range.has_value());
    setNumberTicks(m_picture, *m_bar->axis(), m_rect->height());
    setNumberTicks(m_picture, *m_rect->axis(QCPAxis::atLeft), m_rect->height());
    paint();
}

void SpectrumBand::mark()
{
    markBookmarks(m_picture, *m_rect->axis(QCPAxis::atBottom), m_source, false);
}

Json SpectrumBand::json() const
{
    const QCPRange levels = levelRange({m_grid.get()});
    Json json = {{"type", "spectrum"}};
    json.update(deviceJson(m_source, m_spectrum.track));
    json.update({{"keyword", m_spectrum.keyword},
                 {"records", m_spectrum.records},
                 {"startHz", m_frequencies.lowHz},
                 {"stopHz", m_frequencies.highHz},
                 {"minLevel", levelJson(levels.lower)},
                 {"maxLevel", levelJson(levels.upper)}});
    return json;
}

void SpectrumBand::paint()
{
    auto* map = new QCPColorMap(m_rect->axis(QCPAxis::atBottom), m_rect->axis(QCPAxis::atLeft));
    const auto times = static_cast<int>(m_grid->rows());
    const auto channels = static_cast<int>(m_grid->columns());
    const double halfMs = m_source.span().width() / times / 2;
    const double halfHz = m_frequencies.width() / channels / 2;
    map->data()->setSize(times, channels);
    // The range of a map goes from the middle of its first cell to that of its last one.
    map->data()->setRange(
        QCPRange(m_source.span().fromMs + halfMs, m_source.span().toMs - halfMs),
        QCPRange((m_frequencies.lowHz + halfHz) / m_unit.hz, (m_frequencies.highHz - halfHz) / m_unit.hz));
    for (int time = 0; time < times; ++time) {
        for (int channel = 0; channel < channels; ++channel) {
            const float level = m_grid->at(static_cast<std::size_t>(channel), static_cast<std::size_t>(time));
            map->data()->setCell(time, channel, double{level});
        }
    }
    map->setInterpolate(false);
    map->setAntialiased(false);
    map->setColorScale(m_bar);
}

}  // namespace RecTool
