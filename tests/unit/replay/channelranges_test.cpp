// Channel range definitions: finding them in a recording, and what clearing and rebuilding leave of the file's bytes.
#include "replay_fixture.h"

namespace {

using namespace ReplayTests;
using namespace testing;

/// A recording of DF spectra with these times and texts, every one entered as a definition that is in defs.
using Spectra = std::vector<std::pair<std::uint64_t, std::string>>;
FinishedFile spectra(const Spectra& records, const Times& defs)
{
    ReferenceRecording recording;
    for (const auto& [time, text] : records) {
        recording.record(20, text, time, defs.contains(time));
    }
    return FinishedFile(recording.close());
}

/// Which records the definitions of a recording lead to.
struct Search {
    const char* name;
    Spectra records;
    Times definitions;
    std::vector<Delivery> found;
};

std::ostream& operator<<(std::ostream& out, const Search& search)
{
    return out << search.name;
}

const std::vector<Search> Searches = {
    {"ADefinitionIsFoundInTheRunOfRecordsOfItsMoment",
     {{100, "nothing"}, {101, "7;0|34;1,2,3"}, {200, "134;5,6"}},
     {100, 200},
     {{true, 101, "7;0|34;1,2,3"}, {false, 200, "134;5,6"}}},
    {"TheSearchEndsWithTheRunOfConsecutiveMilliseconds",
     {{100, "a"}, {101, "b"}, {103, "34;1,2,3"}},
     {100},
     {{false, 100, "b"}}},
    {"OnlyTheThreeCharactersMarkADefinition",
     {{100, "34"}, {101, "34,;"}, {102, "3 4;"}, {103, std::string("\0x34;", 5)}},
     {100},
     {{false, 103, std::string("\0x34;", 5)}}},
    {"OfADefinitionAtElevenTheSearchBeginsAtTen",
     {{10, "34;at ten"}, {11, "34;at eleven"}, {50, "34;later"}},
     {11, 50},
     {{true, 10, "34;at ten"}, {false, 50, "34;later"}}},
    {"OfADefinitionAtElevenTheSearchGoesOnFromTen",
     {{10, "levels"}, {11, "34;at eleven"}},
     {11},
     {{false, 11, "34;at eleven"}}},
    {"OfADefinitionAtElevenWithoutARecordAtTenTheSearchBeginsAtEleven",
     {{9, "34;at nine"}, {11, "34;at eleven"}},
     {11},
     {{false, 11, "34;at eleven"}}},
    {"OfADefinitionAtTwelveTheSearchBeginsAtTwelve",
     {{10, "34;at ten"}, {11, "34;at eleven"}, {12, "34;at twelve"}},
     {12},
     {{false, 12, "34;at twelve"}}},
    {"WithoutATextTheTimeStaysThatOfTheDefinition", {{10, "a"}, {11, "b"}, {12, "c"}}, {11}, {{false, 11, "c"}}},
};

class ChannelRangeSearch : public ReplayTest, public testing::WithParamInterface<Search> {};

}  // namespace

TEST_F(ChannelRangesTest, TheTimeZeroIsNotAddedAndATimeOnlyOnce)
{
    auto file = open(m_file);
    file->addChannelRangeDef(0);
    EXPECT_THAT(rangesOf(*file), IsEmpty());
    file->addChannelRangeDef(1500);
    file->addChannelRangeDef(1500);
    file->CRDTableToBegin();
    EXPECT_EQ(nextRange(*file), (Delivery{false, 1500, "-30"}));
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

TEST_F(ChannelRangesTest, TheBookmarksTheFirstZeroTimeOrANegativeOneEndTheTable)
{
    EXPECT_EQ(rangesOf(*open(marked(m_withRanges))), (Times{10, 1500, 3000}));
    FinishedFile stored = m_withRanges;
    stored.clearRanges();
    stored.rebuildRanges({10, 1500});
    ASSERT_EQ(stored.rangesRead(), (Times{10, 1500}));
    EXPECT_EQ(rangesOf(*open(stored)), (Times{10, 1500}));

    const auto table = static_cast<std::size_t>(m_withRanges.header().channelRangeTable);
    std::string bytes = m_withRanges.bytes();
    bytes.at(table + 9 + 7) = '\x80';
    EXPECT_EQ(rangesOf(*openBytes(bytes)), (Times{10}));
    bytes.replace(table + 9, 8, zeros(8));  // times after the zero are not looked at
    EXPECT_EQ(rangesOf(*openBytes(bytes)), (Times{10}));
}

TEST_P(ChannelRangeSearch, LeadsToTheRecordWithTheRange)
{
    auto file = open(spectra(GetParam().records, GetParam().definitions));
    file->CRDTableToBegin();
    for (const Delivery& expected : GetParam().found) {
        EXPECT_EQ(nextRange(*file), expected);
    }
    EXPECT_EQ(nextRange(*file), Nothing);
}

INSTANTIATE_TEST_SUITE_P(Every, ChannelRangeSearch, testing::ValuesIn(Searches),
                         [](const auto& search) { return std::string(search.param.name); });

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
            ASSERT_EQ(nextRange(*file), (Delivery{time != 139, time, last}));
        }
        ASSERT_EQ(nextRange(*file), Nothing);
    }
}

TEST_F(ChannelRangesTest, ADefinitionWithoutARecordDeliversTheNextLaterOne)
{
    auto file = open(spectra({{100, "34;x"}, {300, "34;y"}}, {100}));
    file->addChannelRangeDef(200);
    file->CRDTableToBegin();
    EXPECT_EQ(nextRange(*file), (Delivery{true, 100, "34;x"}));
    EXPECT_EQ(nextRange(*file), (Delivery{false, 200, "34;y"}));
}

TEST_F(ChannelRangesTest, TheDeliveryStartsAnewWheneverAskedAndWithoutAnyThereIsNone)
{
    auto file = open(m_file);
    file->CRDTableToBegin();
    EXPECT_EQ(nextRange(*file), Nothing);
    file = open(m_withRanges);
    EXPECT_EQ(nextRange(*file), Nothing);
    EXPECT_THAT(rangesOf(*file), SizeIs(3));
    EXPECT_THAT(rangesOf(*file), SizeIs(3));
}

TEST_F(ChannelRangesTest, AreAvailableOnlyInAnOpenFileThatHasATable)
{
    EXPECT_FALSE(open(m_file)->channelRangeDefAvailable());
    EXPECT_FALSE(openForReading("missing.rec")->channelRangeDefAvailable());
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

TEST_F(ChannelRangesTest, ACopySharesTheDefinitionsButHasAPlaceOfItsOwn)
{
    auto file = open(m_withRanges);
    file->CRDTableToBegin();
    CFileAccess copy(*file);
    EXPECT_EQ(nextRange(copy).time, 10U);
    EXPECT_EQ(nextRange(*file).time, 10U);
    copy.addChannelRangeDef(2000);
    EXPECT_THAT(rangesOf(*file), SizeIs(4));
    copy.clearChannelRangeDef();
    EXPECT_THAT(rangesOf(*file), IsEmpty());
    expectThreeLevels(*file);
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
