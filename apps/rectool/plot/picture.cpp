// Checking the picture's file, laying out titles and panels, saving, and the JSON about it.
#include "picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>

#include <QBuffer>
#include <QFileInfo>
#include <QImageWriter>
#include <QPdfWriter>

#include "labels.h"
#include "making/savedfile.h"
#include "printing/output.h"
#include "printing/text.h"
#include "system/filenames.h"

namespace RecTool {

namespace {

QString suffixOf(const QString& path)
{
    return QFileInfo(path).suffix().toLower();
}

/// The suffixes of recordings, finished and under way.
bool isRecordingName(const QString& path)
{
    return suffixOf(path) == "rec" || suffixOf(path) == "tmp";
}

bool isSameFile(const std::string& a, const std::string& b)
{
    std::error_code none;
    return std::filesystem::equivalent(native(a), native(b), none) && !none;
}

ExitCode refuse(const PlotOptions& options, const std::string& why)
{
    complain(options.output, why);
    return ExitCode::Usage;
}

}  // namespace

ExitCode checkPicture(const PlotOptions& options)
{
    const QString output = forQt(options.output);
    for (const std::string& file : options.files) {
        if (isSameFile(file, options.output)) {
            return refuse(options, "This is the recording itself; a picture does not replace it.");
        }
    }
    if (isRecordingName(output) || isRecordingName(QFileInfo(output).symLinkTarget())) {
        return refuse(options, "This is the name of a recording; a picture ends in .png, .jpg or .pdf.");
    }
    if (!QStringList{"png", "jpg", "jpeg", "pdf"}.contains(suffixOf(output))) {
        return refuse(options, "A picture's name ends in .png, .jpg or .pdf.");
    }
    return mayReplace(options.output) ? ExitCode::Fine : ExitCode::Usage;
}

std::optional<int> heightFor(const PlotOptions& options, std::size_t linePanels)
{
    constexpr int Around = 170;  // titles and the axis of time
    constexpr int Least = 50;
    constexpr int Comfortable = 110;
    constexpr int Highest = 5000;
    const auto panels = static_cast<int>(std::min<std::size_t>(linePanels, Highest));
    const int least = Around + panels * Least;
    if (least > (options.heightIsAsked ? options.height : Highest)) {
        static_cast<void>(refuse(options, "Its panels need a height of " + grouped(static_cast<std::uint64_t>(least)) +
                                              " pixels at least, of " + grouped(Highest) +
                                              " that are possible: see --height and --type."));
        return std::nullopt;
    }
    return options.heightIsAsked ? options.height : std::clamp(Around + panels * Comfortable, options.height, Highest);
}

DrawingApplication::DrawingApplication() : m_argv{m_name.data(), nullptr}
{
    if (QCoreApplication::instance() != nullptr) {
        return;
    }
    constexpr const char* RuntimeFolder = "XDG_RUNTIME_DIR";
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsEmpty(RuntimeFolder)) {  // Qt looks into it and complains where there is none
        qputenv(RuntimeFolder, m_runtimeFolder.path().toLocal8Bit());
    }
    QCoreApplication::setAttribute(Qt::AA_DisableHighDpiScaling);
    m_application = std::make_unique<QApplication>(m_argc, m_argv);
}

Picture::Picture(const PlotOptions& options, int height, Recordings& source, const QString& title, std::size_t rows)
    : m_options(options),
      m_source(source),
      m_height(height),
      m_rows(static_cast<int>(rows)),
      m_font(QStringLiteral("DejaVu Sans"))
{
    constexpr int Wide = 1000;
    m_font.setPixelSize(width() >= Wide ? 13 : 11);
    m_plot.setFont(m_font);
    m_plot.plotLayout()->clear();
    m_plot.plotLayout()->setRowSpacing(0);
    addTitles(title);
    m_plot.plotLayout()->addElement(3, 0, m_body);
    m_body->setMargins(QMargins(0, 0, 0, 0));
}

void Picture::addTitles(const QString& title)
{
    constexpr int Margin = 14;
    QString device = m_source.devices();
    if (isClockTime(m_source.startMs(), m_source.span())) {
        device += (device.isEmpty() ? "started " : ", started ") + QString::fromStdString(utc(m_source.startMs()));
    }
    QString file = QFileInfo(forQt(m_source.file())).fileName();
    if (m_source.files() > 1) {
        file += QStringLiteral(" and %1 more").arg(m_source.files() - 1);
    }
    const int room = width() - 2 * Margin;
    QFont large = m_font;
    large.setPixelSize(m_font.pixelSize() + 4);
    large.setBold(true);
    QCPLayoutGrid& grid = *m_plot.plotLayout();
    addText(grid, 0, 0, elided(title, room * m_font.pixelSize() / (large.pixelSize() + 2)))->setFont(large);
    addText(grid, 1, 0, elided(device, room));
    addText(grid, 2, 0, elided(file, room))->setTextColor(QColor(90, 90, 90));
    for (int row = 0; row < 3; ++row) {
        grid.element(row, 0)->setMargins(QMargins(Margin, row == 0 ? Margin / 2 : 1, Margin, 1));
        grid.setRowStretchFactor(row, AsLittleAsPossible);
    }
}

QString Picture::elided(const QString& text, int pixels) const
{
    return QFontMetrics(m_font).elidedText(text, Qt::ElideMiddle, pixels);
}

QCPAxisRect* Picture::addAxisRect(QCPLayoutGrid& grid, int row, int column)
{
    auto* rect = new QCPAxisRect(&m_plot, true);
    grid.addElement(row, column, rect);
    for (QCPAxis* axis : rect->axes()) {
        axis->setLayer(QStringLiteral("axes"));
        axis->grid()->setLayer(QStringLiteral("grid"));
        axis->setLabelFont(m_font);
        axis->setTickLabelFont(m_font);
        axis->setLabelPadding(4);
        axis->setTickLabelPadding(4);
        axis->setNumberFormat(QStringLiteral("f"));
    }
    return rect;
}

QCPTextElement* Picture::addText(QCPLayoutGrid& grid, int row, int column, const QString& text)
{
    auto* element = new QCPTextElement(&m_plot, text, m_font);
    grid.addElement(row, column, element);
    return element;
}

QCPLegend* Picture::addLegend(QCPLayoutGrid& grid, int row, int column, const QCPAxisRect& rect)
{
    auto* place = new QCPLayoutGrid;
    grid.addElement(row, column, place);
    auto* legend = new QCPLegend;
    place->addElement(0, 0, legend);
    place->addElement(1, 0, new QCPLayoutElement(&m_plot));  // takes what the legend does not need
    legend->setLayer(QStringLiteral("legend"));
    legend->setFont(m_font);
    legend->setBorderPen(Qt::NoPen);
    for (QCPGraph* graph : rect.graphs()) {
        graph->addToLegend(legend);
    }
    return legend;
}

QCPColorScale* Picture::addBar(QCPLayoutGrid& grid, int column, const QCPColorGradient& gradient, const QString& label,
                               QCPMarginGroup& sameHeight)
{
    auto* bar = new QCPColorScale(&m_plot);
    grid.addElement(0, column, bar);
    bar->setBarWidth(14);
    bar->setType(QCPAxis::atRight);
    bar->axis()->setLabelFont(m_font);
    bar->axis()->setTickLabelFont(m_font);
    bar->setGradient(gradient);
    bar->setLabel(label);
    bar->setMargins(QMargins(0, 0, 10, 0));
    bar->setMarginGroup(QCP::msTop | QCP::msBottom, &sameHeight);
    return bar;
}

QCPItemLine* Picture::addLine(const QPointF& from, const QPointF& to, const QPen& pen)
{
    auto* line = addItem<QCPItemLine>();
    line->setPen(pen);
    line->start->setPixelPosition(from);
    line->end->setPixelPosition(to);
    return line;
}

void Picture::layOut()
{
    m_plot.setViewport(QRect(0, 0, width(), m_height));
    m_plot.replot(QCustomPlot::rpImmediateRefresh);
}

bool Picture::write(QIODevice& device, const QByteArray& format)
{
    if (format == "pdf") {
        constexpr double PointsPerInch = 72;
        QPdfWriter writer(&device);
        writer.setResolution(static_cast<int>(PointsPerInch));
        writer.setPageSize(QPageSize(QSizeF(width(), m_height), QPageSize::Point));
        writer.setPageMargins(QMarginsF());
        QCPPainter painter;
        if (!painter.begin(&writer)) {
            return false;
        }
        painter.setMode(QCPPainter::pmVectorized);
        painter.setMode(QCPPainter::pmNoCaching);
        m_plot.toPainter(&painter, width(), m_height);
        return painter.end();
    }
    constexpr int FineJpeg = 92;
    const QImage image = m_plot.toPixmap(width(), m_height).toImage();
    QImageWriter writer(&device, format);
    writer.setQuality(format == "png" ? -1 : FineJpeg);
    return !image.isNull() && writer.write(image);
}

ExitCode Picture::save()
{
    const QByteArray format = suffixOf(forQt(m_options.output)).toLatin1();
    // Made in memory first: libraries that meet a full disk print messages of their own.
    QBuffer picture;
    picture.open(QIODevice::WriteOnly);
    if (!write(picture, format)) {
        complain(m_options.output, "The picture could not be made.");
        return ExitCode::CannotRead;
    }
    return saveFile(m_options.output, [&](QIODevice& file) { return file.write(picture.data()) == picture.size(); });
}

QRect WholePoints::clipRect() const
{
    constexpr int Point = 4;  // half of one and a bit
    return QCPGraph::clipRect().adjusted(-Point, -Point, Point, Point);
}

Json msJson(double ms)
{
    constexpr double LargestWhole = 9e15;
    const bool isWhole = ms == std::floor(ms) && std::abs(ms) < LargestWhole;
    return isWhole ? Json(static_cast<std::int64_t>(ms)) : Json(thousandths(ms));
}

Panel::Panel(Picture& picture) : m_picture(picture), m_row(picture.body().rowCount())
{
}

Json Panel::placeInTimeline(const QCPAxisRect& rect)
{
    return {{"left", rect.left()}, {"top", rect.top()}, {"columns", rect.width()}, {"rows", rect.height()}};
}

ExitCode Picture::draw(const std::function<void(Json&)>& tell)
{
    const auto all = [this](void (Panel::*step)()) {
        for (const auto& panel : m_panels) {
            (*panel.*step)();
        }
    };
    layOut();
    all(&Panel::keepPlace);
    if (m_source.isPassLeft()) {
        m_source.walk([this](const PlacedRecord& plotted) {
            for (const auto& panel : m_panels) {
                panel->visit(plotted);
            }
        });
    }
    all(&Panel::finish);
    layOut();
    all(&Panel::mark);
    ExitCode result = save();
    if (result == ExitCode::Fine && m_options.json) {
        Json shown = json();
        if (tell) {
            tell(shown);
        }
        printJson(shown);
    }
    for (const auto& panel : m_panels) {
        result = panel->tellPassedOver(result);
    }
    return result;
}

Json Picture::panelsJson() const
{
    return Json::arrayOf(m_panels, [](const auto& panel) { return panel->json(); });
}

Json Picture::deviceJson(std::size_t track) const
{
    const bool areSeveral = m_source.tracks().size() > 1;
    return areSeveral ? Json{{"device", m_source.tracks()[track].device}} : Json::object();
}

Json Picture::json() const
{
    Json json = {{"file", shownName(m_source.file())}};
    if (m_options.files.size() > 1) {
        json["files"] = shownNames(m_options.files);
    }
    json.update({{"picture", m_options.output},
                 {"width", width()},
                 {"height", m_height},
                 {"fromMs", msJson(m_source.span().fromMs)},
                 {"toMs", msJson(m_source.span().toMs)},
                 {"bookmarks", toJson(m_source.bookmarks())}});
    return json;
}

QCPColorGradient gradientOf(std::span<const QRgb> stops)
{
    QCPColorGradient gradient;
    gradient.clearColorStops();
    for (std::size_t i = 0; i < stops.size(); ++i) {
        gradient.setColorStopAt(static_cast<double>(i) / static_cast<double>(stops.size() - 1), QColor(stops[i]));
    }
    gradient.setNanHandling(QCPColorGradient::nhTransparent);
    return gradient;
}

QCPColorGradient levelColours()
{
    constexpr std::array<QRgb, 11> Stops{0xff000004, 0xff160b39, 0xff420a68, 0xff6a176e, 0xff932667, 0xffbc3754,
                                         0xffdd513a, 0xfff37819, 0xfffca50a, 0xfff6d746, 0xfffcffa4};
    constexpr int Levels = 512;
    QCPColorGradient gradient = gradientOf(Stops);
    gradient.setLevelCount(Levels);
    return gradient;
}

}  // namespace RecTool
