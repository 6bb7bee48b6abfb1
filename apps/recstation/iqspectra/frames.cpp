// Averaging segments to spectra, and leaving out those without finite numbers.
#include "iqspectra/frames.h"

#include <cmath>
#include <utility>

#include <system/stopsignal.h>

namespace RecStation {

FrameReader::FrameReader(const SpectrumPlan& plan, SampleFormat format, ByteInput input, IqReport report,
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
