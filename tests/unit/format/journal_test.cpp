// The bytes of the journal: what is whole is told from what is not.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include <recording2/format/journal.h>

namespace FormatTests {
namespace {

namespace Journal = Recording2::Format::Journal;

constexpr std::uint64_t Salt = 0x1234'5678'9abc'def1U;

class JournalPage : public testing::Test {
protected:
    /// Flips each of the bytes between two offsets in turn and asks whether that is noticed.
    template <typename IsKnown>
    void expectEveryByteCounts(std::size_t begin, std::size_t end, IsKnown isKnown)
    {
        ASSERT_TRUE(isKnown());
        for (std::size_t offset = begin; offset < end; ++offset) {
            m_page[offset] = static_cast<char>(m_page[offset] ^ 0x10);
            EXPECT_FALSE(isKnown()) << offset;
            m_page[offset] = static_cast<char>(m_page[offset] ^ 0x10);
        }
    }
    char* page() { return m_page.data(); }

private:
    alignas(8) std::string m_page = std::string(Journal::PageBytes, '\0');
};

TEST_F(JournalPage, TellsItsIdentityOnlyWhole)
{
    Journal::putIdentity(page(), {Salt, 2});
    EXPECT_EQ(Journal::getIdentity(page())->salt, Salt);
    EXPECT_EQ(Journal::getIdentity(page())->mode, 2U);
    expectEveryByteCounts(0, 32, [&] { return Journal::getIdentity(page()).has_value(); });
}

TEST_F(JournalPage, OfZerosTellsNothing)
{
    EXPECT_FALSE(Journal::getIdentity(page()));
    EXPECT_FALSE(Journal::getHeader(page(), Salt));
    EXPECT_FALSE(Journal::getTypes(page(), Salt));
    EXPECT_FALSE(Journal::getStopTime(page(), Salt, 0));
    EXPECT_FALSE(Journal::unseal(Salt, Journal::HandedOffset, 0));
}

TEST_F(JournalPage, HoldsTheHeaderWrittenLast)
{
    Journal::putHeader(page(), Salt, 1, "first");
    Journal::putHeader(page(), Salt, 2, "second");
    Journal::putHeader(page(), Salt, 3, "third");
    EXPECT_EQ(Journal::getHeader(page(), Salt), "third");
    EXPECT_FALSE(Journal::getHeader(page(), Salt + 1));
}

TEST_F(JournalPage, GoesBackToTheHeaderBeforeWhereTheLastIsDamaged)
{
    Journal::putHeader(page(), Salt, 1, "first");
    Journal::putHeader(page(), Salt, 2, "second");
    constexpr std::size_t Second = Journal::HeadersOffset;
    expectEveryByteCounts(Second, Second + Journal::HeaderSlotHeadBytes + 6,
                          [&] { return Journal::getHeader(page(), Salt) == "second"; });
    page()[Second + Journal::HeaderSlotHeadBytes] = 'S';
    EXPECT_EQ(Journal::getHeader(page(), Salt), "first");
}

TEST_F(JournalPage, KeepsTheStopTimesOfTheLastTwoRecords)
{
    Journal::putStopTime(page(), Salt, 4, 1'000);
    Journal::putStopTime(page(), Salt, 5, 2'000);
    EXPECT_EQ(Journal::getStopTime(page(), Salt, 4), 1'000U);
    EXPECT_EQ(Journal::getStopTime(page(), Salt, 5), 2'000U);
    EXPECT_FALSE(Journal::getStopTime(page(), Salt, 3));
    EXPECT_FALSE(Journal::getStopTime(page(), Salt, 6));
}

TEST(JournalNumber, IsSealedWithItsPlace)
{
    const std::uint64_t sealed = Journal::seal(Salt, Journal::TailStartOffset, 2'147'483'647);
    EXPECT_EQ(Journal::unseal(Salt, Journal::TailStartOffset, sealed), 2'147'483'647U);
    EXPECT_FALSE(Journal::unseal(Salt, Journal::HandedOffset, sealed));
    for (unsigned int bit = 0; bit < 64; ++bit) {
        EXPECT_FALSE(Journal::unseal(Salt, Journal::TailStartOffset, sealed ^ std::uint64_t{1} << bit)) << bit;
    }
}

TEST(JournalEntry, IsSoundWithoutItsRecordButNotChecked)
{
    Journal::Entry entry{60'000, 2'147'483'647, true, 0};
    entry.check = Journal::EntryCheck(Salt, 7, entry).with(12, "data");
    char bytes[Journal::EntryBytes];
    Journal::putEntryBody(bytes, entry);
    Journal::putInt32(bytes + Journal::EntryCheckOffset, entry.check);
    const Journal::Entry read = Journal::getEntry(bytes);
    EXPECT_EQ(read.timeMs, 60'000U);
    EXPECT_EQ(read.position, 2'147'483'647);
    EXPECT_TRUE(read.channelRange);
    EXPECT_TRUE(Journal::isSound(Salt, 7, read));
    EXPECT_FALSE(Journal::isSound(Salt, 8, read));
    EXPECT_NE(Journal::EntryCheck(Salt, 7, read).with(12, "date"), read.check);
    EXPECT_NE(Journal::EntryCheck(Salt, 7, read).with(13, "data"), read.check);
}

TEST(JournalCheck, CoversEveryByteOfShortRecordsAndEverySectorOfLongOnes)
{
    const auto check = [](const std::string& bytes) {
        return Journal::Check(Salt).addSample(0, bytes.data(), bytes.size()).value();
    };
    for (std::size_t size = 0; size <= 64; ++size) {
        const std::string bytes(size, 'a');
        EXPECT_NE(check(bytes), check(bytes + 'a'));
        for (std::size_t i = 0; i < size; ++i) {
            std::string damaged = bytes;
            damaged[i] = 'b';
            EXPECT_NE(check(damaged), check(bytes)) << size << ' ' << i;
        }
    }
    const std::string spectrum(20'000, 'a');
    for (std::size_t sector = 0; sector + 512 <= spectrum.size(); sector += 100) {
        std::string damaged = spectrum;
        damaged.replace(sector, 512, 512, '\0');
        EXPECT_NE(check(damaged), check(spectrum)) << sector;
    }
}

}  // namespace
}  // namespace FormatTests
