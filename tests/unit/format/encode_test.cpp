// The bytes of numbers, floats, times and strings.
#include <recording2/format/encode.h>

#include <gtest/gtest.h>

using namespace Recording2::Format;

TEST(Encode, NumbersAreDecimalWithASeparator)
{
    std::string out;
    appendNumber(out, std::int32_t{-30});
    appendNumber(out, std::uint32_t{4294967295U});
    appendNumber(out, std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(out, "-30#4294967295#-9223372036854775808#");
}

TEST(Encode, FloatsHaveSixSignificantDigitsInTheShorterNotation)
{
    std::string out;
    for (const float value : {9e7F, 1.2e8F, 100'000.0F, 90'012'345.0F, 0.025F, 20.0F, 3000.0F, -1.5F, 0.0F, 1e-5F}) {
        appendFloat(out, value);
    }
    EXPECT_EQ(out, "9e+07#1.2e+08#100000#9.00123e+07#0.025#20#3000#-1.5#0#1e-05#");
}

TEST(Encode, TimesAreEightBytesLeastSignificantFirst)
{
    std::string out;
    appendTime(out, 0x0102030405060708U);
    EXPECT_EQ(out, "\x08\x07\x06\x05\x04\x03\x02\x01#");
}

TEST(Encode, StringsHaveTheirLengthInFrontAndNothingBehind)
{
    std::string out;
    appendString(out, 4, "A1B2");
    appendString(out, 0, "");
    EXPECT_EQ(out, "4#A1B20#");
}
