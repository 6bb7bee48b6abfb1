// The buffered file that is written, also past 4 GiB: whatever the pieces are, the file holds them.
#include <random>

#if defined(__linux__)
#include <sys/stat.h>
#endif

#include <QStorageInfo>

#include <recording2/file/files.h>

#include "support/recordingbytes.h"
#include "support/testing.h"

namespace FilesTests {

namespace {

using namespace Recording2;

class OutputFiles : public testing::Test {
protected:
    [[nodiscard]] QString name() const { return m_directory.filePath("file"); }
    [[nodiscard]] std::string name8() const { return QFile::encodeName(name()).toStdString(); }
    [[nodiscard]] std::string bytes() const { return TestSupport::readFile(name()); }

    /// Bytes that tell where they stand.
    static std::string pattern(std::size_t begin, std::size_t size)
    {
        std::string made(size, '\0');
        for (std::size_t i = 0; i < size; ++i) {
            made[i] = static_cast<char>((begin + i) * 131 >> 3U);
        }
        return made;
    }
    static void put(OutputFile& output, const std::string& bytes)
    {
        output.commit(std::copy(bytes.begin(), bytes.end(), output.reserve()));
    }

private:
    QTemporaryDir m_directory;
};

TEST_F(OutputFiles, HoldPiecesOfEverySizeInTheirOrder)
{
    std::mt19937 random(5);  // NOLINT(cert-msc51-cpp): the same pieces in every run
    std::uniform_int_distribution<std::size_t> magnitude(0, 20);
    OutputFile output(name8(), OpenMode::Create);
    std::string expected;
    while (expected.size() < 12'000'000) {
        const std::size_t size = random() % (std::size_t{1} << magnitude(random));
        const std::string piece = pattern(expected.size(), size);
        if (size <= OutputFile::SmallBytes && random() % 2 == 0) {
            put(output, piece);
        } else {
            output.append(piece);
        }
        expected += piece;
        ASSERT_EQ(output.position(), static_cast<std::int64_t>(expected.size()));
        if (random() % 50 == 0) {
            output.flush();
        }
    }
    ASSERT_TRUE(output.close());
    EXPECT_TRUE(bytes() == expected);
}

TEST_F(OutputFiles, FillTheBufferToItsLastByteAndBeyond)
{
    constexpr std::size_t Buffer = std::size_t{256} * 1024;
    for (std::size_t missing = 0; missing < 4; ++missing) {
        OutputFile output(name8(), OpenMode::Create);
        std::string expected = pattern(0, Buffer - missing);
        output.append(expected);
        const std::string tail = pattern(expected.size(), OutputFile::SmallBytes);
        put(output, tail);
        expected += tail;
        ASSERT_TRUE(output.close());
        EXPECT_TRUE(bytes() == expected) << missing;
    }
}

TEST_F(OutputFiles, AreHandedOverInLargerPiecesOnceTheyAreLargeThemselves)
{
    constexpr std::size_t KiB = 1'024;
    OutputFile output(name8(), OpenMode::Create);
    for (const auto& [written, handedOver] : std::map<std::size_t, std::size_t>{{255, 0},
                                                                                {256, 256},
                                                                                {700, 512},
                                                                                {8'191, 7'936},
                                                                                {8'192, 8'192},
                                                                                {9'215, 8'192},
                                                                                {9'216, 9'216},
                                                                                {9'900, 9'216}}) {
        const auto position = static_cast<std::size_t>(output.position());
        output.append(pattern(position, written * KiB - position));
        EXPECT_EQ(QFileInfo(name()).size(), handedOver * KiB) << written;
    }
}

#if defined(__linux__)
TEST_F(OutputFiles, TakeSpaceAheadOfWhatIsWrittenAndGiveTheRestBack)
{
    if (QStorageInfo(QFileInfo(name()).path()).fileSystemType() != "ext4") {
        GTEST_SKIP() << "only ext4 is asked for space ahead";
    }
    constexpr std::int64_t MiB = std::int64_t{1} << 20U;
    const auto ahead = [this] {
        struct stat status {};
        EXPECT_EQ(::stat(name8().c_str(), &status), 0);
        return status.st_blocks * 512 - status.st_size;
    };
    OutputFile output(name8(), OpenMode::Create);
    output.append(pattern(0, 3 * MiB));
    EXPECT_GT(ahead(), MiB / 2);
    EXPECT_LE(ahead(), 3 * MiB);
    EXPECT_EQ(QFileInfo(name()).size(), 3 * MiB);
    output.append(pattern(3 * MiB, 37 * MiB + 1));
    EXPECT_GT(ahead(), MiB / 2);
    EXPECT_LE(ahead(), 16 * MiB);
    ASSERT_TRUE(output.close());
    EXPECT_LT(ahead(), MiB / 16);
    EXPECT_TRUE(bytes() == pattern(0, 40 * MiB + 1));
}
#endif

TEST_F(OutputFiles, AreChangedInPlaceAndGoOnAtTheEnd)
{
    OutputFile created(name8(), OpenMode::Create);
    std::string expected = pattern(0, 1'000'000);
    created.append(expected);
    ASSERT_TRUE(created.close());

    OutputFile output(name8(), OpenMode::Update);
    const std::string change = pattern(77, 600'000);
    output.seek(100'001);
    output.append(change);
    expected.replace(100'001, change.size(), change);
    output.seekToEnd();
    EXPECT_EQ(output.position(), 1'000'000);
    put(output, "tail");
    expected += "tail";
    ASSERT_TRUE(output.close());
    EXPECT_TRUE(bytes() == expected);
}

}  // namespace
}  // namespace FilesTests

namespace {

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
