// Line ends of any system, however the bytes come.
#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "sources/nmea/nmealog.h"

namespace RecStation {
namespace {

std::string readInPieces(const std::string& text, std::size_t piece)
{
    std::size_t given = 0;
    const ByteInput input = withLineFeeds([&](char* buffer, std::size_t size) {
        const std::size_t count = std::min({piece, size, text.size() - given});
        std::copy_n(text.data() + given, count, buffer);
        given += count;
        return count;
    });
    std::string out;
    char buffer[8];
    for (std::size_t count = input(buffer, sizeof buffer); count > 0; count = input(buffer, sizeof buffer)) {
        out.append(buffer, count);
    }
    return out;
}

TEST(LineEnds, ACarriageReturnAloneBecomesALineFeed)
{
    for (const std::size_t piece : {1U, 2U, 3U, 100U}) {
        EXPECT_EQ(readInPieces("a\rb\r\nc\r\r\nd\n\re\r", piece), "a\nb\r\nc\r\r\nd\n\ne\r") << piece;
        EXPECT_EQ(readInPieces("\r", piece), "\r");
        EXPECT_EQ(readInPieces("", piece), "");
    }
}

}  // namespace
}  // namespace RecStation
