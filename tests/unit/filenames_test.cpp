// File names where the platforms differ.
#include <recording2/filenames.h>

#include "support/recordingbytes.h"
#include "support/testing.h"

namespace FileNames = Recording2::FileNames;

namespace {

#if defined(_WIN32)
constexpr bool Windows = true;
#else
constexpr bool Windows = false;
#endif

TEST(FileNames, SeparatorAndDefaultDirectoryAreThePlatforms)
{
    EXPECT_EQ(FileNames::separator(), QString(Windows ? "\\" : "/"));
    if (Windows) {
        EXPECT_EQ(FileNames::defaultDirectory(), QString("c:\\temp"));
    } else {
        EXPECT_TRUE(FileNames::defaultDirectory().startsWith('/'));
    }
}

TEST(FileNames, EightBitNamesAreLatin1OnWindowsAndUtf8Elsewhere)
{
    const QString name = QString::fromUtf8("N\xC3\xBCrnberg");
    const std::string expected = Windows ? "N\xFCrnberg" : "N\xC3\xBCrnberg";
    EXPECT_EQ(FileNames::toBytes(name), expected);
    EXPECT_EQ(FileNames::fromBytes(expected), name);
}

TEST(FileNames, PartsOfAPathEndAtItsSeparators)
{
    EXPECT_EQ(FileNames::fileName("a/b.c.rec"), "b.c.rec");
    EXPECT_EQ(FileNames::fileName("a\\b.c.rec"), Windows ? "b.c.rec" : "a\\b.c.rec");
    EXPECT_EQ(FileNames::directory("a\\b/c.rec"), "a\\b");
    EXPECT_EQ(FileNames::directory("a/b\\c.rec"), Windows ? "a/b" : "a");
    EXPECT_EQ(FileNames::baseName("a/b.c.rec"), "b");
    EXPECT_EQ(FileNames::suffix("a/b.c.rec"), "rec");
}

TEST(FileNames, FilesWithNamesBeyondAsciiAreFoundAndRenamed)
{
    const QTemporaryDir directory;
    const QString from =
        directory.filePath(QString::fromUtf8("gr\xC3\xB6\xC3\x9F"
                                             "e.tmp"));
    const QString to =
        directory.filePath(QString::fromUtf8("gr\xC3\xB6\xC3\x9F"
                                             "e.rec"));
    TestSupport::writeFile(from, "something");
    EXPECT_TRUE(FileNames::exists(FileNames::toBytes(from)));
    EXPECT_TRUE(FileNames::renameWithoutReplacing(FileNames::toBytes(from), FileNames::toBytes(to)));
    EXPECT_FALSE(QFile::exists(from));
    EXPECT_EQ(TestSupport::readFile(to), "something");
}

TEST(FileNames, RenamingReplacesNothing)
{
    const QTemporaryDir directory;
    const QString from = directory.filePath("from");
    const QString to = directory.filePath("to");
    TestSupport::writeFile(from, "new");
    TestSupport::writeFile(to, "old");
    EXPECT_FALSE(FileNames::renameWithoutReplacing(FileNames::toBytes(from), FileNames::toBytes(to)));
    EXPECT_EQ(TestSupport::readFile(from), "new");
    EXPECT_EQ(TestSupport::readFile(to), "old");
}

}  // namespace
