// A number over time as a panel of a picture.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "axes.h"
#include "envelope.h"

namespace RecTool {

/// A type whose numbers are drawn.
struct Series {
    TrackType type;
    std::string keyword;
    std::string unit;         // of the numbers as they are recorded; empty for none
    bool isRecorded = false;  // as far as a first pass found
    std::optional<Envelope> envelope;
    std::uint64_t passedOver = 0;  // records that are no number

    /// Begins the pass that visits its records. @param width pixels
    void begin(const TimeSpan& span, int width);
    void visit(const PlacedRecord& plotted);
};

/// The series of types, without their envelopes. @param unit empty: what is known of the keywords
/// @return nothing, told, when one of the types is in none of the recordings
[[nodiscard]] std::optional<std::vector<Series>> wantedSeries(const Recordings& source,
                                                              const std::vector<std::string>& types,
                                                              const std::string& unit);

/// Why a series cannot be drawn; empty where it can.
[[nodiscard]] std::string noNumbers(const PlotOptions& options, const Series& series);

class LevelPanel final : public Panel {
public:
    /// @param series its name and numbers; must outlive the panel
    LevelPanel(Picture& picture, const Series& series);

    void finish() override { setNumberTicks(m_picture, valueAxis(), m_rect->height()); }
    void mark() override { markBookmarks(m_picture, timeAxis()); }
    [[nodiscard]] Json json() const override;
    [[nodiscard]] ExitCode tellPassedOver(ExitCode result) const override;

private:
    [[nodiscard]] QCPAxis& timeAxis() { return *m_rect->axis(QCPAxis::atBottom); }
    [[nodiscard]] QCPAxis& valueAxis() { return *m_rect->axis(QCPAxis::atLeft); }

    QCPGraph& addGraph(QCPGraph* graph, QCPGraph::LineStyle style);
    void addLabel(QCPLayoutGrid& layout);
    void chooseScale();
    void drawPoints();
    void drawColumns();

    const Series& m_series;
    const Envelope& m_envelope;
    double m_scale = 1;  // what is recorded for one of the axis
    QString m_unit;
    QCPAxisRect* m_rect = nullptr;
};

}  // namespace RecTool
