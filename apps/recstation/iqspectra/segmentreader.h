// Cuts a stream of IQ samples into overlapping segments of equal length.
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "input/byteinput.h"
#include "iqspectra/sampleformat.h"

namespace RecStation {

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

}  // namespace RecStation
