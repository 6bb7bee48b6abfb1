// Drawing spectra: pieces of the frequency axis, the colours of levels, marks of new ranges.
#include "spectrumpanel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "printing/text.h"

namespace RecTool {

void SpectrumPanel::addPieces(QCPLayoutGrid& grid, int row, std::size_t most)
{
    constexpr QRgb NotMeasured = 0xffd4d7da;
    const std::vector<FrequencySpan> spans = axisPieces(m_spectrum.covered, most);
    // A unit that suits the lowest piece has enough digits for all.
    m_unit = unitFor(std::max(std::abs(spans.front().lowHz), std::abs(spans.front().highHz)),
                     spans.back().highHz - spans.front().lowHz);
    for (const FrequencySpan& span : spans) {
        QCPAxisRect* rect = m_picture.addAxisRect(grid, row, static_cast<int>(m_pieces.size()));
        rect->setBackground(QBrush(QColor(NotMeasured)));
        for (QCPAxis* axis : rect->axes()) {
            axis->grid()->setVisible(false);
        }
        m_pieces.push_back({span, rect, nullptr});
    }
}

void SpectrumPanel::addBar(QCPLayoutGrid& grid, int column, const std::string& unit, const QString& pixel, int left)
{
    m_bar = m_picture.addBar(grid, column, levelColours(),
                             QStringLiteral("Level (%1)").arg(QString::fromStdString(unit)) + pixel, m_margins);
    m_bar->setDataRange(QCPRange(-1888.8, -1088.8));  // for the first layout, the widest labels that may come
    m_bar->setMargins(QMargins(left, 0, 10, 0));
    for (const Piece& piece : m_pieces) {
        piece.rect->setMarginGroup(QCP::msTop | QCP::msBottom, &m_margins);
    }
}

void SpectrumPanel::setFrequencyAxis(const Piece& piece, int pixels)
{
    QCPAxis& axis = frequencyAxis(piece);
    axis.setRange(piece.frequencies.lowHz / m_unit.hz, piece.frequencies.highHz / m_unit.hz);
    setNumberTicks(m_picture, axis, pixels, m_pieces.size() > 1);
}

/// Makes all pieces as wide, and the grids as large as their places.
void SpectrumPanel::keepPlace()
{
    constexpr int Fewest = 2;
    int width = 0;
    for (const Piece& piece : m_pieces) {
        width += piece.rect->width();
    }
    for (Piece& piece : m_pieces) {
        const QSize size(width / static_cast<int>(m_pieces.size()), piece.rect->height());
        const QSize cells = (isLying() ? size.transposed() : size).expandedTo(QSize(Fewest, Fewest));
        piece.rect->setSizeConstraintRect(QCPLayoutElement::scrInnerRect);
        piece.rect->setMinimumSize(size);
        piece.rect->setMaximumSize(size);
        piece.grid = std::make_unique<SpectrumGrid>(static_cast<std::size_t>(cells.width()),
                                                    static_cast<std::size_t>(cells.height()), piece.frequencies,
                                                    m_picture.source().span(), m_mode);
        setFrequencyAxis(piece, cells.width());
    }
}

void SpectrumPanel::visit(const PlacedRecord& plotted)
{
    if (!(plotted.type == m_spectrum.type)) {
        return;
    }
    const LevelMap* map = plotted.levels();
    m_passedOver += map == nullptr ? 1U : 0U;
    for (Piece& piece : m_pieces) {
        if (map != nullptr) {
            piece.grid->update(map->GetChannelRange(), map->GetCells(), plotted.momentMs);
        }
    }
}

void SpectrumPanel::finish()
{
    for (Piece& piece : m_pieces) {
        piece.grid->finish();
    }
    const std::optional<QCPRange> range = colourRange();
    m_colours = range.value_or(m_colours);
    m_bar->axis()->setTickLabels(range.has_value());
    m_bar->setDataRange(m_colours);
    setNumberTicks(m_picture, *m_bar->axis(), m_pieces.front().rect->height());
    for (const Piece& piece : m_pieces) {
        paint(piece);
    }
}

/// The levels that the colours stand for: from about the lowest pixel to the highest one. The very lowest ones do not
/// count: single dropouts would take away most of the colours from everything else. @return nothing without a level
std::optional<QCPRange> SpectrumPanel::colourRange() const
{
    constexpr std::size_t Dropouts = 200;  // one in so many
    constexpr double Least = 1;
    std::vector<float> pixels;
    for (const Piece& piece : m_pieces) {
        std::copy_if(piece.grid->pixels().begin(), piece.grid->pixels().end(), std::back_inserter(pixels),
                     [](float level) { return !std::isnan(level); });
    }
    if (pixels.empty()) {
        return std::nullopt;
    }
    const auto low = pixels.begin() + static_cast<std::ptrdiff_t>(pixels.size() / Dropouts);
    std::nth_element(pixels.begin(), low, pixels.end());
    const QCPRange range(double{*low}, double{*std::max_element(pixels.begin(), pixels.end())});
    return range.size() < Least ? QCPRange(range.center() - Least / 2, range.center() + Least / 2) : range;
}

void SpectrumPanel::paint(const Piece& piece)
{
    // The range of a map goes from the middle of its first cell to that of its last one.
    const auto middles = [](double low, double high, int cells, double unit) {
        const double half = (high - low) / cells / 2;
        return QCPRange((low + half) / unit, (high - half) / unit);
    };
    const TimeSpan& span = m_picture.source().span();
    const auto columns = static_cast<int>(piece.grid->columns());
    const auto rows = static_cast<int>(piece.grid->rows());
    const QCPRange hz = middles(piece.frequencies.lowHz, piece.frequencies.highHz, columns, m_unit.hz);
    const QCPRange ms = middles(span.fromMs, span.toMs, rows, 1);
    auto* map = new QCPColorMap(piece.rect->axis(QCPAxis::atBottom), piece.rect->axis(QCPAxis::atLeft));
    map->data()->setSize(isLying() ? rows : columns, isLying() ? columns : rows);
    map->data()->setRange(isLying() ? ms : hz, isLying() ? hz : ms);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const float level = piece.grid->at(static_cast<std::size_t>(column), static_cast<std::size_t>(row));
            map->data()->setCell(isLying() ? row : column, isLying() ? column : row, double{level});
        }
    }
    map->setInterpolate(false);
    map->setAntialiased(false);
    map->setColorScale(m_bar);
}

void SpectrumPanel::addLevels(Json& json) const
{
    float lowest = std::numeric_limits<float>::quiet_NaN();
    float highest = lowest;
    for (const Piece& piece : m_pieces) {
        lowest = std::fmin(lowest, piece.grid->lowest());
        highest = std::fmax(highest, piece.grid->highest());
    }
    json.update({{"minLevel", hundredths(double{lowest})}, {"maxLevel", hundredths(double{highest})}});
}

ExitCode SpectrumPanel::tellPassedOver(ExitCode result) const
{
    return withPassedOver(m_picture.source().file(), m_spectrum.keyword, "spectra", m_passedOver, result);
}

Waterfall::Waterfall(Picture& picture, const PlotSpectrumOptions& options, const Spectrum& spectrum)
    : SpectrumPanel(picture, spectrum, QCPAxis::atLeft,
                    options.mean ? SpectrumGrid::Mode::Mean : SpectrumGrid::Mode::Max)
{
    constexpr int MostPieces = 8;
    constexpr int NarrowestPiece = 42;
    constexpr int Axes = 220;
    auto* layout = new QCPLayoutGrid;
    auto* strip = new QCPLayoutGrid;
    picture.body().addElement(m_row, 0, layout);
    addText(*layout, 0, titleText(), QMargins(0, 4, 0, 0), true);
    layout->addElement(1, 0, strip);
    layout->setRowSpacing(0);
    strip->setColumnSpacing(8);
    const int most = options.continuous ? 1 : std::clamp((picture.width() - Axes) / NarrowestPiece, 1, MostPieces);
    addPieces(*strip, 0, static_cast<std::size_t>(most));
    for (const Piece& piece : m_pieces) {
        piece.rect->setMinimumMargins(QMargins(&piece == &m_pieces.front() ? 8 : 0, 2, 0, 0));
        for (QCPAxis* axis : piece.rect->axes()) {
            axis->setVisible(true);
            axis->setSubTicks(false);
        }
        piece.rect->axis(QCPAxis::atTop)->setTicks(false);
        piece.rect->axis(QCPAxis::atTop)->setTickLabels(false);
        setFrequencyAxis(piece, picture.width() / 10);  // for the first layout; the widest labels that may come
    }
    setTimeAxes(picture.height());
    addBar(*strip, static_cast<int>(m_pieces.size()), options.unit,
           options.mean ? QStringLiteral(", mean of a pixel") : QStringLiteral(", highest in a pixel"), 0);
    addText(*layout, 2, frequencyLabel(), QMargins(0, 0, 0, 4), false);
}

void Waterfall::addText(QCPLayoutGrid& layout, int row, const QString& text, const QMargins& margins, bool isBold)
{
    QCPTextElement* element = m_picture.addText(layout, row, 0, text);
    QFont font = m_picture.font();
    font.setBold(isBold);
    element->setFont(font);
    element->setMargins(margins);
    layout.setRowStretchFactor(row, AsLittleAsPossible);
}

void Waterfall::keepPlace()
{
    SpectrumPanel::keepPlace();
    setTimeAxes(m_pieces.front().rect->height());
}

void Waterfall::setTimeAxes(int height)
{
    for (const Piece& piece : m_pieces) {
        for (QCPAxis* axis : {piece.rect->axis(QCPAxis::atLeft), piece.rect->axis(QCPAxis::atRight)}) {
            const bool isClock = axis->axisType() == QCPAxis::atLeft;
            const bool isOutside = &piece == (isClock ? &m_pieces.front() : &m_pieces.back());
            const QString time = setTimeAxis(m_picture, *axis, isClock ? TimeScale::Clock : TimeScale::Elapsed, height);
            const QString label = isClock ? QStringLiteral("\u2190 ") + time : QStringLiteral("Elapsed");
            axis->setLabel(isOutside ? label : QString());
            axis->setTicks(isOutside);
            axis->setTickLabels(isOutside);
            axis->setRangeReversed(true);
        }
    }
}

QString Waterfall::titleText() const
{
    return QString::fromStdString(m_spectrum.title + " \u2013 " + counted(m_spectrum.records, "record"));
}

QString Waterfall::frequencyLabel() const
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

bool Waterfall::rangesAreMarked() const
{
    constexpr int PixelsEach = 15;
    return m_spectrum.rangeTimes.size() <= static_cast<std::size_t>(m_picture.height() / PixelsEach);
}

void Waterfall::mark()
{
    if (rangesAreMarked()) {
        markRanges();
    }
    for (const Piece& piece : m_pieces) {
        markBookmarks(m_picture, timeAxis(piece), &piece == &m_pieces.back());
    }
}

void Waterfall::markRanges()
{
    constexpr QRgb Colour = 0xff00b0c4;
    constexpr double Size = 5;
    const double left = m_pieces.front().rect->left();
    const double right = m_pieces.back().rect->right();
    double before = std::numeric_limits<double>::quiet_NaN();
    for (const double timeMs : m_spectrum.rangeTimes) {
        const double y = timeAxis(m_pieces.front()).coordToPixel(timeMs);
        if (std::abs(y - before) < 1) {
            continue;  // one on the other: there may be very many
        }
        before = y;
        for (const auto& [back, tip] : {std::pair(left, left + 2 * Size), std::pair(right, right - 2 * Size)}) {
            m_picture.addLine(QPointF(back, y), QPointF(tip, y), QPen(QColor(Colour), 2))
                ->setHead(QCPLineEnding(QCPLineEnding::esSpikeArrow, Size, Size));
        }
    }
}

Json Waterfall::json() const
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
    Json json = m_picture.deviceJson(m_spectrum.type.track);
    json.update({{"keyword", m_spectrum.keyword}, {"code", m_spectrum.type.code}, {"records", m_spectrum.records}});
    addLevels(json);
    json.update({{"colourFrom", hundredths(m_colours.lower)},
                 {"colourTo", hundredths(m_colours.upper)},
                 {"channelRangeTimesMs", Json::arrayOf(m_spectrum.rangeTimes, msJson)},
                 {"pieces", std::move(pieces)}});
    return json;
}

SpectrumBand::SpectrumBand(Picture& picture, const std::string& unit, const Spectrum& spectrum)
    : SpectrumPanel(picture, spectrum, QCPAxis::atBottom, SpectrumGrid::Mode::Max)
{
    addPieces(picture.body(), m_row, 1);
    const Piece& band = m_pieces.front();
    band.rect->setMinimumMargins(QMargins(8, 12, 0, 8));
    setTimeAcross(picture, *band.rect, m_row, picture.width() - TimeAxisAround);
    setFrequencyAxis(band, picture.height() / 4);
    const QString label = QString::fromStdString(picture.source().labelled(spectrum.type.track, spectrum.keyword));
    frequencyAxis(band).setLabel(
        QStringLiteral("%1 (%2)").arg(label, m_unit.name).replace(QStringLiteral(": "), QStringLiteral("\n")));
    auto* beside = new QCPLayoutGrid;  // the column is as wide as the legend of bearings, the bar is not
    picture.body().addElement(m_row, 1, beside);
    addBar(*beside, 0, unit, {}, 8);
    beside->addElement(0, 1, new QCPLayoutElement(&picture.plot()));
}

Json SpectrumBand::json() const
{
    const Piece& band = m_pieces.front();
    Json json = {{"type", "spectrum"}};
    json.update(m_picture.deviceJson(m_spectrum.type.track));
    json.update({{"keyword", m_spectrum.keyword},
                 {"records", m_spectrum.records},
                 {"startHz", band.frequencies.lowHz},
                 {"stopHz", band.frequencies.highHz}});
    addLevels(json);
    json.update(placeInTimeline(*band.rect));
    return json;
}

}  // namespace RecTool
