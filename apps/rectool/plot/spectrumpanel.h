// A spectrum in a picture: frequency across, time down, the level as a colour.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "axes.h"
#include "picture.h"
#include "spectra.h"
#include "spectrumgrid.h"

namespace RecTool {

class SpectrumPanel {
public:
    /// @param row of the picture's body
    SpectrumPanel(Picture& picture, const PlotSource& source, const PlotSpectrumOptions& options, Spectrum spectrum,
                  int row);

    /// Makes the grids as large as the places that were found for them, and keeps these places.
    void makeGrids();
    /// @param map null when the record is no spectrum
    void update(const LevelMap* map, double momentMs);
    void finish();
    void mark();
    [[nodiscard]] const Spectrum& spectrum() const { return m_spectrum; }
    [[nodiscard]] std::uint64_t passedOver() const { return m_passedOver; }
    [[nodiscard]] Json json() const;

private:
    /// One stretch of the frequency axis.
    struct Piece {
        FrequencySpan frequencies;
        QCPAxisRect* rect = nullptr;
        std::unique_ptr<SpectrumGrid> grid;
    };

    [[nodiscard]] QFont bold() const;
    [[nodiscard]] QString titleText() const;
    [[nodiscard]] QString frequencyLabel() const;
    [[nodiscard]] bool rangesAreMarked() const;
    [[nodiscard]] std::size_t mostPieces() const;
    [[nodiscard]] std::vector<const SpectrumGrid*> grids() const;
    void addPieces();
    void addPiece(const FrequencySpan& span);
    void addBar();
    void setFrequencyAxis(Piece& piece);
    void setTimeAxes(int height);
    void chooseColours();
    void paint(Piece& piece);
    void markRanges();

    Picture& m_picture;
    const PlotSource& m_source;
    const PlotSpectrumOptions& m_options;
    Spectrum m_spectrum;
    FrequencyUnit m_unit;
    QCPLayoutGrid* m_layout = new QCPLayoutGrid;
    QCPLayoutGrid* m_strip = new QCPLayoutGrid;
    QCPMarginGroup m_margins{&m_picture.plot()};
    QCPColorScale* m_bar = nullptr;
    std::vector<Piece> m_pieces;
    QCPRange m_colours;
    std::uint64_t m_passedOver = 0;
};

}  // namespace RecTool
