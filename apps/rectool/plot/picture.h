// A picture file: where it may be written, and what is on every picture.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <qcustomplot.h>
#include <QApplication>
#include <QColor>
#include <QFont>
#include <QFontMetrics>
#include <QTemporaryDir>

#include "plot.h"
#include "printing/json.h"
#include "replay/recordings.h"

namespace RecTool {

/// How high a picture becomes whose panels are so many, counted in panels of a line: spectra and bearings need twice
/// its room. @return nothing, told, where their labels would not have room
[[nodiscard]] std::optional<int> heightFor(const PlotOptions& options, std::size_t linePanels);

/// Lets Qt draw without a display. There is one at a time; where there is an application, that is taken.
class DrawingApplication {
public:
    DrawingApplication();

private:
    int m_argc = 1;
    std::string m_name = "rectool";
    char* m_argv[2];  // NOLINT: what QApplication takes
    QTemporaryDir m_runtimeFolder;
    std::unique_ptr<QApplication> m_application;
};

/// Points that are whole also where they stand on the edge of their axes.
class WholePoints final : public QCPGraph {
public:
    using QCPGraph::QCPGraph;

protected:
    [[nodiscard]] QRect clipRect() const override;
};

class Picture;

/// A row of a picture, or a part of one.
class Panel {
public:
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;
    virtual ~Panel() = default;

    /// Its place was found for the first time.
    virtual void keepPlace() {}
    /// Takes a record of the last pass, if there is one left.
    virtual void visit(const PlacedRecord& /*plotted*/) {}
    /// Draws what depends on the place and on the last pass.
    virtual void finish() {}
    /// Draws over what is there, now that all places are final.
    virtual void mark() {}
    [[nodiscard]] virtual Json json() const { return {}; }
    /// Tells of records that could not be drawn. @return the result, Damaged where it was Fine
    [[nodiscard]] virtual ExitCode tellPassedOver(ExitCode result) const { return result; }

protected:
    explicit Panel(Picture& picture);
    [[nodiscard]] static Json placeInTimeline(const QCPAxisRect& rect);

    Picture& m_picture;  // NOLINT: for all panels
    int m_row;           // NOLINT: of the picture's body, the next one when the panel was made
};

/// The sheet that is drawn on: a title, what the picture is of, and below them panels.
class Picture {
public:
    /// @param rows of panels @param height as heightFor found it
    Picture(const PlotOptions& options, int height, Recordings& source, const QString& title, std::size_t rows);

    [[nodiscard]] QCustomPlot& plot() { return m_plot; }
    [[nodiscard]] const Recordings& source() const { return m_source; }
    /// Where the panels go, from above.
    [[nodiscard]] QCPLayoutGrid& body() { return *m_body; }
    [[nodiscard]] const QFont& font() const { return m_font; }
    [[nodiscard]] int width() const { return m_options.width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] int rows() const { return m_rows; }
    /// Panels of one width.
    [[nodiscard]] QCPMarginGroup& sides() { return m_sides; }
    /// How wide a text is, in pixels.
    [[nodiscard]] int widthOf(const QString& text) const { return QFontMetrics(m_font).horizontalAdvance(text); }
    [[nodiscard]] int lineHeight() const { return QFontMetrics(m_font).height(); }
    /// The text, cut in the middle to a number of pixels.
    [[nodiscard]] QString elided(const QString& text, int pixels) const;

    template <typename Kind, typename... Arguments>
    Kind& addPanel(Arguments&&... arguments)
    {
        auto panel = std::make_unique<Kind>(*this, std::forward<Arguments>(arguments)...);
        Kind& added = *panel;
        m_panels.push_back(std::move(panel));
        return added;
    }
    [[nodiscard]] QCPAxisRect* addAxisRect(QCPLayoutGrid& grid, int row, int column);
    QCPTextElement* addText(QCPLayoutGrid& grid, int row, int column, const QString& text);
    /// What the graphs of a rect mean.
    QCPLegend* addLegend(QCPLayoutGrid& grid, int row, int column, const QCPAxisRect& rect);
    /// A bar that tells colours, as high as what shares its margins.
    QCPColorScale* addBar(QCPLayoutGrid& grid, int column, const QCPColorGradient& gradient, const QString& label,
                          QCPMarginGroup& sameHeight);
    /// Something drawn over the panels, at pixels or at coordinates; owned by the plot.
    template <typename Item>
    Item* addItem(const char* layer = "overlay")
    {
        auto* item = new Item(&m_plot);
        item->setClipToAxisRect(false);
        item->setLayer(QLatin1String(layer));
        return item;
    }
    QCPItemLine* addLine(const QPointF& from, const QPointF& to, const QPen& pen);

    /// Draws the panels, with the last pass if one is left, stores the picture under its name, at once or not at all,
    /// and prints the JSON about it if that is asked for. @param tell adds to the JSON what the picture shows
    /// @return Fine, or, told, CannotRead or Damaged
    [[nodiscard]] ExitCode draw(const std::function<void(Json&)>& tell = {});
    [[nodiscard]] Json panelsJson() const;
    /// An object with the device of a track, where there are several.
    [[nodiscard]] Json deviceJson(std::size_t track) const;

private:
    void addTitles(const QString& title);
    void layOut();
    bool write(QIODevice& device, const QByteArray& format);
    [[nodiscard]] ExitCode save();
    [[nodiscard]] Json json() const;

    DrawingApplication m_application;
    const PlotOptions& m_options;
    Recordings& m_source;
    int m_height;
    int m_rows;
    QFont m_font;
    QCustomPlot m_plot;
    QCPMarginGroup m_sides{&m_plot};
    QCPLayoutGrid* m_body = new QCPLayoutGrid;
    std::vector<std::unique_ptr<Panel>> m_panels;
};

/// Draws a picture of a panel for each of some items. @param lines of a panel, as heightFor counts
/// @param tell as for Picture::draw @param arguments of the panels, before the item
template <typename Kind, typename Items, typename... Arguments>
[[nodiscard]] ExitCode drawPanels(const PlotOptions& options, Recordings& source, const QString& title,
                                  std::size_t lines, const Items& items,
                                  const std::function<void(const Picture&, Json&)>& tell, const Arguments&... arguments)
{
    const std::optional<int> height = heightFor(options, lines * items.size());
    if (!height) {
        return ExitCode::Usage;
    }
    Picture picture(options, *height, source, title, items.size());
    for (const auto& item : items) {
        picture.addPanel<Kind>(arguments..., item);
    }
    return picture.draw([&](Json& json) {
        if (tell) {
            tell(picture, json);
        }
    });
}

/// A time in milliseconds, with parts of them where there are any.
[[nodiscard]] Json msJson(double ms);

/// Colours evenly from the first to the last; none for what is no number.
[[nodiscard]] QCPColorGradient gradientOf(std::span<const QRgb> stops);
/// Of levels: dark to light and blue to yellow at an even pace, legible for the colour-blind and in grey.
[[nodiscard]] QCPColorGradient levelColours();

/// A row or column that gets no more room than it needs.
constexpr double AsLittleAsPossible = 0.001;

}  // namespace RecTool
