// One panel of a timeline: a spectrum whose time runs across.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "axes.h"
#include "picture.h"
#include "spectra.h"
#include "spectrumgrid.h"

namespace RecTool {

/// A spectrum whose time runs across. The axis of frequency is not broken.
class SpectrumBand {
public:
    SpectrumBand(Picture& picture, const PlotSource& source, const std::string& unit, Spectrum spectrum,
                 const PanelPlace& place);

    /// As large as the place that was found. The columns of a grid are frequencies.
    void makeGrid();
    void update(const LevelMap* map, double momentMs);
    void finish();
    void mark();
    [[nodiscard]] const Spectrum& spectrum() const { return m_spectrum; }
    [[nodiscard]] std::uint64_t passedOver() const { return m_passedOver; }
    [[nodiscard]] Json json() const;
    [[nodiscard]] const QCPAxisRect& rect() const { return *m_rect; }

private:
    void paint();

    Picture& m_picture;
    const PlotSource& m_source;
    Spectrum m_spectrum;
    FrequencySpan m_frequencies;
    FrequencyUnit m_unit;
    QCPMarginGroup m_margins{&m_picture.plot()};
    QCPAxisRect* m_rect;
    QCPColorScale* m_bar;
    std::unique_ptr<SpectrumGrid> m_grid;
    std::uint64_t m_passedOver = 0;
};

}  // namespace RecTool
