// Bookmarks: in memory, in the file, and what every change leaves of the file's bytes.
#include "replay_fixture.h"

namespace {

using namespace ReplayTests;
using namespace testing;

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

TEST_F(BookmarksTest, TheDeliveryOfTheLastReturnsFalseAndWithoutAnyNothingIsDelivered)
{
    auto file = open(m_file);
    file->BookmarkTableToBegin();
    EXPECT_EQ(nextBookmark(*file), Nothing);
    file->addBookmark(30, "c");
    file->addBookmark(10, "a");
    file->addBookmark(20, "b");
    file->BookmarkTableToBegin();
    EXPECT_EQ(nextBookmark(*file), (Delivery{true, 10, "a"}));
    EXPECT_EQ(nextBookmark(*file), (Delivery{true, 20, "b"}));
    EXPECT_EQ(nextBookmark(*file), (Delivery{false, 30, "c"}));
    EXPECT_EQ(nextBookmark(*file), Nothing);
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
    EXPECT_EQ(nextBookmark(*file), (Delivery{true, 10, "a"}));
    file->addBookmark(40, "d");
    EXPECT_EQ(nextBookmark(*file), (Delivery{true, 30, "c"}));
    EXPECT_EQ(nextBookmark(*file), (Delivery{false, 40, "d"}));
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

TEST_F(BookmarksTest, AFileThatIsOpenedWithoutItsTablesHasNoneUntilTheyAreRead)
{
    const auto file = openBytes(marked(m_withRanges, {{10, "a"}}).bytes(), false);
    EXPECT_THAT(bookmarksOf(*file), IsEmpty());
    EXPECT_THAT(rangesOf(*file), IsEmpty());
    file->readTables();
    EXPECT_EQ(bookmarksOf(*file).size(), 1U);
    EXPECT_FALSE(rangesOf(*file).empty());
}

TEST_F(BookmarksTest, AHeaderTextWithANulIsCutThereWhenTheFileIsChanged)
{
    std::string bytes = m_withRanges.bytes();
    const std::size_t name = bytes.find(TestSupport::HeaderFields().deviceName);
    ASSERT_NE(name, std::string::npos);
    bytes[name + 1] = '\0';
    const auto file = openBytes(bytes);
    file->addBookmark(10, "a");
    file->writeBookmarks();
    const auto again = reopen();
    ASSERT_TRUE(again->IsValidFile());
    CHeaderData header;
    again->read(header);
    EXPECT_EQ(header.deviceNameLength(), 1U);
    EXPECT_EQ(header.deviceType(), TestSupport::HeaderFields().deviceType);
    EXPECT_EQ(bookmarksOf(*again).size(), 1U);
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
    add(*file, bookmarks);
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
    expectStored(m_file, {{10, "before"}, {20, ""}, {30, "behind"}});
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
    add(*file, bookmarks);
    file.reset();
    expectStored(m_withRanges, bookmarks);
    file = reopen();
    EXPECT_EQ(bookmarksOf(*file), bookmarks);
    for (const auto& [time, text] : bookmarks) {
        if (time != 700) {
            file->removeBookmark(time);
        }
    }
    file.reset();
    expectStored(m_withRanges, {{700, "mark 100"}});
    EXPECT_THAT(bookmarksOf(*reopen()), ElementsAre(Pair(700, "mark 100")));
}

TEST_F(BookmarksTest, LoadingTheTablesAnewFindsWhatAnotherObjectStored)
{
    auto file = open(m_withRanges);
    reopen()->addBookmark(10, "of the other");
    EXPECT_FALSE(file->bookmarksAvailable());
    file->readTables();
    EXPECT_THAT(bookmarksOf(*file), ElementsAre(Pair(10, "of the other")));
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
    EXPECT_EQ(nextBookmark(copy).time, 10U);
    EXPECT_EQ(nextBookmark(*file), (Delivery{true, 10, "a"}));
    copy.addBookmark(30, "c");
    EXPECT_THAT(bookmarksOf(*file), SizeIs(3));
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
