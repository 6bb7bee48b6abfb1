// Packed texts: whole, in several members, cut and damaged.
#include <zlib.h>
#include <zstd.h>

#include "input/badlines.h"
#include "input/linereader.h"
#include "input/unpacking.h"
#include "support/testing.h"
#include "support/textinput.h"

namespace {

using namespace RecStation;
using testing::HasSubstr;

std::string gzip(const std::string& text)
{
    constexpr int GzipOnly = 16;
    constexpr int MemoryLevel = 8;
    z_stream stream{};
    EXPECT_EQ(
        deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, MAX_WBITS + GzipOnly, MemoryLevel, Z_DEFAULT_STRATEGY),
        Z_OK);
    std::string from = text;
    std::string out(deflateBound(&stream, from.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(from.data());
    stream.avail_in = static_cast<uInt>(from.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

std::string zstd(const std::string& text)
{
    constexpr int Level = 3;
    std::string out(ZSTD_compressBound(text.size()), '\0');
    out.resize(ZSTD_compress(out.data(), out.size(), text.data(), text.size(), Level));
    return out;
}

struct Unpacked {
    std::string text;
    std::string problem;
};

Unpacked unpack(const std::string& bytes, std::size_t pieceSize, std::size_t bufferSize = 1000)
{
    Unpacked out;
    const auto input = unpackedWhereNeeded(TestSupport::textInput(bytes, pieceSize), "night.csv.gz");
    std::string buffer(bufferSize, '\0');
    try {
        while (const std::size_t count = input(buffer.data(), buffer.size())) {
            out.text.append(buffer, 0, count);
        }
    } catch (const DamagedInput& error) {
        out.problem = error.what();
    }
    return out;
}

std::string manyLines()
{
    std::string text;
    for (int i = 0; i < 100'000; ++i) {
        text += "line " + std::to_string(i * i % 7919) + "\n";
    }
    return text;
}

TEST(Unpacking, TextsComeOutAsTheyWereInAnyPieces)
{
    const std::string text = manyLines();
    for (const std::string& bytes : {text, gzip(text), zstd(text)}) {
        for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, std::size_t{100'000'000}}) {
            const Unpacked unpacked = unpack(bytes, piece);
            EXPECT_EQ(unpacked.problem, "");
            EXPECT_TRUE(unpacked.text == text) << piece;
        }
    }
}

TEST(Unpacking, MembersFollowOneAnother)
{
    EXPECT_EQ(unpack(gzip("one\n") + gzip("") + gzip("two\n"), 5).text, "one\ntwo\n");
    EXPECT_EQ(unpack(zstd("one\n") + zstd("") + zstd("two\n"), 5).text, "one\ntwo\n");
}

TEST(Unpacking, ShortTextsAndThoseThatBeginAlikeAreLeftAsTheyAre)
{
    using namespace std::string_literals;
    for (const std::string& text : {""s, "\x1f"s, "(\xb5"s, "(text)\n"s, "\x1f\x8a\x01"s}) {
        EXPECT_EQ(unpack(text, 1, 1).text, text);
    }
}

TEST(Unpacking, OtherKindsOfFilesAreNamed)
{
    using namespace std::string_literals;
    const auto problem = [](const std::string& bytes) {
        try {
            return unpack(bytes, 1).text;
        } catch (const std::runtime_error& error) {
            return std::string(error.what());
        }
    };
    EXPECT_EQ(problem("\xff\xfe$\0G\0"s), "night.csv.gz is UTF-16 text: store it as UTF-8");
    EXPECT_THAT(problem("PK\x03\x04zipped"), HasSubstr("night.csv.gz is a zip archive"));
    EXPECT_THAT(problem("BZh91AY"), HasSubstr("is packed by bzip2"));
    EXPECT_THAT(problem("\xfd"
                        "7zXZ"),
                HasSubstr("is packed by xz"));
    EXPECT_EQ(problem("PK text\n"), "PK text\n");
    EXPECT_EQ(problem("\xfd"
                      "7z"),
              "\xfd"
              "7z");
}

TEST(Unpacking, AByteOrderMarkIsNoPartOfTheFirstLine)
{
    LineReader lines(TestSupport::textInput("\xEF\xBB\xBFone\n\xEF\xBB\xBFtwo\n", 1), 100);
    ASSERT_TRUE(lines.next());
    EXPECT_EQ(lines.line(), "one");
    ASSERT_TRUE(lines.next());
    EXPECT_EQ(lines.line(), "\xEF\xBB\xBFtwo");
}

TEST(Unpacking, WhatIsCutOffIsToldWithTheOffsetAndNothingBeforeIsLost)
{
    const std::string text = manyLines();
    for (const std::string& whole : {gzip(text), zstd(text)}) {
        const std::size_t length = whole.size() / 2;
        const Unpacked cut = unpack(whole.substr(0, length), 1000);
        EXPECT_EQ(cut.problem, "the compressed data of night.csv.gz ends too early, at byte " + std::to_string(length));
        EXPECT_GT(cut.text.size(), text.size() / 4);
        EXPECT_EQ(cut.text, text.substr(0, cut.text.size()));
    }
}

TEST(Unpacking, WhatIsDamagedIsToldAndNothingBeforeIsLost)
{
    const std::string first(300, 'x');
    for (std::string bytes : {gzip(first) + gzip(manyLines()), zstd(first) + zstd(manyLines())}) {
        bytes[bytes.size() - 2] = static_cast<char>(bytes[bytes.size() - 2] ^ 0x55);
        const Unpacked damaged = unpack(bytes, 1000);
        EXPECT_THAT(damaged.problem, HasSubstr("night.csv.gz is damaged at byte "));
        EXPECT_GE(damaged.text.size(), first.size());
        EXPECT_EQ(damaged.text.substr(0, first.size()), first);
    }
    const Unpacked rubbish = unpack(gzip("one\n") + "rubbish", 1000);
    EXPECT_EQ(rubbish.text, "one\n");
    EXPECT_THAT(rubbish.problem, HasSubstr("is damaged"));
}

TEST(Unpacking, ALineReaderGivesTheWholeLinesThenTheDamageThenTheEnd)
{
    const std::string whole = gzip("one\ntwo\nthree\n") + gzip(manyLines());
    LineReader reader(unpackedWhereNeeded(TestSupport::textInput(whole.substr(0, whole.size() / 3), 64), "x"), 1000);
    std::size_t lines = 0;
    std::string damage;
    while (damage.empty() && reader.next()) {
        try {
            static_cast<void>(reader.line());
            EXPECT_TRUE(reader.terminated());
            ++lines;
        } catch (const RecStation::LineError& error) {
            damage = error.what();
        }
    }
    EXPECT_GT(lines, 3U);
    EXPECT_EQ(reader.number(), lines + 1);
    EXPECT_THAT(damage, HasSubstr("ends too early"));
    EXPECT_FALSE(reader.next());
}

}  // namespace
