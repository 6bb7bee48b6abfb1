// Maps of levels and bearings: ranges, cells and notifications.
#include "listeners.h"

namespace {

using testing::ElementsAre;
using values::ChannelRange;
using values::HandlerBase;

TEST(ChannelRange, KnowsTheFrequencyOfAChannel)
{
    EXPECT_EQ(ChannelRange::Even(100, 25, 4).frequencyHz(3), 175);
    EXPECT_EQ(ChannelRange::Even(100, 25, 4).size(), 4U);
    const ChannelRange list = ChannelRange::List({5, 7, 6});
    EXPECT_EQ(list.frequencyHz(2), 6);
    EXPECT_EQ(list.size(), 3U);
    EXPECT_TRUE(list.isList());
    EXPECT_FALSE(ChannelRange::List({}).isList());
}

TEST(HandlerBase, CompressionIsOnAtFirst)
{
    EXPECT_TRUE(HandlerBase::GetDataCompressMode());
}

TEST(Map, IsEmptyAtFirst)
{
    const LevelMap map;
    EXPECT_EQ(map.size(), 0U);
    EXPECT_TRUE(map.GetCells().empty());
    EXPECT_EQ(map.GetTimeStamp(), 0U);
}

TEST_F(Spectrum, AnotherRangeEmptiesTheCellsAndTheTime)
{
    m_map.SetCell(3, -50, 77);
    m_map.SetChannelRange(ChannelRange::List({1, 2}));
    EXPECT_EQ(m_map.size(), 2U);
    EXPECT_TRUE(std::isnan(m_map.GetCells()[0]));
    EXPECT_EQ(m_map.GetTimeStamp(), 0U);
}

TEST_F(Spectrum, TheSameRangeAgainDoesNothing)
{
    m_map.SetCell(3, -50, 77);
    Listener listener(m_map);
    m_map.SetChannelRange(ChannelRange::Even(100e6, 2500, Channels));
    EXPECT_THAT(listener.codes(), ElementsAre());
    EXPECT_EQ(m_map.GetCells()[3], -50);
}

TEST_F(Spectrum, ARangeThatIsNotAllowedChangesNothing)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    m_map.SetCell(3, -50, 77);
    EXPECT_THROW(m_map.SetChannelRange(ChannelRange::Even(0, 1, 16'777'217)), VKException);
    EXPECT_THROW(m_map.SetChannelRange(ChannelRange::Even(nan, 1, 1)), VKException);
    EXPECT_THROW(m_map.SetChannelRange(ChannelRange::List({1, nan})), VKException);
    EXPECT_EQ(m_map.size(), Channels);
    EXPECT_EQ(m_map.GetCells()[3], -50);
}

TEST_F(Spectrum, CellsPastTheEndAreRefusedAndChangeNothing)
{
    const std::array<float, 2> cells{1, 2};
    Listener listener(m_map);
    EXPECT_THROW(m_map.SetCells(Channels - 1, cells, 5), VKException);
    EXPECT_THROW(m_map.SetCells(std::numeric_limits<std::size_t>::max(), cells, 5), VKException);
    EXPECT_THROW(m_map.SetCell(Channels, 1, 5), VKException);
    EXPECT_TRUE(std::isnan(m_map.GetCells()[Channels - 1]));
    EXPECT_EQ(m_map.GetTimeStamp(), 0U);
    EXPECT_THAT(listener.codes(), ElementsAre());
    m_map.SetCells(Channels, {}, 6);
    EXPECT_EQ(m_map.GetTimeStamp(), 6U);
}

TEST_F(Spectrum, AChangeIsAValueChangeAndCommandsThatArePendingWithCommandRecording)
{
    for (const TChangeCode code : {TChangeCode::ValueChanged, TChangeCode::CommandsPending}) {
        Listener listener(m_map);
        m_map.SetCell(0, 1, 1);
        m_map.SetChannelRange(ChannelRange::Even(0, 1, m_map.size() - 1));
        EXPECT_THAT(listener.codes(), ElementsAre(code, code));
        m_map.RemoveObserver(&listener);
        m_map.CommandRecordingOn();
    }
}

TEST_F(Spectrum, WritingTheSameCellsAgainNotifies)
{
    Listener listener(m_map);
    m_map.SetCell(0, 1, 1);
    m_map.SetCell(0, 1, 1);
    EXPECT_EQ(listener.codes().size(), 2U);
}

TEST_F(Spectrum, TheOriginatorIsNotTold)
{
    Listener listener(m_map);
    m_map.SetCell(0, 1, 1, &listener);
    m_map.SetChannelRange(ChannelRange::Even(0, 1, 2), &listener);
    EXPECT_THAT(listener.codes(), ElementsAre());
}

}  // namespace
