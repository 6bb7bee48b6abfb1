// Columns: what is appended is read, also after the file was kept and opened again.
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace RecViewTests
