// The bytes that say what a recording held before a change: whole, or nothing.
#include <recording2/format/undo.h>

#include "support/testing.h"

using namespace Recording2::Format;

namespace {

Undo sample()
{
    return {1'000, {{0, "header", "HEADER"}, {990, "the end...", "the end, and more"}, {1'000, "", "123456789"}}};
}

}  // namespace

TEST(Undo, IsReadAsItWasWritten)
{
    const auto read = decodeUndo(encodeUndo(sample()));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->sizeBefore, 1'000);
    using testing::FieldsAre;
    EXPECT_THAT(read->changes, testing::ElementsAre(FieldsAre(0, "header", "HEADER"),
                                                    FieldsAre(990, "the end...", "the end, and more"),
                                                    FieldsAre(1'000, "", "123456789")));
}

TEST(Undo, CutAnywhereIsNothing)
{
    const std::string bytes = encodeUndo(sample());
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_FALSE(decodeUndo(bytes.substr(0, size))) << size;
        EXPECT_FALSE(decodeUndo(bytes.substr(0, size) + std::string(bytes.size() - size, '\0'))) << size;
    }
}

TEST(Undo, WithAnyByteDamagedIsNothing)
{
    const std::string bytes = encodeUndo(sample());
    for (std::size_t place = 0; place < bytes.size(); ++place) {
        for (const char change : {'\x01', '\x80', '\xff'}) {
            std::string damaged = bytes;
            damaged[place] = static_cast<char>(damaged[place] ^ change);
            EXPECT_FALSE(decodeUndo(damaged)) << place;
        }
    }
}

TEST(Undo, WhatAChangeCannotHoldIsNothing)
{
    EXPECT_FALSE(decodeUndo(encodeUndo({10, {{-1, "a", "b"}}})));
    EXPECT_FALSE(decodeUndo(encodeUndo({10, {{0, "longer", "short"}}})));
    EXPECT_FALSE(decodeUndo(encodeUndo({10, {}})));
    EXPECT_FALSE(decodeUndo(encodeUndo({-1, {{0, "", "a"}}})));
    EXPECT_FALSE(decodeUndo(encodeUndo({10, {{11, "", "a"}}})));
    EXPECT_FALSE(decodeUndo(encodeUndo({10, {{9, "ab", "ab"}}})));
    EXPECT_FALSE(decodeUndo(encodeUndo({10, {{std::numeric_limits<std::int64_t>::max(), "a", "b"}}})));
    EXPECT_TRUE(decodeUndo(encodeUndo({10, {{9, "a", "b"}, {10, "", "c"}}})));
}
