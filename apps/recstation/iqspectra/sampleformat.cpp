// Names and suffixes of sample formats, and the decoding of bytes to complex samples.
#include "iqspectra/sampleformat.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <string_view>
#include <type_traits>

#include <QtEndian>

namespace RecStation {

namespace {

struct Alias {
    std::string_view name;
    SampleFormat format;
};

// Of each format its proper name first.
constexpr std::array<Alias, 24> Names{
    {{"cu8", SampleFormat::UnsignedByte},      {"ci8", SampleFormat::SignedByte},
     {"cs8", SampleFormat::SignedByte},        {"cu16_le", SampleFormat::UnsignedShortLe},
     {"cu16", SampleFormat::UnsignedShortLe},  {"cu16_be", SampleFormat::UnsignedShortBe},
     {"ci16_le", SampleFormat::SignedShortLe}, {"ci16", SampleFormat::SignedShortLe},
     {"cs16_le", SampleFormat::SignedShortLe}, {"cs16", SampleFormat::SignedShortLe},
     {"ci16_be", SampleFormat::SignedShortBe}, {"cs16_be", SampleFormat::SignedShortBe},
     {"ci32_le", SampleFormat::SignedLongLe},  {"ci32", SampleFormat::SignedLongLe},
     {"cs32", SampleFormat::SignedLongLe},     {"ci32_be", SampleFormat::SignedLongBe},
     {"cf32_le", SampleFormat::FloatLe},       {"cf32", SampleFormat::FloatLe},
     {"fc32", SampleFormat::FloatLe},          {"cf32_be", SampleFormat::FloatBe},
     {"cf64_le", SampleFormat::DoubleLe},      {"cf64", SampleFormat::DoubleLe},
     {"fc64", SampleFormat::DoubleLe},         {"cf64_be", SampleFormat::DoubleBe}}};

constexpr std::array<Alias, 20> Suffixes{
    {{".cu8", SampleFormat::UnsignedByte},     {".complex16u", SampleFormat::UnsignedByte},
     {".ci8", SampleFormat::SignedByte},       {".cs8", SampleFormat::SignedByte},
     {".sc8", SampleFormat::SignedByte},       {".complex16s", SampleFormat::SignedByte},
     {".cu16", SampleFormat::UnsignedShortLe}, {".complex32u", SampleFormat::UnsignedShortLe},
     {".ci16", SampleFormat::SignedShortLe},   {".cs16", SampleFormat::SignedShortLe},
     {".sc16", SampleFormat::SignedShortLe},   {".complex32s", SampleFormat::SignedShortLe},
     {".ci32", SampleFormat::SignedLongLe},    {".cs32", SampleFormat::SignedLongLe},
     {".cf32", SampleFormat::FloatLe},         {".fc32", SampleFormat::FloatLe},
     {".cfile", SampleFormat::FloatLe},        {".fc32le", SampleFormat::FloatLe},
     {".complex", SampleFormat::FloatLe},      {".cf64", SampleFormat::DoubleLe}}};

template <std::size_t N>
std::optional<SampleFormat> find(const std::array<Alias, N>& table, std::string_view name)
{
    const auto* const found =
        std::find_if(table.begin(), table.end(), [name](const Alias& alias) { return alias.name == name; });
    return found == table.end() ? std::nullopt : std::optional(found->format);
}

template <typename Unsigned>
constexpr double HalfRange = static_cast<double>(std::numeric_limits<Unsigned>::max()) / 2;

template <typename Unsigned>
double unsignedNumber(Unsigned bits)
{
    return (bits - HalfRange<Unsigned>) / HalfRange<Unsigned>;
}

template <typename Unsigned>
double signedNumber(Unsigned bits)
{
    using Signed = std::make_signed_t<Unsigned>;
    return static_cast<Signed>(bits) / -static_cast<double>(std::numeric_limits<Signed>::min());
}

template <typename Float, typename Unsigned>
double floatNumber(Unsigned bits)
{
    return static_cast<double>(std::bit_cast<Float>(bits));
}

template <typename Bits, bool BigEndian, double (*Number)(Bits)>
void decode(std::span<const char> bytes, std::span<std::complex<double>> out)
{
    const char* at = bytes.data();
    const auto next = [&at] {
        const Bits bits = BigEndian ? qFromBigEndian<Bits>(at) : qFromLittleEndian<Bits>(at);
        at += sizeof(Bits);
        return Number(bits);
    };
    for (std::complex<double>& sample : out) {
        const double inPhase = next();
        sample = {inPhase, next()};
    }
}

struct Decoding {
    std::size_t sampleBytes;
    void (*decode)(std::span<const char> bytes, std::span<std::complex<double>> out);
};

template <typename Bits, bool BigEndian, double (*Number)(Bits)>
constexpr Decoding DecodingOf = {2 * sizeof(Bits), decode<Bits, BigEndian, Number>};

// In the order of SampleFormat.
constexpr std::array Decodings = {
    DecodingOf<quint8, false, unsignedNumber>,       DecodingOf<quint8, false, signedNumber>,
    DecodingOf<quint16, false, unsignedNumber>,      DecodingOf<quint16, true, unsignedNumber>,
    DecodingOf<quint16, false, signedNumber>,        DecodingOf<quint16, true, signedNumber>,
    DecodingOf<quint32, false, signedNumber>,        DecodingOf<quint32, true, signedNumber>,
    DecodingOf<quint32, false, floatNumber<float>>,  DecodingOf<quint32, true, floatNumber<float>>,
    DecodingOf<quint64, false, floatNumber<double>>, DecodingOf<quint64, true, floatNumber<double>>,
};

const Decoding& decodingOf(SampleFormat format)
{
    return Decodings.at(static_cast<std::size_t>(format));
}

}  // namespace

std::optional<SampleFormat> sampleFormatByName(const std::string& name)
{
    return find(Names, name);
}

std::optional<SampleFormat> sampleFormatBySuffix(const std::string& suffix)
{
    return find(Suffixes, suffix);
}

const char* sampleFormatName(SampleFormat format)
{
    const auto* const found =
        std::find_if(Names.begin(), Names.end(), [format](const Alias& alias) { return alias.format == format; });
    return found == Names.end() ? "" : found->name.data();
}

std::size_t sampleBytes(SampleFormat format)
{
    return decodingOf(format).sampleBytes;
}

void decodeSamples(SampleFormat format, std::span<const char> bytes, std::span<std::complex<double>> out)
{
    decodingOf(format).decode(bytes, out);
}

}  // namespace RecStation
