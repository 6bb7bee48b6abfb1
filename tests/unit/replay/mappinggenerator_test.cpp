// MappingGenerator on small recordings: which records of a span reach the map.
#include <values/tree.h>
#include <vkbase/vkexception.h>

#include "bearingrecording.h"

namespace {

using namespace ReplayTests;
using testing::ElementsAre;
using testing::IsEmpty;

// A range of two channels, and bearings of one channel that carry their number as the time stamp.
const std::string Range("7;1|34;1e+08,25000,2|50;//");
const std::string OtherRange("7;2|34;2e+08,25000,2|50;//");

std::string bearing(int number)
{
    return "7;" + std::to_string(number) + "|51;0," + std::to_string(number) + "/";
}

StoredRecord definition(std::uint64_t time, const std::string& text = Range)
{
    return {time, DfSpectrum, text, true};
}

StoredRecord spectrum(std::uint64_t time, int number)
{
    return {time, DfSpectrum, bearing(number)};
}

class MappingGeneratorTest : public MappingTest {
protected:
    void loadRecords(std::vector<StoredRecord> records)
    {
        record(records);
        ASSERT_TRUE(load());
    }
    /// The time stamps of what a map with a range takes over in a span, in order.
    std::vector<std::uint64_t> appliedIn(std::uint64_t start, std::uint64_t stop)
    {
        BearingMap map;
        map.ApplyRecordedState(Range, 0, true);
        const ChangeCounter changes(map);
        request(map, start, stop);
        return changes.stamps();
    }
};

/// Throws at every change of a map.
template <typename Exception>
class Thrower final : public IObserver {
public:
    void Update(void* /*subject*/, TChangeCode /*code*/) override
    {
        ++m_calls;
        if constexpr (std::is_same_v<Exception, VKException>) {
            throw VKException("no room", "test", "Update", 0);
        } else {
            throw Exception("no room");
        }
    }
    [[nodiscard]] int calls() const { return m_calls; }

private:
    int m_calls = 0;
};

/// Something thrown that is no std::exception.
struct Oddity {
    explicit Oddity(const char* /*text*/) {}
};

}  // namespace

TEST_F(MappingGeneratorTest, LoadingTellsTheSpanOfTheHeader)
{
    std::vector<StoredRecord> records{definition(10)};
    record(records);
    EXPECT_TRUE(load());
    EXPECT_EQ(m_start, micros(0));
    EXPECT_EQ(m_stop, micros(60'000));
}

TEST_F(MappingGeneratorTest, TheSecondTextIsWhereItsFileLooksForItsValues)
{
    std::vector<StoredRecord> records{definition(10)};
    record(records);
    values::Tree tree;
    const std::string path = TestSupport::fileName8(filePath(Name));
    EXPECT_TRUE(m_generator.LoadRecording(m_start, m_stop, path.c_str(), "/Map"));
    EXPECT_NE(tree.Find("/Map/REC_UNCFILEPATH"), nullptr);
    EXPECT_EQ(tree.Find("/REC_UNCFILEPATH"), nullptr);
    EXPECT_TRUE(load());
    EXPECT_NE(tree.Find("/REC_UNCFILEPATH"), nullptr);
}

TEST_F(MappingGeneratorTest, TheRangeEndsAtANulAndRecordsDoNot)
{
    loadRecords({definition(10, Range + std::string("\0|51;0,9/", 10)), spectrum(100, 5)});
    BearingMap map;
    request(map, 200, 100);
    EXPECT_EQ(stateOf(map), stateAfter({Range}));
}

TEST_F(MappingGeneratorTest, WhatIsThrownWhileTheRangeIsAppliedReachesTheCaller)
{
    loadRecords({definition(10), spectrum(100, 5)});
    BearingMap map;
    Thrower<std::runtime_error> thrower;
    map.AddObserver(&thrower);
    EXPECT_THROW(request(map, 50, 300), std::runtime_error);
    map.RemoveObserver(&thrower);
}

TEST_F(MappingGeneratorTest, AnotherRecordingTakesThePlaceOfTheFirst)
{
    loadRecords({definition(10), spectrum(100, 5)});
    loadRecords({definition(10), spectrum(100, 6)});
    EXPECT_THAT(appliedIn(50, 200), ElementsAre(1, 6));
    TestSupport::writeFile(filePath(Name), "");
    EXPECT_FALSE(load());
    EXPECT_THAT(appliedIn(50, 200), IsEmpty());
}

TEST_F(MappingGeneratorTest, ARecordingWithoutDefinitionsLeavesTheMapUnchanged)
{
    loadRecords({{10, DfSpectrum, Range}, spectrum(100, 5)});
    EXPECT_THAT(appliedIn(10, 1000), IsEmpty());
}

TEST_F(MappingGeneratorTest, WhatIsNoRecordingIsNotLoadedAndLeavesTheMapUntouched)
{
    EXPECT_THAT(appliedIn(0, 1000), IsEmpty());
    EXPECT_FALSE(load());
    TestSupport::writeFile(filePath(Name), "1#0#an old recording");
    EXPECT_FALSE(load());
    EXPECT_THAT(appliedIn(0, 1000), IsEmpty());
}

TEST_F(MappingGeneratorTest, AStartBeforeTheFirstDefinitionAppliesNoRange)
{
    loadRecords({spectrum(20, 5), definition(100, OtherRange), spectrum(200, 6)});
    BearingMap map;
    map.ApplyRecordedState(Range, 0, true);
    request(map, 20, 50);
    EXPECT_EQ(stateOf(map), stateAfter({Range, bearing(5)}));
}

TEST_F(MappingGeneratorTest, AStartLaterThanTheStopAppliesTheRangeOnly)
{
    loadRecords({definition(10), spectrum(100, 5), spectrum(200, 6)});
    BearingMap map;
    const ChangeCounter changes(map);
    request(map, 200, 100);
    EXPECT_EQ(stateOf(map), stateAfter({Range}));
    EXPECT_THAT(changes.stamps(), ElementsAre(1));
}

TEST_F(MappingGeneratorTest, OfTwoDefinitionsTheSecondIsInForceExactlyAtItsTime)
{
    loadRecords({definition(10), definition(100, OtherRange), spectrum(200, 6)});
    BearingMap map;
    request(map, 100, 50);
    EXPECT_EQ(stateOf(map), stateAfter({OtherRange}));
    request(map, 99, 50);
    EXPECT_EQ(stateOf(map), stateAfter({Range}));
}

TEST_F(MappingGeneratorTest, EverySpectrumFromTheStartToTheStopIsAppliedAndRequestsDoNotDisturbEachOther)
{
    loadRecords({definition(10), spectrum(100, 5), spectrum(200, 6), spectrum(300, 7), spectrum(301, 8)});
    for (int round = 0; round < 3; ++round) {
        EXPECT_THAT(appliedIn(100, 300), ElementsAre(1, 5, 6, 7));
        EXPECT_THAT(appliedIn(101, 299), ElementsAre(1, 6));
        EXPECT_THAT(appliedIn(200, 200), ElementsAre(1, 6));
        EXPECT_THAT(appliedIn(10, 100), ElementsAre(1, 1, 5));
        EXPECT_THAT(appliedIn(0, 200), ElementsAre(1, 5, 6));
        EXPECT_THAT(appliedIn(110, 120), ElementsAre(1, 6)) << "no record there: the one behind it";
        EXPECT_THAT(appliedIn(5000, 6000), ElementsAre(1, 8)) << "behind the last record: that one";
        EXPECT_THAT(appliedIn(50, 1'000'000'000), ElementsAre(1, 5, 6, 7, 8));
    }
}

TEST_F(MappingGeneratorTest, OnlySpectraOfDirectionFindingAreApplied)
{
    loadRecords({definition(10), {50, Level, bearing(40)}, spectrum(100, 5), {150, 1, OtherRange}, spectrum(200, 6)});
    EXPECT_THAT(appliedIn(20, 300), ElementsAre(1, 5, 6));
}

TEST_F(MappingGeneratorTest, ADefinitionOfAnotherKeywordGivesTheRange)
{
    loadRecords({{10, 1, "6;9|34;3e+08,1,2|50;{{{{{{", true}, spectrum(100, 5)});
    BearingMap map;
    request(map, 50, 100);
    EXPECT_EQ(stateOf(map), stateAfter({"34;3e+08,1,2", bearing(5)}));
}

TEST_F(MappingGeneratorTest, FromOffsetZeroTheWalkBeginsAtTheFirstRecord)
{
    loadRecords({spectrum(10, 4), definition(20), spectrum(100, 5), spectrum(200, 6)});
    EXPECT_THAT(appliedIn(0, 100), ElementsAre(4, 1, 5));
    EXPECT_THAT(appliedIn(0, 0), ElementsAre(4));
}

TEST_F(MappingGeneratorTest, AStillPictureIsThereFromTheReportedStart)
{
    const std::string picture("7;1|34;1e+08,25000,2|50;//|51;0,5/");
    loadRecords({{10, Level, "3"}, {11, DfSpectrum, picture, true}});
    BearingMap map;
    m_generator.RequestMapping(map, m_start, m_stop);
    EXPECT_EQ(map.size(), 2U);
    EXPECT_EQ(stateOf(map), stateAfter({picture}));
}

TEST_F(MappingGeneratorTest, TheReportedStopIncludesRecordsThatCollisionsMovedBehindIt)
{
    loadRecords({definition(10), spectrum(59'999, 5), spectrum(60'000, 6), spectrum(60'000, 7), spectrum(60'000, 8)});
    EXPECT_THAT(appliedIn(59'999, 60'000), ElementsAre(1, 5, 6, 7, 8));
    EXPECT_THAT(appliedIn(59'999, 59'999), ElementsAre(1, 5));
    EXPECT_THAT(appliedIn(59'999, 60'001), ElementsAre(1, 5, 6, 7));
    EXPECT_THAT(appliedIn(60'001, 60'000), ElementsAre(1));
}

TEST_F(MappingGeneratorTest, AfterClearingTheTableThereIsNoRange)
{
    std::vector<StoredRecord> records{definition(10), spectrum(100, 5)};
    record(records);
    openForReading(Name)->clearChannelRangeDef();
    ASSERT_TRUE(load());
    EXPECT_THAT(appliedIn(20, 200), ElementsAre(5));
}

TEST_F(MappingGeneratorTest, TheReportedSpanAppliesEveryBearingOnce)
{
    loadRecords({definition(10), spectrum(100, 5), spectrum(200, 6), spectrum(60'000, 7)});
    BearingMap map;
    map.ApplyRecordedState(Range, 0, true);
    const ChangeCounter changes(map);
    m_generator.RequestMapping(map, m_start, m_stop);
    EXPECT_THAT(changes.stamps(), ElementsAre(1, 5, 6, 7));
}

TEST_F(MappingGeneratorTest, ATimeBeforeTheRecordingCountsByItsDistanceAndPartsOfAMillisecondAreCutOff)
{
    loadRecords({definition(10), spectrum(100, 5), spectrum(200, 6)});
    for (const auto& [start, stop] :
         {std::pair(micros(0) - 100'000, micros(100)), std::pair(micros(100) + 999, micros(199) + 999)}) {
        BearingMap map;
        const ChangeCounter changes(map);
        m_generator.RequestMapping(map, start, stop);
        EXPECT_THAT(changes.stamps(), ElementsAre(1, 5));
    }
}

TEST_F(MappingGeneratorTest, ACopyRequestsFromTheSameRecording)
{
    loadRecords({definition(10), spectrum(100, 5)});
    {
        Recording2::MappingGenerator copy(m_generator);
        BearingMap map;
        copy.RequestMapping(map, micros(50), micros(100));
        EXPECT_EQ(stateOf(map), stateAfter({Range, bearing(5)}));
    }
    EXPECT_THAT(appliedIn(50, 100), ElementsAre(1, 5));
}

TEST_F(MappingGeneratorTest, ATextThatCannotBeUnderstoodIsPassedOver)
{
    loadRecords({definition(10), spectrum(100, 5), {150, DfSpectrum, "7;6|51;99,1/"}, spectrum(200, 7)});
    EXPECT_THAT(appliedIn(20, 300), ElementsAre(1, 5, 7));
}

namespace {

template <typename Exception>
int callsOfAThrower(Recording2::MappingGenerator& generator, long long start, long long stop)
{
    BearingMap map;
    map.ApplyRecordedState(Range, 0, true);
    Thrower<Exception> thrower;
    map.AddObserver(&thrower);
    EXPECT_NO_THROW(generator.RequestMapping(map, start, stop));
    map.RemoveObserver(&thrower);
    return thrower.calls();
}

}  // namespace

TEST_F(MappingGeneratorTest, ExceptionsWhileARecordIsAppliedAreDropped)
{
    loadRecords({definition(10), spectrum(100, 5), spectrum(200, 6), spectrum(300, 7)});
    EXPECT_EQ(callsOfAThrower<std::runtime_error>(m_generator, micros(0), micros(300)), 4);
    EXPECT_EQ(callsOfAThrower<VKException>(m_generator, micros(0), micros(300)), 4);
    EXPECT_EQ(callsOfAThrower<Oddity>(m_generator, micros(0), micros(300)), 4);
}
