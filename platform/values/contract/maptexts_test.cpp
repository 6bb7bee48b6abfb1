// The texts of maps of levels and bearings, written and applied.
#include "listeners.h"

namespace {

using namespace testing;
using values::Bearing;
using values::ChannelRange;
using values::HandlerBase;

constexpr float None = std::numeric_limits<float>::quiet_NaN();

/// Puts the compression mode back.
class CompressMode {
public:
    explicit CompressMode(bool on) : m_before(HandlerBase::GetDataCompressMode())
    {
        HandlerBase::SetDataCompressMode(on);
    }
    CompressMode(const CompressMode&) = delete;
    CompressMode& operator=(const CompressMode&) = delete;
    ~CompressMode() { HandlerBase::SetDataCompressMode(m_before); }

private:
    bool m_before;
};

/// The cells of a map that takes over the text of one with these.
std::vector<float> applied(const std::vector<float>& cells)
{
    LevelMap map;
    map.SetChannelRange(ChannelRange::Even(0, 1, cells.size()));
    map.SetCells(0, cells, 1);
    LevelMap replica;
    EXPECT_TRUE(replica.ApplyRecordedState(map.GetObjectStateStringForRecording(), 0, true));
    return {replica.GetCells().begin(), replica.GetCells().end()};
}

TEST_F(Spectrum, TheFirstTextCarriesRangeAndAllCellsAndTheNextOnlyWhatChanged)
{
    const TextRecorder recorder(m_map);
    m_map.SetCell(17, -31.5F, 1'700'000'000'123'456);
    m_map.SetCell(17, -31.5F, 1'700'000'000'123'457);
    ASSERT_EQ(recorder.texts().size(), 2U);
    EXPECT_EQ(recorder.texts()[0], m_map.GetObjectStateStringForRecording().replace(0, 18, "6;1700000000123456"));
    EXPECT_EQ(recorder.texts()[1], "6;1700000000123457|51;17,[Jn");
}

TEST_F(Spectrum, OneCellOf4096TakesLessThan100Bytes)
{
    const TextRecorder recorder(m_map);
    m_map.SetCell(0, 0, 1);
    for (const float level :
         {-31.5F, None, std::numeric_limits<float>::max(), std::numeric_limits<float>::denorm_min()}) {
        m_map.SetCell(4095, level, std::numeric_limits<unsigned long long>::max());
        EXPECT_LT(recorder.last().size(), 100U);
        EXPECT_FALSE(hasRange(recorder.last()));
    }
}

TEST_F(Spectrum, TheWholeMapTakesAbout12Kilobytes)
{
    const std::vector<float> cells(Channels, -87.3F);
    m_map.SetCells(0, cells, 1'700'000'000'123'456);
    EXPECT_LT(m_map.GetObjectStateStringForRecording().size(), 12'400U);
}

TEST_F(Spectrum, ATextThatNobodyReadLeavesTheNextOneFull)
{
    m_map.CommandRecordingOn();
    m_map.SetCell(1, -1, 1);
    std::string text;
    Actor reader([&](TChangeCode) { text = m_map.GetStringForRecording(true); });
    m_map.AddObserver(&reader);
    m_map.SetCell(2, -2, 2);
    EXPECT_EQ(text, m_map.GetObjectStateStringForRecording());
}

TEST_F(Spectrum, AfterCommandRecordingWasOffTheNextTextIsFullAgain)
{
    {
        const TextRecorder recorder(m_map);
        m_map.SetCell(1, -1, 1);
    }
    const TextRecorder recorder(m_map);
    m_map.SetCell(2, -2, 2);
    EXPECT_EQ(recorder.last(), m_map.GetObjectStateStringForRecording());
}

TEST_F(Spectrum, ASecondRecorderDoesNotMakeTheTextFullAgain)
{
    const TextRecorder first(m_map);
    m_map.SetCell(1, -1, 1);
    const TextRecorder second(m_map);
    m_map.SetCell(2, -2, 2);
    EXPECT_FALSE(hasRange(second.last()));
    EXPECT_EQ(first.last(), second.last());
}

TEST_F(Spectrum, ARangeChangeCarriesRangeAndAllCells)
{
    const TextRecorder recorder(m_map);
    m_map.SetCell(1, -1, 1);
    m_map.SetChannelRange(ChannelRange::Even(0, 1, 1000));
    EXPECT_EQ(recorder.last(), m_map.GetObjectStateStringForRecording());
    m_map.SetCell(1, -1, 2);
    EXPECT_FALSE(hasRange(recorder.last()));
}

TEST_F(Spectrum, WithoutCompressionEveryTextCarriesAllCellsAndOnlyTheFirstTheRange)
{
    const CompressMode off(false);
    const TextRecorder recorder(m_map);
    m_map.SetCell(1, -1, 1);
    m_map.SetCell(2, -2, 2);
    EXPECT_TRUE(hasRange(recorder.texts()[0]));
    EXPECT_FALSE(hasRange(recorder.texts()[1]));
    EXPECT_THAT(recorder.texts()[1], HasSubstr("|50;"));
    EXPECT_GT(recorder.texts()[1].size(), 3 * Channels);
}

TEST_F(Spectrum, ManyWrittenCellsAreSentAsAllCells)
{
    const TextRecorder recorder(m_map);
    m_map.SetCell(0, 0, 1);
    m_map.SetCells(0, std::vector<float>(Channels - 1, -5), 2);
    EXPECT_THAT(recorder.last(), HasSubstr("|50;"));
    EXPECT_THAT(recorder.last(), Not(HasSubstr("51;")));
    m_map.SetCells(0, std::vector<float>(Channels / 2, -5), 3);
    EXPECT_THAT(recorder.last(), HasSubstr("|51;0,"));
}

TEST_F(Spectrum, ATimeStampAloneIsAChange)
{
    const TextRecorder recorder(m_map);
    m_map.SetCell(0, 0, 1);
    m_map.SetCells(0, {}, 99);
    EXPECT_EQ(recorder.last(), "6;99");
    LevelMap replica;
    EXPECT_TRUE(replica.ApplyRecordedState(recorder.last(), 0, true));
    EXPECT_EQ(replica.GetTimeStamp(), 99U);
}

TEST(LevelMap, LevelsComeBackWithin5Thousandths)
{
    std::vector<float> cells(Channels);
    for (std::size_t channel = 0; channel < Channels; ++channel) {
        cells[channel] = -1310.0F + 0.6397F * static_cast<float>(channel);
    }
    EXPECT_THAT(applied(cells), Pointwise(DoubleNear(0.005 + 1e-4), cells));
}

TEST(LevelMap, ValuesThatDoNotFitTheCompactCodeComeBackExactly)
{
    const std::vector<float> cells{1310.72F,
                                   -1310.73F,
                                   1e30F,
                                   -std::numeric_limits<float>::max(),
                                   std::numeric_limits<float>::infinity(),
                                   -std::numeric_limits<float>::infinity()};
    EXPECT_EQ(applied(cells), cells);
}

TEST(LevelMap, TheEdgesOfTheCompactCodeAreRoundedLikeTheRest)
{
    // From just below the lowest code to just above the highest, in steps of a quarter of the resolution.
    std::vector<float> cells;
    for (int quarter = -8; quarter <= 8; ++quarter) {
        cells.push_back(-1310.72F + 0.0025F * static_cast<float>(quarter));
        cells.push_back(1310.70F + 0.0025F * static_cast<float>(quarter));
    }
    EXPECT_THAT(applied(cells), Pointwise(DoubleNear(0.005 + 2e-4), cells));
}

TEST(LevelMap, NoMeasurementComesBackAsNone)
{
    LevelMap map;
    map.SetChannelRange(ChannelRange::Even(0, 1, 3));
    map.SetCell(1, -3, 1);
    LevelMap replica;
    ASSERT_TRUE(replica.ApplyRecordedState(map.GetObjectStateStringForRecording(), 0, true));
    EXPECT_TRUE(std::isnan(replica.GetCells()[0]));
    EXPECT_FLOAT_EQ(replica.GetCells()[1], -3);
    EXPECT_TRUE(std::isnan(replica.GetCells()[2]));
}

TEST(LevelMap, TextTellsRangeAndExtremes)
{
    LevelMap map;
    EXPECT_EQ(map.GetText(), "no channels");
    map.SetChannelRange(ChannelRange::Even(100e6, 10e6 / 4095, Channels));
    EXPECT_EQ(map.GetText(), "4096 channels, 100 MHz to 110 MHz, no measurement");
    map.SetCells(7, std::vector<float>{-97.25F, -31}, 1);
    EXPECT_EQ(map.GetText(), "4096 channels, 100 MHz to 110 MHz, -97.25 to -31.00 dB");
    map.SetChannelRange(ChannelRange::List({0.5}));
    EXPECT_EQ(map.GetText(), "1 channel, 0.5 Hz, no measurement");
}

TEST(BearingMap, TextTellsRangeAndBearings)
{
    BearingMap map;
    map.SetChannelRange(ChannelRange::Even(2.4e9, 25e3, 3));
    EXPECT_EQ(map.GetText(), "3 channels, 2.4 GHz to 2.40005 GHz, 0 bearings");
    map.SetCell(1, {12, 0, -40, 90}, 1);
    EXPECT_EQ(map.GetText(), "3 channels, 2.4 GHz to 2.40005 GHz, 1 bearing");
}

TEST(BearingMap, BearingsComeBackExactlyWithTheirOwnTime)
{
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    BearingMap map;
    map.SetChannelRange(ChannelRange::List({433.92e6, 100e6}));
    map.SetCells(0, std::vector<Bearing>{{0.1 + 0.2, none, -31.05, none}, {none, none, none, 1.0 / 3}},
                 1'700'000'000'123'457);
    BearingMap replica;
    ASSERT_TRUE(replica.ApplyRecordedState(map.GetObjectStateStringForRecording(), 0, true));
    EXPECT_EQ(replica.GetChannelRange(), map.GetChannelRange());
    EXPECT_EQ(replica.GetTimeStamp(), 1'700'000'000'123'457U);
    EXPECT_EQ(replica.GetCells()[0].azimuthDeg, 0.1 + 0.2);
    EXPECT_TRUE(std::isnan(replica.GetCells()[0].elevationDeg));
    EXPECT_EQ(replica.GetCells()[0].levelDb, -31.05);
    EXPECT_TRUE(std::isnan(replica.GetCells()[1].azimuthDeg));
    EXPECT_EQ(replica.GetCells()[1].quality, 1.0 / 3);
}

TEST(BearingMap, BothClassesTakeEachOthersTexts)
{
    BearingMap map;
    map.SetChannelRange(ChannelRange::Even(0, 1, 2));
    map.SetCell(1, {12, 3, -40, 90}, 5);
    FastBearingMap fast;
    ASSERT_TRUE(fast.ApplyRecordedState(map.GetObjectStateStringForRecording(), 0, true));
    EXPECT_EQ(fast.GetObjectStateStringForRecording(), map.GetObjectStateStringForRecording());
    fast.SetCell(0, {1, 2, 3, 4}, 6);
    ASSERT_TRUE(map.ApplyRecordedState(fast.GetObjectStateStringForRecording(), 0, true));
    EXPECT_EQ(fast.GetObjectStateStringForRecording(), map.GetObjectStateStringForRecording());
}

TEST_F(Spectrum, AnEmptyTextDoesNothing)
{
    Listener listener(m_map);
    EXPECT_TRUE(m_map.ApplyRecordedState("", 0, true));
    EXPECT_THAT(listener.codes(), ElementsAre());
}

TEST_F(Spectrum, ATextOfAnotherKindAppliesOnlyItsRange)
{
    m_map.SetCell(3, -50, 77);
    Listener listener(m_map);
    for (const char* text : {"3;1,2,3", "7;9", "7;9|51;0,1/"}) {
        EXPECT_TRUE(m_map.ApplyRecordedState(text, 0, true)) << text;
    }
    EXPECT_THAT(listener.codes(), ElementsAre());
    EXPECT_EQ(m_map.GetTimeStamp(), 77U);
    EXPECT_TRUE(m_map.ApplyRecordedState("7;9|34;5,1,2|50;1/2/", 0, true));
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged));
    EXPECT_EQ(m_map.GetChannelRange(), ChannelRange::Even(5, 1, 2));
    EXPECT_EQ(m_map.GetTimeStamp(), 0U);
}

TEST_F(Spectrum, ARangeWithoutAKindApplies)
{
    EXPECT_TRUE(m_map.ApplyRecordedState("134;5,7.5", 0, true));
    EXPECT_EQ(m_map.GetChannelRange(), ChannelRange::List({5, 7.5}));
}

TEST_F(Spectrum, AnAppliedTextNotifiesOnceAndSilentlyNobody)
{
    Listener listener(m_map);
    EXPECT_TRUE(m_map.ApplyRecordedState("6;1|34;5,1,2|50;<<<<<<|51;1,===", 0, true));
    EXPECT_THAT(listener.codes(), ElementsAre(TChangeCode::ValueChanged));
    EXPECT_TRUE(m_map.ApplyRecordedState("6;1|34;5,1,3|50;<<<<<<<<<", 0, false));
    EXPECT_EQ(m_map.size(), 3U);
    EXPECT_EQ(listener.codes().size(), 1U);
}

TEST_F(Spectrum, MalformedTextsAreRefusedAndChangeNothing)
{
    m_map.SetChannelRange(ChannelRange::Even(0, 1, 2));
    m_map.SetCell(1, -50, 77);
    const std::string before = m_map.GetObjectStateStringForRecording();
    Listener listener(m_map);
    const auto expectRefused = [this](const std::string& begin, std::initializer_list<const char*> ends) {
        for (const char* end : ends) {
            EXPECT_FALSE(m_map.ApplyRecordedState(begin + end, 0, true)) << begin << end;
        }
    };
    expectRefused("6", {"", ";", ";x", ";-1", ";1|", ";1|52;0", ";1|6;1", ";1|3;1,2,3"});
    expectRefused("6;1|50;", {"", "<<<", "<<<<<", "<<<<<<<<<", "<<<<< ", "<<<<<<|34;0,1,2"});
    expectRefused("6;1|50;(1)", {"(", "(x)", "()", "(1e99)"});
    expectRefused("6;1|51;", {"", "0", "0,", "2,<<<", "1,<<<<<<", "-1,<<<", "99999999999999999999,<<<"});
    expectRefused("6;1|34;", {"0,1", "0,1,-1", "0,1,16777217", "nan,1,1", "0,1,2|34;0,1,2"});
    expectRefused("6;1|134;", {"", "1,", "1,inf"});
    expectRefused("", {"50;<<<<<<", "34;0,1,2|50;<<<<<<", "034;0,1,2"});
    EXPECT_EQ(m_map.GetObjectStateStringForRecording(), before);
    EXPECT_THAT(listener.codes(), ElementsAre());
}

TEST(BearingMap, MalformedTextsAreRefused)
{
    BearingMap map;
    map.SetChannelRange(ChannelRange::Even(0, 1, 2));
    for (const char* text : {"7;1|50;1/", "7;1|50;1/2", "7;1|50;1/2/3/", "7;1|50;1,2,3,4,/2/", "7;1|50;1,2,3,4,5/2/",
                             "7;1|50;x/2/", "7;1|50;1 /2/", "7;1|51;1,", "7;1|51;1,2/3/"}) {
        EXPECT_FALSE(map.ApplyRecordedState(text, 0, true)) << text;
    }
}

TEST(BearingMap, ASpanOfItsOwnCellsCanBeWritten)
{
    LevelMap map;
    map.SetChannelRange(ChannelRange::Even(0, 1, 4));
    map.SetCells(0, std::vector<float>{1, 2, 3, 4}, 1);
    map.SetCells(1, map.GetCells().first(3), 2);
    EXPECT_THAT(map.GetCells(), ElementsAre(1, 1, 2, 3));
}

}  // namespace
