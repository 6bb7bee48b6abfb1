// Averaged spectra one after the other out of a stream of IQ samples.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "sources/iq/iqplan.h"
#include "sources/iq/iqsource.h"
#include "sources/iq/segmentreader.h"
#include "sources/iq/spectrum.h"

namespace RecStation {

/// One spectrum with its level.
struct IqFrame {
    std::uint64_t firstSample = 0;
    std::vector<float> levelsDb;  ///< dBFS, rising in frequency
    double levelDb = 0;           ///< dBFS, mean power of the samples
};

class FrameReader {
public:
    FrameReader(const IqPlan& plan, ByteInput input, IqReport report);

    /// The next frame without damage; nothing at the end, when what is left over has been reported.
    [[nodiscard]] std::optional<IqFrame> next();

    [[nodiscard]] std::uint64_t samplesRead() const { return m_segments.samplesRead(); }
    [[nodiscard]] std::uint64_t skipped() const { return m_skipped; }  ///< frames cut short by the end
    [[nodiscard]] std::uint64_t bad() const { return m_bad; }          ///< damaged frames, and a cut last sample

private:
    bool readFrame();
    void reportDamagedRun();
    void reportEnd();
    [[nodiscard]] std::uint64_t firstSample(std::uint64_t frame) const;
    [[nodiscard]] std::uint64_t frameLength() const;  ///< samples

    SegmentReader m_segments;
    SpectrumAverager m_spectrum;
    IqReport m_report;
    std::size_t m_fftSize;
    std::size_t m_advance;
    std::size_t m_average;
    std::uint64_t m_frames = 0;      // read so far
    std::uint64_t m_damagedRun = 0;  // of these, the damaged ones since the last good one
    std::uint64_t m_skipped = 0;
    std::uint64_t m_bad = 0;
    bool m_ended = false;
};

}  // namespace RecStation
