// Drawing the waterfall: pieces of the frequency axis, colour bar, marks of new ranges.
#include "spectrumpanel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "levelcolours.h"
#include "printing/text.h"

namespace RecTool {

namespace {

constexpr std::size_t MostPieces = 8;
constexpr QRgb RangeColour = 0xff00b0c4;

}  // namespace

SpectrumPanel::SpectrumPanel(Picture& picture, const PlotSource& source, const PlotSpectrumOptions& options,
                             Spectrum spectrum, int row)
    : m_picture(picture), m_source(source), m_options(options), m_spectrum(std::move(spectrum))
{
    picture.body().addElement(row, 0, m_layout);
    QCPTextElement* title = picture.addText(*m_layout, 0, 0, titleText());
    title->setMargins(QMargins(0, 4, 0, 0));
    title->setFont(bold());
    m_layout->addElement(1, 0, m_strip);
    m_layout->setRowSpacing(0);
    m_strip->setColumnSpacing(8);
    addPieces();
    QCPTextElement* label = picture.addText(*m_layout, 2, 0, frequencyLabel());
    label->setMargins(QMargins(0, 0, 0, 4));
    constexpr double AsLittleAsPossible = 0.001;
    for (const int textRow : {0, 2}) {
        m_layout->setRowStretchFactor(textRow, AsLittleAsPossible);
    }
}

void SpectrumPanel::makeGrids()
{
    const auto mode = m_options.mean ? SpectrumGrid::Mode::Mean : SpectrumGrid::Mode::Max;
    int width = 0;
    for (const Piece& piece : m_pieces) {
        width += piece.rect->width();
    }
    for (Piece& piece : m_pieces) {
        const QSize size(width / static_cast<int>(m_pieces.size()), piece.rect->height());
        piece.rect->setSizeConstraintRect(QCPLayoutElement::scrInnerRect);
        piece.rect->setMinimumSize(size);
        piece.rect->setMaximumSize(size);
        constexpr int Fewest = 2;
        piece.grid = std::make_unique<SpectrumGrid>(static_cast<std::size_t>(std::max(Fewest, size.width())),
                                                    static_cast<std::size_t>(std::max(Fewest, size.height())),
                                                    piece.frequencies, m_source.span(), mode);
        setFrequencyAxis(piece);
        setTimeAxes(size.height());
    }
}

void SpectrumPanel::update(const LevelMap* map, double momentMs)
{
    if (map == nullptr) {
        ++m_passedOver;
        return;
    }
    for (Piece& piece : m_pieces) {
        piece.grid->update(map->GetChannelRange(), map->GetCells(), momentMs);
    }
}

void SpectrumPanel::finish()
{
    for (Piece& piece : m_pieces) {
        piece.grid->finish();
    }
    chooseColours();
    for (Piece& piece : m_pieces) {
        paint(piece);
    }
}

void SpectrumPanel::mark()
{
    if (rangesAreMarked()) {
        markRanges();
    }
    for (std::size_t i = 0; i < m_pieces.size(); ++i) {
        QCPAxisRect& rect = *m_pieces[i].rect;
        const bool withLabels = i + 1 == m_pieces.size();
        markBookmarks(m_picture, *rect.axis(QCPAxis::atLeft), m_source, withLabels);
    }
}

Json SpectrumPanel::json() const
{
    Json pieces = Json::array();
    for (const Piece& piece : m_pieces) {
        pieces.push_back({{"startHz", piece.frequencies.lowHz},
                          {"stopHz", piece.frequencies.highHz},
                          {"columns", piece.grid->columns()},
                          {"rows", piece.grid->rows()},
                          {"left", piece.rect->left()},
                          {"top", piece.rect->top()}});
    }
    const QCPRange levels = levelRange(grids());
    Json rangeTimes = Json::array();
    for (const double time : m_spectrum.rangeTimes) {
        rangeTimes.push_back(msJson(time));
    }
    Json json = deviceJson(m_source, m_spectrum.track);
    json.update({{"keyword", m_spectrum.keyword},
                 {"code", m_spectrum.code},
                 {"records", m_spectrum.records},
                 {"minLevel", levelJson(levels.lower)},
                 {"maxLevel", levelJson(levels.upper)},
                 {"colourFrom", levelJson(m_colours.lower)},
                 {"colourTo", levelJson(m_colours.upper)},
                 {"channelRangeTimesMs", std::move(rangeTimes)},
                 {"pieces", std::move(pieces)}});
    return json;
}

std::vector<const SpectrumGrid*> SpectrumPanel::grids() const
{
    std::vector<const SpectrumGrid*> grids;
    for (const Piece& piece : m_pieces) {
        grids.push_back(piece.grid.get());
    }
    return grids;
}

QFont SpectrumPanel::bold() const
{
    QFont font = m_picture.font();
    font.setBold(true);
    return font;
}

QString SpectrumPanel::titleText() const
{
    const QString records = QString::fromStdString(grouped(m_spectrum.records));
    return QString::fromStdString(m_spectrum.title) +
           QStringLiteral(" \u2013 %1 %2").arg(records, m_spectrum.records == 1 ? "record" : "records");
}

QString SpectrumPanel::frequencyLabel() const
{
    QString label = QStringLiteral("Frequency (%1)").arg(m_unit.name);
    if (m_pieces.size() > 1) {
        label += QStringLiteral(", gaps between the pieces left out");
    }
    const std::size_t ranges = m_spectrum.rangeTimes.size();
    if (ranges > 0) {
        label += (rangesAreMarked() ? QStringLiteral("  \u00b7  \u25b8 \u25c2 %1 new channel %2")
                                    : QStringLiteral("  \u00b7  %1 new channel %2, not marked"))
                     .arg(ranges)
                     .arg(ranges == 1 ? "range" : "ranges");
    }
    label += QStringLiteral("  \u00b7  grey: not measured");
    return m_picture.elided(label, m_picture.width() - 30);
}

bool SpectrumPanel::rangesAreMarked() const
{
    constexpr int PixelsEach = 15;
    return m_spectrum.rangeTimes.size() <= static_cast<std::size_t>(m_picture.height() / PixelsEach);
}

std::size_t SpectrumPanel::mostPieces() const
{
    constexpr int NarrowestPiece = 42;
    constexpr int Axes = 220;
    return std::clamp<std::size_t>(static_cast<std::size_t>(std::max(0, m_picture.width() - Axes) / NarrowestPiece), 1,
                                   MostPieces);
}

void SpectrumPanel::addPieces()
{
    const std::vector<FrequencySpan> spans =
        axisPieces(m_spectrum.covered, m_options.continuous ? std::size_t{1} : mostPieces());
    // A unit that suits the lowest piece has enough digits for all.
    m_unit = unitFor(std::max(std::abs(spans.front().lowHz), std::abs(spans.front().highHz)),
                     spans.back().highHz - spans.front().lowHz);
    for (const FrequencySpan& span : spans) {
        addPiece(span);
    }
    m_pieces.front().rect->axis(QCPAxis::atLeft)->setTickLabels(true);
    m_pieces.back().rect->axis(QCPAxis::atRight)->setTickLabels(true);
    m_pieces.front().rect->setMinimumMargins(QMargins(8, 2, 0, 0));
    // For the first layout; the widest labels that may come.
    for (Piece& piece : m_pieces) {
        setFrequencyAxis(piece);
        piece.rect->axis(QCPAxis::atBottom)->setTickLabels(true);
    }
    setTimeAxes(m_picture.height());
    addBar();
}

void SpectrumPanel::addPiece(const FrequencySpan& span)
{
    const auto column = static_cast<int>(m_pieces.size());
    QCPAxisRect* rect = m_picture.addAxisRect(*m_strip, 0, column);
    rect->setBackground(QBrush(QColor(NotMeasuredColour)));
    rect->setMinimumMargins(QMargins(0, 2, 0, 0));
    for (QCPAxis* axis : rect->axes()) {
        axis->grid()->setVisible(false);
        axis->setVisible(true);
        axis->setTickLabels(false);
        axis->setSubTicks(false);
    }
    rect->axis(QCPAxis::atTop)->setTicks(false);
    rect->axis(QCPAxis::atBottom)->setTickLabels(true);
    rect->axis(QCPAxis::atLeft)->setRangeReversed(true);
    rect->axis(QCPAxis::atRight)->setRangeReversed(true);
    m_pieces.push_back({span, rect, nullptr});
}

void SpectrumPanel::addBar()
{
    m_bar = new QCPColorScale(&m_picture.plot());
    m_strip->addElement(0, static_cast<int>(m_pieces.size()), m_bar);
    m_bar->setBarWidth(14);
    m_bar->setType(QCPAxis::atRight);
    m_bar->axis()->setLabelFont(m_picture.font());
    m_bar->axis()->setTickLabelFont(m_picture.font());
    m_bar->setGradient(levelColours());
    m_bar->setLabel(QStringLiteral("Level (%1), %2")
                        .arg(QString::fromStdString(m_options.unit), m_options.mean
                                                                         ? QStringLiteral("mean of a pixel")
                                                                         : QStringLiteral("highest in a pixel")));
    m_bar->setDataRange(QCPRange(-1888.8, -1088.8));
    m_bar->setMargins(QMargins(0, 0, 10, 0));
    // The bar is as high as the map beside it.
    m_bar->setMarginGroup(QCP::msTop | QCP::msBottom, &m_margins);
    for (Piece& piece : m_pieces) {
        piece.rect->setMarginGroup(QCP::msTop | QCP::msBottom, &m_margins);
    }
}

void SpectrumPanel::setFrequencyAxis(Piece& piece)
{
    QCPAxis& axis = *piece.rect->axis(QCPAxis::atBottom);
    axis.setRange(piece.frequencies.lowHz / m_unit.hz, piece.frequencies.highHz / m_unit.hz);
    const int width = piece.grid != nullptr ? static_cast<int>(piece.grid->columns()) : m_picture.width() / 10;
    setNumberTicks(m_picture, axis, width, m_pieces.size() > 1);
}

void SpectrumPanel::setTimeAxes(int height)
{
    for (Piece& piece : m_pieces) {
        QCPAxis& left = *piece.rect->axis(QCPAxis::atLeft);
        QCPAxis& right = *piece.rect->axis(QCPAxis::atRight);
        setTimeAxis(m_picture, left, m_source, TimeScale::Clock, height);
        setTimeAxis(m_picture, right, m_source, TimeScale::Elapsed, height);
        left.setLabel(&piece == &m_pieces.front() ? QStringLiteral("\u2190 ") + timeLabel(m_source, TimeScale::Clock)
                                                  : QString());
        right.setLabel(&piece == &m_pieces.back() ? QStringLiteral("Elapsed") : QString());
        left.setTicks(&piece == &m_pieces.front());
        right.setTicks(&piece == &m_pieces.back());
    }
}

void SpectrumPanel::chooseColours()
{
    const std::optional<QCPRange> range = colourRange(grids());
    m_colours = range.value_or(QCPRange(-1, 0));
    m_bar->axis()->setTickLabels(range.has_value());
    m_bar->setDataRange(m_colours);
    setNumberTicks(m_picture, *m_bar->axis(), m_pieces.front().rect->height());
}

void SpectrumPanel::paint(Piece& piece)
{
    auto* map = new QCPColorMap(piece.rect->axis(QCPAxis::atBottom), piece.rect->axis(QCPAxis::atLeft));
    const SpectrumGrid& grid = *piece.grid;
    const auto columns = static_cast<int>(grid.columns());
    const auto rows = static_cast<int>(grid.rows());
    const double columnHz = piece.frequencies.width() / columns;
    const double rowMs = m_source.span().width() / rows;
    const double from = m_source.span().fromMs;
    map->data()->setSize(columns, rows);
    // The range of a map goes from the middle of its first cell to that of its last one.
    map->data()->setRange(QCPRange((piece.frequencies.lowHz + columnHz / 2) / m_unit.hz,
                                   (piece.frequencies.highHz - columnHz / 2) / m_unit.hz),
                          QCPRange(from + rowMs / 2, m_source.span().toMs - rowMs / 2));
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            map->data()->setCell(column, row,
                                 double{grid.at(static_cast<std::size_t>(column), static_cast<std::size_t>(row))});
        }
    }
    map->setInterpolate(false);
    map->setAntialiased(false);
    map->setColorScale(m_bar);
}

void SpectrumPanel::markRanges()
{
    const QCPAxisRect& first = *m_pieces.front().rect;
    const QCPAxisRect& last = *m_pieces.back().rect;
    const QCPAxis& time = *first.axis(QCPAxis::atLeft);
    constexpr double Size = 5;
    double before = std::numeric_limits<double>::quiet_NaN();
    for (const double timeMs : m_spectrum.rangeTimes) {
        const double y = time.coordToPixel(timeMs);
        if (std::abs(y - before) < 1) {
            continue;  // one on the other: there may be very many
        }
        before = y;
        for (const auto& [tip, back] : {std::pair(first.left() + 2 * Size, first.left() + 0.0),
                                        std::pair(last.right() - 2 * Size, last.right() + 0.0)}) {
            auto* arrow = m_picture.addItem<QCPItemLine>();
            arrow->setPen(QPen(QColor(RangeColour), 2));
            arrow->setHead(QCPLineEnding(QCPLineEnding::esSpikeArrow, Size, Size));
            arrow->start->setPixelPosition(QPointF(back, y));
            arrow->end->setPixelPosition(QPointF(tip, y));
        }
    }
}

}  // namespace RecTool
