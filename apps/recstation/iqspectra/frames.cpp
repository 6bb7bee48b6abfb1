// Cutting samples into segments, averaging these to spectra, and leaving out those without finite numbers.
#include "iqspectra/frames.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <system/stopsignal.h>

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

FrameReader::FrameReader(const SpectrumPlan& plan, SampleFormat format, ByteInput input, InputReport report,
                         StretchEnds ends)
    : m_plan(plan),
      m_segments(std::move(input), format, plan.fftSize, plan.advance),
      m_spectrum(plan.window, plan.fftSize),
      m_report(std::move(report)),
      m_ends(ends)
{
}

void FrameReader::begin(ByteInput input)
{
    m_segments.begin(std::move(input));
    m_frames = 0;
    m_damagedRun = 0;
    m_ended = false;
}

std::optional<IqFrame> FrameReader::next()
{
    while (!m_ended && readFrame()) {
        const double power = m_spectrum.meanPower();
        // Samples that are no numbers leave no finite sum.
        if (std::isfinite(power)) {
            reportDamagedRun();
            return IqFrame{firstSample(m_frames++), m_spectrum.levelsDb(), powerToDb(power)};
        }
        ++m_frames;
        ++m_damagedRun;
    }
    if (!std::exchange(m_ended, true)) {
        reportDamagedRun();
        if (m_ends == StretchEnds::Told) {
            reportEnd();
        }
    }
    return std::nullopt;
}

bool FrameReader::readFrame()
{
    m_spectrum.clear();
    for (std::size_t i = 0; i < m_plan.average; ++i) {
        const auto segment = m_segments.next();
        if (segment.empty()) {
            return false;
        }
        m_spectrum.add(segment);
    }
    return true;
}

// One sentence however long the run is: a file of another format may have nothing else.
void FrameReader::reportDamagedRun()
{
    if (m_damagedRun == 0) {
        return;
    }
    m_bad += m_damagedRun;
    m_report(QStringLiteral("from sample %1 on, spectra without finite numbers are left out: %2")
                 .arg(firstSample(m_frames - m_damagedRun))
                 .arg(m_damagedRun));
    m_damagedRun = 0;
}

void FrameReader::reportEnd()
{
    const std::uint64_t used = m_frames == 0 ? 0 : firstSample(m_frames - 1) + m_plan.frameLength();
    if (samplesRead() > used) {
        ++m_skipped;
        m_report(QStringLiteral("the last %1 samples do not fill a spectrum (%2 samples) and are left out")
                     .arg(samplesRead() - used)
                     .arg(m_plan.frameLength()));
    }
    // Whoever stops the run may well do so in the middle of a sample.
    if (m_segments.bytesLeftOver() > 0 && !System::StopSignal::requested()) {
        ++m_bad;
        m_report(QStringLiteral("the input ends with %1 bytes that are no whole sample: is the format right?")
                     .arg(m_segments.bytesLeftOver()));
    }
}

std::uint64_t FrameReader::firstSample(std::uint64_t frame) const
{
    return frame * m_plan.average * m_plan.advance;
}

}  // namespace RecStation
