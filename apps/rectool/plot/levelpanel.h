// A number over time as a panel of a picture.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "axes.h"
#include "envelope.h"
#include "picture.h"
#include "replay/recordedvalues.h"

namespace RecTool {

/// A type whose numbers are drawn.
struct Series {
    std::size_t track = 0;
    std::int32_t code = 0;
    std::string keyword;
    std::string label;  // the keyword, with the device where there are several
    std::string unit;   // of the numbers as they are recorded; empty for none
    Envelope envelope;
    std::uint64_t passedOver = 0;  // records that are no number
};

/// What the numbers of a keyword are counted in; empty where that is not fixed or there is no unit.
[[nodiscard]] std::string unitOf(const std::string& keyword);

/// The series of types. @param unit empty: what is known of the keywords
[[nodiscard]] std::vector<Series> makeSeries(const std::vector<PlotSource::TypeInTrack>& types, const std::string& unit,
                                             const PlotSource& source, int width);
/// Takes over the numbers of records.
class SeriesReplay {
public:
    SeriesReplay(std::vector<Series>& all, const PlotSource& source) : m_all(all), m_recorded(source.tracks().size()) {}

    void visit(const PlottedRecord& record);
    void finish();

private:
    std::vector<Series>& m_all;
    std::vector<RecordedValues> m_recorded;  // by track
};

/// Why a series cannot be drawn; empty where it can.
[[nodiscard]] std::string noNumbers(const PlotOptions& options, const Series& series);

/// Where a panel is among those below each other.
struct PanelPlace {
    int row = 0;
    bool isFirst = true;
    bool isLast = true;
    QCPMarginGroup* sides = nullptr;  // all panels are as wide
};

/// Makes the axes of a panel whose time runs across. What is the same for all panels stands above and below them.
void setTimeAcross(Picture& picture, const PlotSource& source, const PanelPlace& place, QCPAxisRect& rect);

class LevelPanel {
public:
    LevelPanel(Picture& picture, const PlotSource& source, const Series& series, const PanelPlace& place);

    void finishAxes() { setNumberTicks(m_picture, valueAxis(), m_rect->height()); }
    void mark() { markBookmarks(m_picture, timeAxis(), m_source); }
    [[nodiscard]] QCPAxisRect& rect() { return *m_rect; }

private:
    [[nodiscard]] QCPAxis& timeAxis() { return *m_rect->axis(QCPAxis::atBottom); }
    [[nodiscard]] QCPAxis& valueAxis() { return *m_rect->axis(QCPAxis::atLeft); }

    template <typename Graph>
    Graph* addGraph()
    {
        auto* graph = new Graph(&timeAxis(), &valueAxis());
        graph->setPen(QPen(QColor(0x1f, 0x4e, 0x9c), 1.2));
        return graph;
    }
    void addLabel(QCPLayoutGrid& layout, bool isAlone);
    void chooseScale();
    void draw();
    void drawPoints();
    void drawColumns();

    Picture& m_picture;
    const PlotSource& m_source;
    const Series& m_series;
    double m_scale = 1;  // what is recorded for one of the axis
    QString m_unit;
    QCPAxisRect* m_rect = nullptr;
};

}  // namespace RecTool
