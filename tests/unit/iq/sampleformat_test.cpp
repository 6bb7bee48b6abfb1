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

TEST(SampleFormat, NumbersOfEveryWidthAndByteOrderAreScaledToFullScale)
{
    using Bytes = std::vector<unsigned char>;
    const std::pair<SampleFormat, Bytes> cases[] = {
        {SampleFormat::UnsignedShortLe, {0xFF, 0xFF, 0x00, 0x00}},
        {SampleFormat::UnsignedShortBe, {0xFF, 0xFF, 0x00, 0x00}},
        {SampleFormat::SignedLongLe, {0x00, 0x00, 0x00, 0x40, 0x00, 0x00, 0x00, 0x80}},
        {SampleFormat::SignedLongBe, {0x40, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00}},
        {SampleFormat::SignedShortBe, {0x40, 0x00, 0x80, 0x00}},
        {SampleFormat::FloatBe, {0x3F, 0x00, 0x00, 0x00, 0xBF, 0x80, 0x00, 0x00}},
        {SampleFormat::DoubleLe, {0, 0, 0, 0, 0, 0, 0xE0, 0x3F, 0, 0, 0, 0, 0, 0, 0xF0, 0xBF}},
        {SampleFormat::DoubleBe, {0x3F, 0xE0, 0, 0, 0, 0, 0, 0, 0xBF, 0xF0, 0, 0, 0, 0, 0, 0}}};
    for (const auto& [format, bytes] : cases) {
        const bool isUnsigned = format == SampleFormat::UnsignedShortLe || format == SampleFormat::UnsignedShortBe;
        const auto samples = decode(format, bytes);
        ASSERT_EQ(samples.size(), 1U) << RecStation::sampleFormatName(format);
        EXPECT_EQ(samples.at(0), std::complex(isUnsigned ? 1.0 : 0.5, -1.0)) << RecStation::sampleFormatName(format);
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

using testing::ElementsAre;

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

TEST(SegmentReader, SegmentsFollowEachOther)
{
    SegmentReader reader(TestSupport::textInput(numbered(6), 100), SampleFormat::UnsignedByte, 3, 3);
    EXPECT_THAT(numbers(reader.next()), ElementsAre(0, 1, 2));
    EXPECT_THAT(numbers(reader.next()), ElementsAre(3, 4, 5));
    EXPECT_TRUE(reader.next().empty());
    EXPECT_EQ(reader.samplesRead(), 6U);
}

TEST(SegmentReader, OverlappingSegmentsShareTheirSamples)
{
    SegmentReader reader(TestSupport::textInput(numbered(7), 100), SampleFormat::UnsignedByte, 4, 1);
    EXPECT_THAT(numbers(reader.next()), ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(numbers(reader.next()), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(numbers(reader.next()), ElementsAre(2, 3, 4, 5));
    EXPECT_THAT(numbers(reader.next()), ElementsAre(3, 4, 5, 6));
    EXPECT_TRUE(reader.next().empty());
}

TEST(SegmentReader, AnInputThatGivesOneByteAtATimeIsWaitedFor)
{
    SegmentReader reader(TestSupport::textInput(numbered(5), 1), SampleFormat::UnsignedByte, 2, 2);
    EXPECT_THAT(numbers(reader.next()), ElementsAre(0, 1));
    EXPECT_THAT(numbers(reader.next()), ElementsAre(2, 3));
    EXPECT_TRUE(reader.next().empty());
    EXPECT_EQ(reader.samplesRead(), 5U);
    EXPECT_EQ(reader.bytesLeftOver(), 0U);
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
