// What a run over IQ samples needs to know, gathered from the command line, the metadata and the file's name.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <QString>
#include <QStringList>

#include "iqspectra/sampleformat.h"
#include "iqspectra/spectrum.h"
#include "sources/iq/iqsource.h"

namespace RecStation {

constexpr double HighestRateHz = 1e12;
constexpr double HighestCentreHz = 1e15;

/// Samples without a gap, at one frequency.
struct IqStretch {
    std::uint64_t firstByte = 0;
    std::optional<std::uint64_t> samples;  ///< nothing: to the end of the input
    double centreHz = 0;
    unsigned long long startTime = 0;  ///< microseconds since 1970 UTC
};

/// Everything resolved and checked.
struct IqPlan : SpectrumPlan {
    QString file;  ///< of the samples; "-" is standard input
    bool wav = false;
    SampleFormat format = SampleFormat::UnsignedByte;
    double rateHz = 0;
    std::vector<IqStretch> stretches;  ///< at least one, one behind the other
    QStringList remarks;               ///< what is to be told
    std::uint64_t bad = 0;             ///< of these, what is wrong with the input

    [[nodiscard]] unsigned long long timeOf(const IqStretch& stretch, std::uint64_t sample) const;
};

/// @throws std::runtime_error for options and metadata that are wrong or leave something open
IqPlan makeIqPlan(const IqOptions& options);

}  // namespace RecStation
