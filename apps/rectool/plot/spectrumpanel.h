// A spectrum in a picture: the level as a colour over frequency and time.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "axes.h"
#include "labels.h"
#include "replay/spectra.h"
#include "spectrumgrid.h"

namespace RecTool {

/// Pieces of the frequency axis, each with its levels, and a bar that tells the colours.
class SpectrumPanel : public Panel {
public:
    void keepPlace() override;
    void visit(const PlacedRecord& plotted) override;
    void finish() override;
    [[nodiscard]] ExitCode tellPassedOver(ExitCode result) const override;

protected:
    /// One stretch of the frequency axis.
    struct Piece {
        FrequencySpan frequencies;
        QCPAxisRect* rect = nullptr;
        std::unique_ptr<SpectrumGrid> grid;
    };

    /// @param time which axis of the rects it is
    SpectrumPanel(Picture& picture, const Spectrum& spectrum, QCPAxis::AxisType time, SpectrumGrid::Mode mode)
        : Panel(picture), m_spectrum(spectrum), m_time(time), m_mode(mode)
    {
    }
    /// Makes the rects of the frequencies, in the columns of a grid.
    void addPieces(QCPLayoutGrid& grid, int row, std::size_t most);
    void addBar(QCPLayoutGrid& grid, int column, const std::string& unit, const QString& pixel, int left);
    void setFrequencyAxis(const Piece& piece, int pixels);
    [[nodiscard]] QCPAxis& timeAxis(const Piece& piece) const { return *piece.rect->axis(m_time); }
    [[nodiscard]] QCPAxis& frequencyAxis(const Piece& piece) const
    {
        return *piece.rect->axis(isLying() ? QCPAxis::atLeft : QCPAxis::atBottom);
    }
    /// Adds the lowest and highest single level, null without one.
    void addLevels(Json& json) const;

    const Spectrum& m_spectrum;            // NOLINT: for both kinds
    FrequencyUnit m_unit;                  // NOLINT
    std::vector<Piece> m_pieces;           // NOLINT
    QCPRange m_colours = QCPRange(-1, 0);  // NOLINT: the levels that the colours begin and end with

private:
    /// Whether the time runs across.
    [[nodiscard]] bool isLying() const { return m_time == QCPAxis::atBottom; }
    [[nodiscard]] std::optional<QCPRange> colourRange() const;
    void paint(const Piece& piece);

    QCPAxis::AxisType m_time;
    SpectrumGrid::Mode m_mode;
    QCPMarginGroup m_margins{&m_picture.plot()};
    QCPColorScale* m_bar = nullptr;
    std::uint64_t m_passedOver = 0;
};

/// Frequency across, in pieces where there are wide gaps; time down.
class Waterfall final : public SpectrumPanel {
public:
    Waterfall(Picture& picture, const PlotSpectrumOptions& options, const Spectrum& spectrum);

    void keepPlace() override;
    void mark() override;
    [[nodiscard]] Json json() const override;

private:
    void addText(QCPLayoutGrid& layout, int row, const QString& text, const QMargins& margins, bool isBold);
    [[nodiscard]] QString titleText() const;
    [[nodiscard]] QString frequencyLabel() const;
    [[nodiscard]] bool rangesAreMarked() const;
    void setTimeAxes(int height);
    void markRanges();
};

/// Time across, frequency up.
class SpectrumBand final : public SpectrumPanel {
public:
    SpectrumBand(Picture& picture, const std::string& unit, const Spectrum& spectrum);

    void mark() override { markBookmarks(m_picture, timeAxis(m_pieces.front()), false); }
    [[nodiscard]] Json json() const override;
};

}  // namespace RecTool
