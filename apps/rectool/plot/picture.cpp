// Checking the picture's file, laying out titles and panels, saving, and the JSON about it.
#include "picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <iostream>

#include <QBuffer>
#include <QFileInfo>
#include <QFontMetrics>
#include <QImageWriter>
#include <QPdfWriter>

#include "making/savedfile.h"
#include "printing/output.h"
#include "printing/text.h"
#include "system/filenames.h"
#include "timeticks.h"

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

constexpr int Margin = 14;

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

Picture::Picture(const PlotOptions& options, const PlotSource& source, const QString& title)
    : m_output(options.output),
      m_width(options.width),
      m_height(options.height),
      m_font(QStringLiteral("DejaVu Sans")),
      m_body(new QCPLayoutGrid)
{
    constexpr int Wide = 1000;
    m_font.setPixelSize(m_width >= Wide ? 13 : 11);
    m_plot.setFont(m_font);
    m_plot.setViewport(QRect(0, 0, m_width, m_height));
    QCPLayoutGrid& grid = *m_plot.plotLayout();
    grid.clear();
    grid.setRowSpacing(0);

    QString device = QString::fromStdString(source.devices());
    if (isClockTime(source.startMs(), source.span())) {
        device += (device.isEmpty() ? "started " : ", started ") + QString::fromStdString(utc(source.startMs()));
    }
    QString file = QFileInfo(forQt(source.file())).fileName();
    if (source.files() > 1) {
        file += QStringLiteral(" and %1 more").arg(source.files() - 1);
    }
    const int room = m_width - 2 * Margin;
    QFont large = m_font;
    large.setPixelSize(m_font.pixelSize() + 4);
    large.setBold(true);
    addText(grid, 0, 0, elided(title, room * m_font.pixelSize() / (large.pixelSize() + 2)))->setFont(large);
    addText(grid, 1, 0, elided(device, room));
    addText(grid, 2, 0, elided(file, room))->setTextColor(QColor(90, 90, 90));
    for (int row = 0; row < 3; ++row) {
        grid.element(row, 0)->setMargins(QMargins(Margin, row == 0 ? Margin / 2 : 1, Margin, 1));
    }
    grid.addElement(3, 0, m_body);
    m_body->setMargins(QMargins(0, 0, 0, 0));
    constexpr double AsLittleAsPossible = 0.001;
    for (int row = 0; row < 3; ++row) {
        grid.setRowStretchFactor(row, AsLittleAsPossible);
    }
}

int Picture::widthOf(const QString& text) const
{
    return QFontMetrics(m_font).horizontalAdvance(text);
}

int Picture::lineHeight() const
{
    return QFontMetrics(m_font).height();
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

void Picture::layOut()
{
    m_plot.setViewport(QRect(0, 0, m_width, m_height));
    m_plot.replot(QCustomPlot::rpImmediateRefresh);
}

bool Picture::write(QIODevice& device, const QByteArray& format)
{
    if (format == "pdf") {
        constexpr double PointsPerInch = 72;
        QPdfWriter writer(&device);
        writer.setResolution(static_cast<int>(PointsPerInch));
        writer.setPageSize(QPageSize(QSizeF(m_width, m_height), QPageSize::Point));
        writer.setPageMargins(QMarginsF());
        QCPPainter painter;
        if (!painter.begin(&writer)) {
            return false;
        }
        painter.setMode(QCPPainter::pmVectorized);
        painter.setMode(QCPPainter::pmNoCaching);
        m_plot.toPainter(&painter, m_width, m_height);
        return painter.end();
    }
    constexpr int FineJpeg = 92;
    const QImage image = m_plot.toPixmap(m_width, m_height).toImage();
    QImageWriter writer(&device, format);
    writer.setQuality(format == "png" ? -1 : FineJpeg);
    return !image.isNull() && writer.write(image);
}

ExitCode Picture::save()
{
    const QByteArray format = suffixOf(forQt(m_output)).toLatin1();
    // Made in memory first: libraries that meet a full disk print messages of their own.
    QBuffer picture;
    picture.open(QIODevice::WriteOnly);
    if (!write(picture, format)) {
        complain(m_output, "The picture could not be made.");
        return ExitCode::CannotRead;
    }
    return saveFile(m_output, [&](QIODevice& file) { return file.write(picture.data()) == picture.size(); });
}

QRect WholePoints::clipRect() const
{
    constexpr int Point = 4;  // half of one and a bit
    return QCPGraph::clipRect().adjusted(-Point, -Point, Point, Point);
}

Json deviceJson(const PlotSource& source, std::size_t track)
{
    Json json = Json::object();
    if (source.tracks().size() > 1) {
        json["device"] = source.tracks()[track].device;
    }
    return json;
}

Json msJson(double ms)
{
    constexpr double LargestWhole = 9e15;
    constexpr double PerMs = 1000;
    const bool isWhole = ms == std::floor(ms) && std::abs(ms) < LargestWhole;
    return isWhole ? Json(static_cast<std::int64_t>(ms)) : Json(std::round(ms * PerMs) / PerMs);
}

Json levelJson(double level)
{
    constexpr double PerUnit = 100;
    return std::isfinite(level) ? Json(std::round(level * PerUnit) / PerUnit) : Json();
}

Json pictureJson(const PlotOptions& options, const PlotSource& source)
{
    Json bookmarks = Json::array();
    for (const auto& bookmark : source.bookmarks()) {
        bookmarks.push_back(toJson(bookmark));
    }
    Json json = {{"file", shownName(source.file())}};
    if (options.files.size() > 1) {
        json["files"] = Json::array();
        for (const std::string& file : options.files) {
            json["files"].push_back(shownName(file));
        }
    }
    json.update({{"picture", options.output},
                 {"width", options.width},
                 {"height", options.height},
                 {"fromMs", msJson(source.span().fromMs)},
                 {"toMs", msJson(source.span().toMs)},
                 {"bookmarks", std::move(bookmarks)}});
    return json;
}

}  // namespace RecTool
