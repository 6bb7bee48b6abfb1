// Segments of samples, overlapping or not, from an input that gives few bytes.
#include <algorithm>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "iqspectra/frames.h"
#include "support/textinput.h"

namespace {

using RecStation::SampleFormat;
using RecStation::SegmentReader;
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
