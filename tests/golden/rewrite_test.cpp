// The library rewrites finished recordings into the bytes that an independent generator made.
#include <recording2/fileaccess.h>

#include "support/recordingbytes.h"
#include "support/testing.h"

namespace {

using Recording2::CFileAccess;
using Rewrite = std::function<void(CFileAccess&)>;

QString goldenPath(const QString& name)
{
    return QString(GOLDEN_FOLDER "/%1/%1.rec").arg(name);
}

/// Rewrites a copy of one golden file and compares it with another.
void expectRewritten(const QString& from, const QString& to, const Rewrite& rewrite)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("copy.rec");
    ASSERT_TRUE(QFile::copy(goldenPath(from), path));
    ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
    {
        CFileAccess file(path.toLocal8Bit().constData(), QString(), nullptr, false, true, false, nullptr, nullptr);
        ASSERT_TRUE(file.IsValidFile());
        rewrite(file);
    }
    EXPECT_EQ(TestSupport::readFile(path), TestSupport::readFile(goldenPath(to)));
}

}  // namespace

TEST(GoldenRewrites, FewerBookmarksLeaveZerosAndMoreExtendTheFile)
{
    expectRewritten("bookmarks", "bookmarks_shorter", [](CFileAccess& file) {
        file.removeBookmark(3000);
        file.writeBookmarks();
    });
    expectRewritten("bookmarks", "bookmarks_longer", [](CFileAccess& file) {
        file.removeBookmark(2000);
        file.addBookmark(2500, "a longer text than the first one had");
        file.addBookmark(4000, "");
        file.writeBookmarks();
    });
    expectRewritten("bookmarks", "bookmarks_emptied", [](CFileAccess& file) {
        file.removeBookmark(2000);
        file.removeBookmark(3000);
        file.writeBookmarks();
    });
    expectRewritten("channelranges", "bookmarks_added", [](CFileAccess& file) {  // stored on destruction
        file.addBookmark(4000, "ends");
        file.addBookmark(100, "starts");
    });
}

TEST(GoldenRewrites, AClearedRangeTableIsZerosAndARebuiltOneStandsWhereTheOldOneWas)
{
    const Rewrite clear = [](CFileAccess& file) { file.clearChannelRangeDef(); };
    expectRewritten("channelranges", "ranges_cleared", clear);  // and they pass the end
    expectRewritten("bookmarks_added", "ranges_cleared_bookmarks", clear);
    expectRewritten("channelranges", "ranges_rebuilt", [](CFileAccess& file) {
        file.clearChannelRangeDef();
        file.addChannelRangeDef(4000);
        file.addChannelRangeDef(11);
        file.rebuildChannelRangeDef();
    });
    expectRewritten("bookmarks_added", "ranges_overrun", [](CFileAccess& file) {  // over the bookmarks
        file.addChannelRangeDef(200);
        file.rebuildChannelRangeDef();
    });
}
