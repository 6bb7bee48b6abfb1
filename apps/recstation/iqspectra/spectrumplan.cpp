// Checking what is asked of spectra, and choosing how many FFTs make one.
#include "iqspectra/spectrumplan.h"

#include <algorithm>
#include <cmath>

#include <terminaltext/quantity.h>

namespace RecStation {

std::size_t averageOver(double seconds, double rateHz, std::size_t advance)
{
    const double ffts = std::ceil(seconds * rateHz / static_cast<double>(advance));
    return static_cast<std::size_t>(std::clamp(ffts, 1.0, static_cast<double>(LargestAverage)));
}

std::string whyAUnit(const std::string& option, double hz, double rateHz)
{
    if (hz == 0 || std::abs(hz) >= rateHz / 2) {
        return "";
    }
    const std::string number = TerminalText::shortest(hz);
    return option + " " + number + " is in Hz, and puts half of the band below 0 Hz: say " + number + "M for MHz, or " +
           number + "Hz if this is meant";
}

SpectrumPlan makeSpectrumPlan(const SpectrumOptions& options, double rateHz)
{
    // Records of a file are at least a millisecond apart: so many FFTs that a spectrum and its level find room for
    // their two records, and the delay by the records of the initial states is soon made up.
    constexpr double SecondsPerSpectrum = 0.004;
    SpectrumPlan plan;
    plan.fftSize = options.fftSize;
    plan.window = options.window;
    const double notShared = 1 - options.overlapPercent / 100;
    plan.advance = static_cast<std::size_t>(std::max(1.0, std::round(static_cast<double>(plan.fftSize) * notShared)));
    plan.average = options.average > 0 ? options.average : averageOver(SecondsPerSpectrum, rateHz, plan.advance);
    return plan;
}

}  // namespace RecStation
