// What does not give its check is not shown while a recording is written: half an entry, another's, a damaged record.
#include <recording2/format/journal.h>

#include "followingtesting.h"

namespace RecorderTests {
namespace {

namespace Journal = Recording2::Format::Journal;

/// Writes into the journal behind the recorder's back.
class Forger {
public:
    explicit Forger(const QString& recording) : m_file(recording + ".journal")
    {
        EXPECT_TRUE(m_file.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
        const QByteArray page = m_file.read(Journal::PageBytes);
        m_identity = *Journal::getIdentity(page.constData());
        m_tailStart = *Journal::unseal(m_identity, Journal::TailStartOffset,
                                       Recording2::Format::getInt64(page.constData() + Journal::TailStartOffset));
    }
    void putEntry(std::uint64_t number, const Journal::Entry& entry, std::size_t bytes)
    {
        char slot[Journal::EntryBytes];
        Journal::putEntry(slot, m_identity.nonce, number, entry);
        write(Journal::LatestOffset + number * Journal::EntryBytes, {slot, bytes});
    }
    void putIntoTail(std::int64_t position, std::string_view bytes)
    {
        write(Journal::TailOffset + static_cast<std::size_t>(position) - m_tailStart, bytes);
    }
    [[nodiscard]] std::uint64_t check(std::uint64_t number, std::int32_t code, std::string_view data) const
    {
        return Journal::recordChecksum(m_identity.nonce, number, code, data);
    }

private:
    void write(std::size_t offset, std::string_view bytes)
    {
        EXPECT_TRUE(m_file.seek(static_cast<qint64>(offset)));
        EXPECT_EQ(m_file.write(bytes.data(), static_cast<qint64>(bytes.size())), static_cast<qint64>(bytes.size()));
    }

    QFile m_file;
    Journal::Identity m_identity;
    std::uint64_t m_tailStart = 0;
};

TEST_F(RecorderFollowing, HalfAnEntryOrOneWithoutItsRecordIsNotShown)
{
    record();
    Reader reader(open());
    EXPECT_TRUE(reader.look());
    const std::size_t seen = reader.seen.size();
    const Record last = reader.seen.back();
    const auto position = static_cast<std::int32_t>(
        last.position + static_cast<std::int64_t>(std::to_string(last.code).size() + 1 +
                                                  std::to_string(last.data.size()).size() + 1 + last.data.size()));
    Forger forger(open());
    const Journal::Entry forged{9'999, position, false, true, forger.check(seen, 8, "forged")};
    forger.putIntoTail(position, "8#6#forged");
    for (const std::size_t bytes : {8U, 16U, 20U, 22U}) {
        forger.putEntry(seen, forged, bytes);
        EXPECT_TRUE(reader.look());
        EXPECT_EQ(reader.seen.size(), seen) << bytes;
    }
    forger.putEntry(seen, forged, Journal::EntryBytes);
    for (const char* other : {"8#6#forgeD", "9#6#forged", "8#7#forged", "8#5#forged", "8#-6#forge", "8#999999999#",
                              "8#6forged#", " 8#6#forged"}) {
        forger.putIntoTail(position, other);
        EXPECT_TRUE(reader.look());
        EXPECT_EQ(reader.seen.size(), seen) << other;
    }
    forger.putIntoTail(position, "8#6#forged#");
    EXPECT_TRUE(reader.look());
    EXPECT_EQ(reader.seen.size(), seen + 1);  // whole, it is a record like any other
}

TEST_F(RecorderFollowing, WhatStandsInASlotOfAnEarlierRoundOrAnotherJournalIsNoEntry)
{
    record();
    Reader reader(open());
    EXPECT_TRUE(reader.look());
    const std::size_t seen = reader.seen.size();
    Forger forger(open());
    const std::int32_t position = static_cast<std::int32_t>(reader.seen.back().position);
    const Journal::Entry again{9'999, position, false, true,
                               forger.check(seen, reader.seen.back().code, reader.seen.back().data)};
    forger.putEntry(seen + Journal::LatestEntries, again, 0);
    char slot[Journal::EntryBytes];
    Journal::putEntry(slot, 77, seen, again);
    EXPECT_TRUE(reader.look());
    EXPECT_EQ(reader.seen.size(), seen);
    change(5);
    EXPECT_TRUE(reader.look());
    EXPECT_EQ(reader.seen.size(), seen + 5);
    EXPECT_EQ(reader->unreadable(), 0U);
    reader.expectAllOf(stopAndRead());
}

TEST_F(RecorderFollowing, ARecordThatIsDamagedInTheFileIsLeftOutAndCounted)
{
    record();
    Reader whole(open());
    change(12'000);
    whole.look();
    QFile file(open());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(whole.seen[200].position + 5));
    ASSERT_TRUE(file.putChar('\xff'));
    file.close();
    Reader reader(open());
    EXPECT_TRUE(reader.look());
    EXPECT_EQ(reader.seen.size(), whole.seen.size() - 1);
    EXPECT_EQ(reader->unreadable(), 1U);
    EXPECT_EQ(reader.seen[200].position, whole.seen[201].position);
}

}  // namespace
}  // namespace RecorderTests
