// The ways in which IQ samples are stored.
#pragma once

#include <complex>
#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace RecStation {

enum class SampleFormat {
    UnsignedByte,     ///< cu8: 0..255, 127.5 is 0
    SignedByte,       ///< ci8: -128..127
    UnsignedShortLe,  ///< cu16_le: 0..65535, 32767.5 is 0
    UnsignedShortBe,
    SignedShortLe,  ///< ci16_le
    SignedShortBe,
    SignedLongLe,  ///< ci32_le
    SignedLongBe,
    FloatLe,  ///< cf32_le
    FloatBe,
    DoubleLe,  ///< cf64_le
    DoubleBe,
};

/// As help and sentences name them.
constexpr auto SampleFormatNames = "cu8, ci8, cu16_le, ci16_le, ci32_le, cf32_le, cf64_le or one of these with _be";

/// By the SigMF name of the format ("cu8", "ci16_le", "cf32_be"; "cs8" is "ci8"; without "_le" or "_be" it is little
/// endian).
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
