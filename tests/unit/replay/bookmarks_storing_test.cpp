// Storing bookmarks: when the file is changed, what is left of its bytes, and what another program stored meanwhile.
#include <recording2/format/undo.h>

#include "replay_fixture.h"

using namespace ReplayTests;
using namespace testing;

TEST_F(BookmarksTest, AreStoredWhenTheObjectIsDestroyedAfterAnAddition)
{
    auto file = open(m_file);
    file->addBookmark(3000, "kept");
    EXPECT_EQ(fileBytes(), m_file.bytes());
    file.reset();
    expectStored(m_file, {{3000, "kept"}});
}

TEST_F(BookmarksTest, OnceTheyAreStoredDestroyingTheObjectDoesNotStoreThemAgain)
{
    auto file = open(m_file);
    file->addBookmark(3000, "kept");
    file->writeBookmarks();
    m_file.storeBookmarks({{3000, "kept"}});
    m_file.markHeaderArea();
    TestSupport::writeFile(filePath(Name), m_file.bytes());
    file.reset();
    EXPECT_EQ(fileBytes(), m_file.bytes());
}

TEST_F(BookmarksTest, WhatCannotBeStoredIsTracedWithTheNameOfTheFile)
{
    auto file = open(m_file);
    file->addBookmark(10, "a");
    expectTracedUntilItCanBe(m_file, "Error writing bookmarks for recording file ", [&] { file->writeBookmarks(); });
}

TEST_F(BookmarksTest, ChangesMadeTogetherAreStoredAtTheirEndAndReadBackMeanwhile)
{
    FinishedFile stored = marked(m_withRanges, {{10, "a"}, {20, "b"}});
    auto file = open(stored);
    file->addBookmark(5, "of no consequence, because the tables are loaded anew");
    bool readBack = false;
    EXPECT_TRUE(file->rewriteTogether(
        [&] {
            file->clearChannelRangeDef();
            file->addChannelRangeDef(3000);
            file->rebuildChannelRangeDef();
            file->removeBookmark(10);
            file->addBookmark(30, "c");
            file->writeBookmarks();
            EXPECT_EQ(fileBytes(), stored.bytes());
            expectThreeLevels(*file);
            CHeaderData header;
            EXPECT_EQ(file->read(header), 1U);
            EXPECT_FALSE(file->rewriteTogether([] {}, {}));
        },
        [&] {
            stored.clearRanges();
            stored.rebuildRanges({3000});
            stored.storeBookmarks({{20, "b"}, {30, "c"}});
            EXPECT_EQ(fileBytes(), stored.bytes());
            readBack = true;
        }));
    EXPECT_TRUE(readBack);
    expectThreeLevels(*file);
    EXPECT_THAT(bookmarksOf(*file), ElementsAre(Pair(20, "b"), Pair(30, "c")));
    EXPECT_EQ(rangesOf(*file), (Times{3000}));
}

TEST_F(BookmarksTest, OfChangesMadeTogetherNothingIsStoredWhenOneThrows)
{
    FinishedFile stored = marked(m_withRanges, {{10, "a"}});
    auto file = open(stored);
    EXPECT_THROW(file->rewriteTogether(
                     [&] {
                         file->clearChannelRangeDef();
                         file->addBookmark(20, "b");
                         file->writeBookmarks();
                         throw std::runtime_error("not so");
                     },
                     {}),
                 std::runtime_error);
    EXPECT_THAT(bookmarksOf(*file), ElementsAre(Pair(10, "a")));
    expectThreeLevels(*file);
    file.reset();
    EXPECT_EQ(fileBytes(), stored.bytes());
}

TEST_F(BookmarksTest, OfChangesMadeTogetherNothingIsStoredWhenTheFileIsClosedWithinThem)
{
    const FinishedFile stored = marked(m_withRanges, {{10, "a"}});
    auto file = open(stored);
    CHeaderData header;
    EXPECT_FALSE(file->rewriteTogether(
        [&] {
            file->addBookmark(20, "b");
            file->writeBookmarks();
            file->CloseRecording(header, true);
            file->writeBookmarks();
        },
        [] { ADD_FAILURE() << "nothing is stored"; }));
    file.reset();
    EXPECT_EQ(fileBytes(), stored.bytes());
}

TEST_F(BookmarksTest, NothingIsAppendedWithinChangesMadeTogether)
{
    const FinishedFile stored = marked(m_withRanges, {{10, "a"}});
    auto file = open(stored);
    CHeaderData header;
    CVTCmdData record;
    record.set_str("data", 0);
    EXPECT_TRUE(file->rewriteTogether(
        [&] {
            file->write(header);
            file->write(record, 5000, true);
            EXPECT_EQ(file->fileSize(), 0);
        },
        {}));
    file.reset();
    EXPECT_EQ(fileBytes(), stored.bytes());
}

TEST_F(BookmarksTest, OneThatIsTakenOrNotThereCountsAsAChangeWithoutWhichTheFileIsNotRewritten)
{
    FinishedFile stored = marked(m_file, {{10, "a"}});
    for (const auto& change :
         std::vector<std::function<void(CFileAccess&)>>{[](CFileAccess& file) { file.removeBookmark(77); },
                                                        [](CFileAccess& file) { file.addBookmark(10, "another"); }}) {
        stored.markHeaderArea();
        change(*open(stored));
        expectStored(stored, {{10, "a"}});
    }
    stored.markHeaderArea();
    auto file = open(stored);
    EXPECT_THAT(bookmarksOf(*file), SizeIs(1));
    file.reset();
    EXPECT_EQ(fileBytes(), stored.bytes());
}

TEST_F(BookmarksTest, StoringWritesTheWholeHeaderAreaAnew)
{
    m_file.markHeaderArea();
    auto file = open(m_file);
    file->writeBookmarks();
    expectStored(m_file, {});
    EXPECT_EQ(fileBytes().substr(490, 10), "000000000#");
}

TEST_F(BookmarksTest, AShorterTableLeavesZerosAndALongerOneExtendsTheFile)
{
    FinishedFile stored = marked(m_file, {{10, "a text"}, {20, "another text"}});
    auto file = open(stored);
    const std::size_t size = stored.bytes().size();
    file->removeBookmark(20);
    file->writeBookmarks();
    expectStored(stored, {{10, "a text"}});
    EXPECT_THAT(fileBytes(), SizeIs(size));
    file->addBookmark(5, std::string(100, 'x'));
    file->writeBookmarks();
    expectStored(stored, {{5, std::string(100, 'x')}, {10, "a text"}});
    EXPECT_GT(fileBytes().size(), size);
}

TEST_F(BookmarksTest, LeftoversOfEveryLengthAreNothings)
{
    for (std::size_t leftover = 0; leftover <= 40; ++leftover) {
        FinishedFile stored = marked(m_withRanges, {{10, std::string(leftover + 5, 'x')}});
        stored.storeBookmarks({{10, "12345"}});
        auto file = open(stored);
        EXPECT_THAT(bookmarksOf(*file), ElementsAre(Pair(10, "12345"))) << leftover;
        file->removeBookmark(10);
        file.reset();
        EXPECT_THAT(bookmarksOf(*reopen()), IsEmpty()) << leftover;
    }
}

TEST_F(BookmarksTest, ReadingStartsAnewAtTheFirstRecordAfterStoring)
{
    auto file = open(m_withRanges);
    expectThreeLevels(*file);
    file->addBookmark(10, "a");
    file->writeBookmarks();
    EXPECT_TRUE(file->bookmarksAvailable());
    expectThreeLevels(*file);
    EXPECT_THAT(bookmarksOf(*file), ElementsAre(Pair(10, "a")));
}

TEST_F(BookmarksTest, TheCopyThatWasChangedStoresThem)
{
    auto file = open(m_file);
    {
        CFileAccess copy(*file);
        copy.addBookmark(10, "a");
    }
    expectStored(m_file, {{10, "a"}});
    expectThreeLevels(*file);
    file->addBookmark(20, "b");
    file.reset();
    expectStored(m_file, {{10, "a"}, {20, "b"}});
}

TEST_F(BookmarksTest, StoringFindsTheTableThatAnotherObjectStoredMeanwhile)
{
    auto file = open(m_withRanges);
    CHeaderData header;
    EXPECT_EQ(file->read(header), 1U);
    reopen()->addBookmark(10, "a text of the other");
    m_withRanges.storeBookmarks({{10, "a text of the other"}});
    ASSERT_EQ(fileBytes(), m_withRanges.bytes());
    file->addBookmark(20, "mine");
    file.reset();
    expectStored(m_withRanges, {{20, "mine"}});
}

TEST_F(BookmarksTest, AnUndoThatWouldCutOffMoreThanItsChangeAddedIsOfAnotherFile)
{
    const std::string bytes = m_withRanges.bytes();
    const auto half = static_cast<std::int64_t>(bytes.size() / 2);
    auto file = open(m_withRanges);
    file.reset();
    TestSupport::writeFile(filePath(Name) + ".undo",
                           Recording2::Format::encodeUndo({half, {{0, bytes.substr(0, 8), bytes.substr(0, 8)}}}));
    expectThreeLevels(*reopen());
    file = reopen();
    file->addBookmark(20, "mine");
    file.reset();
    expectStored(m_withRanges, {{20, "mine"}});
    EXPECT_FALSE(QFile::exists(filePath(Name) + ".undo"));
}

TEST_F(BookmarksTest, AFileThatIsNoRecordingIsLeftUntouchedAndOneThatDoesNotExistIsNotMade)
{
    const auto change = [](std::unique_ptr<CFileAccess> file) {
        EXPECT_FALSE(file->IsValidFile());
        file->addBookmark(10, "a");
        file->removeBookmark(10);
        EXPECT_FALSE(file->bookmarksAvailable());
        file->addBookmark(10, "a");
        file->writeBookmarks();
    };
    for (const std::string& bytes : {std::string("1#0#an old recording"), std::string("not a recording at all"),
                                     TestSupport::headerArea(), std::string()}) {
        change(openBytes(bytes));
        EXPECT_EQ(fileBytes(), bytes);
    }
    change(openForReading("missing.rec"));
    EXPECT_FALSE(exists("missing.rec"));
}

TEST_F(BookmarksTest, ThoseAddedWhileAFileIsWrittenAreNotStored)
{
    auto file = openForWriting("made.rec");
    write(*file, 36, "-31.5", 10);
    file->addBookmark(10, "a");
    EXPECT_FALSE(file->bookmarksAvailable());
    file->writeBookmarks();
    close(*file);
    file.reset();
    EXPECT_EQ(fileBytes(), ReferenceRecording().record(36, "-31.5", 10).close());
}

TEST_F(BookmarksTest, AHeaderWithoutTextsKeepsItsFields)
{
    const HeaderFields header{.minorVersion = 31,
                              .startFrequency = 9.00123e7F,
                              .stepWidth = 1e-7F,
                              .minLevel = -2147483647,
                              .jobId = "",
                              .deviceName = "",
                              .deviceType = "",
                              .automatic = true};
    FinishedFile stored(threeLevels().close(header));
    open(stored)->addBookmark(10, "a");
    expectStored(stored, {{10, "a"}});
}
