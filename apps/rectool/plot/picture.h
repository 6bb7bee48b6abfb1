// A picture file: where it may be written, and what is on every picture.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <qcustomplot.h>
#include <QApplication>
#include <QColor>
#include <QFont>
#include <QTemporaryDir>

#include "plot.h"
#include "printing/json.h"
#include "source.h"

namespace RecTool {

/// Whether a picture may be drawn with these options; told if not. No recording is ever overwritten, nor what
/// is no ordinary file.
[[nodiscard]] ExitCode checkPicture(const PlotOptions& options);

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

/// The sheet that is drawn on: a title, what the picture is of, and below them what the verbs put there.
class Picture {
public:
    Picture(const PlotOptions& options, const PlotSource& source, const QString& title);

    [[nodiscard]] QCustomPlot& plot() { return m_plot; }
    /// Where the panels go, from above.
    [[nodiscard]] QCPLayoutGrid& body() { return *m_body; }
    [[nodiscard]] const QFont& font() const { return m_font; }
    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    /// How wide a text is, in pixels.
    [[nodiscard]] int widthOf(const QString& text) const;
    [[nodiscard]] int lineHeight() const;
    [[nodiscard]] QCPAxisRect* addAxisRect(QCPLayoutGrid& grid, int row, int column);
    /// Something drawn over the panels, at pixels or at coordinates; owned by the plot.
    template <typename Item>
    Item* addItem(const char* layer = "overlay")
    {
        auto* item = new Item(&m_plot);
        item->setClipToAxisRect(false);
        item->setLayer(QLatin1String(layer));
        return item;
    }
    QCPTextElement* addText(QCPLayoutGrid& grid, int row, int column, const QString& text);
    /// The text, cut in the middle to a number of pixels.
    [[nodiscard]] QString elided(const QString& text, int pixels) const;
    /// Finds the places of everything, so that pixels can be asked for.
    void layOut();

    /// Stores the picture under its name, at once or not at all. @return Fine, or, told, CannotRead
    [[nodiscard]] ExitCode save();

private:
    bool write(QIODevice& device, const QByteArray& format);

    std::string m_output;
    int m_width;
    int m_height;
    QFont m_font;
    QCustomPlot m_plot;
    QCPLayoutGrid* m_body;
};

/// The fields that the JSON of every picture begins with.
[[nodiscard]] Json pictureJson(const PlotOptions& options, const PlotSource& source);
/// An object with the device of a track, where there are several.
[[nodiscard]] Json deviceJson(const PlotSource& source, std::size_t track);
/// A time in milliseconds, with parts of them where there are any.
[[nodiscard]] Json msJson(double ms);
/// A level in hundredths, null for none.
[[nodiscard]] Json levelJson(double level);

}  // namespace RecTool
