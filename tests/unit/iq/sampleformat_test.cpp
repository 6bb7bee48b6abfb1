// Samples out of bytes, one by one and in segments.
#include "iqspectra/sampleformat.h"
#include "iqspectra/frames.h"
#include "support/testing.h"
#include "support/textinput.h"

namespace {

using namespace RecStation;

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

TEST(SampleFormat, NumbersOfEveryWidthAndByteOrderAreScaledToFullScaleAndFloatsTakenAsTheyStand)
{
    const struct {
        SampleFormat format;
        std::vector<unsigned char> bytes;
        std::vector<std::complex<double>> samples;
    } cases[] = {{SampleFormat::SignedShortLe,
                  {0x00, 0x40, 0x00, 0x80, 0x01, 0x00, 0xFF, 0xFF},
                  {{0.5, -1}, {1.0 / 32768, -1.0 / 32768}}},
                 {SampleFormat::SignedShortBe, {0x40, 0x00, 0x80, 0x00}, {{0.5, -1}}},
                 {SampleFormat::UnsignedShortLe, {0xFF, 0xFF, 0x00, 0x00}, {{1, -1}}},
                 {SampleFormat::UnsignedShortBe, {0xFF, 0xFF, 0x00, 0x00}, {{1, -1}}},
                 {SampleFormat::SignedLongLe, {0x00, 0x00, 0x00, 0x40, 0x00, 0x00, 0x00, 0x80}, {{0.5, -1}}},
                 {SampleFormat::SignedLongBe, {0x40, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00}, {{0.5, -1}}},
                 {SampleFormat::FloatLe, {0x00, 0x00, 0xC0, 0x3F, 0x00, 0x00, 0x20, 0xC1}, {{1.5, -10}}},
                 {SampleFormat::FloatBe, {0x3F, 0x00, 0x00, 0x00, 0xBF, 0x80, 0x00, 0x00}, {{0.5, -1}}},
                 {SampleFormat::DoubleLe, {0, 0, 0, 0, 0, 0, 0xE0, 0x3F, 0, 0, 0, 0, 0, 0, 0xF0, 0xBF}, {{0.5, -1}}},
                 {SampleFormat::DoubleBe, {0x3F, 0xE0, 0, 0, 0, 0, 0, 0, 0xBF, 0xF0, 0, 0, 0, 0, 0, 0}, {{0.5, -1}}}};
    for (const auto& [format, bytes, samples] : cases) {
        EXPECT_EQ(decode(format, bytes), samples) << RecStation::sampleFormatName(format);
    }
    EXPECT_DOUBLE_EQ(decode(SampleFormat::UnsignedShortBe, {0x80, 0x00, 0x7F, 0xFF}).at(0).real(), 0.5 / 32767.5);
}

TEST(SampleFormat, NamesAndSuffixesAreKnown)
{
    EXPECT_EQ(RecStation::sampleFormatByName("cu8"), SampleFormat::UnsignedByte);
    EXPECT_EQ(RecStation::sampleFormatByName("ci16_le"), SampleFormat::SignedShortLe);
    EXPECT_EQ(RecStation::sampleFormatByName("cf32_le"), SampleFormat::FloatLe);
    EXPECT_EQ(RecStation::sampleFormatByName("ci16_be"), SampleFormat::SignedShortBe);
    EXPECT_EQ(RecStation::sampleFormatByName("ri16_le"), std::nullopt);
    EXPECT_EQ(RecStation::sampleFormatByName(""), std::nullopt);
    EXPECT_EQ(RecStation::sampleFormatBySuffix(".cs16"), SampleFormat::SignedShortLe);
    EXPECT_EQ(RecStation::sampleFormatBySuffix(".bin"), std::nullopt);
    EXPECT_EQ(RecStation::sampleFormatBySuffix("."), std::nullopt);
}

TEST(SampleFormat, EveryNameLeadsBackToItsFormat)
{
    for (const char* name : {"cu8", "ci8", "cu16_le", "cu16_be", "ci16_le", "ci16_be", "ci32_le", "ci32_be", "cf32_le",
                             "cf32_be", "cf64_le", "cf64_be"}) {
        const auto format = RecStation::sampleFormatByName(name);
        ASSERT_TRUE(format.has_value()) << name;
        EXPECT_STREQ(RecStation::sampleFormatName(*format), name);
    }
}

// Samples whose real parts, as bytes, are 0, 1, 2, ...
std::string numbered(int count)
{
    std::string bytes;
    for (int i = 0; i < count; ++i) {
        bytes += static_cast<char>(i);
        bytes += static_cast<char>(200);
    }
    return bytes;
}

std::vector<int> numbers(std::span<const std::complex<double>> segment)
{
    std::vector<int> out;
    for (const std::complex<double>& sample : segment) {
        out.push_back(static_cast<int>(sample.real() * 127.5 + 127.5 + 0.25));
    }
    return out;
}

TEST(SegmentReader, SegmentsFollowEachOtherOrShareSamplesHoweverTheBytesArrive)
{
    const struct {
        int samples;
        std::size_t pieceBytes;
        std::size_t size;
        std::size_t advance;
        std::vector<std::vector<int>> segments;
    } cases[] = {{6, 100, 3, 3, {{0, 1, 2}, {3, 4, 5}}},
                 {7, 100, 4, 1, {{0, 1, 2, 3}, {1, 2, 3, 4}, {2, 3, 4, 5}, {3, 4, 5, 6}}},
                 {5, 1, 2, 2, {{0, 1}, {2, 3}}}};
    for (const auto& [samples, pieceBytes, size, advance, segments] : cases) {
        SCOPED_TRACE(samples);
        SegmentReader reader(TestSupport::textInput(numbered(samples), pieceBytes), SampleFormat::UnsignedByte, size,
                             advance);
        for (const std::vector<int>& segment : segments) {
            EXPECT_EQ(numbers(reader.next()), segment);
        }
        EXPECT_TRUE(reader.next().empty());
        EXPECT_EQ(reader.samplesRead(), static_cast<std::uint64_t>(samples));
        EXPECT_EQ(reader.bytesLeftOver(), 0U);
    }
}

TEST(SegmentReader, BytesThatAreNoWholeSampleAreCounted)
{
    SegmentReader reader(TestSupport::textInput(std::string(4 * 5 + 3, 'x'), 100), SampleFormat::SignedShortLe, 4, 4);
    EXPECT_EQ(reader.next().size(), 4U);
    EXPECT_TRUE(reader.next().empty());
    EXPECT_EQ(reader.samplesRead(), 5U);
    EXPECT_EQ(reader.bytesLeftOver(), 3U);
}

TEST(SegmentReader, AfterTheEndTheInputIsNotAskedAgain)
{
    int calls = 0;
    SegmentReader reader(
        [&calls](char*, std::size_t) {
            ++calls;
            return std::size_t{0};
        },
        SampleFormat::FloatLe, 4, 4);
    EXPECT_TRUE(reader.next().empty());
    EXPECT_TRUE(reader.next().empty());
    EXPECT_EQ(calls, 1);
}

}  // namespace
