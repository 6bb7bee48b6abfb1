// Lines out of bytes that arrive in pieces, and lines longer than allowed.
#include "input/linereader.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "input/badlines.h"
#include "support/textinput.h"

namespace RecStation {
namespace {

void expectLines(LineReader& reader, const std::vector<std::string>& lines)
{
    for (std::size_t i = 0; i < lines.size(); ++i) {
        ASSERT_TRUE(reader.next());
        EXPECT_EQ(reader.line(), lines[i]);
        EXPECT_EQ(reader.number(), i + 1);
    }
    EXPECT_FALSE(reader.next());
}

TEST(LineReader, TellsWhetherTheLastLineHadItsLineFeed)
{
    LineReader reader(TestSupport::textInput("one\ntwo", 3), 100);
    ASSERT_TRUE(reader.next());
    EXPECT_TRUE(reader.terminated());
    ASSERT_TRUE(reader.next());
    EXPECT_FALSE(reader.terminated());
}

TEST(LineReader, SplitsAtLineFeedsHoweverTheBytesArrive)
{
    for (const std::size_t pieceSize : {1U, 2U, 3U, 100U}) {
        LineReader reader(TestSupport::textInput("one\n\nthree\n", pieceSize), 100);
        expectLines(reader, {"one", "", "three"});
    }
}

TEST(LineReader, TheLastLineMayLackItsLineFeed)
{
    LineReader reader(TestSupport::textInput("one\ntwo", 2), 100);
    expectLines(reader, {"one", "two"});
}

TEST(LineReader, NoBytesAreNoLine)
{
    LineReader reader(TestSupport::textInput("", 2), 100);
    expectLines(reader, {});
}

TEST(LineReader, ALineAsLongAsAllowedIsRead)
{
    LineReader reader(TestSupport::textInput("12345\n12345", 3), 5);
    expectLines(reader, {"12345", "12345"});
}

TEST(LineReader, ALongerLineIsPassedOverAsAWholeAndCounted)
{
    for (const std::size_t pieceSize : {1U, 4U, 100U}) {
        LineReader reader(TestSupport::textInput("one\n" + std::string(50, 'x') + "\ntwo\n", pieceSize), 5);
        EXPECT_TRUE(reader.next());
        EXPECT_EQ(reader.line(), "one");
        EXPECT_TRUE(reader.next());
        EXPECT_THROW(static_cast<void>(reader.line()), LineError);
        EXPECT_EQ(reader.number(), 2U);
        EXPECT_TRUE(reader.next());
        EXPECT_EQ(reader.line(), "two");
        EXPECT_FALSE(reader.next());
    }
}

}  // namespace
}  // namespace RecStation
