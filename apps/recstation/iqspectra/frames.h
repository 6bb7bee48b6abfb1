// Averaged spectra one after the other out of a stream of IQ samples.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include <QString>

#include "iqspectra/segmentreader.h"
#include "iqspectra/spectrum.h"
#include "iqspectra/spectrumplan.h"

namespace RecStation {

/// Takes one sentence about what is left out of the samples, without the source's name.
using IqReport = std::function<void(const QString& sentence)>;

/// One spectrum with its level.
struct IqFrame {
    std::uint64_t firstSample = 0;  ///< of the stretch
    std::vector<float> levelsDb;    ///< dBFS, rising in frequency
    double levelDb = 0;             ///< dBFS, mean power of the samples
};

/// Whether samples that do not fill a spectrum at the end of a stretch are worth a sentence.
enum class StretchEnds : std::uint8_t { Told, Usual };

/// Reads stretches of samples that follow each other without a gap: a spectrum never holds samples of two.
class FrameReader {
public:
    FrameReader(const SpectrumPlan& plan, SampleFormat format, ByteInput input, IqReport report,
                StretchEnds ends = StretchEnds::Told);

    /// The next frame without damage; nothing at the end, when what is left over has been reported. Hands on what the
    /// input throws.
    [[nodiscard]] std::optional<IqFrame> next();
    /// Goes on with another stretch, whose first sample has the number 0 again. What was counted stays.
    void begin(ByteInput input);

    [[nodiscard]] std::uint64_t samplesRead() const { return m_segments.samplesRead(); }  ///< of the stretch
    [[nodiscard]] std::uint64_t skipped() const { return m_skipped; }  ///< frames cut short by an end
    [[nodiscard]] std::uint64_t bad() const { return m_bad; }          ///< damaged frames, and cut last samples

private:
    bool readFrame();
    void reportDamagedRun();
    void reportEnd();
    [[nodiscard]] std::uint64_t firstSample(std::uint64_t frame) const;

    SpectrumPlan m_plan;
    SegmentReader m_segments;
    SpectrumAverager m_spectrum;
    IqReport m_report;
    StretchEnds m_ends;
    std::uint64_t m_frames = 0;      // read so far of the stretch
    std::uint64_t m_damagedRun = 0;  // of these, the damaged ones since the last good one
    std::uint64_t m_skipped = 0;
    std::uint64_t m_bad = 0;
    bool m_ended = false;
};

}  // namespace RecStation
