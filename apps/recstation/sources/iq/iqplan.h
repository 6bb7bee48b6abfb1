// What a run over IQ samples needs to know, gathered from the command line, the metadata and the file's name.
#pragma once

#include <cstddef>
#include <cstdint>

#include <QString>

#include "sources/iq/iqsource.h"
#include "sources/iq/sampleformat.h"
#include "sources/iq/spectrum.h"

namespace RecStation {

constexpr std::size_t SmallestFft = 16;
constexpr std::size_t LargestFft = 1'048'576;
constexpr std::size_t LargestAverage = 1'000'000;
constexpr double LargestOverlapPercent = 95;
constexpr double HighestRateHz = 1e12;
constexpr double HighestCentreHz = 1e15;

/// Everything resolved and checked.
struct IqPlan {
    QString file;  ///< of the samples; "-" is standard input
    SampleFormat format = SampleFormat::UnsignedByte;
    double rateHz = 0;
    double centreHz = 0;
    unsigned long long startTime = 0;  ///< microseconds since 1970 UTC
    std::size_t fftSize = 0;
    Window window = Window::FlatTop;
    std::size_t advance = 0;  ///< samples from one FFT to the next
    std::size_t average = 0;  ///< FFTs of a spectrum
    bool ifSpectrum = false;
};

/// @throws std::runtime_error for options and metadata that are wrong or leave something open
IqPlan makeIqPlan(const IqOptions& options);

}  // namespace RecStation
