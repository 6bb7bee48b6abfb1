// Positions after the first 4 GiB, where 32 bits end. The files have holes and take no room.
#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <recording2/file/files.h>

#include "support/recordingbytes.h"

namespace {

using Recording2::InputFile;
using Recording2::OpenMode;
using Recording2::OutputFile;

constexpr std::int64_t Far = std::int64_t{5} << 30U;

TEST(LargeFiles, AreWrittenAndReadWhere32BitsDoNotReach)
{
    const QTemporaryDir directory;
    const std::string name = TestSupport::fileName8(directory.filePath("large"));
    OutputFile output(name, OpenMode::Create);
    output.append(std::string("begin"));
    output.seek(Far);
    output.append(std::string("end"));
    EXPECT_EQ(output.position(), Far + 3);
    ASSERT_TRUE(output.close());

    InputFile input(name);
    EXPECT_EQ(input.size(), Far + 3);
    std::string bytes(8, '?');
    EXPECT_EQ(input.readAt(Far, bytes.data(), bytes.size()), 3U);
    EXPECT_EQ(bytes.substr(0, 3), "end");
    EXPECT_EQ(input.readAt(0, bytes.data(), 5), 5U);
    EXPECT_EQ(bytes.substr(0, 5), "begin");
}

}  // namespace
