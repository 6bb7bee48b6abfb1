// Names and suffixes of sample formats, and the decoding of bytes to complex samples.
#include "iqspectra/sampleformat.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string_view>

namespace RecStation {

namespace {

struct Alias {
    std::string_view name;
    SampleFormat format;
};

constexpr std::array<Alias, 10> Names{{{"cu8", SampleFormat::UnsignedByte},
                                       {"ci8", SampleFormat::SignedByte},
                                       {"cs8", SampleFormat::SignedByte},
                                       {"cs16", SampleFormat::SignedShortLe},
                                       {"cs16_le", SampleFormat::SignedShortLe},
                                       {"fc32", SampleFormat::FloatLe},
                                       {"ci16_le", SampleFormat::SignedShortLe},
                                       {"ci16", SampleFormat::SignedShortLe},
                                       {"cf32_le", SampleFormat::FloatLe},
                                       {"cf32", SampleFormat::FloatLe}}};

constexpr std::array<Alias, 11> Suffixes{{{".cu8", SampleFormat::UnsignedByte},
                                          {".ci8", SampleFormat::SignedByte},
                                          {".cs8", SampleFormat::SignedByte},
                                          {".sc8", SampleFormat::SignedByte},
                                          {".ci16", SampleFormat::SignedShortLe},
                                          {".cs16", SampleFormat::SignedShortLe},
                                          {".sc16", SampleFormat::SignedShortLe},
                                          {".cf32", SampleFormat::FloatLe},
                                          {".fc32", SampleFormat::FloatLe},
                                          {".cfile", SampleFormat::FloatLe},
                                          {".fc32le", SampleFormat::FloatLe}}};

template <std::size_t N>
std::optional<SampleFormat> find(const std::array<Alias, N>& table, std::string_view name)
{
    const auto* const found =
        std::find_if(table.begin(), table.end(), [name](const Alias& alias) { return alias.name == name; });
    return found == table.end() ? std::nullopt : std::optional(found->format);
}

std::uint32_t byteAt(std::span<const char> bytes, std::size_t index)
{
    return static_cast<unsigned char>(bytes[index]);
}

double unsignedByte(std::span<const char> bytes)
{
    return (byteAt(bytes, 0) - 127.5) / 127.5;
}

double signedByte(std::span<const char> bytes)
{
    return static_cast<std::int8_t>(byteAt(bytes, 0)) / 128.0;
}

double signedShort(std::span<const char> bytes)
{
    const auto bits = static_cast<std::uint16_t>(byteAt(bytes, 0) | byteAt(bytes, 1) << 8U);
    return static_cast<std::int16_t>(bits) / 32768.0;
}

double floatNumber(std::span<const char> bytes)
{
    const std::uint32_t bits =
        byteAt(bytes, 0) | byteAt(bytes, 1) << 8U | byteAt(bytes, 2) << 16U | byteAt(bytes, 3) << 24U;
    return static_cast<double>(std::bit_cast<float>(bits));
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
    switch (format) {
        case SampleFormat::UnsignedByte:
            return "cu8";
        case SampleFormat::SignedByte:
            return "ci8";
        case SampleFormat::SignedShortLe:
            return "ci16_le";
        case SampleFormat::FloatLe:
            break;
    }
    return "cf32_le";
}

std::size_t sampleBytes(SampleFormat format)
{
    switch (format) {
        case SampleFormat::UnsignedByte:
        case SampleFormat::SignedByte:
            return 2;
        case SampleFormat::SignedShortLe:
            return 4;
        case SampleFormat::FloatLe:
            break;
    }
    return 8;
}

void decodeSamples(SampleFormat format, std::span<const char> bytes, std::span<std::complex<double>> out)
{
    switch (format) {
        case SampleFormat::UnsignedByte:
            decode<1>(bytes, out, unsignedByte);
            break;
        case SampleFormat::SignedByte:
            decode<1>(bytes, out, signedByte);
            break;
        case SampleFormat::SignedShortLe:
            decode<2>(bytes, out, signedShort);
            break;
        case SampleFormat::FloatLe:
            decode<4>(bytes, out, floatNumber);
            break;
    }
}

}  // namespace RecStation
