// Memory: the road of a change from SetValue to the file takes none for a record (only the time index grows, by
// doubling), and a recorder that finds none left is not made.
#include "loaded_recorder.h"
#include "station.h"
#include "vkbase/contract/allocationcount.h"

namespace RecorderTests {
namespace {

using TestSupport::allocations;
using TestSupport::failAllocation;

constexpr std::size_t Records = 20'000;
constexpr std::size_t IndexGrowth = 16;  // two arrays that double
// The journal's header is made again every second, for the texts of the device that nobody tells about.
constexpr std::size_t Headers = Records / 1'000 * 16;

class SteadyState : public testing::Test {
protected:
    void SetUp() override
    {
#if defined(_WIN32)
        GTEST_SKIP() << "a DLL does not take its program's operator new";
#endif
    }
    SteadyState()
    {
        station.addAllKeywords();
        recorder = makeLoadedRecorder("Rx");
    }

    /// Allocations of many changes, after some that let the buffers grow.
    template <typename Change>
    std::size_t allocationsOf(const Change& change, std::size_t many = Records, std::size_t some = 1'000)
    {
        station.switchOn();
        std::size_t before = 0;
        for (std::size_t number = 0; number < some + many; ++number) {
            before = number == some ? allocations() : before;
            station.clock.advanceMs(1);
            change(number);
        }
        const std::size_t taken = allocations() - before;
        station.switchOff();
        EXPECT_GE(parsed(station.fileName()).records.size(), some + many);
        return taken;
    }

    Station station;
    LoadedRecorder recorder;
};

TEST_F(SteadyState, NoRecorderIsMadeWhereMemoryRunsOut)
{
    recorder.reset();
    bool made = false;
    for (std::size_t number = 1; !made; ++number) {
        const TraceLog log;
        const std::size_t failing = allocations() + number;
        failAllocation(failing);
        const LoadedRecorder attempt(plugin().create(L"Rx"));
        made = failing > allocations();
        failAllocation(0);
        ASSERT_EQ(attempt != nullptr, made) << "allocation " << number;
        const TraceLog::Line* line = log.find("std::bad_alloc");
        ASSERT_EQ(line == nullptr, made);
        if (!made) {
            EXPECT_EQ(line->source, "devicecontrol\\recording2\\loadinterface");
            EXPECT_EQ(line->line, 21);
        }
    }
    makeLoadedRecorder("Rx");
    EXPECT_FALSE(station.value<Flag>("/Devices/Rx1/REC_LOADED").GetValue());
}

TEST_F(SteadyState, TheCountersSeeThePlugIn)
{
    const std::size_t before = allocations();
    makeLoadedRecorder(QString());
    EXPECT_GT(allocations(), before + 48);
}

TEST_F(SteadyState, ANumberIsRecordedWithoutAllocating)
{
    auto& level = station.value<Number>("/LEVEL");
    EXPECT_LE(allocationsOf([&level](std::size_t number) { level.SetValue(static_cast<double>(number) / 7); }),
              IndexGrowth + Headers);
}

TEST_F(SteadyState, ALevelMapOf4096CellsIsRecordedWithoutAllocating)
{
    auto& spectrum = station.value<LevelMap>("/Devices/Rx1/Scn/RfSpectrum");
    spectrum.SetChannelRange(values::ChannelRange::Even(88e6, 5e3, 4'096));
    std::vector<float> cells(64);
    EXPECT_LE(allocationsOf([&](std::size_t number) {
                  cells.assign(64, -static_cast<float>(number % 128));
                  spectrum.SetCells(number % 63 * 64, cells, station.clock.now);
              }),
              IndexGrowth + Headers);
}

TEST_F(SteadyState, AWholeLevelMapIsRecordedWithoutAllocating)
{
    auto& spectrum = station.value<LevelMap>("/Devices/Rx1/Scn/RfSpectrum");
    spectrum.SetChannelRange(values::ChannelRange::Even(88e6, 5e3, 4'096));
    std::vector<float> cells(4'096);
    const auto change = [&](std::size_t number) {
        cells.assign(4'096, -static_cast<float>(number % 128));
        spectrum.SetCells(0, cells, station.clock.now);
    };
    EXPECT_LE(allocationsOf(change, 500, 100), 4U);
}

}  // namespace
}  // namespace RecorderTests
