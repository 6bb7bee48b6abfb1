// Text that a terminal shows and does not obey.
#include <terminaltext/terminaltext.h>

#include "support/testing.h"

namespace {

using TerminalText::oneLine;
using namespace std::string_literals;

TEST(TerminalText, ShowsOrdinaryTextOfAnyLanguageAsItIs)
{
    for (const char* text : {"", "RX 1 \\ \"~\"", "Z\xc3\xbcrich", "\xe2\x82\xac", "\xf0\x9f\x93\xa1", "\xc2\xa0"}) {
        EXPECT_EQ(oneLine(text), text);
    }
}

TEST(TerminalText, EscapesWhatATerminalObeys)
{
    EXPECT_EQ(oneLine("a\nb\r\tc"), "a\\nb\\r\\tc");
    EXPECT_EQ(oneLine("\x1b[31m\x7f\0"s), "\\x1b[31m\\x7f\\x00"s);
    EXPECT_EQ(oneLine("\xc2\x9b"
                      "2J"),
              "\\xc2\\x9b2J")
        << "the same as ESC [";
    EXPECT_EQ(oneLine("\xe2\x80\xae"), "\\xe2\\x80\\xae") << "turns the direction of writing";
    EXPECT_EQ(oneLine("\xe2\x80\xa8"), "\\xe2\\x80\\xa8") << "ends a line";
}

TEST(TerminalText, EscapesBytesThatAreNoUtf8)
{
    EXPECT_EQ(oneLine("a\x9b"
                      "b"),
              "a\\x9bb");
    EXPECT_EQ(oneLine("\xc3"), "\\xc3") << "cut off";
    EXPECT_EQ(oneLine("\xc0\x9b"), "\\xc0\\x9b") << "longer than need be";
    EXPECT_EQ(oneLine("\xe0\x82\x9b"), "\\xe0\\x82\\x9b");
    EXPECT_EQ(oneLine("\xed\xa0\x80"), "\\xed\\xa0\\x80") << "half of a pair";
    EXPECT_EQ(oneLine("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80") << "behind the last character";
    EXPECT_EQ(oneLine("\xff\xc3\xbc"), "\\xff\xc3\xbc");
}

TEST(TerminalText, ChangesNothingThatItHasEscapedBefore)
{
    const std::string once = oneLine("a\n\x1b\xff");
    EXPECT_EQ(oneLine(once), once);
}

}  // namespace
