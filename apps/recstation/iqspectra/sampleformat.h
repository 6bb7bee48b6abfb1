// The ways in which IQ samples are stored.
#pragma once

#include <complex>
#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace RecStation {

enum class SampleFormat {
    UnsignedByte,   ///< cu8: 0..255, 127.5 is 0
    SignedByte,     ///< ci8: -128..127
    SignedShortLe,  ///< ci16_le
    FloatLe,        ///< cf32_le
};

/// By the SigMF name of the format ("cu8", "ci8", "ci16_le", "cf32_le"; "cs8" is "ci8", "ci16" and "cf32" are taken as
/// little endian).
std::optional<SampleFormat> sampleFormatByName(const std::string& name);
/// By a file's suffix with its dot, as receivers' tools use them (".cu8", ".cs16", ".cf32", ...).
std::optional<SampleFormat> sampleFormatBySuffix(const std::string& suffix);
const char* sampleFormatName(SampleFormat format);

/// Bytes of one sample, I and Q together.
std::size_t sampleBytes(SampleFormat format);

/// Decodes whole samples, scaled so that full scale is 1.
/// @param bytes sampleBytes for every sample of out
void decodeSamples(SampleFormat format, std::span<const char> bytes, std::span<std::complex<double>> out);

}  // namespace RecStation
