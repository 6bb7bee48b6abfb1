// Names and suffixes of sample formats, and the decoding of bytes to complex samples.
#include "iqspectra/sampleformat.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>

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
Unsigned littleEndian(std::span<const char> bytes)
{
    Unsigned number = 0;
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
        number = static_cast<Unsigned>(number | static_cast<Unsigned>(static_cast<unsigned char>(bytes[i])) << 8U * i);
    }
    return number;
}

template <typename Unsigned>
Unsigned bigEndian(std::span<const char> bytes)
{
    Unsigned number = 0;
    for (std::size_t i = 0; i < sizeof(Unsigned); ++i) {
        number = static_cast<Unsigned>(number | static_cast<Unsigned>(static_cast<unsigned char>(bytes[i]))
                                                    << 8U * (sizeof(Unsigned) - 1 - i));
    }
    return number;
}

template <typename Unsigned>
constexpr double HalfRange = static_cast<double>(std::numeric_limits<Unsigned>::max()) / 2;

template <typename Unsigned, Unsigned (*Bits)(std::span<const char>)>
double unsignedNumber(std::span<const char> bytes)
{
    return (Bits(bytes) - HalfRange<Unsigned>) / HalfRange<Unsigned>;
}

template <typename Unsigned, Unsigned (*Bits)(std::span<const char>)>
double signedNumber(std::span<const char> bytes)
{
    using Signed = std::make_signed_t<Unsigned>;
    return static_cast<Signed>(Bits(bytes)) / -static_cast<double>(std::numeric_limits<Signed>::min());
}

template <typename Float, typename Unsigned, Unsigned (*Bits)(std::span<const char>)>
double floatNumber(std::span<const char> bytes)
{
    return static_cast<double>(std::bit_cast<Float>(Bits(bytes)));
}

template <std::size_t Bytes>
void decode(std::span<const char> bytes, std::span<std::complex<double>> out, double (*number)(std::span<const char>))
{
    std::size_t at = 0;
    for (std::complex<double>& sample : out) {
        sample = {number(bytes.subspan(at, Bytes)), number(bytes.subspan(at + Bytes, Bytes))};
        at += 2 * Bytes;
    }
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
    switch (format) {
        case SampleFormat::UnsignedByte:
        case SampleFormat::SignedByte:
            return 2;
        case SampleFormat::UnsignedShortLe:
        case SampleFormat::UnsignedShortBe:
        case SampleFormat::SignedShortLe:
        case SampleFormat::SignedShortBe:
            return 4;
        case SampleFormat::DoubleLe:
        case SampleFormat::DoubleBe:
            return 16;
        case SampleFormat::SignedLongLe:
        case SampleFormat::SignedLongBe:
        case SampleFormat::FloatLe:
        case SampleFormat::FloatBe:
            break;
    }
    return 8;
}

void decodeSamples(SampleFormat format, std::span<const char> bytes, std::span<std::complex<double>> out)
{
    using Short = std::uint16_t;
    using Long = std::uint32_t;
    using LongLong = std::uint64_t;
    switch (format) {
        case SampleFormat::UnsignedByte:
            return decode<1>(bytes, out, unsignedNumber<std::uint8_t, littleEndian<std::uint8_t>>);
        case SampleFormat::SignedByte:
            return decode<1>(bytes, out, signedNumber<std::uint8_t, littleEndian<std::uint8_t>>);
        case SampleFormat::UnsignedShortLe:
            return decode<2>(bytes, out, unsignedNumber<Short, littleEndian<Short>>);
        case SampleFormat::UnsignedShortBe:
            return decode<2>(bytes, out, unsignedNumber<Short, bigEndian<Short>>);
        case SampleFormat::SignedShortLe:
            return decode<2>(bytes, out, signedNumber<Short, littleEndian<Short>>);
        case SampleFormat::SignedShortBe:
            return decode<2>(bytes, out, signedNumber<Short, bigEndian<Short>>);
        case SampleFormat::SignedLongLe:
            return decode<4>(bytes, out, signedNumber<Long, littleEndian<Long>>);
        case SampleFormat::SignedLongBe:
            return decode<4>(bytes, out, signedNumber<Long, bigEndian<Long>>);
        case SampleFormat::FloatLe:
            return decode<4>(bytes, out, floatNumber<float, Long, littleEndian<Long>>);
        case SampleFormat::FloatBe:
            return decode<4>(bytes, out, floatNumber<float, Long, bigEndian<Long>>);
        case SampleFormat::DoubleLe:
            return decode<8>(bytes, out, floatNumber<double, LongLong, littleEndian<LongLong>>);
        case SampleFormat::DoubleBe:
            return decode<8>(bytes, out, floatNumber<double, LongLong, bigEndian<LongLong>>);
    }
}

}  // namespace RecStation
