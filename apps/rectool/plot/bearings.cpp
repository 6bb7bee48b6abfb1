// plot bearings: azimuths over time and as seen from above.
#include <algorithm>
#include <iostream>
#include <limits>

#include "axes.h"
#include "bearingviews.h"
#include "printing/text.h"

namespace RecTool {

namespace {

/// Whether the view from above stands beside that over time, or below it.
bool viewsAreBeside(const Picture& picture)
{
    constexpr int Wide = 900;
    return picture.width() >= Wide;
}

/// Azimuth up, time across.
void addTimeView(Picture& picture, const PlotSource& source, const BearingGroups& groups, bool areTrue,
                 QCPAxisRect& rect)
{
    QCPAxis& time = *rect.axis(QCPAxis::atBottom);
    QCPAxis& elapsed = *rect.axis(QCPAxis::atTop);
    for (QCPAxis* axis : rect.axes()) {
        axis->setVisible(true);
        axis->setSubTicks(false);
    }
    rect.axis(QCPAxis::atRight)->setTicks(false);
    const int width = viewsAreBeside(picture) ? picture.width() / 2 : picture.width() * 4 / 5;
    setTimeAxis(picture, time, source, TimeScale::Clock, width);
    setTimeAxis(picture, elapsed, source, TimeScale::Elapsed, width);
    elapsed.setTicks(hasClock(source));
    elapsed.setLabel(hasClock(source) ? elapsed.label() : QString());
    drawAzimuths(groups, areTrue, rect);
}

/// What the colours mean, below the view from above or beside it.
void addLegend(Picture& picture, const BearingGroups& groups, QCPLayoutGrid& column)
{
    const int columns = viewsAreBeside(picture) ? 2 : 1;
    const int rows = (static_cast<int>(groups.shown().size()) + columns - 1) / columns;
    auto* legend = new QCPLegend;
    column.addElement(0, 0, legend);
    column.addElement(1, 0, new QCPLayoutElement(&picture.plot()));  // takes what the legend does not need
    legend->setLayer(QStringLiteral("legend"));
    legend->setFont(picture.font());
    legend->setBorderPen(Qt::NoPen);
    legend->setFillOrder(QCPLegend::foColumnsFirst);
    legend->setRowSpacing(2);
    legend->setWrap(columns);
    for (int i = 0; i < picture.plot().graphCount(); ++i) {
        picture.plot().graph(i)->addToLegend(legend);
    }
    legend->setMaximumSize(QWIDGETSIZE_MAX, rows * (picture.lineHeight() + 6) + 10);
}

/// The whole picture: over time, from above, and what the colours mean. @return where the view from above is
QCPAxisRect* drawBearings(Picture& picture, const PlotSource& source, const BearingGroups& groups, bool areTrue)
{
    const bool beside = viewsAreBeside(picture);
    QCPLayoutGrid& body = picture.body();
    QCPAxisRect* times = picture.addAxisRect(body, 0, 0);
    times->setMinimumMargins(QMargins(8, 8, 34, 8));
    addTimeView(picture, source, groups, areTrue, *times);

    auto* side = new QCPLayoutGrid;
    body.addElement(beside ? 0 : 1, beside ? 1 : 0, side);
    const int square = std::min(picture.height() * (beside ? 6 : 4) / 10, picture.width() * (beside ? 38 : 60) / 100);
    QCPAxisRect* polar = picture.addAxisRect(*side, 0, 0);
    polar->setAutoMargins(QCP::msNone);
    polar->setMinimumSize(square, square);
    polar->setMaximumSize(square, square);
    QCPTextElement* caption =
        picture.addText(beside ? *side : body, beside ? 1 : 2, 0,
                        areTrue ? QStringLiteral("True north at the top; the later, the farther out")
                                : QStringLiteral("Antenna's zero at the top; the later, the farther out"));
    caption->setMargins(QMargins(0, 0, 0, 6));
    auto* legendColumn = new QCPLayoutGrid;
    side->addElement(beside ? 2 : 0, beside ? 0 : 1, legendColumn);
    addLegend(picture, groups, *legendColumn);
    picture.layOut();
    addPolarView(picture, source, groups, areTrue, *polar);
    return polar;
}

void printBearings(const PlotBearingsOptions& options, const PlotSource& source, const Bearings& bearings,
                   const BearingCount& count, const BearingGroups& groups, const QCPAxisRect& view,
                   const QCPAxisRect& fromAbove)
{
    Json channels = Json::array();
    for (const double hz : groups.frequencies()) {
        channels.push_back(
            {{"frequencyHz", hz}, {"bearings", count.of(hz)}, {"lastAzimuthDeg", groups.lastAzimuthDeg(hz)}});
    }
    Json json = pictureJson(options, source);
    json["reference"] = bearings.areTrue() ? "true-north" : "antenna";
    json["bearings"] = count.all();
    json["channels"] = std::move(channels);
    json["otherChannels"] = groups.others();
    json["withoutHeading"] = bearings.withoutHeading();
    json["view"] = {{"columns", view.width()}, {"rows", view.height()}, {"left", view.left()}, {"top", view.top()}};
    const QCPAxis& up = *fromAbove.axis(QCPAxis::atLeft);
    const QPoint middle = fromAbove.center();
    json["circle"] = {{"x", middle.x()}, {"y", middle.y()}, {"radius", fromAbove.height() / up.range().size()}};
    std::cout << dump(json, 2) << '\n';
}

ExitCode pictureOf(const PlotBearingsOptions& options, PlotSource& source, Bearings& bearings,
                   const BearingCount& count)
{
    BearingGroups groups(count, source.span(), options.width, options.height);
    bearings.replay([&](const ShownBearing& bearing) { groups.add(bearing); });
    const DrawingApplication application;
    Picture picture(options, source,
                    bearings.areTrue() ? QStringLiteral("True bearings (DFSPECTRUM, TRUEHEADING)")
                                       : QStringLiteral("Bearings (DFSPECTRUM)"));
    const QCPAxisRect* fromAbove = drawBearings(picture, source, groups, bearings.areTrue());
    picture.layOut();
    QCPAxis& time = *picture.plot().graph(0)->keyAxis();
    markBookmarks(picture, time, source);
    const ExitCode result = picture.save();
    if (result == ExitCode::Fine && options.json) {
        printBearings(options, source, bearings, count, groups, *time.axisRect(), *fromAbove);
    }
    return result;
}

}  // namespace

ExitCode plotBearings(const PlotBearingsOptions& options)
{
    if (const ExitCode checked = checkPicture(options); checked != ExitCode::Fine) {
        return checked;
    }
    constexpr int Passes = 2;
    PlotSource source(options, Passes);
    if (source.state() != ExitCode::Fine) {
        return source.state();
    }
    Bearings bearings(source, options.relative);
    if (!bearings.areRecorded()) {
        return source.refuse("There is no type DFSPECTRUM in the recording.");
    }
    BearingCount count;
    double first = std::numeric_limits<double>::infinity();
    bearings.replay([&](const ShownBearing& bearing) {
        count.add(bearing.frequencyHz);
        first = std::min(first, bearing.momentMs);
    });
    if (count.all() == 0) {
        return source.refuse(options.from.empty() && options.to.empty() ? "There is no bearing in the recording."
                                                                        : "There is no bearing in the span.");
    }
    source.reach(first, source.span().toMs);
    if (bearings.headingIsRecorded()) {
        bearings.makeTrue();
    }
    const ExitCode result = pictureOf(options, source, bearings, count);
    if (bearings.withoutHeading() > 0) {
        complain(source.file(), "Bearings left out because they are older than the first heading: " +
                                    grouped(bearings.withoutHeading()) + "; see --relative.");
    }
    return source.end(
        withPassedOver(source.file(), DirectionFindingKeyword, "bearings", bearings.passedOver(), result));
}

}  // namespace RecTool
