// plot level: numbers over time.
#include <iostream>
#include <memory>

#include "levelpanel.h"

namespace RecTool {

namespace {

constexpr const char* LevelKeyword = "LEVEL";

void printLevels(const PlotLevelOptions& options, const PlotSource& source, const std::vector<Series>& all)
{
    Json json = pictureJson(options, source);
    json["series"] = Json::array();
    for (const Series& series : all) {
        const Envelope& envelope = series.envelope;
        Json drawn = deviceJson(source, series.track);
        drawn.update({{"keyword", series.keyword},
                      {"code", series.code},
                      {"unit", series.unit},
                      {"records", envelope.records()},
                      {"min", envelope.lowest()},
                      {"max", envelope.highest()},
                      {"drawn", envelope.hasPoints() ? "values" : "envelope"}});
        json["series"].push_back(std::move(drawn));
    }
    std::cout << dump(json, 2) << '\n';
}

QString titleOf(const std::vector<Series>& all)
{
    QStringList keywords;
    for (const Series& series : all) {
        keywords << QString::fromStdString(series.keyword);
    }
    keywords.removeDuplicates();
    return keywords.join(QStringLiteral(", ")) + QStringLiteral(" over time");
}

/// A panel for each series, one below the other.
void drawLevels(Picture& picture, const PlotSource& source, const std::vector<Series>& all, QCPMarginGroup& sides)
{
    std::vector<std::unique_ptr<LevelPanel>> panels;
    for (const Series& series : all) {
        const bool isLast = panels.size() + 1 == all.size();
        const PanelPlace place{static_cast<int>(panels.size()), panels.empty(), isLast, &sides};
        panels.push_back(std::make_unique<LevelPanel>(picture, source, series, place));
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

/// The series that were asked for. Of several devices those are left out that did not record a type.
std::optional<std::vector<Series>> wantedSeries(const PlotLevelOptions& options, PlotSource& source)
{
    const auto types = source.takeTypes(options.types.empty() ? std::vector<std::string>{LevelKeyword} : options.types);
    if (!types) {
        return std::nullopt;
    }
    std::vector<Series> all = makeSeries(*types, options.unit, source, options.width);
    SeriesReplay replay(all, source);
    source.walk([&](const PlottedRecord& record) { replay.visit(record); });
    replay.finish();
    return all;
}

}  // namespace

ExitCode plotLevel(const PlotLevelOptions& asked)
{
    if (const ExitCode checked = checkPicture(asked); checked != ExitCode::Fine) {
        return checked;
    }
    PlotSource source(asked, 1);
    if (source.state() != ExitCode::Fine) {
        return source.state();
    }
    std::optional<std::vector<Series>> all = wantedSeries(asked, source);
    if (!all) {
        return ExitCode::Usage;
    }
    for (auto series = all->begin(); series != all->end();) {
        const std::string why = noNumbers(asked, *series);
        const bool isElsewhere = std::any_of(all->begin(), all->end(), [&](const Series& other) {
            return other.track != series->track && other.keyword == series->keyword;
        });
        if (!why.empty() && !isElsewhere) {
            return source.refuse(why);
        }
        series = why.empty() ? series + 1 : all->erase(series);
    }
    const std::optional<int> height = heightFor(asked, all->size());
    if (!height) {
        return source.end(ExitCode::Usage);
    }
    PlotLevelOptions options = asked;
    options.height = *height;
    const DrawingApplication application;
    Picture picture(options, source, titleOf(*all));
    QCPMarginGroup sides(&picture.plot());
    drawLevels(picture, source, *all, sides);
    ExitCode result = picture.save();
    if (result == ExitCode::Fine && options.json) {
        printLevels(options, source, *all);
    }
    for (const Series& series : *all) {
        result = withPassedOver(source.file(), series.keyword, "numbers", series.passedOver, result);
    }
    return source.end(result);
}

}  // namespace RecTool
