// plot timeline: spectra, bearings and values below each other, time across.
#include <algorithm>
#include <iostream>
#include <limits>
#include <memory>

#include "bearingviews.h"
#include "levelcolours.h"
#include "levelpanel.h"
#include "printing/text.h"
#include "spectra.h"
#include "spectrumgrid.h"

namespace RecTool {

namespace {

/// A spectrum whose time runs across. The axis of frequency is not broken.
class SpectrumBand {
public:
    SpectrumBand(Picture& picture, const PlotSource& source, const std::string& unit, Spectrum spectrum,
                 const PanelPlace& place)
        : m_picture(picture),
          m_source(source),
          m_spectrum(std::move(spectrum)),
          m_frequencies(axisPieces(m_spectrum.covered, 1).front()),
          m_unit(
              unitFor(std::max(std::abs(m_frequencies.lowHz), std::abs(m_frequencies.highHz)), m_frequencies.width())),
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

    /// As large as the place that was found. The columns of a grid are frequencies.
    void makeGrid()
    {
        constexpr int Fewest = 2;
        m_rect->setSizeConstraintRect(QCPLayoutElement::scrInnerRect);
        m_rect->setMinimumSize(m_rect->size());
        m_rect->setMaximumSize(m_rect->size());
        m_grid = std::make_unique<SpectrumGrid>(static_cast<std::size_t>(std::max(Fewest, m_rect->height())),
                                                static_cast<std::size_t>(std::max(Fewest, m_rect->width())),
                                                m_frequencies, m_source.span(), SpectrumGrid::Mode::Max);
    }
    void update(const LevelMap* map, double momentMs)
    {
        if (map == nullptr) {
            ++m_passedOver;
        } else {
            m_grid->update(map->GetChannelRange(), map->GetCells(), momentMs);
        }
    }
    void finish()
    {
        m_grid->finish();
        const std::optional<QCPRange> range = colourRange({m_grid.get()});
        m_bar->setDataRange(range.value_or(QCPRange(-1, 0)));
        m_bar->axis()->setTickLabels(range.has_value());
        setNumberTicks(m_picture, *m_bar->axis(), m_rect->height());
        setNumberTicks(m_picture, *m_rect->axis(QCPAxis::atLeft), m_rect->height());
        paint();
    }
    void mark() { markBookmarks(m_picture, *m_rect->axis(QCPAxis::atBottom), m_source, false); }
    [[nodiscard]] const Spectrum& spectrum() const { return m_spectrum; }
    [[nodiscard]] std::uint64_t passedOver() const { return m_passedOver; }
    [[nodiscard]] Json json() const
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
    [[nodiscard]] const QCPAxisRect& rect() const { return *m_rect; }

private:
    void paint()
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

    Picture& m_picture;
    const PlotSource& m_source;
    Spectrum m_spectrum;
    FrequencySpan m_frequencies;
    FrequencyUnit m_unit;
    QCPMarginGroup m_margins{&m_picture.plot()};
    QCPAxisRect* m_rect;
    QCPColorScale* m_bar;
    std::unique_ptr<SpectrumGrid> m_grid;
    std::uint64_t m_passedOver = 0;
};

/// What a first pass finds to draw.
struct Contents {
    std::vector<Spectrum> spectra;
    BearingCount bearings;
    std::vector<PlotSource::TypeInTrack> types;

    [[nodiscard]] std::size_t panels() const { return spectra.size() + (bearings.all() > 0 ? 1 : 0) + types.size(); }
};

/// Leaves out the types that a device did not record. @return false, told, when no other did either
bool dropUnrecorded(std::vector<PlotSource::TypeInTrack>& types, const std::vector<bool>& isRecorded,
                    const PlotSource& source)
{
    const auto keyword = [&](std::size_t i) { return source.tracks()[types[i].track].names.label(types[i].code); };
    std::vector<PlotSource::TypeInTrack> kept;
    for (std::size_t i = 0; i < types.size(); ++i) {
        bool isSomewhere = false;
        for (std::size_t other = 0; other < types.size(); ++other) {
            isSomewhere = isSomewhere || (isRecorded[other] && keyword(other) == keyword(i));
        }
        if (!isSomewhere) {
            complain(source.file(), "There is no record of " + keyword(i) + " in the recording.");
            return false;
        }
        if (isRecorded[i]) {
            kept.push_back(types[i]);
        }
    }
    types = kept;
    return true;
}

/// The first pass. @return nothing, told, when a type is in none of the recordings
std::optional<Contents> survey(const PlotTimelineOptions& options, PlotSource& source, Bearings& bearings)
{
    std::optional<std::vector<Spectrum>> wanted = wantedSpectra({}, source);
    const auto types = source.takeTypes(options.types);
    if (!wanted || !types) {
        return std::nullopt;
    }
    Contents contents;
    contents.types = *types;
    double first = source.span().fromMs;
    SpectrumSurvey spectra(*wanted, source);
    bearings.begin([&](const ShownBearing& bearing) {
        contents.bearings.add(bearing.frequencyHz);
        first = std::min(first, bearing.momentMs);
    });
    std::vector<bool> isRecorded(types->size());
    source.walk([&](const PlottedRecord& record) {
        spectra.visit(record);
        bearings.visit(record);
        const auto type =
            std::find(types->begin(), types->end(), PlotSource::TypeInTrack{record.track, record.record.code});
        if (type != types->end()) {
            isRecorded[static_cast<std::size_t>(type - types->begin())] = true;
        }
    });
    if (!dropUnrecorded(contents.types, isRecorded, source)) {
        return std::nullopt;
    }
    contents.spectra = spectra.finish(source);
    source.reach(first, source.span().toMs);
    if (bearings.headingIsRecorded()) {
        bearings.makeTrue();
    }
    return contents;
}

/// Draws the picture: the panels, filled by the second pass.
class Timeline {
public:
    Timeline(const PlotTimelineOptions& options, PlotSource& source, Bearings& bearings, const Contents& contents)
        : m_options(options),
          m_source(source),
          m_bearings(bearings),
          m_contents(contents),
          m_picture(options, source, QStringLiteral("Timeline")),
          m_groups(contents.bearings, source.span(), options.width, options.height),
          m_series(makeSeries(contents.types, "", source, options.width))
    {
    }

    ExitCode draw()
    {
        replayNumbers();
        addPanels();
        m_picture.layOut();
        for (const auto& band : m_bands) {
            band->makeGrid();
        }
        replaySpectra();
        finishPanels();
        const ExitCode result = m_picture.save();
        if (result == ExitCode::Fine && m_options.json) {
            print();
        }
        return passedOver(result);
    }

private:
    PanelPlace nextPlace()
    {
        const int row = m_row++;
        return {row, row == 0, row + 1 == static_cast<int>(m_contents.panels()), &m_sides};
    }
    /// The second pass: what tells how wide axes and legend are.
    void replayNumbers()
    {
        SeriesReplay series(m_series, m_source);
        m_bearings.begin([this](const ShownBearing& bearing) { m_groups.add(bearing); });
        m_source.walk([&](const PlottedRecord& record) {
            m_bearings.visit(record);
            series.visit(record);
        });
        series.finish();
    }
    void addPanels()
    {
        for (const Spectrum& spectrum : m_contents.spectra) {
            m_bands.push_back(
                std::make_unique<SpectrumBand>(m_picture, m_source, m_options.unit, spectrum, nextPlace()));
        }
        if (m_contents.bearings.all() > 0) {
            const PanelPlace place = nextPlace();
            m_azimuths = m_picture.addAxisRect(m_picture.body(), place.row, 0);
            m_azimuths->setMinimumMargins(QMargins(8, 12, 0, 8));
            setTimeAcross(m_picture, m_source, place, *m_azimuths);
            drawAzimuths(m_groups, m_bearings.areTrue(), *m_azimuths);
            addLegend();
        }
        for (const Series& series : m_series) {
            m_levels.push_back(std::make_unique<LevelPanel>(m_picture, m_source, series, nextPlace()));
        }
        QCPLayoutGrid& body = m_picture.body();
        if (body.columnCount() > 1) {
            constexpr double AsLittleAsPossible = 0.001;
            body.setColumnStretchFactor(1, AsLittleAsPossible);
        }
        constexpr double High = 2;  // spectra and bearings need more room than a line
        for (int row = 0; row + static_cast<int>(m_series.size()) < body.rowCount(); ++row) {
            body.setRowStretchFactor(row, High);
        }
    }
    /// The third pass, into grids of the size that was found.
    void replaySpectra()
    {
        std::vector<RecordedValues> recorded(m_source.tracks().size());
        m_source.walk([&](const PlottedRecord& record) {
            for (const auto& band : m_bands) {
                if (band->spectrum().is(record)) {
                    band->update(asLevels(recorded[record.track].apply(record.record)), record.momentMs);
                }
            }
        });
    }
    void addLegend()
    {
        auto* legend = new QCPLegend;
        auto* column = new QCPLayoutGrid;
        m_picture.body().addElement(static_cast<int>(m_bands.size()), 1, column);
        column->addElement(0, 0, legend);
        column->addElement(1, 0, new QCPLayoutElement(&m_picture.plot()));
        legend->setLayer(QStringLiteral("legend"));
        legend->setFont(m_picture.font());
        legend->setBorderPen(Qt::NoPen);
        legend->setRowSpacing(0);
        for (QCPGraph* graph : m_azimuths->graphs()) {
            graph->addToLegend(legend);
        }
    }
    void finishPanels()
    {
        for (const auto& band : m_bands) {
            band->finish();
        }
        for (const auto& level : m_levels) {
            level->finishAxes();
        }
        m_picture.layOut();
        for (const auto& band : m_bands) {
            band->mark();
        }
        if (m_azimuths != nullptr) {
            markBookmarks(m_picture, *m_azimuths->axis(QCPAxis::atBottom), m_source, m_bands.empty());
        }
        for (const auto& level : m_levels) {
            level->mark();
        }
    }
    void print() const
    {
        Json json = pictureJson(m_options, m_source);
        json["panels"] = Json::array();
        for (const auto& band : m_bands) {
            json["panels"].push_back(placed(band->json(), band->rect()));
        }
        if (m_azimuths != nullptr) {
            json["panels"].push_back(placed({{"type", "bearings"},
                                             {"reference", m_bearings.areTrue() ? "true-north" : "antenna"},
                                             {"bearings", m_contents.bearings.all()}},
                                            *m_azimuths));
        }
        for (std::size_t i = 0; i < m_series.size(); ++i) {
            const Series& series = m_series[i];
            Json panel = {{"type", "level"}};
            panel.update(deviceJson(m_source, series.track));
            panel.update({{"keyword", series.keyword},
                          {"unit", series.unit},
                          {"records", series.envelope.records()},
                          {"min", series.envelope.lowest()},
                          {"max", series.envelope.highest()}});
            json["panels"].push_back(placed(std::move(panel), m_levels[i]->rect()));
        }
        std::cout << dump(json, 2) << '\n';
    }
    static Json placed(Json panel, const QCPAxisRect& rect)
    {
        panel["left"] = rect.left();
        panel["top"] = rect.top();
        panel["columns"] = rect.width();
        panel["rows"] = rect.height();
        return panel;
    }
    ExitCode passedOver(ExitCode result) const
    {
        for (const auto& band : m_bands) {
            result = withPassedOver(m_source.file(), band->spectrum().keyword, "spectra", band->passedOver(), result);
        }
        for (const Series& series : m_series) {
            result = withPassedOver(m_source.file(), series.keyword, "numbers", series.passedOver, result);
        }
        if (m_bearings.withoutHeading() > 0) {
            complain(m_source.file(), "Bearings left out because they are older than the first heading: " +
                                          grouped(m_bearings.withoutHeading()) + "; see --relative.");
        }
        return withPassedOver(m_source.file(), DirectionFindingKeyword, "bearings", m_bearings.passedOver(), result);
    }

    const PlotTimelineOptions& m_options;
    PlotSource& m_source;
    Bearings& m_bearings;
    const Contents& m_contents;
    Picture m_picture;
    BearingGroups m_groups;
    std::vector<Series> m_series;
    QCPMarginGroup m_sides{&m_picture.plot()};
    std::vector<std::unique_ptr<SpectrumBand>> m_bands;
    QCPAxisRect* m_azimuths = nullptr;
    std::vector<std::unique_ptr<LevelPanel>> m_levels;
    int m_row = 0;
};

}  // namespace

ExitCode plotTimeline(const PlotTimelineOptions& asked)
{
    if (const ExitCode checked = checkPicture(asked); checked != ExitCode::Fine) {
        return checked;
    }
    constexpr int Passes = 3;
    PlotSource source(asked, Passes);
    if (source.state() != ExitCode::Fine) {
        return source.state();
    }
    Bearings bearings(source, asked.relative);
    const std::optional<Contents> contents = survey(asked, source, bearings);
    if (!contents) {
        return source.end(ExitCode::Usage);
    }
    if (contents->panels() == 0) {
        return source.refuse("There is no spectrum and no bearing; --type draws other values.");
    }
    const std::optional<int> height = heightFor(asked, 2 * contents->panels() - contents->types.size());
    if (!height) {
        return source.end(ExitCode::Usage);
    }
    PlotTimelineOptions options = asked;
    options.height = *height;
    const DrawingApplication application;
    Timeline timeline(options, source, bearings, *contents);
    return source.end(timeline.draw());
}

}  // namespace RecTool
