// Keeping the overlap of the last segment, and filling up the rest from the input.
#include "iqspectra/segmentreader.h"

#include <algorithm>
#include <utility>

namespace RecStation {

SegmentReader::SegmentReader(ByteInput input, SampleFormat format, std::size_t length, std::size_t advance)
    : m_input(std::move(input)),
      m_format(format),
      m_advance(advance),
      m_segment(length),
      m_bytes(length * sampleBytes(format))
{
}

void SegmentReader::begin(ByteInput input)
{
    m_input = std::move(input);
    m_samplesRead = 0;
    m_bytesLeftOver = 0;
    m_ended = false;
}

std::span<const std::complex<double>> SegmentReader::next()
{
    const std::size_t kept = m_samplesRead == 0 ? 0 : m_segment.size() - m_advance;
    if (m_ended) {
        return {};
    }
    std::copy(m_segment.end() - static_cast<std::ptrdiff_t>(kept), m_segment.end(), m_segment.begin());
    m_ended = !fill(std::span(m_segment).subspan(kept));
    return m_ended ? std::span<const std::complex<double>>() : m_segment;
}

bool SegmentReader::fill(std::span<std::complex<double>> out)
{
    const std::size_t oneSample = sampleBytes(m_format);
    const std::size_t bytes = readWhole(m_input, std::span(m_bytes).first(out.size() * oneSample));
    const std::size_t samples = bytes / oneSample;
    m_samplesRead += samples;
    m_bytesLeftOver = bytes % oneSample;
    decodeSamples(m_format, std::span(m_bytes).first(samples * oneSample), out.first(samples));
    return samples == out.size();
}

}  // namespace RecStation
