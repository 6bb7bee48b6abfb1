// Fields read as a standard stream reads them, whatever the bytes and the buffer are.
#include <recording2/format/cursor.h>

#include <limits>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "support/memorysource.h"

using Recording2::Format::Cursor;
using Recording2::Format::FieldStatus;
using RecordingTests::MemorySource;

namespace {

struct Reader {
    explicit Reader(std::string bytes, std::size_t buffer = 7) : source(std::move(bytes)), cursor(source, buffer) {}
    MemorySource source;
    Cursor cursor;
};

// What the standard stream makes of an integer field, with the target kept on failure.
std::int32_t standardInteger(std::istringstream& stream, std::int32_t target)
{
    std::int32_t value = 0;
    if (stream >> value) {
        target = value;
    }
    stream.clear();
    stream.ignore(1);
    return target;
}

float standardFloat(std::istringstream& stream, float target)
{
    float value = 0;
    if (stream >> value) {
        target = value;
    }
    stream.clear();
    stream.ignore(1);
    return target;
}

}  // namespace

TEST(Cursor, ReadsANumberAndSkipsItsSeparator)
{
    Reader r("123#-45#");
    std::int32_t value = 0;
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::Ok);
    EXPECT_EQ(value, 123);
    EXPECT_EQ(r.cursor.position(), 4);
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::Ok);
    EXPECT_EQ(value, -45);
    EXPECT_EQ(r.cursor.position(), 8);
    EXPECT_FALSE(r.cursor.atEnd());
}

TEST(Cursor, PassesOverWhiteSpaceAndTakesASign)
{
    Reader r(" \t\n\v\f\r+7#");
    std::int32_t value = 0;
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::Ok);
    EXPECT_EQ(value, 7);
}

TEST(Cursor, KeepsTheTargetWhereNoNumberStandsAndSkipsOneByte)
{
    Reader r("x#5#");
    std::int32_t value = 99;
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::NotANumber);
    EXPECT_EQ(value, 99);
    EXPECT_EQ(r.cursor.position(), 1);
}

TEST(Cursor, KeepsTheTargetForANumberThatDoesNotFit)
{
    Reader r("2147483648#-2147483649#32768#99999999999999999999999#");
    std::int32_t value = 1;
    std::int16_t narrow = 2;
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::OutOfRange);
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::OutOfRange);
    EXPECT_EQ(r.cursor.readNumber(narrow), FieldStatus::OutOfRange);
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::OutOfRange);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(narrow, 2);
    EXPECT_EQ(r.cursor.position(), r.source.size());
}

TEST(Cursor, ReadsTheLimitsOfEveryWidth)
{
    Reader r("-32768#32767#-2147483648#2147483647#-9223372036854775808#9223372036854775807#");
    std::int16_t narrow = 0;
    std::int32_t value = 0;
    std::int64_t wide = 0;
    r.cursor.readNumber(narrow);
    EXPECT_EQ(narrow, std::numeric_limits<std::int16_t>::min());
    r.cursor.readNumber(narrow);
    EXPECT_EQ(narrow, std::numeric_limits<std::int16_t>::max());
    r.cursor.readNumber(value);
    EXPECT_EQ(value, std::numeric_limits<std::int32_t>::min());
    r.cursor.readNumber(value);
    EXPECT_EQ(value, std::numeric_limits<std::int32_t>::max());
    r.cursor.readNumber(wide);
    EXPECT_EQ(wide, std::numeric_limits<std::int64_t>::min());
    r.cursor.readNumber(wide);
    EXPECT_EQ(wide, std::numeric_limits<std::int64_t>::max());
}

TEST(Cursor, ANumberAtTheEndIsReadAndTheMissingSeparatorMarksTheEnd)
{
    Reader r("12");
    std::int32_t value = 0;
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::Ok);
    EXPECT_EQ(value, 12);
    EXPECT_TRUE(r.cursor.atEnd());
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::EndOfFile);
    EXPECT_EQ(value, 12);
}

TEST(Cursor, DropsATimeOfFewerThanEightBytes)
{
    Reader r("1234567");
    std::uint64_t time = 42;
    EXPECT_EQ(r.cursor.readTime(time), FieldStatus::EndOfFile);
    EXPECT_EQ(time, 42U);
    EXPECT_TRUE(r.cursor.atEnd());
}

TEST(Cursor, ReadsATimeWithItsLeastSignificantByteFirst)
{
    Reader r(std::string("\x01\x02\0\0\0\0\0\x80#x", 10));
    std::uint64_t time = 0;
    EXPECT_EQ(r.cursor.readTime(time), FieldStatus::Ok);
    EXPECT_EQ(time, 0x8000000000000201U);
    EXPECT_EQ(r.cursor.position(), 9);
}

TEST(Cursor, BytesAreBoundedByTheFile)
{
    Reader r("abc");
    std::string bytes;
    EXPECT_EQ(r.cursor.readBytes(bytes, std::numeric_limits<std::int64_t>::max()), FieldStatus::EndOfFile);
    EXPECT_EQ(bytes, "abc");
    EXPECT_LT(bytes.capacity(), 100U);
    EXPECT_TRUE(r.cursor.atEnd());
}

TEST(Cursor, ANegativePositionLeavesItWhereItIs)
{
    Reader r("1#2#");
    std::int32_t value = 0;
    r.cursor.readNumber(value);
    r.cursor.seek(-5);
    EXPECT_EQ(r.cursor.position(), 2);
}

TEST(Cursor, SeekingBeyondTheEndReadsNothing)
{
    Reader r("1#2#");
    std::int32_t value = 3;
    r.cursor.seek(1'000'000);
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::EndOfFile);
    EXPECT_EQ(value, 3);
    r.cursor.seek(0);
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::Ok);
    EXPECT_EQ(value, 1);
}

TEST(Cursor, ReadsIntegersFromAnyBytesAsTheStandardStreamDoes)
{
    std::mt19937 random(20240611);
    const std::string alphabet = "0123456789+-# \t\nex.\x01";
    for (int round = 0; round < 5000; ++round) {
        std::string bytes;
        for (std::size_t n = random() % 40; n > 0; --n) {
            bytes += alphabet[random() % alphabet.size()];
        }
        Reader r(bytes, 1 + random() % 9);
        std::istringstream stream(bytes);
        stream.imbue(std::locale::classic());
        std::int32_t mine = -1;
        std::int32_t theirs = -1;
        for (int field = 0; field < 12; ++field) {
            r.cursor.readNumber(mine);
            theirs = standardInteger(stream, theirs);
            ASSERT_EQ(mine, theirs) << bytes << " field " << field;
            ASSERT_EQ(r.cursor.atEnd(), stream.eof()) << bytes << " field " << field;
        }
    }
}

TEST(Cursor, ReadsFloatsFromAnyBytesAsTheStandardStreamDoes)
{
    std::mt19937 random(7);
    const std::string alphabet = "0123456789+-#.eE 9e+";
    for (int round = 0; round < 5000; ++round) {
        std::string bytes;
        for (std::size_t n = random() % 30; n > 0; --n) {
            bytes += alphabet[random() % alphabet.size()];
        }
        Reader r(bytes, 1 + random() % 9);
        std::istringstream stream(bytes);
        stream.imbue(std::locale::classic());
        float mine = -1;
        float theirs = -1;
        for (int field = 0; field < 8; ++field) {
            r.cursor.readFloat(mine);
            theirs = standardFloat(stream, theirs);
            ASSERT_EQ(mine, theirs) << bytes << " field " << field;
            ASSERT_EQ(r.cursor.atEnd(), stream.eof()) << bytes << " field " << field;
        }
    }
}

TEST(Cursor, ReadsTheSameWithABufferOfAnySize)
{
    const std::string alphabet = "0123456789##- +a";
    std::mt19937 random(17);  // NOLINT(cert-msc51-cpp): the same bytes in every run
    for (int round = 0; round < 300; ++round) {
        std::string bytes(random() % 80, '\0');
        for (char& byte : bytes) {
            byte = alphabet[random() % alphabet.size()];
        }
        Reader small(bytes);
        Reader large(bytes, 65'536);
        while (!small.cursor.atEnd()) {
            std::int16_t narrow[2] = {7, 7};
            std::int32_t wide[2] = {7, 7};
            std::int64_t widest[2] = {7, 7};
            std::uint64_t time[2] = {7, 7};
            ASSERT_EQ(small.cursor.readNumber(narrow[0]), large.cursor.readNumber(narrow[1])) << bytes;
            ASSERT_EQ(small.cursor.readNumber(wide[0]), large.cursor.readNumber(wide[1])) << bytes;
            ASSERT_EQ(small.cursor.readTime(time[0]), large.cursor.readTime(time[1])) << bytes;
            ASSERT_EQ(small.cursor.readNumber(widest[0]), large.cursor.readNumber(widest[1])) << bytes;
            ASSERT_EQ(narrow[0], narrow[1]) << bytes;
            ASSERT_EQ(wide[0], wide[1]) << bytes;
            ASSERT_EQ(time[0], time[1]) << bytes;
            ASSERT_EQ(widest[0], widest[1]) << bytes;
            ASSERT_EQ(small.cursor.position(), large.cursor.position()) << bytes;
            ASSERT_EQ(small.cursor.atEnd(), large.cursor.atEnd()) << bytes;
        }
    }
}

TEST(Cursor, ReadsTheSameAcrossPagesAndJumpsWithABufferOfAnySize)
{
    constexpr std::int64_t Size = 100'000;
    const std::string alphabet = "0123456789##";
    std::mt19937 random(23);  // NOLINT(cert-msc51-cpp): the same bytes in every run
    std::string bytes(Size, '\0');
    for (char& byte : bytes) {
        byte = alphabet[random() % alphabet.size()];
    }
    Reader small(bytes, 61);
    Reader pages(bytes, 16'384);
    Reader whole(bytes, 131'072);
    for (int round = 0; round < 20'000; ++round) {
        const bool jump = random() % 50 == 0;
        const auto position = jump ? static_cast<std::int64_t>(random() % (Size + 10)) : small.cursor.position();
        const std::int64_t length = 1 + static_cast<std::int64_t>(random() % (round % 100 == 0 ? 30'000 : 30));
        std::string read[3];
        std::int32_t number[3] = {7, 7, 7};
        std::size_t which = 0;
        for (Reader* reader : {&small, &pages, &whole}) {
            reader->cursor.seek(position);
            reader->cursor.readNumber(number[which]);
            reader->cursor.readBytes(read[which++], length);
            ASSERT_EQ(reader->cursor.position(), small.cursor.position()) << position;
            ASSERT_EQ(reader->cursor.atEnd(), small.cursor.atEnd()) << position;
        }
        ASSERT_EQ(read[0],
                  bytes.substr(static_cast<std::size_t>(small.cursor.position()) - read[0].size(), read[0].size()));
        ASSERT_TRUE(read[1] == read[0] && read[2] == read[0]) << position;
        ASSERT_TRUE(number[1] == number[0] && number[2] == number[0]) << position;
    }
}
