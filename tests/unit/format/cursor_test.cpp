// Fields read as a standard stream reads them, whatever the bytes and the buffer are.
#include <recording2/format/cursor.h>

#include <random>

#include "support/memorysource.h"
#include "support/testing.h"

using Recording2::Format::Cursor;
using Recording2::Format::FieldStatus;
using RecordingTests::MemorySource;

namespace {

struct Reader {
    explicit Reader(std::string bytes, std::size_t buffer = 7) : source(std::move(bytes)), cursor(source, buffer) {}
    MemorySource source;
    Cursor cursor;
};

// What the standard stream makes of a field, with the target kept on failure.
template <typename Number>
Number standardNumber(std::istringstream& stream, Number target)
{
    Number value = 0;
    if (stream >> value) {
        target = value;
    }
    stream.clear();
    stream.ignore(1);
    return target;
}

}  // namespace

/// Reads numbers one after the other. @param kept what the target holds before each
template <typename Number>
void expectNumbers(const std::string& bytes, Number kept,
                   const std::vector<std::tuple<FieldStatus, Number, std::int64_t>>& fields)
{
    Reader r(bytes);
    for (const auto& [status, expected, position] : fields) {
        Number value = kept;
        EXPECT_EQ(r.cursor.readNumber(value), status) << bytes;
        EXPECT_EQ(value, expected) << bytes;
        EXPECT_EQ(r.cursor.position(), position) << bytes;
    }
    EXPECT_EQ(r.cursor.atEnd(), bytes.back() != '#') << bytes;
}

TEST(Cursor, ReadsANumberAndSkipsItsSeparatorOrKeepsTheTargetAndSkipsOneByte)
{
    using enum FieldStatus;
    expectNumbers<std::int32_t>("123#-45#", 0, {{Ok, 123, 4}, {Ok, -45, 8}});
    expectNumbers<std::int32_t>(" \t\n\v\f\r+7#", 0, {{Ok, 7, 9}});
    expectNumbers<std::int32_t>("x5#", 99, {{NotANumber, 99, 1}, {Ok, 5, 3}});
    expectNumbers<std::int32_t>("2147483648#-2147483649#99999999999999999999999#", 1,
                                {{OutOfRange, 1, 11}, {OutOfRange, 1, 23}, {OutOfRange, 1, 47}});
    expectNumbers<std::int16_t>("32768#", 2, {{OutOfRange, 2, 6}});
    expectNumbers<std::int16_t>("-32768#32767#", 0, {{Ok, -32'768, 7}, {Ok, 32'767, 13}});
    expectNumbers<std::int32_t>("-2147483648#2147483647#", 0,
                                {{Ok, std::numeric_limits<std::int32_t>::min(), 12}, {Ok, 2'147'483'647, 23}});
    expectNumbers<std::int64_t>(
        "-9223372036854775808#9223372036854775807#", 0,
        {{Ok, std::numeric_limits<std::int64_t>::min(), 21}, {Ok, std::numeric_limits<std::int64_t>::max(), 41}});
    expectNumbers<std::int32_t>("12", 3, {{Ok, 12, 2}, {EndOfFile, 3, 2}});
}

TEST(Cursor, ReadsATimeWithItsLeastSignificantByteFirstAndDropsOneOfFewerThanEightBytes)
{
    Reader r(std::string("\x01\x02\0\0\0\0\0\x80#1234567", 16));
    std::uint64_t time = 0;
    EXPECT_EQ(r.cursor.readTime(time), FieldStatus::Ok);
    EXPECT_EQ(time, 0x8000000000000201U);
    EXPECT_EQ(r.cursor.position(), 9);
    EXPECT_EQ(r.cursor.readTime(time), FieldStatus::EndOfFile);
    EXPECT_EQ(time, 0x8000000000000201U);
    EXPECT_TRUE(r.cursor.atEnd());
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

TEST(Cursor, ANegativePositionLeavesItWhereItIsAndBeyondTheEndNothingIsRead)
{
    Reader r("1#2#");
    std::int32_t value = 3;
    r.cursor.seek(1'000'000);
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::EndOfFile);
    EXPECT_EQ(value, 3);
    r.cursor.seek(0);
    EXPECT_EQ(r.cursor.readNumber(value), FieldStatus::Ok);
    EXPECT_EQ(value, 1);
    r.cursor.seek(-5);
    EXPECT_EQ(r.cursor.position(), 2);
}

template <typename Number>
void expectAsTheStandardStream(std::mt19937::result_type seed, const std::string& alphabet,
                               FieldStatus (Cursor::*read)(Number&))
{
    std::mt19937 random(seed);
    for (int round = 0; round < 5000; ++round) {
        std::string bytes;
        for (std::size_t n = random() % 40; n > 0; --n) {
            bytes += alphabet[random() % alphabet.size()];
        }
        Reader r(bytes, 1 + random() % 9);
        std::istringstream stream(bytes);
        stream.imbue(std::locale::classic());
        Number mine = -1;
        Number theirs = -1;
        for (int field = 0; field < 12; ++field) {
            (r.cursor.*read)(mine);
            theirs = standardNumber(stream, theirs);
            ASSERT_EQ(mine, theirs) << bytes << " field " << field;
            ASSERT_EQ(r.cursor.atEnd(), stream.eof()) << bytes << " field " << field;
        }
    }
}

TEST(Cursor, ReadsNumbersFromAnyBytesAsTheStandardStreamDoes)
{
    expectAsTheStandardStream<std::int32_t>(20240611, "0123456789+-# \t\nex.\x01", &Cursor::readNumber);
    expectAsTheStandardStream<float>(7, "0123456789+-#.eE 9e+", &Cursor::readNumber);
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

TEST(Cursor, LoadsLittleAfterAJumpAndMoreTheLongerItReads)
{
    class ToldSource final : public Recording2::Format::ByteSource {
    public:
        std::size_t readAt(std::int64_t /*offset*/, char* out, std::size_t size) override
        {
            asked.push_back(size / 1'024);
            std::fill_n(out, size, '7');
            return size;
        }
        [[nodiscard]] std::int64_t size() override { return std::int64_t{1} << 32U; }
        std::vector<std::size_t> asked;
    };
    ToldSource source;
    Cursor cursor(source);
    const std::vector<std::size_t> growing{8, 16, 32, 64, 128, 256, 512, 1'024, 1'024};
    std::string read;
    for (const std::int64_t position : {0, 10'000'000, 0}) {
        source.asked.clear();
        cursor.seek(position);
        for (int i = 0; i < 3'000; ++i) {
            ASSERT_EQ(cursor.readBytes(read, 1'000), FieldStatus::Ok);
        }
        EXPECT_EQ(std::vector(source.asked.begin(), source.asked.begin() + 9), growing) << position;
    }
}

TEST(Cursor, ReadsTheSameAcrossPagesAndJumpsWithABufferOfAnySize)
{
    constexpr std::int64_t Size = 1'500'000;
    const std::string alphabet = "0123456789##";
    std::mt19937 random(23);  // NOLINT(cert-msc51-cpp): the same bytes in every run
    std::string bytes(Size, '\0');
    for (char& byte : bytes) {
        byte = alphabet[random() % alphabet.size()];
    }
    Reader small(bytes, 61);
    Reader pages(bytes, 16'384);
    Reader whole(bytes, 1'048'576);
    for (int round = 0; round < 20'000; ++round) {
        const bool jump = random() % 50 == 0;
        const auto position = jump ? static_cast<std::int64_t>(random() % (Size + 10)) : small.cursor.position();
        const std::int64_t length = 1 + static_cast<std::int64_t>(random() % (round % 100 == 0 ? 400'000 : 30));
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
