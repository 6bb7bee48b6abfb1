// Bookmarks: in memory, in the file, and what every change leaves of the file's bytes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include <QFile>

#include <recording2/format/undo.h>

#include "replay_fixture.h"
#include "unit/tracelog.h"

namespace {

using namespace ReplayTests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class BookmarksTest : public ReplayTest {
protected:
    FinishedFile m_file{threeLevels().close()};
    FinishedFile m_withRanges{threeLevels({1500}).close()};

    /// The file with bookmarks as another program would have stored them.
    static FinishedFile marked(FinishedFile file, const Bookmarks& bookmarks)
    {
        file.storeBookmarks(bookmarks);
        return file;
    }
};

}  // namespace

TEST_F(BookmarksTest, AtTimeZeroNothingIsAddedOrRemovedAndNothingCountsAsChanged)
{
    m_file.markHeaderArea();
    auto file = open(m_file);
    file->addBookmark(0, "nowhere");
    file->removeBookmark(0);
    EXPECT_THAT(bookmarksOf(*file), IsEmpty());
    file.reset();
    EXPECT_EQ(fileBytes(), m_file.bytes());
}

TEST_F(BookmarksTest, OfTwoAtTheSameTimeTheFirstTextStays)
{
    auto file = open(m_file);
    file->addBookmark(1500, "first");
    file->addBookmark(1500, "second");
    EXPECT_THAT(bookmarksOf(*file), ElementsAre(Pair(1500, "first")));
}

TEST_F(BookmarksTest, TheDeliveryOfTheLastReturnsFalse)
{
    auto file = open(m_file);
    file->addBookmark(30, "c");
    file->addBookmark(10, "a");
    file->addBookmark(20, "b");
    file->BookmarkTableToBegin();
    unsigned long long time = 0;
    std::string text;
    EXPECT_TRUE(file->getNextBookmark(time, text));
    EXPECT_EQ(time, 10U);
    EXPECT_EQ(text, "a");
    EXPECT_TRUE(file->getNextBookmark(time, text));
    EXPECT_EQ(time, 20U);
    EXPECT_EQ(text, "b");
    EXPECT_FALSE(file->getNextBookmark(time, text));
    EXPECT_EQ(time, 30U);
    EXPECT_EQ(text, "c");
    time = 7;
    text = "untouched";
    EXPECT_FALSE(file->getNextBookmark(time, text));
    EXPECT_EQ(time, 7U);
    EXPECT_EQ(text, "untouched");
}

TEST_F(BookmarksTest, WithoutAnyNothingIsDelivered)
{
    auto file = open(m_file);
    file->BookmarkTableToBegin();
    unsigned long long time = 7;
    std::string text("untouched");
    EXPECT_FALSE(file->getNextBookmark(time, text));
    EXPECT_EQ(time, 7U);
    EXPECT_EQ(text, "untouched");
}

TEST_F(BookmarksTest, TheDeliveryStartsAnewWheneverAsked)
{
    auto file = open(marked(m_file, {{10, "a"}, {20, "b"}}));
    EXPECT_THAT(bookmarksOf(*file), SizeIs(2));
    EXPECT_THAT(bookmarksOf(*file), SizeIs(2));
}

TEST_F(BookmarksTest, OneAddedBehindTheDeliveryIsDeliveredToo)
{
    auto file = open(marked(m_file, {{10, "a"}, {30, "c"}}));
    file->BookmarkTableToBegin();
    unsigned long long time = 0;
    std::string text;
    EXPECT_TRUE(file->getNextBookmark(time, text));
    file->addBookmark(40, "d");
    EXPECT_TRUE(file->getNextBookmark(time, text));
    EXPECT_EQ(time, 30U);
    EXPECT_FALSE(file->getNextBookmark(time, text));
    EXPECT_EQ(time, 40U);
}

TEST_F(BookmarksTest, TheFirstTableIsWrittenAtTheEndOfTheFile)
{
    auto file = open(m_withRanges);
    file->addBookmark(3000, "here");
    file->writeBookmarks();
    const auto position = static_cast<std::int32_t>(m_withRanges.bytes().size());
    m_withRanges.storeBookmarks({{3000, "here"}});
    EXPECT_EQ(m_withRanges.header().bookmarkTable, position);
    EXPECT_EQ(fileBytes(), m_withRanges.bytes());
}

TEST_F(BookmarksTest, RemovingAllAndStoringLeavesZerosAndThePosition)
{
    const Bookmarks bookmarks{{10, "a"}, {20, "some text"}, {30, ""}};
    FinishedFile stored = marked(m_withRanges, bookmarks);
    auto file = open(stored);
    for (const auto& [time, text] : bookmarks) {
        file->removeBookmark(time);
    }
    file->writeBookmarks();
    const std::string expected =
        stored.bytes().substr(0, m_withRanges.bytes().size()) + std::string(bookmarkTable(bookmarks).size(), '0');
    EXPECT_EQ(fileBytes(), expected);
    EXPECT_FALSE(file->bookmarksAvailable());
    file.reset();
    EXPECT_THAT(bookmarksOf(*reopen()), IsEmpty());
    EXPECT_EQ(fileBytes(), expected);
}

TEST_F(BookmarksTest, TextsWithSeparatorsAndNulBytesAreReadBackUnchanged)
{
    const Bookmarks bookmarks{{1, "#"},
                              {2, std::string(3, '\0')},
                              {3, std::string("12#\0#34", 7)},
                              {4, "0000000000000000000"},
                              {5, "\xff\xfe\r\n \t"},
                              {18'446'744'073'709'551'615U, "the last time of all"}};
    auto file = open(m_file);
    for (const auto& [time, text] : bookmarks) {
        file->addBookmark(time, text);
    }
    file.reset();
    EXPECT_EQ(bookmarksOf(*reopen()), bookmarks);
}

TEST_F(BookmarksTest, OneWithoutTextIsWrittenButNotReadBack)
{
    auto file = open(m_file);
    file->addBookmark(10, "before");
    file->addBookmark(20, "");
    file->addBookmark(30, "behind");
    file->writeBookmarks();
    EXPECT_THAT(bookmarksOf(*file), SizeIs(3));
    m_file.storeBookmarks({{10, "before"}, {20, ""}, {30, "behind"}});
    EXPECT_EQ(fileBytes(), m_file.bytes());
    file.reset();
    EXPECT_THAT(bookmarksOf(*reopen()), ElementsAre(Pair(10, "before"), Pair(30, "behind")));
}

TEST_F(BookmarksTest, AThousandAreStoredAndReadBackAndShrinkToOne)
{
    Bookmarks bookmarks;
    for (std::uint64_t time = 1; time <= 1000; ++time) {
        bookmarks.emplace(time * 7, "mark " + std::to_string(time));
    }
    auto file = open(m_withRanges);
    for (const auto& [time, text] : bookmarks) {
        file->addBookmark(time, text);
    }
    file.reset();
    m_withRanges.storeBookmarks(bookmarks);
    EXPECT_EQ(fileBytes(), m_withRanges.bytes());
    file = reopen();
    EXPECT_EQ(bookmarksOf(*file), bookmarks);
    for (const auto& [time, text] : bookmarks) {
        if (time != 700) {
            file->removeBookmark(time);
        }
    }
    file.reset();
    m_withRanges.storeBookmarks({{700, "mark 100"}});
    EXPECT_EQ(fileBytes(), m_withRanges.bytes());
    EXPECT_THAT(bookmarksOf(*reopen()), ElementsAre(Pair(700, "mark 100")));
}

TEST_F(BookmarksTest, AreStoredWhenTheObjectIsDestroyedAfterAnAddition)
{
    auto file = open(m_file);
    file->addBookmark(3000, "kept");
    EXPECT_EQ(fileBytes(), m_file.bytes());
    file.reset();
    m_file.storeBookmarks({{3000, "kept"}});
    EXPECT_EQ(fileBytes(), m_file.bytes());
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
    const QString message = QStringLiteral("Error writing bookmarks for recording file ") + filePath(Name);
    auto file = open(m_file);
    file->addBookmark(10, "a");
    TestSupport::writeFile(filePath(Name), TestSupport::headerArea());
    {
        const FileAccessTests::TraceLog log(~ErrorHandler::RecordingTraces);
        file->writeBookmarks();
        EXPECT_EQ(log.count(message), 0);
    }
    const FileAccessTests::TraceLog log(ErrorHandler::RecordingTraces);
    file->writeBookmarks();
    EXPECT_EQ(log.count(message), 1);
    TestSupport::writeFile(filePath(Name), m_file.bytes());
    file->writeBookmarks();
    EXPECT_EQ(log.count(message), 1);
}

TEST_F(BookmarksTest, LoadingTheTablesAnewFindsWhatAnotherObjectStored)
{
    auto file = open(m_withRanges);
    auto other = reopen();
    other->addBookmark(10, "of the other");
    other.reset();
    EXPECT_FALSE(file->bookmarksAvailable());
    file->readTables();
    EXPECT_THAT(bookmarksOf(*file), ElementsAre(Pair(10, "of the other")));
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

TEST_F(BookmarksTest, RemovingOneThatDoesNotExistCountsAsAChange)
{
    m_file.markHeaderArea();
    auto file = open(m_file);
    file->removeBookmark(77);
    file.reset();
    m_file.storeBookmarks({});
    EXPECT_EQ(fileBytes(), m_file.bytes());
}

TEST_F(BookmarksTest, AddingToATimeThatIsTakenCountsAsAChange)
{
    FinishedFile stored = marked(m_file, {{10, "a"}});
    stored.markHeaderArea();
    auto file = open(stored);
    file->addBookmark(10, "another");
    file.reset();
    stored.storeBookmarks({{10, "a"}});
    EXPECT_EQ(fileBytes(), stored.bytes());
}

TEST_F(BookmarksTest, WithoutAChangeTheFileIsNotRewritten)
{
    FinishedFile stored = marked(m_file, {{10, "a"}});
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
    m_file.storeBookmarks({});
    EXPECT_EQ(fileBytes(), m_file.bytes());
    EXPECT_EQ(fileBytes().substr(490, 10), "000000000#");
}

TEST_F(BookmarksTest, AShorterTableLeavesZerosAndALongerOneExtendsTheFile)
{
    FinishedFile stored = marked(m_file, {{10, "a text"}, {20, "another text"}});
    auto file = open(stored);
    const std::size_t size = stored.bytes().size();
    file->removeBookmark(20);
    file->writeBookmarks();
    stored.storeBookmarks({{10, "a text"}});
    EXPECT_EQ(fileBytes(), stored.bytes());
    EXPECT_THAT(fileBytes(), SizeIs(size));
    file->addBookmark(5, std::string(100, 'x'));
    file->writeBookmarks();
    stored.storeBookmarks({{5, std::string(100, 'x')}, {10, "a text"}});
    EXPECT_EQ(fileBytes(), stored.bytes());
    EXPECT_GT(fileBytes().size(), size);
}

TEST_F(BookmarksTest, LeftoversOfEveryLengthAreNoBookmarks)
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

TEST_F(BookmarksTest, LoadingTheTablesGoesToTheFirstRecord)
{
    auto file = open(marked(m_withRanges, {{10, "a"}}));
    CVTCmdData record;
    EXPECT_EQ(file->readnext(record), 1500U);
    EXPECT_EQ(dataOf(record), "-31.5");
}

TEST_F(BookmarksTest, AreAvailableOnlyInAnOpenFileThatHasSome)
{
    auto file = open(m_file);
    EXPECT_FALSE(file->bookmarksAvailable());
    file->addBookmark(10, "a");
    EXPECT_TRUE(file->bookmarksAvailable());
    CHeaderData header;
    file->CloseRecording(header, true);
    EXPECT_FALSE(file->bookmarksAvailable());
    file.reset();
    EXPECT_EQ(fileBytes(), m_file.bytes());
}

TEST_F(BookmarksTest, ACopySharesThemButHasAPlaceOfItsOwn)
{
    auto file = open(marked(m_file, {{10, "a"}, {20, "b"}}));
    file->BookmarkTableToBegin();
    CFileAccess copy(*file);
    unsigned long long time = 0;
    std::string text;
    EXPECT_TRUE(copy.getNextBookmark(time, text));
    EXPECT_TRUE(file->getNextBookmark(time, text));
    EXPECT_EQ(time, 10U);
    copy.addBookmark(30, "c");
    EXPECT_THAT(bookmarksOf(*file), SizeIs(3));
}

TEST_F(BookmarksTest, TheCopyThatWasChangedStoresThem)
{
    auto file = open(m_file);
    {
        CFileAccess copy(*file);
        copy.addBookmark(10, "a");
    }
    m_file.storeBookmarks({{10, "a"}});
    EXPECT_EQ(fileBytes(), m_file.bytes());
    expectThreeLevels(*file);
    file->addBookmark(20, "b");
    file.reset();
    m_file.storeBookmarks({{10, "a"}, {20, "b"}});
    EXPECT_EQ(fileBytes(), m_file.bytes());
}

TEST_F(BookmarksTest, StoringFindsTheTableThatAnotherObjectStoredMeanwhile)
{
    auto file = open(m_withRanges);
    CHeaderData header;
    EXPECT_EQ(file->read(header), 1U);
    auto other = reopen();
    other->addBookmark(10, "a text of the other");
    other.reset();
    m_withRanges.storeBookmarks({{10, "a text of the other"}});
    ASSERT_EQ(fileBytes(), m_withRanges.bytes());
    file->addBookmark(20, "mine");
    file.reset();
    m_withRanges.storeBookmarks({{20, "mine"}});
    EXPECT_EQ(fileBytes(), m_withRanges.bytes());
}

TEST_F(BookmarksTest, AnUndoThatWouldCutOffMoreThanItsChangeAddedIsOfAnotherFile)
{
    const std::string bytes = m_withRanges.bytes();
    const auto half = static_cast<std::int64_t>(bytes.size() / 2);
    auto file = open(m_withRanges);
    file.reset();
    TestSupport::writeFile(filePath(Name) + QStringLiteral(".undo"),
                           Recording2::Format::encodeUndo({half, {{0, bytes.substr(0, 8), bytes.substr(0, 8)}}}));
    expectThreeLevels(*reopen());
    file = reopen();
    file->addBookmark(20, "mine");
    file.reset();
    m_withRanges.storeBookmarks({{20, "mine"}});
    EXPECT_EQ(fileBytes(), m_withRanges.bytes());
    EXPECT_FALSE(QFile::exists(filePath(Name) + QStringLiteral(".undo")));
}

TEST_F(BookmarksTest, AFileThatIsNoRecordingIsLeftUntouched)
{
    for (const std::string& bytes : {std::string("1#0#an old recording"), std::string("not a recording at all"),
                                     TestSupport::headerArea(), std::string()}) {
        auto file = openBytes(bytes);
        EXPECT_FALSE(file->IsValidFile());
        file->addBookmark(10, "a");
        file->writeBookmarks();
        file.reset();
        EXPECT_EQ(fileBytes(), bytes);
    }
}

TEST_F(BookmarksTest, AFileThatDoesNotExistIsNotMade)
{
    auto file = openForReading(QStringLiteral("missing.rec"));
    EXPECT_FALSE(file->IsValidFile());
    file->addBookmark(10, "a");
    file->removeBookmark(10);
    EXPECT_FALSE(file->bookmarksAvailable());
    file->writeBookmarks();
    file.reset();
    EXPECT_FALSE(exists(QStringLiteral("missing.rec")));
}

TEST_F(BookmarksTest, ThoseAddedWhileAFileIsWrittenAreNotStored)
{
    auto file = openForWriting(QStringLiteral("made.rec"));
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
    HeaderFields header;
    header.jobId.clear();
    header.deviceName.clear();
    header.deviceType.clear();
    header.minLevel = -2147483647;
    header.startFrequency = 9.00123e7F;
    header.stepWidth = 1e-7F;
    header.automatic = true;
    header.minorVersion = 31;
    FinishedFile stored(threeLevels().close(header));
    auto file = open(stored);
    file->addBookmark(10, "a");
    file.reset();
    stored.storeBookmarks({{10, "a"}});
    EXPECT_EQ(fileBytes(), stored.bytes());
}

namespace {

/// One long random use of a file: what is in memory and every byte on disk is as the model says.
class RandomBookmarksTest : public ReplayTest, public testing::WithParamInterface<std::uint32_t> {
protected:
    void change()
    {
        const std::uint64_t time = m_dice.below(12);
        if (m_dice.oneIn(3)) {
            m_access->removeBookmark(time);
            m_bookmarks.erase(time);
        } else {
            const std::string text = m_dice.bytes(m_dice.oneIn(10) ? 300 : 30);
            m_access->addBookmark(time, text);
            if (time != 0) {
                m_bookmarks.emplace(time, text);
            }
        }
        m_changed = m_changed || time != 0;
    }
    void store()
    {
        m_access->writeBookmarks();
        m_file.storeBookmarks(m_bookmarks);
    }
    void openAgain()
    {
        m_access.reset();
        if (m_changed) {
            m_file.storeBookmarks(m_bookmarks);
        }
        m_access = reopen();
        m_changed = false;
        m_bookmarks = m_file.bookmarksRead();
    }

    Dice m_dice{GetParam()};
    FinishedFile m_file{threeLevels(GetParam() % 2 == 0 ? Times{10, 3000} : Times{}).close()};
    std::unique_ptr<CFileAccess> m_access = open(m_file);
    Bookmarks m_bookmarks;
    bool m_changed = false;
};

}  // namespace

TEST_P(RandomBookmarksTest, EveryByteIsAsTheModelSays)
{
    for (int step = 0; step < 150; ++step) {
        const std::size_t choice = m_dice.below(10);
        if (choice < 7) {
            change();
        } else if (choice < 9) {
            store();
        } else {
            openAgain();
        }
        ASSERT_EQ(bookmarksOf(*m_access), m_bookmarks) << "step " << step;
        if (choice >= 7) {
            ASSERT_EQ(fileBytes(), m_file.bytes()) << "step " << step;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomBookmarksTest, testing::Range(1U, 17U));
