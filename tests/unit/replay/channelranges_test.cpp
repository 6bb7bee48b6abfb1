// Channel range definitions: finding them in a recording, and what clearing and rebuilding leave of the file's bytes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "replay_fixture.h"
#include "unit/tracelog.h"

namespace {

using namespace ReplayTests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// What one delivery gave.
struct Delivery {
    bool more = false;
    std::uint64_t time = 0;
    std::string data;
    bool operator==(const Delivery&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Delivery& delivery)
{
    return out << delivery.time << " " << delivery.data << (delivery.more ? " and more" : " as the last");
}

Delivery next(CFileAccess& file)
{
    CVTCmdData record = FileAccessTests::makeRecord(7, "untouched");
    unsigned long long time = 777;
    const bool more = file.readNextChannelRangeDef(record, time);
    return {more, time, dataOf(record)};
}

const Delivery Nothing{false, 777, "untouched"};

std::string zeros(std::size_t count)
{
    return std::string(count, '\0');
}

class ChannelRangesTest : public ReplayTest {
protected:
    /// A recording of DF spectra with these times and texts, every one entered as a definition that is in defs.
    static FinishedFile spectra(const std::vector<std::pair<std::uint64_t, std::string>>& records, const Times& defs)
    {
        ReferenceRecording recording;
        for (const auto& [time, text] : records) {
            recording.record(20, text, time, defs.contains(time));
        }
        return FinishedFile(recording.close());
    }
    static FinishedFile marked(FinishedFile file)
    {
        file.storeBookmarks({{2000, "a bookmark"}, {2500, "another"}});
        return file;
    }

    FinishedFile m_file{threeLevels().close()};
    FinishedFile m_withRanges{threeLevels({10, 1500, 3000}).close()};
};

}  // namespace

TEST_F(ChannelRangesTest, TheTimeZeroIsNotAddedAndATimeOnlyOnce)
{
    auto file = open(m_file);
    file->addChannelRangeDef(0);
    EXPECT_THAT(rangesOf(*file), IsEmpty());
    file->addChannelRangeDef(1500);
    file->addChannelRangeDef(1500);
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), (Delivery{false, 1500, "-30"}));
    file->rebuildChannelRangeDef();
    m_file.rebuildRanges({1500});
    EXPECT_EQ(fileBytes(), m_file.bytes());
}

TEST_F(ChannelRangesTest, AddingDoesNotTouchTheFile)
{
    m_file.markHeaderArea();
    auto file = open(m_file);
    file->addChannelRangeDef(1500);
    EXPECT_FALSE(file->channelRangeDefAvailable());
    file.reset();
    EXPECT_EQ(fileBytes(), m_file.bytes());
}

TEST_F(ChannelRangesTest, TheFirstZeroTimeEndsTheTable)
{
    FinishedFile stored = m_withRanges;
    stored.clearRanges();
    stored.rebuildRanges({10, 1500});
    ASSERT_EQ(stored.rangesRead(), (Times{10, 1500}));
    EXPECT_EQ(rangesOf(*open(stored)), (Times{10, 1500}));

    const auto table = static_cast<std::size_t>(m_withRanges.header().channelRangeTable);
    std::string bytes = m_withRanges.bytes();
    bytes.replace(table + 9, 8, zeros(8));  // times behind the zero are not looked at
    EXPECT_EQ(rangesOf(*openBytes(bytes)), (Times{10}));
}

TEST_F(ChannelRangesTest, ATimeThatIsNegativeAsASignedNumberEndsTheTable)
{
    std::string bytes = m_withRanges.bytes();
    bytes.at(static_cast<std::size_t>(m_withRanges.header().channelRangeTable) + 9 + 7) = '\x80';
    EXPECT_EQ(rangesOf(*openBytes(bytes)), (Times{10}));
}

TEST_F(ChannelRangesTest, TheTableEndsWhereTheBookmarksBegin)
{
    EXPECT_EQ(rangesOf(*open(marked(m_withRanges))), (Times{10, 1500, 3000}));
}

TEST_F(ChannelRangesTest, ADefinitionIsFoundInTheRunOfRecordsOfItsMoment)
{
    auto file = open(spectra({{100, "nothing"}, {101, "7;0|34;1,2,3"}, {200, "134;5,6"}}, {100, 200}));
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), (Delivery{true, 101, "7;0|34;1,2,3"}));
    EXPECT_EQ(next(*file), (Delivery{false, 200, "134;5,6"}));
    EXPECT_EQ(next(*file), Nothing);
}

TEST_F(ChannelRangesTest, TheSearchEndsWithTheRunOfConsecutiveMilliseconds)
{
    auto file = open(spectra({{100, "a"}, {101, "b"}, {103, "34;1,2,3"}}, {100}));
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), (Delivery{false, 100, "b"}));
}

TEST_F(ChannelRangesTest, EveryDefinitionOfAMomentThatEndsInALongRecordIsDelivered)
{
    std::vector<std::pair<std::uint64_t, std::string>> records;
    Times definitions;
    for (std::uint64_t time = 100; time < 140; ++time) {
        records.emplace_back(time, "levels");
        definitions.insert(time);
    }
    const std::string last(100'000, 'x');
    records.emplace_back(140, last);
    auto file = open(spectra(records, definitions));
    for (int round = 0; round < 2; ++round) {
        file->CRDTableToBegin();
        for (const std::uint64_t time : definitions) {
            ASSERT_EQ(next(*file), (Delivery{time != 139, time, last}));
        }
        ASSERT_EQ(next(*file), Nothing);
    }
}

TEST_F(ChannelRangesTest, OnlyTheThreeCharactersMarkADefinition)
{
    auto file = open(spectra({{100, "34"}, {101, "34,;"}, {102, "3 4;"}, {103, std::string("\0x34;", 5)}}, {100}));
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), (Delivery{false, 103, std::string("\0x34;", 5)}));
}

TEST_F(ChannelRangesTest, OfADefinitionAtElevenTheSearchBeginsAtTen)
{
    auto file = open(spectra({{10, "34;at ten"}, {11, "34;at eleven"}, {50, "34;later"}}, {11, 50}));
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), (Delivery{true, 10, "34;at ten"}));
    EXPECT_EQ(next(*file), (Delivery{false, 50, "34;later"}));
}

TEST_F(ChannelRangesTest, OfADefinitionAtElevenTheSearchGoesOnFromTen)
{
    auto file = open(spectra({{10, "levels"}, {11, "34;at eleven"}}, {11}));
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), (Delivery{false, 11, "34;at eleven"}));
}

TEST_F(ChannelRangesTest, OfADefinitionAtElevenWithoutARecordAtTenTheSearchBeginsAtEleven)
{
    auto file = open(spectra({{9, "34;at nine"}, {11, "34;at eleven"}}, {11}));
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), (Delivery{false, 11, "34;at eleven"}));
}

TEST_F(ChannelRangesTest, OfADefinitionAtTwelveTheSearchBeginsAtTwelve)
{
    auto file = open(spectra({{10, "34;at ten"}, {11, "34;at eleven"}, {12, "34;at twelve"}}, {12}));
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), (Delivery{false, 12, "34;at twelve"}));
}

TEST_F(ChannelRangesTest, WithoutATextTheTimeStaysThatOfTheDefinition)
{
    auto file = open(spectra({{10, "a"}, {11, "b"}, {12, "c"}}, {11}));
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), (Delivery{false, 11, "c"}));
}

TEST_F(ChannelRangesTest, ADefinitionWithoutARecordDeliversTheNextLaterOne)
{
    auto file = open(spectra({{100, "34;x"}, {300, "34;y"}}, {100}));
    file->addChannelRangeDef(200);
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), (Delivery{true, 100, "34;x"}));
    EXPECT_EQ(next(*file), (Delivery{false, 200, "34;y"}));
}

TEST_F(ChannelRangesTest, TheDeliveryStartsAnewWheneverAsked)
{
    auto file = open(m_withRanges);
    EXPECT_EQ(next(*file), Nothing);
    EXPECT_THAT(rangesOf(*file), SizeIs(3));
    EXPECT_THAT(rangesOf(*file), SizeIs(3));
}

TEST_F(ChannelRangesTest, WithoutAnyNothingIsDelivered)
{
    auto file = open(m_file);
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), Nothing);
}

TEST_F(ChannelRangesTest, AreAvailableOnlyInAnOpenFileThatHasATable)
{
    EXPECT_FALSE(open(m_file)->channelRangeDefAvailable());
    EXPECT_FALSE(openForReading(QStringLiteral("missing.rec"))->channelRangeDefAvailable());
    auto file = open(m_withRanges);
    EXPECT_TRUE(file->channelRangeDefAvailable());
    CHeaderData header;
    file->CloseRecording(header, true);
    EXPECT_FALSE(file->channelRangeDefAvailable());
}

TEST_F(ChannelRangesTest, OnesAddedWhileAFileIsWrittenEnterItsTable)
{
    auto file = openForWriting(Name);
    write(*file, 36, "-31.5", 10);
    write(*file, 36, "-30", 20);
    file->addChannelRangeDef(20);
    file->clearChannelRangeDef();  // a file that is written is neither cleared nor rebuilt
    file->rebuildChannelRangeDef();
    close(*file);
    EXPECT_EQ(fileBytes(), ReferenceRecording().record(36, "-31.5", 10).record(36, "-30", 20, true).close());
}

TEST_F(ChannelRangesTest, AfterClearingNothingIsDeliveredAndTheHeaderKeepsThePosition)
{
    auto file = open(m_withRanges);
    file->CRDTableToBegin();
    file->clearChannelRangeDef();
    EXPECT_EQ(next(*file), Nothing);
    file->CRDTableToBegin();
    EXPECT_EQ(next(*file), Nothing);
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

TEST_F(ChannelRangesTest, ClearingWithoutATableOverwritesTheFileFromItsStart)
{
    auto file = open(m_file);
    file->clearChannelRangeDef();
    file.reset();
    EXPECT_EQ(fileBytes(), zeros((m_file.bytes().size() + 7) / 8 * 8));
    EXPECT_FALSE(reopen()->IsValidFile());
}

TEST_F(ChannelRangesTest, ClearingWithoutATableOverwritesTheFileUpToItsBookmarks)
{
    FinishedFile stored = marked(m_file);
    open(stored)->clearChannelRangeDef();
    const std::size_t zeroed = (static_cast<std::size_t>(stored.header().bookmarkTable) + 7) / 8 * 8;
    EXPECT_EQ(fileBytes(), zeros(zeroed) + stored.bytes().substr(zeroed));
}

TEST_F(ChannelRangesTest, ClearingAndRebuildingWithNoMoreThanBeforeKeepsTheRest)
{
    FinishedFile stored = m_withRanges;
    auto file = open(stored);
    file->clearChannelRangeDef();
    file->addChannelRangeDef(3000);
    file->addChannelRangeDef(10);
    file->rebuildChannelRangeDef();
    stored.clearRanges();
    stored.rebuildRanges({10, 3000});
    EXPECT_EQ(fileBytes(), stored.bytes());
    EXPECT_EQ(rangesOf(*reopen()), (Times{10, 3000}));
}

TEST_F(ChannelRangesTest, ClearingSparesTheBookmarksThatAnotherObjectStoredMeanwhile)
{
    FinishedFile stored = m_withRanges;
    auto file = open(stored);
    {
        auto other = reopen();
        other->addBookmark(10, "a text of the other");
    }
    file->clearChannelRangeDef();
    stored.storeBookmarks({{10, "a text of the other"}});
    stored.clearRanges();
    EXPECT_EQ(fileBytes(), stored.bytes());
}

TEST_F(ChannelRangesTest, ClearingClearsTheFirstTableThatAnotherObjectStoredMeanwhileNotTheHeader)
{
    FinishedFile stored = m_file;
    auto file = open(stored);
    {
        auto other = reopen();
        other->addChannelRangeDef(1500);
        other->rebuildChannelRangeDef();
    }
    file->clearChannelRangeDef();
    stored.rebuildRanges({1500});
    stored.clearRanges();
    EXPECT_EQ(fileBytes(), stored.bytes());
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

TEST_F(ChannelRangesTest, TheTableOfAFileWithoutOneIsAppendedAtItsEnd)
{
    auto file = open(m_file);
    file->addChannelRangeDef(3000);
    file->rebuildChannelRangeDef();
    EXPECT_TRUE(file->channelRangeDefAvailable());
    const auto end = static_cast<std::int32_t>(m_file.bytes().size());
    m_file.rebuildRanges({3000});
    EXPECT_EQ(m_file.header().channelRangeTable, end);
    EXPECT_EQ(fileBytes(), m_file.bytes());
    EXPECT_EQ(rangesOf(*reopen()), (Times{3000}));
}

TEST_F(ChannelRangesTest, ATableAppendedBehindBookmarksIsNotReadBack)
{
    FinishedFile stored = marked(m_file);
    auto file = open(stored);
    file->addChannelRangeDef(3000);
    file->rebuildChannelRangeDef();
    stored.rebuildRanges({3000});
    EXPECT_EQ(fileBytes(), stored.bytes());
    EXPECT_THAT(rangesOf(*reopen()), IsEmpty());
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
    const QString message = QStringLiteral("Error rebuilding CRD for recording file ") + filePath(Name);
    auto file = open(m_file);
    file->addChannelRangeDef(10);
    TestSupport::writeFile(filePath(Name), TestSupport::headerArea());
    {
        const FileAccessTests::TraceLog log(~ErrorHandler::RecordingTraces);
        file->rebuildChannelRangeDef();
        EXPECT_EQ(log.count(message), 0);
    }
    const FileAccessTests::TraceLog log(ErrorHandler::RecordingTraces);
    file->rebuildChannelRangeDef();
    EXPECT_EQ(log.count(message), 1);
    TestSupport::writeFile(filePath(Name), m_file.bytes());
    file->rebuildChannelRangeDef();
    EXPECT_EQ(log.count(message), 1);
}

TEST_F(ChannelRangesTest, ACopySharesTheDefinitionsButHasAPlaceOfItsOwn)
{
    auto file = open(m_withRanges);
    file->CRDTableToBegin();
    CFileAccess copy(*file);
    EXPECT_EQ(next(copy).time, 10U);
    EXPECT_EQ(next(*file).time, 10U);
    copy.addChannelRangeDef(2000);
    EXPECT_THAT(rangesOf(*file), SizeIs(4));
    copy.clearChannelRangeDef();
    EXPECT_THAT(rangesOf(*file), IsEmpty());
    expectThreeLevels(*file);
}

TEST_F(ChannelRangesTest, AFileThatIsNoRecordingIsNotRebuilt)
{
    for (const std::string& bytes :
         {std::string("1#0#an old recording"), TestSupport::headerArea(), std::string("x")}) {
        auto file = openBytes(bytes);
        file->addChannelRangeDef(10);
        file->rebuildChannelRangeDef();
        file.reset();
        EXPECT_EQ(fileBytes(), bytes);
    }
}

TEST_F(ChannelRangesTest, AFileThatDoesNotExistIsNotMade)
{
    auto file = openForReading(QStringLiteral("missing.rec"));
    file->addChannelRangeDef(10);
    file->rebuildChannelRangeDef();
    file->clearChannelRangeDef();
    file.reset();
    EXPECT_FALSE(exists(QStringLiteral("missing.rec")));
}

namespace {

/// One long random use of a file, with and without a table and bookmarks at first.
class RandomChannelRangesTest : public ReplayTest, public testing::WithParamInterface<std::uint32_t> {
protected:
    static FinishedFile initial(std::uint32_t seed)
    {
        FinishedFile file(threeLevels(seed % 2 == 0 ? Times{10, 3000} : Times{}).close());
        if (seed % 3 == 0) {
            file.storeBookmarks({{2000, std::string(120, 'b')}});
        }
        return file;
    }
    void add()
    {
        const std::uint64_t time = m_dice.below(14) * 7;
        m_access->addChannelRangeDef(time);
        if (time != 0) {
            m_times.insert(time);
        }
    }
    void rewrite()
    {
        if (m_access->channelRangeDefAvailable() && m_dice.oneIn(2)) {
            m_access->clearChannelRangeDef();
            m_file.clearRanges();
            m_times.clear();
        } else {
            m_access->rebuildChannelRangeDef();
            m_file.rebuildRanges(m_times);
        }
    }
    void openAgain()
    {
        m_access = reopen();
        m_times = m_file.rangesRead();
    }

    Dice m_dice{GetParam()};
    FinishedFile m_file = initial(GetParam());
    std::unique_ptr<CFileAccess> m_access = open(m_file);
    Times m_times = m_file.rangesRead();
};

}  // namespace

TEST_P(RandomChannelRangesTest, EveryByteIsAsTheModelSays)
{
    for (int step = 0; step < 150; ++step) {
        const std::size_t choice = m_dice.below(10);
        if (choice < 6) {
            add();
        } else if (choice < 9) {
            rewrite();
        } else {
            openAgain();
        }
        ASSERT_EQ(rangesOf(*m_access), m_times) << "step " << step;
        if (choice >= 6) {
            ASSERT_EQ(fileBytes(), m_file.bytes()) << "step " << step;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomChannelRangesTest, testing::Range(1U, 19U));
