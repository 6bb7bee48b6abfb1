// A recording and its journal that were cut off or damaged: what comes back was recorded.
#include <recording2/format/journal.h>
#include <recording2/inspection/rescue/recovery.h>

#include "life.h"
#include "support/modelreader.h"

namespace CrashTests {
namespace {

namespace Journal = Recording2::Format::Journal;
using Recording2::Inspection::Recovery;
using Recording2::Inspection::RecoveryOutcome;
using TestSupport::ParsedRecording;

constexpr std::uint64_t Changes = 40;

/// A small recording that is being written, of which a part is with the system and a part in the journal only.
class Unfinished : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        recordWithoutClosing();
        s_closed = closedAfter(Changes, Life::FewChannels);
        s_records = TestSupport::parseRecording(s_closed).records;
        handOverHalf();
    }

    static void recordWithoutClosing()
    {
        const QTemporaryDir directory(directoryTemplate());
        Life life(directory.path(), "process", Life::FewChannels);
        life.switchOn();
        for (std::uint64_t number = 0; number < Changes; ++number) {
            life.change(number);
        }
        s_file = TestSupport::readFile(fileIn(directory.path(), ".tmp"));
        s_journal = TestSupport::readFile(fileIn(directory.path(), ".tmp.journal"));
    }

    /// As if the buffer had been handed over in the middle of the recording.
    static void handOverHalf()
    {
        const Journal::Identity identity = *Journal::getIdentity(s_journal.data());
        const std::size_t start = *Journal::unseal(identity, Journal::TailStartOffset,
                                                   Recording2::Format::getInt64(&s_journal[Journal::TailStartOffset]));
        const std::size_t half = static_cast<std::size_t>(s_records[s_records.size() / 2].position) - start;
        s_file += s_journal.substr(Journal::TailOffset, half);
        const std::string tail = s_journal.substr(Journal::TailOffset + half, Journal::TailBytes - half);
        std::copy(tail.begin(), tail.end(), s_journal.begin() + Journal::TailOffset);
        Recording2::Format::putInt64(&s_journal[Journal::TailStartOffset],
                                     Journal::seal(identity.nonce, Journal::TailStartOffset, start + half));
        s_tailUsed = static_cast<std::size_t>(TestSupport::parseRecording(s_closed).header.timeTable) - start - half;
    }

    ~Unfinished() override { count(m_recoveries, "recoveries"); }

    Recovery recover(const std::string& file, const std::string& journal)
    {
        ++m_recoveries;
        const QString path = m_directory.filePath("a.tmp");
        TestSupport::writeFile(path, file);
        if (journal.empty()) {
            QFile::remove(path + ".journal");
        } else {
            TestSupport::writeFile(path + ".journal", journal);
        }
        const QString output = m_directory.filePath("a.rec");
        QFile::remove(output);
        Recovery recovery = Recording2::Inspection::recover(path.toStdString(), {output.toStdString(), 0, {}, {}});
        m_recovered = QFile::exists(output) ? TestSupport::readFile(output) : std::string();
        EXPECT_EQ(TestSupport::readFile(path), file);
        return recovery;
    }

    /// The records of the recovered file are some of those that were recorded, in their order, and what is said to be
    /// a known time is the true one.
    void expectNothingInvented(const Recovery& recovery, const std::string& what)
    {
        const bool made =
            recovery.outcome == RecoveryOutcome::Whole || recovery.outcome == RecoveryOutcome::SomethingLost;
        ASSERT_EQ(made, !m_recovered.empty()) << what;
        ASSERT_TRUE(made || !recovery.problem.empty()) << what;
        if (!made) {
            return;
        }
        const ParsedRecording found = TestSupport::parseRecording(m_recovered);
        auto next = s_records.begin();
        std::uint64_t exact = 0;
        for (const ParsedRecording::Record& record : found.records) {
            next = std::find_if(next, s_records.end(), [&](const ParsedRecording::Record& recorded) {
                return recorded.code == record.code && recorded.data == record.data;
            });
            ASSERT_NE(next, s_records.end()) << what << ": a record was made up: " << record.data.substr(0, 40);
            exact += next->time == record.time ? 1U : 0U;
            ++next;
        }
        EXPECT_GE(exact, recovery.times.kept) << what;
        if (recovery.outcome == RecoveryOutcome::Whole) {
            EXPECT_EQ(found.records.size(), s_records.size()) << what;
        }
    }

    QTemporaryDir m_directory{directoryTemplate()};
    std::string m_recovered;
    std::uint64_t m_recoveries = 0;

    inline static std::string s_file;
    inline static std::string s_journal;
    inline static std::string s_closed;
    inline static std::size_t s_tailUsed = 0;
    inline static std::vector<ParsedRecording::Record> s_records;
};
/// Where a journal of few records holds something, and the ends of its pages.
std::vector<std::size_t> tellingOffsets(std::size_t size, std::size_t tailUsed, std::size_t records)
{
    constexpr std::size_t Margin = 40;
    constexpr std::size_t Page = 4096;
    std::vector<std::size_t> offsets;
    for (std::size_t offset = 0; offset < size; offset += Thinned) {
        const bool inTail = offset < Journal::TailOffset + tailUsed + Margin;
        const bool inEntries = offset + Margin >= Journal::LatestOffset &&
                               offset < Journal::LatestOffset + records * Journal::EntryBytes + Margin;
        if (inTail || inEntries || offset % Page == 0) {
            offsets.push_back(offset);
        }
    }
    return offsets;
}

TEST_F(Unfinished, IsByteForByteWhatClosingWouldHaveWritten)
{
    const Recovery recovery = recover(s_file, s_journal);
    EXPECT_EQ(recovery.outcome, RecoveryOutcome::Whole);
    EXPECT_TRUE(recovery.journalComplete);
    EXPECT_TRUE(m_recovered == s_closed);
}

TEST_F(Unfinished, CutOffAtAnyByteWithAndWithoutAJournalGivesNothingThatWasNotRecorded)
{
    for (std::size_t size = 0; size <= s_file.size() && !HasFailure(); size += Thinned) {
        for (const std::string& journal : {s_journal, std::string()}) {
            expectNothingInvented(recover(s_file.substr(0, size), journal),
                                  "cut at " + std::to_string(size) + (journal.empty() ? ", no journal" : ""));
        }
    }
}
TEST_F(Unfinished, KilledBehindHandingOverWithAJournalCutInsideTheTailGivesNothingThatWasNotRecorded)
{
    const std::string handedOver = s_file + s_journal.substr(Journal::TailOffset, s_tailUsed);
    for (std::size_t cut = 0; cut <= s_tailUsed && !HasFailure(); cut += Thinned) {
        const Recovery recovery = recover(handedOver, s_journal.substr(0, Journal::TailOffset + cut));
        expectNothingInvented(recovery, "tail cut at " + std::to_string(cut));
    }
}

TEST_F(Unfinished, CutOffWithAnEntryDamagedGivesNothingThatWasNotRecorded)
{
    const Journal::Identity identity = *Journal::getIdentity(s_journal.data());
    const std::size_t start = *Journal::unseal(identity, Journal::TailStartOffset,
                                               Recording2::Format::getInt64(&s_journal[Journal::TailStartOffset]));
    for (std::size_t entry = 0; entry < s_records.size() && !HasFailure(); entry += Thinned) {
        std::string journal = s_journal;
        journal[Journal::LatestOffset + entry * Journal::EntryBytes] ^= 0x40;
        for (std::size_t missing = 1; missing < 400; missing += 7) {
            expectNothingInvented(recover(s_file.substr(0, start - missing), journal),
                                  "entry " + std::to_string(entry) + ", missing " + std::to_string(missing));
        }
    }
}

TEST_F(Unfinished, WithAnyBitOfARecordFlippedTellsThatTheRecordIsLost)
{
    const auto firstRecord = static_cast<std::size_t>(s_records.front().position);
    const auto expectFound = [&](const std::string& file, const std::string& journal, std::size_t offset) {
        const Recovery recovery = recover(file, journal);
        EXPECT_EQ(recovery.outcome, RecoveryOutcome::SomethingLost) << offset;
        expectNothingInvented(recovery, "flipped at " + std::to_string(offset));
    };
    for (std::size_t offset = firstRecord; offset < s_file.size() && !HasFailure(); offset += Thinned) {
        std::string file = s_file;
        file[offset] = static_cast<char>(file[offset] ^ 1 << offset % 8);
        expectFound(file, s_journal, offset);
    }
    for (std::size_t offset = 0; offset < s_tailUsed && !HasFailure(); offset += Thinned) {
        std::string journal = s_journal;
        char& byte = journal[Journal::TailOffset + offset];
        byte = static_cast<char>(byte ^ 1 << offset % 8);
        expectFound(s_file, journal, s_file.size() + offset);
    }
}

TEST_F(Unfinished, WithAJournalCutOffAtAnyByteGivesNothingThatWasNotRecorded)
{
    for (const std::size_t size : tellingOffsets(s_journal.size(), s_tailUsed, s_records.size())) {
        expectNothingInvented(recover(s_file, s_journal.substr(0, size)), "journal cut at " + std::to_string(size));
        if (HasFailure()) {
            return;
        }
    }
}

TEST_F(Unfinished, WithAnyByteOfTheJournalsBookkeepingDamagedGivesNothingThatWasNotRecorded)
{
    for (const std::size_t offset : tellingOffsets(s_journal.size(), 0, s_records.size())) {
        std::string journal = s_journal;
        journal[offset] = static_cast<char>(journal[offset] ^ 0x55);
        expectNothingInvented(recover(s_file, journal), "journal damaged at " + std::to_string(offset));
        if (HasFailure()) {
            return;
        }
    }
}

TEST_F(Unfinished, WithASectorOfTheJournalLostGivesNothingThatWasNotRecorded)
{
    constexpr std::size_t Sector = 512;
    for (std::size_t offset = 0; offset < s_journal.size() && !HasFailure(); offset += Sector) {
        if (offset >= Journal::TailOffset + s_tailUsed && offset + Sector < Journal::LatestOffset) {
            continue;
        }
        std::string journal = s_journal;
        std::fill_n(journal.begin() + static_cast<std::ptrdiff_t>(offset), Sector, '\0');
        expectNothingInvented(recover(s_file, journal), "sector lost at " + std::to_string(offset));
    }
}

TEST_F(Unfinished, WithASectorOfItLostGivesNothingThatWasNotRecorded)
{
    constexpr std::size_t Sector = 512;
    for (std::size_t offset = Sector; offset < s_file.size() && !HasFailure(); offset += Sector) {
        std::string file = s_file;
        const std::size_t size = std::min(Sector, file.size() - offset);
        std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(offset), size, '\0');
        const Recovery recovery = recover(file, s_journal);
        expectNothingInvented(recovery, "sector lost at " + std::to_string(offset));
        EXPECT_EQ(recovery.outcome, RecoveryOutcome::SomethingLost);
    }
}

}  // namespace
}  // namespace CrashTests
