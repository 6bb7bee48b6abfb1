// plot timeline: spectra, bearings and values below each other, time across.
#include <algorithm>
#include <iostream>
#include <limits>
#include <memory>

#include "bearingviews.h"
#include "levelpanel.h"
#include "printing/text.h"
#include "spectra.h"
#include "spectrumband.h"

namespace RecTool {

namespace {

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
