// A piece of the earth with longitude and latitude, to scale.
#pragma once

#include "geo/heatgrid.h"
#include "geo/shapes.h"
#include "picture.h"

namespace RecTool {

class EarthPanel : public Panel {
public:
    void keepPlace() override;
    void finish() override;
    void mark() override;

protected:
    /// @param area that is shown at least @param below a line under the map
    EarthPanel(Picture& picture, const Geo::Area& area, const QString& below);

    /// The bar beside the map.
    QCPColorScale& addBar(const QCPColorGradient& gradient, const QCPRange& range, const QString& label);
    /// Of a longitude on the axis, which may go beyond 180.
    [[nodiscard]] double across(double longitudeDeg) const;
    /// Positions of one kind, with their entry in the legend.
    QCPGraph& addPoints(const QString& name, const QCPScatterStyle& style);
    void addPosition(QCPGraph& graph, const Geo::Position& position) const;
    void addOutline(const std::vector<Geo::Path>& rings, const QPen& pen);
    void addLegend();
    [[nodiscard]] QCPAxis& longitudes() const { return *m_rect->axis(QCPAxis::atBottom); }
    [[nodiscard]] QCPAxis& latitudes() const { return *m_rect->axis(QCPAxis::atLeft); }
    [[nodiscard]] Json placeJson() const;

    QCPAxisRect* m_rect;     // NOLINT: for all panels
    QCPLayoutGrid* m_strip;  // NOLINT: map and bar

private:
    Geo::Area m_area;
    QCPMarginGroup m_margins;
    QCPColorScale* m_bar = nullptr;
};

}  // namespace RecTool
