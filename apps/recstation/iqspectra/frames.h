// Averaged spectra one after the other out of a stream of IQ samples.
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "input/badlines.h"
#include "input/byteinput.h"
#include "iqspectra/sampleformat.h"
#include "iqspectra/spectrum.h"

namespace RecStation {

/// Cuts a stream of IQ samples into overlapping segments of equal length.
/// Keeps one segment in memory, however long the stream is.
class SegmentReader {
public:
    /// @param length samples of a segment
    /// @param advance samples from one segment's first to the next one's, 1 to length
    SegmentReader(ByteInput input, SampleFormat format, std::size_t length, std::size_t advance);

    /// Goes on with another input, nothing of which shares a segment with what was read before.
    void begin(ByteInput input);

    /// The next segment, valid until the next call; empty when what is left does not fill one. Hands on what the input
    /// throws.
    std::span<const std::complex<double>> next();

    [[nodiscard]] std::uint64_t samplesRead() const { return m_samplesRead; }
    /// Bytes after the last whole sample; known when next has answered with nothing.
    [[nodiscard]] std::size_t bytesLeftOver() const { return m_bytesLeftOver; }

private:
    bool fill(std::span<std::complex<double>> out);

    ByteInput m_input;
    SampleFormat m_format;
    std::size_t m_advance;
    std::vector<std::complex<double>> m_segment;
    std::vector<char> m_bytes;
    std::uint64_t m_samplesRead = 0;
    std::size_t m_bytesLeftOver = 0;
    bool m_ended = false;
};

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
    /// @param report takes a sentence about what is left out, without the source's name
    FrameReader(const SpectrumPlan& plan, SampleFormat format, ByteInput input, InputReport report,
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
    InputReport m_report;
    StretchEnds m_ends;
    std::uint64_t m_frames = 0;      // read so far of the stretch
    std::uint64_t m_damagedRun = 0;  // of these, the damaged ones since the last good one
    std::uint64_t m_skipped = 0;
    std::uint64_t m_bad = 0;
    bool m_ended = false;
};

}  // namespace RecStation
