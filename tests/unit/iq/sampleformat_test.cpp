// Sample formats: their bytes as complex numbers, their names and suffixes.
#include <vector>

#include <gtest/gtest.h>

#include "iqspectra/sampleformat.h"

namespace {

using RecStation::decodeSamples;
using RecStation::SampleFormat;

std::vector<std::complex<double>> decode(SampleFormat format, const std::vector<unsigned char>& bytes)
{
    const std::vector<char> chars(bytes.begin(), bytes.end());
    std::vector<std::complex<double>> out(bytes.size() / RecStation::sampleBytes(format));
    decodeSamples(format, chars, out);
    return out;
}

TEST(SampleFormat, UnsignedBytesAreCentredBetweenTheTwoMiddleNumbers)
{
    const auto samples = decode(SampleFormat::UnsignedByte, {255, 0, 127, 128});
    EXPECT_EQ(samples.at(0), std::complex(1.0, -1.0));
    EXPECT_DOUBLE_EQ(samples.at(1).real(), -0.5 / 127.5);
    EXPECT_DOUBLE_EQ(samples.at(1).imag(), 0.5 / 127.5);
}

TEST(SampleFormat, SignedShortsAreLittleEndian)
{
    const auto samples = decode(SampleFormat::SignedShortLe, {0x00, 0x40, 0x00, 0x80, 0x01, 0x00, 0xFF, 0xFF});
    EXPECT_EQ(samples.at(0), std::complex(0.5, -1.0));
    EXPECT_EQ(samples.at(1), std::complex(1.0 / 32768, -1.0 / 32768));
}

TEST(SampleFormat, FloatsAreLittleEndianAndTakenAsTheyStand)
{
    const auto samples = decode(SampleFormat::FloatLe, {0x00, 0x00, 0xC0, 0x3F, 0x00, 0x00, 0x20, 0xC1});
    EXPECT_EQ(samples.at(0), std::complex(1.5, -10.0));
}

TEST(SampleFormat, NamesAndSuffixesAreKnown)
{
    EXPECT_EQ(RecStation::sampleFormatByName("cu8"), SampleFormat::UnsignedByte);
    EXPECT_EQ(RecStation::sampleFormatByName("ci16_le"), SampleFormat::SignedShortLe);
    EXPECT_EQ(RecStation::sampleFormatByName("cf32_le"), SampleFormat::FloatLe);
    EXPECT_EQ(RecStation::sampleFormatByName("ci16_be"), std::nullopt);
    EXPECT_EQ(RecStation::sampleFormatByName(""), std::nullopt);
    EXPECT_EQ(RecStation::sampleFormatBySuffix(".cs16"), SampleFormat::SignedShortLe);
    EXPECT_EQ(RecStation::sampleFormatBySuffix(".bin"), std::nullopt);
    EXPECT_EQ(RecStation::sampleFormatBySuffix("."), std::nullopt);
}

TEST(SampleFormat, EveryNameLeadsBackToItsFormat)
{
    for (const SampleFormat format : {SampleFormat::UnsignedByte, SampleFormat::SignedShortLe, SampleFormat::FloatLe}) {
        EXPECT_EQ(RecStation::sampleFormatByName(RecStation::sampleFormatName(format)), format);
    }
}

}  // namespace
