// The verbs that draw: what is on each kind of picture, found by passes over the records and put on a sheet.
#include "plot.h"

#include <algorithm>

#include "bearingpanels.h"
#include "levelpanel.h"
#include "spectrumpanel.h"

namespace RecTool {

namespace {

/// Leaves out the series that a device did not record but another one did. @return why one cannot be drawn, else empty
template <typename WhyNot>
std::string dropUnrecorded(std::vector<Series>& all, const WhyNot& whyNot)
{
    for (auto series = all.begin(); series != all.end();) {
        std::string why = whyNot(*series);
        const bool isElsewhere = std::any_of(all.begin(), all.end(), [&](const Series& other) {
            return other.type.track != series->type.track && other.keyword == series->keyword;
        });
        if (!why.empty() && !isElsewhere) {
            return why;
        }
        series = why.empty() ? series + 1 : all.erase(series);
    }
    return "";
}

/// What a picture may show.
struct Contents {
    std::vector<Spectrum> spectra;
    std::vector<Series> series;
    std::optional<Bearings> bearings;
};

/// A first pass: which spectra, series and bearings there are, and when.
void survey(Contents& contents, Recordings& source)
{
    source.walk([&](const PlacedRecord& plotted) {
        for (Spectrum& spectrum : contents.spectra) {
            spectrum.survey(plotted, source);
        }
        for (Series& series : contents.series) {
            series.isRecorded = series.isRecorded || plotted.type == series.type;
        }
        if (contents.bearings) {
            contents.bearings->visit(plotted);
        }
    });
}

/// The pass over numbers and bearings, for a picture of this size.
void collect(Contents& contents, Recordings& source, int width, int height)
{
    for (Series& series : contents.series) {
        series.begin(source.span(), width);
    }
    if (contents.bearings) {
        contents.bearings->beginGroups(width, height);
    }
    source.walk([&](const PlacedRecord& plotted) {
        for (Series& series : contents.series) {
            series.visit(plotted);
        }
        if (contents.bearings) {
            contents.bearings->visit(plotted);
        }
    });
    for (Series& series : contents.series) {
        series.envelope->finish();
    }
}

QString levelTitle(const std::vector<Series>& all)
{
    QStringList keywords;
    for (const Series& series : all) {
        keywords << QString::fromStdString(series.keyword);
    }
    keywords.removeDuplicates();
    return keywords.join(QStringLiteral(", ")) + QStringLiteral(" over time");
}

Json seriesJson(const Picture& picture, const Series& series)
{
    const Envelope& envelope = *series.envelope;
    Json json = picture.deviceJson(series.type.track);
    json.update({{"keyword", series.keyword},
                 {"code", series.type.code},
                 {"unit", series.unit},
                 {"records", envelope.records()},
                 {"min", envelope.lowest()},
                 {"max", envelope.highest()},
                 {"drawn", envelope.hasPoints() ? "values" : "envelope"}});
    return json;
}

/// Over time on the left or above, from above and what the colours mean beside or below.
ExitCode drawBearings(Picture& picture, const Bearings& bearings)
{
    constexpr int Wide = 900;
    const bool isWide = picture.width() >= Wide;
    QCPLayoutGrid& body = picture.body();
    const int width = isWide ? picture.width() / 2 : picture.width() * 4 / 5;
    const auto& times = picture.addPanel<AzimuthPanel>(bearings, width, QMargins(8, 8, 34, 8), true);
    auto* side = new QCPLayoutGrid;
    body.addElement(isWide ? 0 : 1, isWide ? 1 : 0, side);
    const int square = std::min(picture.height() * (isWide ? 6 : 4) / 10, picture.width() * (isWide ? 38 : 60) / 100);
    const auto& fromAbove = picture.addPanel<FromAbovePanel>(bearings, *side, square);
    picture
        .addText(isWide ? *side : body, isWide ? 1 : 2, 0,
                 (bearings.areTrue() ? QStringLiteral("True north") : QStringLiteral("Antenna's zero")) +
                     QStringLiteral(" at the top; the later, the farther out"))
        ->setMargins(QMargins(0, 0, 0, 6));
    QCPLegend& legend = *picture.addLegend(*side, isWide ? 2 : 0, isWide ? 0 : 1, times.rect());
    const int columns = isWide ? 2 : 1;
    const int rows = (static_cast<int>(bearings.groups().size()) + columns - 1) / columns;
    legend.setWrap(columns);
    legend.setFillOrder(QCPLegend::foColumnsFirst);
    legend.setRowSpacing(2);
    legend.setMaximumSize(QWIDGETSIZE_MAX, rows * (picture.lineHeight() + 6) + 10);
    return picture.draw([&](Json& json) {
        const QCPAxisRect& view = times.rect();
        Json channels = Json::array();
        for (const PlottedGroup& group : bearings.groups()) {
            if (group.frequencyHz) {
                channels.push_back({{"frequencyHz", *group.frequencyHz},
                                    {"bearings", group.bearings},
                                    {"lastAzimuthDeg", group.lastAzimuthDeg}});
            }
        }
        json.update(
            {{"reference", bearings.areTrue() ? "true-north" : "antenna"},
             {"bearings", bearings.count()},
             {"channels", std::move(channels)},
             {"otherChannels", bearings.otherChannels()},
             {"withoutHeading", bearings.withoutHeading()},
             {"view", {{"columns", view.width()}, {"rows", view.height()}, {"left", view.left()}, {"top", view.top()}}},
             {"circle", fromAbove.json()}});
    });
}

/// Spectra, bearings and values from above, all as wide.
void addTimelinePanels(Picture& picture, const PlotTimelineOptions& options, const Contents& contents)
{
    constexpr double High = 2;  // spectra and bearings need more room than a line
    QCPLayoutGrid& body = picture.body();
    for (const Spectrum& spectrum : contents.spectra) {
        picture.addPanel<SpectrumBand>(options.unit, spectrum);
    }
    if (contents.bearings->count() > 0) {
        const auto& azimuths = picture.addPanel<AzimuthPanel>(*contents.bearings, picture.width() - TimeAxisAround,
                                                              QMargins(8, 12, 0, 8), contents.spectra.empty());
        picture.addLegend(body, body.rowCount() - 1, 1, azimuths.rect())->setRowSpacing(0);
    }
    for (int row = 0; row < body.rowCount(); ++row) {
        body.setRowStretchFactor(row, High);
    }
    if (body.columnCount() > 1) {
        body.setColumnStretchFactor(1, AsLittleAsPossible);
    }
    for (const Series& series : contents.series) {
        picture.addPanel<LevelPanel>(series);
    }
}

}  // namespace

ExitCode plotSpectrum(const PlotSpectrumOptions& options)
{
    Recordings source(options, 2, checkPicture(options));
    if (source.state() != ExitCode::Fine) {
        return source.state();
    }
    auto wanted = wantedSpectra(source, options.types, options.onlyRf, options.onlyIf);
    if (!wanted) {
        return ExitCode::Usage;
    }
    Contents contents{*wanted, {}, {}};
    survey(contents, source);
    const std::vector<Spectrum> spectra = endSurvey(contents.spectra, source);
    if (spectra.empty()) {
        return source.refuse(noSpectrum(options, contents.spectra));
    }
    const auto tell = [&](const Picture& picture, Json& json) {
        json["pixel"] = options.mean ? "mean" : "max";
        json["unit"] = options.unit;
        json["spectra"] = picture.panelsJson();
    };
    const auto title = QStringLiteral("Spectrum over time");
    return source.end(drawPanels<Waterfall>(options, source, title, 2, spectra, tell, options));
}

ExitCode plotLevel(const PlotLevelOptions& options)
{
    Recordings source(options, 1, checkPicture(options));
    if (source.state() != ExitCode::Fine) {
        return source.state();
    }
    const auto types = options.types.empty() ? std::vector<std::string>{"LEVEL"} : options.types;
    auto wanted = wantedSeries(source, types, options.unit);
    if (!wanted) {
        return ExitCode::Usage;
    }
    Contents contents{{}, *wanted, {}};
    std::vector<Series>& all = contents.series;
    collect(contents, source, options.width, options.height);
    const std::string why = dropUnrecorded(all, [&](const Series& series) { return noNumbers(options, series); });
    if (!why.empty()) {
        return source.refuse(why);
    }
    return source.end(
        drawPanels<LevelPanel>(options, source, levelTitle(all), 1, all, [&](const Picture& picture, Json& json) {
            json["series"] = Json::arrayOf(all, [&](const Series& series) { return seriesJson(picture, series); });
        }));
}

ExitCode plotBearings(const PlotBearingsOptions& options)
{
    Recordings source(options, 2, checkPicture(options));
    if (source.state() != ExitCode::Fine) {
        return source.state();
    }
    Contents contents;
    Bearings& bearings = contents.bearings.emplace(source, options.relative);
    if (!hasBearings(source)) {
        return source.refuse("There is no type DFSPECTRUM in the recording.");
    }
    survey(contents, source);
    if (bearings.count() == 0) {
        const bool isWhole = options.from.empty() && options.to.empty();
        return source.refuse(isWhole ? "There is no bearing in the recording." : "There is no bearing in the span.");
    }
    bearings.endCounting();
    collect(contents, source, options.width, options.height);
    Picture picture(options, options.height, source,
                    bearings.areTrue() ? QStringLiteral("True bearings (DFSPECTRUM, TRUEHEADING)")
                                       : QStringLiteral("Bearings (DFSPECTRUM)"),
                    1);
    return source.end(bearings.tellLeftOut(drawBearings(picture, bearings)));
}

ExitCode plotTimeline(const PlotTimelineOptions& options)
{
    Recordings source(options, 3, checkPicture(options));
    if (source.state() != ExitCode::Fine) {
        return source.state();
    }
    auto spectra = wantedSpectra(source);
    auto series = wantedSeries(source, options.types, "");
    if (!spectra || !series) {
        return source.end(ExitCode::Usage);
    }
    Contents contents{*spectra, *series, {}};
    Bearings& bearings = contents.bearings.emplace(source, options.relative);
    survey(contents, source);
    const std::string why = dropUnrecorded(contents.series, [](const Series& one) {
        return one.isRecorded ? "" : "There is no record of " + one.keyword + " in the recording.";
    });
    if (!why.empty()) {
        return source.refuse(why);
    }
    contents.spectra = endSurvey(contents.spectra, source);
    bearings.endCounting();
    const std::size_t high = contents.spectra.size() + (bearings.count() > 0 ? 1 : 0);
    const std::size_t all = high + contents.series.size();
    if (all == 0) {
        return source.refuse("There is no spectrum and no bearing; --type draws other values.");
    }
    const std::optional<int> height = heightFor(options, high + all);
    if (!height) {
        return source.end(ExitCode::Usage);
    }
    collect(contents, source, options.width, *height);
    Picture picture(options, *height, source, QStringLiteral("Timeline"), all);
    addTimelinePanels(picture, options, contents);
    return source.end(bearings.tellLeftOut(picture.draw([&](Json& json) { json["panels"] = picture.panelsJson(); })));
}

}  // namespace RecTool
