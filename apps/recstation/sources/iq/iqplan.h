// What a run over IQ samples needs to know, gathered from the command line, the metadata and the file's name.
#pragma once

#include <QString>

#include "iqspectra/sampleformat.h"
#include "iqspectra/spectrumplan.h"
#include "sources/iq/iqsource.h"

namespace RecStation {

constexpr double HighestRateHz = 1e12;
constexpr double HighestCentreHz = 1e15;

/// Everything resolved and checked.
struct IqPlan : SpectrumPlan {
    QString file;  ///< of the samples; "-" is standard input
    SampleFormat format = SampleFormat::UnsignedByte;
    double rateHz = 0;
    double centreHz = 0;
    unsigned long long startTime = 0;  ///< microseconds since 1970 UTC
};

/// @throws std::runtime_error for options and metadata that are wrong or leave something open
IqPlan makeIqPlan(const IqOptions& options);

}  // namespace RecStation
