// The library rewrites finished recordings into the bytes that an independent generator made.
#include <functional>
#include <string>

#include <gtest/gtest.h>
#include <QFile>
#include <QTemporaryDir>

#include <recording2/fileaccess.h>

namespace {

using Recording2::CFileAccess;
using Rewrite = std::function<void(CFileAccess&)>;

QString goldenPath(const QString& name)
{
    return QStringLiteral(GOLDEN_FOLDER "/%1/%1.rec").arg(name);
}

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

/// Rewrites a copy of one golden file and compares it with another.
void expectRewritten(const QString& from, const QString& to, const Rewrite& rewrite)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("copy.rec"));
    ASSERT_TRUE(QFile::copy(goldenPath(from), path));
    ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
    {
        CFileAccess file(path.toLocal8Bit().constData(), QString(), nullptr, false, true, false, nullptr, nullptr);
        ASSERT_TRUE(file.IsValidFile());
        rewrite(file);
    }
    EXPECT_EQ(bytesOf(path), bytesOf(goldenPath(to)));
}

}  // namespace

TEST(GoldenRewrites, FewerBookmarksLeaveZeros)
{
    expectRewritten("bookmarks", "bookmarks_shorter", [](CFileAccess& file) {
        file.removeBookmark(3000);
        file.writeBookmarks();
    });
}

TEST(GoldenRewrites, MoreBookmarksExtendTheFile)
{
    expectRewritten("bookmarks", "bookmarks_longer", [](CFileAccess& file) {
        file.removeBookmark(2000);
        file.addBookmark(2500, "a longer text than the first one had");
        file.addBookmark(4000, "");
        file.writeBookmarks();
    });
}

TEST(GoldenRewrites, RemovedBookmarksLeaveZerosAndThePosition)
{
    expectRewritten("bookmarks", "bookmarks_emptied", [](CFileAccess& file) {
        file.removeBookmark(2000);
        file.removeBookmark(3000);
        file.writeBookmarks();
    });
}

TEST(GoldenRewrites, TheFirstBookmarksAreStoredOnDestruction)
{
    expectRewritten("channelranges", "bookmarks_added", [](CFileAccess& file) {
        file.addBookmark(4000, "ends");
        file.addBookmark(100, "starts");
    });
}

TEST(GoldenRewrites, AClearedRangeTableIsZerosThatPassTheEnd)
{
    expectRewritten("channelranges", "ranges_cleared", [](CFileAccess& file) { file.clearChannelRangeDef(); });
}

TEST(GoldenRewrites, AClearedRangeTableIsZerosThatRunIntoTheBookmarks)
{
    expectRewritten("bookmarks_added", "ranges_cleared_bookmarks",
                    [](CFileAccess& file) { file.clearChannelRangeDef(); });
}

TEST(GoldenRewrites, ARebuiltRangeTableStandsWhereTheOldOneWas)
{
    expectRewritten("channelranges", "ranges_rebuilt", [](CFileAccess& file) {
        file.clearChannelRangeDef();
        file.addChannelRangeDef(4000);
        file.addChannelRangeDef(11);
        file.rebuildChannelRangeDef();
    });
}

TEST(GoldenRewrites, ALongerRangeTableOverwritesTheBookmarks)
{
    expectRewritten("bookmarks_added", "ranges_overrun", [](CFileAccess& file) {
        file.addChannelRangeDef(200);
        file.rebuildChannelRangeDef();
    });
}
