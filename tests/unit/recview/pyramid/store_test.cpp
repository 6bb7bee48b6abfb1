// The store of an overview, and how much it may take.
#include <numeric>

#include <pyramid/store.h>

#include "madeoverview.h"

namespace RecViewTests {
namespace {

using namespace RecView;

TEST(Stores, GiveBackWhatWasAppended)
{
    const QTemporaryDir folder;
    const std::filesystem::path path = folder.filePath("store").toStdString();
    const std::filesystem::path place = folder.filePath("kept").toStdString();
    std::mt19937 random(1);
    std::vector<std::vector<std::uint32_t>> plain(50);
    const auto compare = [&](const Store& store) {
        for (std::size_t i = 0; i < plain.size(); ++i) {
            const Column* column = store.find({1, static_cast<std::int32_t>(i), 2, 3});
            ASSERT_NE(column, nullptr);
            ASSERT_EQ(column->count<std::uint32_t>(), plain[i].size());
            const std::size_t first = plain[i].empty() ? 0 : random() % plain[i].size();
            std::vector<std::uint32_t> read(plain[i].size() - first);
            ASSERT_TRUE(column->read(first, std::span(read)));
            EXPECT_TRUE(std::equal(read.begin(), read.end(), plain[i].begin() + static_cast<std::ptrdiff_t>(first)));
            std::vector<std::uint32_t> tooMany(plain[i].size() + 1);
            EXPECT_FALSE(column->read(0, std::span(tooMany)));
        }
    };
    {
        const auto store = Store::create(path);
        EXPECT_THROW(Store::create(path), std::runtime_error);
        for (int i = 0; i < 20'000; ++i) {
            const std::size_t column = random() % plain.size();
            std::vector<std::uint32_t> entries(random() % 200);
            std::iota(entries.begin(), entries.end(), static_cast<std::uint32_t>(random()));
            plain[column].insert(plain[column].end(), entries.begin(), entries.end());
            EXPECT_TRUE(store->column({1, static_cast<std::int32_t>(column), 2, 3})
                            .append(std::span<const std::uint32_t>(entries)));
        }
        compare(*store);
        EXPECT_TRUE(store->keep(place));
        EXPECT_FALSE(store->column({1, 0, 2, 3}).append(std::uint32_t{1}));
        compare(*store);
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    const auto opened = Store::open(place);
    ASSERT_NE(opened, nullptr);
    compare(*opened);
    EXPECT_EQ(Store::open(path), nullptr);
}

TEST(Stores, AreRemovedUnlessTheyAreKept)
{
    const QTemporaryDir folder;
    const std::filesystem::path path = folder.filePath("store").toStdString();
    {
        const auto store = Store::create(path);
        EXPECT_TRUE(std::filesystem::exists(path));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

/// What the process has in memory, in bytes; 0 where that cannot be asked.
std::size_t inMemory()
{
    std::ifstream status("/proc/self/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    constexpr std::size_t PageBytes = 4096;
    return status >> all >> resident ? resident * PageBytes : 0;
}

/// Builds without keeping the records.
class Stream : public MadeOverview {
public:
    Stream() : MadeOverview(std::make_shared<MemoryRecords>()) {}
    void add(std::int32_t code, std::string text)
    {
        const auto size = static_cast<std::int64_t>(text.size()) + 30;
        MadeOverview::add({m_position, ++m_timeMs, code, std::move(text)});
        m_position += size;
    }
    [[nodiscard]] std::int64_t bytes() const { return m_position; }

private:
    std::int64_t m_position = 1000;
    std::uint64_t m_timeMs = 0;
};

void expectSmallStore(Stream& stream)
{
    EXPECT_LT(stream.finish().store().bytes() * 6, static_cast<std::uint64_t>(stream.bytes()) + 600'000);
}

void expectBounds(Stream& stream, std::size_t before, std::size_t mostBytes)
{
    expectSmallStore(stream);
#if defined(__SANITIZE_ADDRESS__)
    static_cast<void>(before + mostBytes);  // what was freed is kept for a while
#else
    EXPECT_LT(inMemory(), before + mostBytes);
#endif
}

TEST(Bounds, HoldForThousandsOfAlternatingRanges)
{
    const std::size_t before = inMemory();
    Stream stream;
    std::vector<float> levels(50, -90);
    for (int i = 0; i < 60'000; ++i) {
        const auto range = values::ChannelRange::Even(1e6 * (1 + i % 5000), 10e3, 50);
        levels[7] = i == 43'210 ? 33.25F : -90;
        stream.add(1, levelsText(range, levels, 0, true));
    }
    expectBounds(stream, before, std::size_t{100} << 20U);
}

TEST(Bounds, ABurstInOneOfVeryManyRangesShowsAtItsLevel)
{
    Stream stream;
    std::vector<float> levels(50, -90);
    for (int i = 0; i < 20'000; ++i) {
        levels[7] = i == 13'210 ? 33.25F : -90;
        stream.add(1, levelsText(values::ChannelRange::Even(1e6 * (1 + i % 5000), 10e3, 50), levels, 0, true));
    }
    const Overview& overview = stream.finish();
    for (const double high : {6e9, 60e9}) {
        EXPECT_EQ(drawn(overview, {1, Start, Start + 20'000, 0, high, 300, 200, Combine::Max, false}).highest(),
                  33.25F);
    }
}

TEST(Bounds, HoldForShortTextsThatAskForVeryManyChannels)
{
    const std::size_t before = inMemory();
    Stream stream;
    for (std::int32_t code = 1; code < 40; ++code) {
        stream.add(code, "6;0|34;0,1,16777216");
    }
    for (int i = 0; i < 100'000; ++i) {
        stream.add(1 + i % 2, "6;0|51;" + std::to_string(i % 16'777'216) + ",abc");
    }
    expectBounds(stream, before, std::size_t{200} << 20U);
}

TEST(Bounds, HoldForSingleCellsOfALargeMap)
{
    Stream stream;
    const auto range = values::ChannelRange::Even(0, 1e3, 20'000);
    stream.add(1, levelsText(range, std::vector<float>(20'000, -50), 0, true));
    for (int i = 0; i < 100'000; ++i) {
        stream.add(1, someLevelsText(static_cast<std::size_t>(i * 7 % 20'000),
                                     std::vector<float>{i == 77'777 ? 9.5F : -60}, 0));
    }
    expectSmallStore(stream);
    EXPECT_EQ(drawn(stream.growing(), {1, Start, Start + 200'000, 0, 20e6, 100, 100, Combine::Max, false}).highest(),
              9.5F);
}

TEST(Bounds, HoldForVeryManyTypes)
{
    const std::size_t before = inMemory();
    Stream stream;
    for (std::int32_t code = 1; code < 100'000; ++code) {
        stream.add(code, "1;1");
    }
    expectBounds(stream, before, std::size_t{100} << 20U);
}

}  // namespace
}  // namespace RecViewTests
