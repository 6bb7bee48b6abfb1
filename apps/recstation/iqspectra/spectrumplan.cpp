// Checking what is asked of spectra, and choosing how many FFTs make one.
#include "iqspectra/spectrumplan.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

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
    if (plan.fftSize < SmallestFft || plan.fftSize > LargestFft || plan.fftSize % 2 != 0) {
        throw std::runtime_error("the FFT size must be an even number from 16 to 1048576");
    }
    const auto window = windowByName(options.window);
    if (!window) {
        throw std::runtime_error("the window \"" + options.window +
                                 "\" is not known, only flattop, hann and blackman-harris are");
    }
    plan.window = *window;
    if (!(options.overlapPercent >= 0 && options.overlapPercent <= LargestOverlapPercent)) {
        throw std::runtime_error("the overlap must be 0 to 95 percent");
    }
    const double notShared = 1 - options.overlapPercent / 100;
    plan.advance = static_cast<std::size_t>(std::max(1.0, std::round(static_cast<double>(plan.fftSize) * notShared)));
    if (options.average > LargestAverage) {
        throw std::runtime_error("at most 1000000 FFTs can be averaged to a spectrum");
    }
    plan.average = options.average > 0 ? options.average : averageOver(SecondsPerSpectrum, rateHz, plan.advance);
    if (options.spectrum != "rf" && options.spectrum != "if") {
        throw std::runtime_error("--as must be rf or if");
    }
    plan.ifSpectrum = options.spectrum == "if";
    return plan;
}

}  // namespace RecStation
