// The bytes of the journal: what is whole is told from what is not.
#include <recording2/format/journal.h>
#include <recording2/format/wordchecksum.h>

#include "support/testing.h"

namespace FormatTests {
namespace {

namespace Journal = Recording2::Format::Journal;

constexpr std::uint64_t Nonce = 0x1234'5678'9abc'def1U;
const Journal::Identity Ours{Nonce};

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
    Journal::putIdentity(page(), {Nonce, 2});
    EXPECT_EQ(Journal::getIdentity(page())->nonce, Nonce);
    EXPECT_EQ(Journal::getIdentity(page())->mode, 2U);
    expectEveryByteCounts(0, 32, [&] { return Journal::getIdentity(page()).has_value(); });
}

TEST_F(JournalPage, OfZerosTellsNothing)
{
    EXPECT_FALSE(Journal::getIdentity(page()));
    EXPECT_FALSE(Journal::getHeader(page(), Ours));
    EXPECT_FALSE(Journal::getTypes(page(), Ours));
    EXPECT_FALSE(Journal::getStopTime(page(), Ours, 0));
    EXPECT_FALSE(Journal::unseal(Ours, Journal::HandedOffset, 0));
}

TEST_F(JournalPage, HoldsTheHeaderWrittenLast)
{
    Journal::putHeader(page(), Nonce, 1, "first");
    Journal::putHeader(page(), Nonce, 2, "second");
    Journal::putHeader(page(), Nonce, 3, "third");
    EXPECT_EQ(Journal::getHeader(page(), Ours), "third");
    EXPECT_FALSE(Journal::getHeader(page(), {Nonce + 1}));
}

TEST_F(JournalPage, GoesBackToTheHeaderBeforeWhereTheLastIsDamaged)
{
    Journal::putHeader(page(), Nonce, 1, "first");
    Journal::putHeader(page(), Nonce, 2, "second");
    constexpr std::size_t Second = Journal::HeadersOffset;
    expectEveryByteCounts(Second, Second + Journal::HeaderSlotHeadBytes + 6,
                          [&] { return Journal::getHeader(page(), Ours) == "second"; });
    page()[Second + Journal::HeaderSlotHeadBytes] = 'S';
    EXPECT_EQ(Journal::getHeader(page(), Ours), "first");
}

TEST_F(JournalPage, KeepsTheStopTimesOfTheLastTwoRecords)
{
    Journal::putStopTime(page(), Nonce, 4, 1'000);
    Journal::putStopTime(page(), Nonce, 5, 2'000);
    EXPECT_EQ(Journal::getStopTime(page(), Ours, 4), 1'000U);
    EXPECT_EQ(Journal::getStopTime(page(), Ours, 5), 2'000U);
    EXPECT_FALSE(Journal::getStopTime(page(), Ours, 3));
    EXPECT_FALSE(Journal::getStopTime(page(), Ours, 6));
}

TEST(JournalNumber, IsSealedWithItsPlace)
{
    const std::uint64_t sealed = Journal::seal(Nonce, Journal::TailStartOffset, 2'147'483'647);
    EXPECT_EQ(Journal::unseal(Ours, Journal::TailStartOffset, sealed), 2'147'483'647U);
    EXPECT_FALSE(Journal::unseal(Ours, Journal::HandedOffset, sealed));
    for (unsigned int bit = 0; bit < 64; ++bit) {
        EXPECT_FALSE(Journal::unseal(Ours, Journal::TailStartOffset, sealed ^ std::uint64_t{1} << bit)) << bit;
    }
}

TEST(JournalEntry, IsSoundWithoutItsRecordAndKnowsIt)
{
    alignas(8) char bytes[Journal::EntryBytes] = {};
    EXPECT_TRUE(Journal::isNone(bytes, Ours));
    Journal::putEntry(bytes, Nonce, 7,
                      {60'000, 2'147'483'647, true, true, Journal::recordChecksum(Nonce, 7, 12, "data")});
    EXPECT_FALSE(Journal::isNone(bytes, Ours));
    const Journal::Entry read = Journal::getEntry(bytes, Ours, 7);
    EXPECT_THAT(read, testing::FieldsAre(60'000U, 2'147'483'647, true, true, testing::_));
    EXPECT_FALSE(Journal::getEntry(bytes, Ours, 8).sound);
    EXPECT_TRUE(Journal::isRecordOf(read, Ours, 7, 12, "data"));
    EXPECT_FALSE(Journal::isRecordOf(read, Ours, 7, 12, "date"));
    EXPECT_FALSE(Journal::isRecordOf(read, Ours, 7, 13, "data"));
    EXPECT_FALSE(Journal::isRecordOf(read, Ours, 8, 12, "data"));
}

TEST(JournalEntry, WithAnyBitFlippedIsNotSound)
{
    alignas(8) char bytes[Journal::EntryBytes] = {};
    Journal::putEntry(bytes, Nonce, 7, {60'000, 500, false, true, Journal::recordChecksum(Nonce, 7, 12, "data")});
    for (unsigned int bit = 0; bit < 8 * sizeof bytes; ++bit) {
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
        EXPECT_FALSE(Journal::getEntry(bytes, Ours, 7).sound) << bit;
        bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
    }
}

TEST(RecordChecksum, CoversEveryBit)
{
    for (const std::size_t size : {1U, 8U, 64U, 65U, 300U, 20'000U}) {
        std::string bytes(size, 'a');
        const std::uint64_t whole = Journal::recordChecksum(Nonce, 0, 1, bytes);
        for (std::size_t bit = 0; bit<8 * size; bit += size> 300 ? 101 : 1) {
            bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
            EXPECT_NE(Journal::recordChecksum(Nonce, 0, 1, bytes), whole) << size << ' ' << bit;
            bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ 1 << bit % 8);
        }
    }
}

TEST(WordChecksum, CoversEveryByte)
{
    const auto checksum = [](const std::string& bytes) {
        return Recording2::Format::WordChecksum(Nonce).add(bytes).value();
    };
    for (std::size_t size = 1; size <= 64; ++size) {
        const std::string bytes(size, 'a');
        for (std::size_t i = 0; i < size; ++i) {
            std::string damaged = bytes;
            damaged[i] = 'b';
            EXPECT_NE(checksum(damaged), checksum(bytes)) << size << ' ' << i;
        }
    }
}

}  // namespace
}  // namespace FormatTests
