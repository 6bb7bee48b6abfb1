// The way of a change - set, notify, read the text - takes no memory once its buffers have grown.
#include <cstddef>

#include "listeners.h"
#include "vkbase/contract/allocationcount.h"

namespace {

using TestSupport::allocations;

/// Reads the text of every change, as a recorder does.
class Reader final : public IObserver {
public:
    explicit Reader(values::ValueBase& value) : m_value(value)
    {
        value.AddObserver(this);
        value.CommandRecordingOn();
    }
    void Update(void* /*subject*/, TChangeCode /*code*/) override
    {
        m_read += m_value.GetStringForRecording(true).size();
    }
    [[nodiscard]] std::size_t read() const { return m_read; }

private:
    values::ValueBase& m_value;
    std::size_t m_read = 0;
};

void expectNoAllocation(values::ValueBase& value, const std::function<void(int)>& change)
{
    Reader reader(value);
    for (int warm = 0; warm < 4; ++warm) {
        change(warm);
    }
    const std::size_t readBefore = reader.read();
    const std::size_t before = allocations();
    for (int round = 0; round < 100; ++round) {
        change(round);
    }
    const std::size_t after = allocations();
    EXPECT_EQ(after - before, 0U);
    EXPECT_GT(reader.read(), readBefore + 200);
    value.RemoveObserver(&reader);
}

class Allocation : public testing::Test {
protected:
    void SetUp() override
    {
#if defined(_WIN32)
        GTEST_SKIP() << "a DLL does not take its program's operator new";
#endif
    }
};

TEST_F(Allocation, TheCounterCounts)
{
    const std::size_t before = allocations();
    const std::string longText(1000, 'x');
    EXPECT_GT(allocations(), before) << longText;
}

TEST_F(Allocation, ANumberTakesNone)
{
    NumberWithOffset number;
    expectNoAllocation(number, [&](int round) {
        number.SetValue(1e8 / 3 + round);
        number.SetOffset(-1e8 / 7 - round);
    });
}

TEST_F(Allocation, ATextTakesNone)
{
    Text text;
    const QString first = QString::fromUtf8("Nürnberg Süd, a text that is longer than any short buffer");
    const QString second = QString::fromUtf8("München Ost; a text that is longer than any short buffer");
    expectNoAllocation(text, [&](int round) { text.SetValue(round % 2 == 0 ? second : first); });
}

TEST_F(Allocation, ASelectionTakesNone)
{
    values::ValueSelection selection;
    selection.AddItem(new values::SelectionItem("Off", 0, 0));
    selection.AddItem(new values::SelectionItem("On", 1, 1));
    expectNoAllocation(selection, [&](int round) { selection.SelectKey(round % 2); });
}

TEST_F(Allocation, AWholeLevelMapTakesNone)
{
    LevelMap map;
    map.SetChannelRange(values::ChannelRange::Even(0, 1, 4096));
    const std::vector<float> cells(4096, -87.3F);
    expectNoAllocation(map, [&](int round) { map.SetCells(0, cells, static_cast<unsigned long long>(round)); });
}

TEST_F(Allocation, OneLevelCellTakesNone)
{
    LevelMap map;
    map.SetChannelRange(values::ChannelRange::Even(0, 1, 4096));
    expectNoAllocation(map, [&](int round) { map.SetCell(static_cast<std::size_t>(round), -87.3F, 1); });
}

TEST_F(Allocation, ABearingMapTakesNone)
{
    BearingMap map;
    map.SetChannelRange(values::ChannelRange::Even(0, 1, 100));
    const std::vector<values::Bearing> cells(100, {123.456, -1.0 / 3, -87.3, 99.9});
    expectNoAllocation(map, [&](int round) { map.SetCells(0, cells, static_cast<unsigned long long>(round)); });
}

}  // namespace
