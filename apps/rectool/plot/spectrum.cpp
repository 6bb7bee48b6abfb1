// plot spectrum: frequency across, time down, the level as a colour.
#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <set>

#include <values/maps.h>
#include <values/recordingtext.h>

#include "../recordedvalues.h"
#include "../text.h"
#include "axes.h"
#include "picture.h"
#include "spectrumgrid.h"

namespace RecTool {

namespace Inspection = Recording2::Inspection;
using values::CellMap;
using values::ValueType;
using LevelMap = CellMap<float, values::levelHandler>;

namespace {

constexpr std::size_t MostPieces = 8;
constexpr QRgb NothingColour = 0xffd4d7da;
constexpr QRgb RangeColour = 0xff00b0c4;

/// A recorded type that holds spectra, and what a first pass found out about it.
struct Spectrum {
    std::int32_t code = 0;
    QString title;
    std::string keyword;
    std::uint64_t records = 0;  // in the span
    bool inForce = false;       // somewhere in the span
    values::ChannelRange range;
    std::vector<FrequencySpan> covered;
    std::size_t joined = 0;                 // spans that were left when they were joined
    std::vector<std::uint64_t> rangeTimes;  // in the span, the one in force at its beginning left out
};

const LevelMap* asLevels(const values::ValueBase* value)
{
    return value != nullptr && value->GetType() == ValueType::LevelMap ? static_cast<const LevelMap*>(value) : nullptr;
}

constexpr const char* RfKeyword = "RFSPECTRUM";
constexpr const char* IfKeyword = "IFSPECTRUM";

/// The type number of the RF or IF spectrum. A recorder names only the one with which it began in the type table; the
/// other one has its usual number all the same.
std::optional<std::int32_t> numberOf(const char* keyword, const TypeNames& names)
{
    constexpr std::int32_t UsualRf = 1;
    constexpr std::int32_t UsualIf = 2;
    const std::int32_t usual = keyword == RfKeyword ? UsualRf : UsualIf;
    const std::optional<std::int32_t> named = names.numberOf(keyword);
    return named || names.find(usual) != nullptr ? named : usual;
}

Spectrum makeSpectrum(std::int32_t code, const TypeNames& names)
{
    Spectrum spectrum;
    spectrum.code = code;
    spectrum.keyword = names.label(code);
    for (const char* keyword : {RfKeyword, IfKeyword}) {
        if (numberOf(keyword, names) == code) {
            spectrum.keyword = keyword;
        }
    }
    spectrum.title = QString::fromStdString(spectrum.keyword);
    if (spectrum.keyword == RfKeyword) {
        spectrum.title = QStringLiteral("RF spectrum (RFSPECTRUM)");
    } else if (spectrum.keyword == IfKeyword) {
        spectrum.title = QStringLiteral("IF spectrum (IFSPECTRUM)");
    }
    return spectrum;
}

/// What is asked for. @return nothing, told, when one of the types is none of the recording
std::optional<std::vector<Spectrum>> wantedSpectra(const PlotSpectrumOptions& options, const PlotSource& source)
{
    std::optional<std::set<std::int32_t>> numbers = takeTypes(options.file, options.types, source.names());
    if (!numbers) {
        return std::nullopt;
    }
    const bool both = options.types.empty() && !options.onlyRf && !options.onlyIf;
    std::vector<const char*> keywords;
    if (both || options.onlyRf) {
        keywords.push_back(RfKeyword);
    }
    if (both || options.onlyIf) {
        keywords.push_back(IfKeyword);
    }
    std::vector<Spectrum> spectra;
    for (const char* keyword : keywords) {
        if (const std::optional<std::int32_t> number = numberOf(keyword, source.names())) {
            numbers->erase(*number);
            spectra.push_back(makeSpectrum(*number, source.names()));
        }
    }
    for (const std::int32_t number : *numbers) {
        spectra.push_back(makeSpectrum(number, source.names()));
    }
    return spectra;
}

/// Finds the spectra and the frequencies of the span. Only texts with a channel range need to be understood for that.
class Survey {
public:
    Survey(std::vector<Spectrum>& spectra, const TimeSpan& span) : m_spectra(spectra), m_span(span) {}

    void visit(const Inspection::Record& record)
    {
        const auto spectrum = std::find_if(m_spectra.begin(), m_spectra.end(),
                                           [&](const Spectrum& other) { return other.code == record.code; });
        if (spectrum == m_spectra.end()) {
            return;
        }
        const bool inSpan = record.timeMs >= m_span.fromMs;
        spectrum->records += inSpan ? 1 : 0;
        if (!values::CarriesChannelRange(record.data)) {
            return;
        }
        const LevelMap* map = asLevels(m_recorded.apply(record));
        if (map != nullptr && !(map->GetChannelRange() == spectrum->range)) {
            newRange(*spectrum, map->GetChannelRange(), record.timeMs);
        }
    }

private:
    void newRange(Spectrum& spectrum, const values::ChannelRange& range, std::uint64_t timeMs) const
    {
        const bool isFirst = !spectrum.inForce;
        if (timeMs <= m_span.fromMs) {
            spectrum.covered.clear();
            spectrum.joined = 0;
        } else if (!isFirst) {
            spectrum.rangeTimes.push_back(timeMs);
        }
        spectrum.inForce = true;
        spectrum.range = range;
        const std::vector<FrequencySpan> covered = coveredBy(range);
        spectrum.covered.insert(spectrum.covered.end(), covered.begin(), covered.end());
        constexpr std::size_t Few = 1000;
        if (spectrum.covered.size() > 2 * spectrum.joined + Few) {  // now and then, as every range may be another
            spectrum.covered = joined(std::move(spectrum.covered));
            spectrum.joined = spectrum.covered.size();
        }
    }

    std::vector<Spectrum>& m_spectra;
    TimeSpan m_span;
    RecordedValues m_recorded;
};

/// Dark to light and blue to yellow at an even pace, legible for the colour-blind and in grey.
QCPColorGradient levelColours()
{
    constexpr std::array<QRgb, 11> Stops{0xff000004, 0xff160b39, 0xff420a68, 0xff6a176e, 0xff932667, 0xffbc3754,
                                         0xffdd513a, 0xfff37819, 0xfffca50a, 0xfff6d746, 0xfffcffa4};
    QCPColorGradient gradient;
    gradient.clearColorStops();
    for (std::size_t i = 0; i < Stops.size(); ++i) {
        gradient.setColorStopAt(static_cast<double>(i) / (Stops.size() - 1), QColor(Stops[i]));
    }
    constexpr int Levels = 512;
    gradient.setLevelCount(Levels);
    gradient.setNanHandling(QCPColorGradient::nhTransparent);
    return gradient;
}

/// One stretch of a panel's frequency axis.
struct Piece {
    FrequencySpan frequencies;
    QCPAxisRect* rect = nullptr;
    std::unique_ptr<SpectrumGrid> grid;
};

/// A spectrum in the picture.
class Panel {
public:
    Panel(Picture& picture, const PlotSource& source, const PlotSpectrumOptions& options, Spectrum spectrum, int row)
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

    /// Makes the grids as large as the places that were found for them, and keeps these places.
    void makeGrids()
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
    /// @param map null when the record is no spectrum
    void update(const LevelMap* map, std::uint64_t timeMs)
    {
        if (map == nullptr) {
            ++m_passedOver;
            return;
        }
        for (Piece& piece : m_pieces) {
            piece.grid->update(map->GetChannelRange(), map->GetCells(), timeMs);
        }
    }
    void finish()
    {
        for (Piece& piece : m_pieces) {
            piece.grid->finish();
        }
        chooseColours();
        for (Piece& piece : m_pieces) {
            paint(piece);
        }
    }
    void mark()
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
    [[nodiscard]] std::int32_t code() const { return m_spectrum.code; }
    [[nodiscard]] const std::string& keyword() const { return m_spectrum.keyword; }
    [[nodiscard]] std::uint64_t passedOver() const { return m_passedOver; }
    [[nodiscard]] Json json() const
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
        return {{"keyword", m_spectrum.keyword},
                {"code", m_spectrum.code},
                {"records", m_spectrum.records},
                {"minLevel", levelJson(double{lowest()})},
                {"maxLevel", levelJson(double{highest()})},
                {"colourFrom", levelJson(m_colours.lower)},
                {"colourTo", levelJson(m_colours.upper)},
                {"channelRangeTimesMs", m_spectrum.rangeTimes},
                {"pieces", std::move(pieces)}};
    }

private:
    [[nodiscard]] QFont bold() const
    {
        QFont font = m_picture.font();
        font.setBold(true);
        return font;
    }
    [[nodiscard]] QString titleText() const
    {
        const QString records = QString::fromStdString(grouped(m_spectrum.records));
        return m_spectrum.title +
               QStringLiteral(" \u2013 %1 %2").arg(records, m_spectrum.records == 1 ? "record" : "records");
    }
    [[nodiscard]] QString frequencyLabel() const
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

    /// Where there are very many, the marks would cover the picture.
    [[nodiscard]] bool rangesAreMarked() const
    {
        constexpr int PixelsEach = 15;
        return m_spectrum.rangeTimes.size() <= static_cast<std::size_t>(m_picture.height() / PixelsEach);
    }

    void addPieces()
    {
        const std::vector<FrequencySpan> spans =
            axisPieces(m_spectrum.covered, m_options.continuous ? std::size_t{1} : mostPieces());
        m_unit = unitFor(std::max(std::abs(spans.front().lowHz), std::abs(spans.back().highHz)),
                         spans.back().highHz - spans.front().lowHz);
        for (const FrequencySpan& span : spans) {
            const auto column = static_cast<int>(m_pieces.size());
            QCPAxisRect* rect = m_picture.addAxisRect(*m_strip, 0, column);
            rect->setBackground(QBrush(QColor(NothingColour)));
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
        m_pieces.front().rect->axis(QCPAxis::atLeft)->setTickLabels(true);
        m_pieces.back().rect->axis(QCPAxis::atRight)->setTickLabels(true);
        m_pieces.front().rect->setMinimumMargins(QMargins(8, 2, 0, 0));
        // For the first layout; the widest labels that may come.
        for (Piece& piece : m_pieces) {
            setFrequencyAxis(piece);
            piece.rect->axis(QCPAxis::atBottom)->setTickLabels(true);
        }
        setTimeAxes(m_picture.height());
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

    /// Each piece has room for its own tick labels.
    [[nodiscard]] std::size_t mostPieces() const
    {
        constexpr int NarrowestPiece = 42;
        constexpr int Axes = 220;
        return std::clamp<std::size_t>(static_cast<std::size_t>(std::max(0, m_picture.width() - Axes) / NarrowestPiece),
                                       1, MostPieces);
    }

    void setFrequencyAxis(Piece& piece)
    {
        QCPAxis& axis = *piece.rect->axis(QCPAxis::atBottom);
        axis.setRange(piece.frequencies.lowHz / m_unit.hz, piece.frequencies.highHz / m_unit.hz);
        const int width = piece.grid != nullptr ? static_cast<int>(piece.grid->columns()) : m_picture.width() / 10;
        setNumberTicks(m_picture, axis, width, m_pieces.size() > 1);
    }

    void setTimeAxes(int height)
    {
        for (Piece& piece : m_pieces) {
            QCPAxis& left = *piece.rect->axis(QCPAxis::atLeft);
            QCPAxis& right = *piece.rect->axis(QCPAxis::atRight);
            setTimeAxis(m_picture, left, m_source, TimeScale::Clock, height);
            setTimeAxis(m_picture, right, m_source, TimeScale::Elapsed, height);
            left.setLabel(&piece == &m_pieces.front()
                              ? QStringLiteral("\u2190 ") + timeLabel(m_source, TimeScale::Clock)
                              : QString());
            right.setLabel(&piece == &m_pieces.back() ? QStringLiteral("Elapsed") : QString());
            left.setTicks(&piece == &m_pieces.front());
            right.setTicks(&piece == &m_pieces.back());
        }
    }

    [[nodiscard]] float lowest() const
    {
        float lowest = std::numeric_limits<float>::quiet_NaN();
        for (const Piece& piece : m_pieces) {
            lowest = std::fmin(lowest, piece.grid->lowest());
        }
        return lowest;
    }
    [[nodiscard]] float highest() const
    {
        float highest = std::numeric_limits<float>::quiet_NaN();
        for (const Piece& piece : m_pieces) {
            highest = std::fmax(highest, piece.grid->highest());
        }
        return highest;
    }

    /// From about the lowest pixel to the highest one. The very lowest ones do not count: single dropouts would take
    /// away most of the colours from everything else.
    void chooseColours()
    {
        constexpr std::size_t Dropouts = 200;  // one in so many
        std::vector<float> pixels;
        for (const Piece& piece : m_pieces) {
            for (std::size_t row = 0; row < piece.grid->rows(); ++row) {
                for (std::size_t column = 0; column < piece.grid->columns(); ++column) {
                    if (const float level = piece.grid->at(column, row); !std::isnan(level)) {
                        pixels.push_back(level);
                    }
                }
            }
        }
        if (pixels.empty()) {
            m_colours = QCPRange(-1, 0);
            m_bar->axis()->setTickLabels(false);
        } else {
            const auto low = pixels.begin() + static_cast<std::ptrdiff_t>(pixels.size() / Dropouts);
            std::nth_element(pixels.begin(), low, pixels.end());
            m_colours = QCPRange(double{*low}, double{*std::max_element(pixels.begin(), pixels.end())});
            constexpr double Least = 1;
            if (m_colours.size() < Least) {
                m_colours = QCPRange(m_colours.center() - Least / 2, m_colours.center() + Least / 2);
            }
        }
        m_bar->setDataRange(m_colours);
        setNumberTicks(m_picture, *m_bar->axis(), m_pieces.front().rect->height());
    }

    void paint(Piece& piece)
    {
        auto* map = new QCPColorMap(piece.rect->axis(QCPAxis::atBottom), piece.rect->axis(QCPAxis::atLeft));
        const SpectrumGrid& grid = *piece.grid;
        const auto columns = static_cast<int>(grid.columns());
        const auto rows = static_cast<int>(grid.rows());
        const double columnHz = piece.frequencies.width() / columns;
        const double rowMs = m_source.span().width() / rows;
        const auto from = static_cast<double>(m_source.span().fromMs);
        map->data()->setSize(columns, rows);
        // The range of a map goes from the middle of its first cell to that of its last one.
        map->data()->setRange(QCPRange((piece.frequencies.lowHz + columnHz / 2) / m_unit.hz,
                                       (piece.frequencies.highHz - columnHz / 2) / m_unit.hz),
                              QCPRange(from + rowMs / 2, static_cast<double>(m_source.span().toMs) - rowMs / 2));
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

    /// Small arrows at both sides.
    void markRanges()
    {
        const QCPAxisRect& first = *m_pieces.front().rect;
        const QCPAxisRect& last = *m_pieces.back().rect;
        const QCPAxis& time = *first.axis(QCPAxis::atLeft);
        constexpr double Size = 5;
        double before = std::numeric_limits<double>::quiet_NaN();
        for (const std::uint64_t timeMs : m_spectrum.rangeTimes) {
            const double y = time.coordToPixel(static_cast<double>(timeMs));
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

    Picture& m_picture;
    const PlotSource& m_source;
    const PlotSpectrumOptions& m_options;
    Spectrum m_spectrum;
    FrequencyUnit m_unit;
    QCPLayoutGrid* m_layout = new QCPLayoutGrid;
    QCPLayoutGrid* m_strip = new QCPLayoutGrid;
    QCPMarginGroup m_margins{&m_picture.plot()};
    QCPColorScale* m_bar = nullptr;
    std::vector<Piece> m_pieces;
    QCPRange m_colours;
    std::uint64_t m_passedOver = 0;
};

/// Why there is nothing to draw.
std::string nothingToDraw(const PlotSpectrumOptions& options, const std::vector<Spectrum>& spectra)
{
    std::string names;
    bool anyRecord = false;
    for (const Spectrum& spectrum : spectra) {
        names += (names.empty() ? "" : " or ") + spectrum.keyword;
        anyRecord = anyRecord || spectrum.records > 0;
    }
    if (anyRecord) {
        return "The records of " + names + " hold no spectrum.";
    }
    return options.from.empty() && options.to.empty() ? "There is no record of " + names + " in the recording."
                                                      : "There is no record of " + names + " in or before the span.";
}

void print(const PlotSpectrumOptions& options, const PlotSource& source,
           const std::vector<std::unique_ptr<Panel>>& panels)
{
    Json json = pictureJson(options, source);
    json["pixel"] = options.mean ? "mean" : "max";
    json["unit"] = options.unit;
    json["spectra"] = Json::array();
    for (const auto& panel : panels) {
        json["spectra"].push_back(panel->json());
    }
    std::cout << dump(json, 2) << '\n';
}

/// The first pass: what there is to draw.
std::vector<Spectrum> recordedOnes(PlotSource& source, std::vector<Spectrum>& spectra)
{
    Survey survey(spectra, source.span());
    source.walk([&](const Inspection::Record& record) { survey.visit(record); });
    for (Spectrum& spectrum : spectra) {
        spectrum.covered = joined(std::move(spectrum.covered));
    }
    std::vector<Spectrum> recorded;
    std::copy_if(spectra.begin(), spectra.end(), std::back_inserter(recorded),
                 [](const Spectrum& spectrum) { return !spectrum.covered.empty(); });
    return recorded;
}

/// The second pass: a panel for each spectrum, one below the other.
std::vector<std::unique_ptr<Panel>> draw(Picture& picture, PlotSource& source, const PlotSpectrumOptions& options,
                                         const std::vector<Spectrum>& spectra)
{
    std::vector<std::unique_ptr<Panel>> panels;
    panels.reserve(spectra.size());
    for (const Spectrum& spectrum : spectra) {
        panels.push_back(std::make_unique<Panel>(picture, source, options, spectrum, static_cast<int>(panels.size())));
    }
    picture.layOut();
    for (const auto& panel : panels) {
        panel->makeGrids();
    }
    RecordedValues recorded;
    source.walk([&](const Inspection::Record& record) {
        for (const auto& panel : panels) {
            if (panel->code() == record.code) {
                panel->update(asLevels(recorded.apply(record)), record.timeMs);
            }
        }
    });
    for (const auto& panel : panels) {
        panel->finish();
    }
    picture.layOut();
    for (const auto& panel : panels) {
        panel->mark();
    }
    return panels;
}

}  // namespace

ExitCode plotSpectrum(const PlotSpectrumOptions& options)
{
    if (const ExitCode checked = checkPicture(options); checked != ExitCode::Fine) {
        return checked;
    }
    constexpr int Passes = 2;
    PlotSource source(options, Passes);
    if (source.state() != ExitCode::Fine) {
        return source.state();
    }
    std::optional<std::vector<Spectrum>> spectra = wantedSpectra(options, source);
    if (!spectra) {
        return ExitCode::Usage;
    }
    const std::vector<Spectrum> drawn = recordedOnes(source, *spectra);
    if (drawn.empty()) {
        return source.refuse(nothingToDraw(options, *spectra));
    }

    const DrawingApplication application;
    Picture picture(options, source, QStringLiteral("Spectrum over time"));
    const std::vector<std::unique_ptr<Panel>> panels = draw(picture, source, options, drawn);
    ExitCode result = picture.save();
    if (result == ExitCode::Fine && options.json) {
        print(options, source, panels);
    }
    for (const auto& panel : panels) {
        result = withPassedOver(options.file, panel->keyword(), "spectra", panel->passedOver(), result);
    }
    return source.end(result);
}

}  // namespace RecTool
