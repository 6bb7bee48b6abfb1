// Clearing and rebuilding channel ranges: what is left of the file's bytes, and what another program stored meanwhile.
#include "replay_fixture.h"

using namespace ReplayTests;
using testing::IsEmpty;

TEST_F(ChannelRangesTest, AfterClearingNothingIsDeliveredAndTheHeaderKeepsThePosition)
{
    auto file = open(m_withRanges);
    file->CRDTableToBegin();
    file->clearChannelRangeDef();
    EXPECT_EQ(nextRange(*file), Nothing);
    file->CRDTableToBegin();
    EXPECT_EQ(nextRange(*file), Nothing);
    EXPECT_TRUE(file->channelRangeDefAvailable());
    file = reopen();
    EXPECT_THAT(rangesOf(*file), IsEmpty());
    EXPECT_TRUE(file->channelRangeDefAvailable());
    m_withRanges.clearRanges();
    EXPECT_EQ(fileBytes(), m_withRanges.bytes());
}

TEST_F(ChannelRangesTest, ReadingStartsAnewAtTheFirstRecordAfterClearingAndRebuilding)
{
    auto file = open(m_withRanges);
    file->clearChannelRangeDef();
    expectThreeLevels(*file);
    file->addChannelRangeDef(10);
    file->rebuildChannelRangeDef();
    expectThreeLevels(*file);
    EXPECT_EQ(rangesOf(*file), (Times{10}));
}

TEST_F(ChannelRangesTest, TheLastZerosOfClearingExtendAFileWithoutBookmarks)
{
    for (std::size_t count = 1; count <= 9; ++count) {
        ReferenceRecording recording;
        for (std::size_t i = 1; i <= count; ++i) {
            recording.record(20, "34;", 100 * i, true);
        }
        FinishedFile stored(recording.close());
        open(stored)->clearChannelRangeDef();
        const std::size_t zeroed = (9 * count + 7) / 8 * 8;
        const auto table = static_cast<std::size_t>(stored.header().channelRangeTable);
        EXPECT_EQ(fileBytes(), stored.bytes().substr(0, table) + zeros(zeroed)) << count;
        EXPECT_LE(zeroed - 9 * count, 7U);
    }
}

TEST_F(ChannelRangesTest, TheLastZerosOfClearingRunIntoTheBookmarks)
{
    FinishedFile stored = marked(m_withRanges);  // 27 bytes of table: 32 are zeroed
    open(stored)->clearChannelRangeDef();
    const auto table = static_cast<std::size_t>(stored.header().channelRangeTable);
    std::string expected = stored.bytes();
    expected.replace(table, 32, zeros(32));
    EXPECT_EQ(fileBytes(), expected);
    const Bookmarks left{{0, "a bookmark"}, {2500, "another"}};  // the time 2000 is gone: its low bytes were zeroed
    EXPECT_EQ(bookmarksOf(*reopen()), left);
}

TEST_F(ChannelRangesTest, ClearingWithoutATableOverwritesTheFileFromItsStartUpToItsBookmarks)
{
    FinishedFile stored = marked(m_file);
    open(stored)->clearChannelRangeDef();
    const std::size_t zeroed = (static_cast<std::size_t>(stored.header().bookmarkTable) + 7) / 8 * 8;
    EXPECT_EQ(fileBytes(), zeros(zeroed) + stored.bytes().substr(zeroed));
    open(m_file)->clearChannelRangeDef();
    EXPECT_EQ(fileBytes(), zeros((m_file.bytes().size() + 7) / 8 * 8));
    EXPECT_FALSE(reopen()->IsValidFile());
}

TEST_F(ChannelRangesTest, ClearingAndRebuildingWithNoMoreThanBeforeKeepsTheRest)
{
    auto file = open(m_withRanges);
    file->clearChannelRangeDef();
    file->addChannelRangeDef(3000);
    file->addChannelRangeDef(10);
    file->rebuildChannelRangeDef();
    m_withRanges.clearRanges();
    m_withRanges.rebuildRanges({10, 3000});
    EXPECT_EQ(fileBytes(), m_withRanges.bytes());
    EXPECT_EQ(rangesOf(*reopen()), (Times{10, 3000}));
}

TEST_F(ChannelRangesTest, ClearingSparesTheBookmarksThatAnotherObjectStoredMeanwhile)
{
    auto file = open(m_withRanges);
    reopen()->addBookmark(10, "a text of the other");
    file->clearChannelRangeDef();
    m_withRanges.storeBookmarks({{10, "a text of the other"}});
    m_withRanges.clearRanges();
    EXPECT_EQ(fileBytes(), m_withRanges.bytes());
}

TEST_F(ChannelRangesTest, ClearingClearsTheFirstTableThatAnotherObjectStoredMeanwhileNotTheHeader)
{
    auto file = open(m_file);
    {
        auto other = reopen();
        other->addChannelRangeDef(1500);
        other->rebuildChannelRangeDef();
    }
    file->clearChannelRangeDef();
    m_file.rebuildRanges({1500});
    m_file.clearRanges();
    EXPECT_EQ(fileBytes(), m_file.bytes());
}

TEST_F(ChannelRangesTest, RebuildingInPlaceWithFewerLeavesTheOldOnesBehind)
{
    auto file = open(m_file);
    file->addChannelRangeDef(1500);
    FinishedFile other = m_withRanges;
    TestSupport::writeFile(filePath(Name), other.bytes());  // the positions are those of the file as it is now
    file->rebuildChannelRangeDef();
    other.rebuildRanges({1500});
    EXPECT_EQ(fileBytes(), other.bytes());
    EXPECT_EQ(rangesOf(*reopen()), other.rangesRead());
}

TEST_F(ChannelRangesTest, RebuildingWithMoreThanBeforeOverwritesTheStartOfTheBookmarks)
{
    FinishedFile stored = marked(m_withRanges);
    auto file = open(stored);
    file->addChannelRangeDef(20);
    file->addChannelRangeDef(30);
    file->rebuildChannelRangeDef();
    const auto table = static_cast<std::size_t>(stored.header().channelRangeTable);
    std::string expected = stored.bytes();
    expected.replace(table, 45, rangeTable({10, 20, 30, 1500, 3000}));
    EXPECT_EQ(fileBytes(), expected);
    EXPECT_EQ(rangesOf(*reopen()), (Times{10, 20, 30}));
}

TEST_F(ChannelRangesTest, TheTableOfAFileWithoutOneIsAppendedAtItsEndAndNotReadBackBehindBookmarks)
{
    for (const bool withBookmarks : {false, true}) {
        FinishedFile stored = withBookmarks ? marked(m_file) : m_file;
        const auto end = static_cast<std::int32_t>(stored.bytes().size());
        auto file = open(stored);
        file->addChannelRangeDef(3000);
        file->rebuildChannelRangeDef();
        EXPECT_TRUE(file->channelRangeDefAvailable());
        stored.rebuildRanges({3000});
        EXPECT_EQ(stored.header().channelRangeTable, end);
        EXPECT_EQ(fileBytes(), stored.bytes());
        EXPECT_EQ(rangesOf(*reopen()), withBookmarks ? Times{} : Times{3000});
    }
}

TEST_F(ChannelRangesTest, RebuildingWithoutAnyWritesTheHeaderAreaOnly)
{
    FinishedFile stored = m_file;
    stored.markHeaderArea();
    open(stored)->rebuildChannelRangeDef();
    EXPECT_EQ(fileBytes(), m_file.bytes());
}

TEST_F(ChannelRangesTest, WhatCannotBeRebuiltIsTracedWithTheNameOfTheFile)
{
    auto file = open(m_file);
    file->addChannelRangeDef(10);
    expectTracedUntilItCanBe(m_file, "Error rebuilding CRD for recording file ",
                             [&] { file->rebuildChannelRangeDef(); });
}

TEST_F(ChannelRangesTest, AFileThatIsNoRecordingIsNotRebuiltAndOneThatDoesNotExistIsNotMade)
{
    for (const std::string& bytes :
         {std::string("1#0#an old recording"), TestSupport::headerArea(), std::string("x")}) {
        auto file = openBytes(bytes);
        file->addChannelRangeDef(10);
        file->rebuildChannelRangeDef();
        file.reset();
        EXPECT_EQ(fileBytes(), bytes);
    }
    auto file = openForReading("missing.rec");
    file->addChannelRangeDef(10);
    file->rebuildChannelRangeDef();
    file->clearChannelRangeDef();
    file.reset();
    EXPECT_FALSE(exists("missing.rec"));
}
