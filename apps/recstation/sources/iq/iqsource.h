// The "iq" source: a receiver's IQ samples, from a file or standard input, as spectra and levels.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QString>
#include <QStringList>

#include "iqspectra/frames.h"
#include "iqspectra/sampleformat.h"
#include "iqspectra/spectrum.h"
#include "sources/source.h"

namespace RecStation {

/// What the command line says. What is left open is taken from SigMF metadata beside the file, WAV, or the name.
struct IqOptions : SpectrumOptions {
    std::string file;                ///< UTF-8; "-" is standard input
    std::string format;              ///< a name of a SampleFormat; empty: by metadata or the file's suffix
    std::optional<double> rateHz;    ///< samples a second
    std::optional<double> centreHz;  ///< frequency of 0 Hz in the samples
    bool centreHasUnit = false;      ///< it was given as 1090M or 1090 Hz, not as 1090
    /// Of the first sample, microseconds since 1970 UTC; nothing: by metadata, otherwise now.
    std::optional<unsigned long long> startTime;
    QString valuePath = "/Devices/Rx1";
    bool live = false;  ///< maps have the time of the step, not one of their own
};

/// Publishes, below the value path where no "/" stands in front:
/// - spectrum rf: Scn/RfSpectrum, with the mode key 5 in Gen/DRVCOMMANDS; spectrum if: /IfMapping, with the mode key 23
/// - /LEVEL (mean power of the samples, not a number before the first), /FREQUENCY, /IFSPAN, Scn/StartFreq,
/// Scn/StopFreq, Scn/StepFreq,
///   Scn/StartLevel, Scn/StopLevel, Adm/DRIVERNAME, Adm/DEVICE_TYPE
///
/// Levels are in dBFS: a complex tone of full scale (amplitude 127.5 in cu8, 128 in ci8, 32,768 in ci16_le, 1 in
/// cf32_le and so on) is 0 dBFS, silence is -200 dBFS. Of the windows only flattop shows a tone's true level wherever
/// it lies between the channels (within 0.02 dB; hann is up to 1.4 dB low, blackman-harris up to 0.8 dB), at the price
/// of the widest channels: noise reads 5.8 dB above its power in one channel's width (hann 1.8 dB, blackman-harris 3.0
/// dB).
///
/// A spectrum's time is that of its first sample. What is wrong with the options, the metadata or an input without a
/// whole spectrum is thrown by prepare, which reads the first spectrum's samples; damage found later (samples that are
/// no numbers, a cut last sample, samples that do not fill a spectrum) is reported and counted. Memory depends on the
/// FFT size only.
/// @param report takes sentences without the source's name
std::unique_ptr<Source> makeIqSource(const IqOptions& options, InputReport report);

// ---- the plan of a run: gathered from the command line, the metadata and the file's name

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
