// What is known of samples besides what the command line says: from metadata, a header or a name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <QString>

#include "input/byteinput.h"

namespace RecStation {

/// Samples without a gap, at one frequency.
struct KnownCapture {
    std::uint64_t firstSample = 0;         ///< of the recording: the time since the captures before, where none is told
    std::uint64_t firstByte = 0;           ///< in the file
    std::optional<std::uint64_t> samples;  ///< nothing: to the end of the file
    std::optional<double> centreHz;
    std::optional<unsigned long long> startTime;  ///< microseconds since 1970 UTC
};

struct KnownSamples {
    std::string format;                                                 ///< by its SigMF name; empty: not known
    std::optional<double> rateHz;                                       ///< positive
    std::vector<KnownCapture> captures = std::vector<KnownCapture>(1);  ///< at least one, one behind the other
    bool localTime = false;           ///< the first one's time was taken as this computer's local time
    std::uint64_t trailingBytes = 0;  ///< at the end of the file, which are no samples
};

// ---- by the name of the file

/// Understands these forms, with anything around the parts:
/// - ..._20200102_030405Z_7100kHz_...  (day and time in UTC, also without Z; Hz, kHz, MHz or GHz)
/// - gqrx_20200102_030405_7100000_1800000_fc  (centre and rate in Hz, samples as cf32_le)
/// - ..._433.92M_250k  (centre and rate)
/// - 20200102T030405Z_7100000_..._iq  (time in UTC, centre in Hz)
/// - ..._7100000Hz_03-04-05_02-01-2020  (local time and day)
/// - ...-20200102_030405-433_92MHz-1MSps-...  (local time, centre and rate)
/// @param name of a file, without folder and suffix
[[nodiscard]] KnownSamples knownByName(const QString& name);

// ---- by metadata in the format SigMF

/// The file of samples that FILE.sigmf-meta describes: the one that it names ("core:dataset"), else FILE.sigmf-data.
/// @throws std::runtime_error also where it says that there are none
[[nodiscard]] QString samplesOfSigMf(const QString& file);

/// Reads FILE.sigmf-meta of a recording with one channel. The format is given as it is written there.
/// @param format of the samples, by its name, where that is known better; else empty
/// @throws std::runtime_error with what is wrong with the file
[[nodiscard]] KnownSamples readSigMf(const QString& file, const std::string& format = "");

// ---- by the header of a WAV or RF64 file

[[nodiscard]] bool isWav(const QString& file);  ///< by its first bytes; false where it cannot be read

/// What a file's header tells, by a receiver's own chunk too.
struct KnownWav {
    KnownSamples known;          ///< as cf32_le, which openWav gives
    bool cut = false;            ///< the header promises more samples
    bool neverFinished = false;  ///< the header says nothing of their number
    bool unknownAuxi = false;    ///< the receiver's own chunk is of another form
};

/// @throws std::runtime_error with a sentence: a header that is damaged, another number of channels than two, a
/// compressed format
[[nodiscard]] KnownWav readWav(const QString& file);
/// I and Q as cf32_le, of full scale 1 (8 bits: 128 is 0). @throws std::runtime_error
[[nodiscard]] ByteInput openWav(const QString& file);

// ---- by the first bytes, that it is none

constexpr std::size_t ForeignBytes = 12;  ///< as many tell

/// What is wrong with bytes that would be noise if they were read as samples, and what to do, as a clause: "is packed
/// by gzip: unpack it first"; empty where nothing is known against them.
/// @param first of the input, ForeignBytes where it has so many
[[nodiscard]] std::string whyNoSamples(std::string_view first);

}  // namespace RecStation
