// A recording is read while it is written: what is shown is what was accepted, no more and, in the end, no less.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <QDir>
#include <QFile>

#include <recording2/format/journal.h>
#include <recording2/inspection/following.h>

#include "recorder_fixture.h"
#include "support/recordingbytes.h"

namespace RecorderTests {
namespace {

namespace Journal = Recording2::Format::Journal;
using Recording2::Inspection::Following;
using Recording2::Inspection::Record;
using State = Following::State;

std::string utf8(const QString& path)
{
    return path.toUtf8().toStdString();
}

/// A follower, and all that it showed.
class Reader {
public:
    explicit Reader(const QString& path)
    {
        std::string problem;
        m_following = Following::open(utf8(path), problem);
        EXPECT_TRUE(m_following) << problem;
    }

    /// Takes what there is now. @return whether there may be more later
    bool look(std::size_t atMost = SIZE_MAX)
    {
        Record record;
        for (; atMost > 0; --atMost) {
            if (!m_following->next(record)) {
                return m_following->state() == State::Growing;
            }
            seen.push_back(record);
        }
        return true;
    }
    /// Whether what was shown is how a recording begins, and all of it unless said otherwise.
    void expectBeginningOf(const ParsedRecording& recording, bool withTimes = true) const
    {
        ASSERT_LE(seen.size(), recording.records.size());
        for (std::size_t i = 0; i < seen.size(); ++i) {
            const auto& wanted = recording.records[i];
            ASSERT_EQ(seen[i].position, wanted.position) << "record " << i;
            ASSERT_EQ(seen[i].timeMs, withTimes ? wanted.time : 0) << "record " << i;
            ASSERT_EQ(seen[i].code, wanted.code) << "record " << i;
            ASSERT_EQ(seen[i].data, wanted.data) << "record " << i;
        }
    }
    void expectAllOf(const ParsedRecording& recording) const
    {
        EXPECT_EQ(seen.size(), recording.records.size());
        expectBeginningOf(recording);
    }
    Following& operator*() { return *m_following; }
    Following* operator->() { return &*m_following; }

    std::vector<Record> seen;

private:
    std::optional<Following> m_following;
};

class RecorderFollowing : public FullStationTest {
protected:
    void record(const QString& journal = QStringLiteral("process"))
    {
        station.configure(QStringLiteral("Journal = \"%1\"").arg(journal));
        makeRecorder();
        rfSpectrum().SetChannelRange(values::ChannelRange::Even(88e6, 5e3, Channels));
        start();
    }
    /// One more record: mostly a small one, sometimes a spectrum, now and then one that no buffer holds.
    void change()
    {
        station.clock.advanceMs(random() % 3);
        ++changes;
        const std::uint32_t kind = random() % 512;
        if (kind == 0) {
            at<Text>("/Devices/Rx1/Mon/Antenna")
                .SetValue(QString(300'000 + static_cast<int>(changes), QLatin1Char('x')));
        } else if (kind < 16) {
            std::vector<float> cells(Channels);
            std::generate(cells.begin(), cells.end(), [&] { return -static_cast<float>(random() % 1000) / 10; });
            rfSpectrum().SetCells(0, cells, station.clock.now);
        } else {
            level().SetValue(static_cast<double>(changes) / 8);
        }
    }
    void change(int times)
    {
        for (int i = 0; i < times; ++i) {
            change();
        }
    }
    [[nodiscard]] QString open() const { return station.fileName(); }

    static constexpr int Channels = 2048;
    std::mt19937 random{1};  // NOLINT(cert-msc51-cpp): a failure can be run again
    std::uint64_t changes = 0;
};

TEST_F(RecorderFollowing, EveryAcceptedRecordIsShownOnceAndAtOnceHoweverSeldomSomebodyLooks)
{
    record();
    std::vector<Reader> readers;  // they look after one change, after hundreds, after many rounds of the journal
    for (int i = 0; i < 4; ++i) {
        readers.emplace_back(open());
        EXPECT_TRUE(readers.back().look());
    }
    const std::size_t initial = readers.front().seen.size();
    EXPECT_GT(initial, 0U);
    constexpr std::array<std::uint32_t, 4> Seldom{1, 7, 900, 11'000};
    for (int i = 0; i < 22'000; ++i) {
        change();
        for (std::size_t reader = 0; reader < readers.size(); ++reader) {
            if (random() % Seldom[reader] == 0) {
                EXPECT_TRUE(readers[reader].look());
                ASSERT_EQ(readers[reader].seen.size(), initial + changes) << reader;
            }
        }
    }
    const ParsedRecording closed = stopAndRead();
    for (Reader& reader : readers) {
        EXPECT_FALSE(reader.look());
        EXPECT_EQ(reader->state(), State::Closed);
        EXPECT_EQ(QString::fromStdString(reader->finalPath()), station.fileName());
        EXPECT_EQ(reader->number(), closed.records.size());
        EXPECT_EQ(reader->unreadable(), 0U);
        reader.expectAllOf(closed);
    }
}

TEST_F(RecorderFollowing, AReaderThatTakesFewAtATimeStaysInOrderThroughHandingOver)
{
    record();
    Reader reader(open());
    for (int i = 0; i < 14'000; ++i) {
        change();
        EXPECT_TRUE(reader.look(random() % 2));
    }
    const ParsedRecording closed = stopAndRead();
    EXPECT_TRUE(reader.look(3));
    EXPECT_EQ(reader->state(), State::Growing);  // there are more
    EXPECT_FALSE(reader.look());
    reader.expectAllOf(closed);
}

TEST_F(RecorderFollowing, AReaderInAnotherThreadSeesNothingThatWasNotAccepted)
{
    record();
    std::atomic<bool> looked{false};
    Reader reader(open());
    std::thread thread([&] {
        while (reader.look()) {
            looked = true;
        }
    });
    while (!looked) {
        change();
    }
    change(30'000);
    const ParsedRecording closed = stopAndRead();
    thread.join();
    EXPECT_EQ(reader->state(), State::Closed);
    EXPECT_EQ(reader->unreadable(), 0U);
    reader.expectAllOf(closed);
}

TEST_F(RecorderFollowing, HeaderAndTypesAreThoseThatClosingWrites)
{
    record();
    Reader reader(open());
    change(5'000);
    startFreq().SetValue(91e6);
    level().SetValue(-1);
    EXPECT_TRUE(reader.look());
    const auto grown = reader->header();
    const auto types = reader->types();
    EXPECT_TRUE(reader->timesKnown());
    const ParsedRecording closed = stopAndRead();
    EXPECT_EQ(grown.startMs, closed.header.startMs);
    EXPECT_EQ(grown.stopMs, closed.header.stopMs);
    EXPECT_EQ(grown.startFrequencyHz, closed.header.startFrequency);
    EXPECT_EQ(grown.deviceName, closed.header.deviceName);
    ASSERT_EQ(types.size(), closed.types.size());
    for (std::size_t i = 0; i < types.size(); ++i) {
        EXPECT_EQ(types[i].keyword, closed.types[i].keyword);
    }
    EXPECT_FALSE(reader.look());
    EXPECT_EQ(reader->header().stopMs, closed.header.stopMs);
}

TEST_F(RecorderFollowing, ReadingCanBeginWithAnyRecord)
{
    record();
    change(9'000);
    Reader later(open());
    ASSERT_TRUE(later->startAt(8'000));
    Reader early(open());
    ASSERT_TRUE(early->startAt(100));
    early.look();
    later.look();
    const ParsedRecording closed = stopAndRead();
    ASSERT_EQ(later.seen.size() + 8'000, closed.records.size());
    ASSERT_EQ(early.seen.size() + 100, closed.records.size());
    EXPECT_EQ(later.seen.front().timeMs, closed.records[8'000].time);
    EXPECT_EQ(early.seen.front().data, closed.records[100].data);
}

TEST_F(RecorderFollowing, AFinishedRecordingIsReadToItsEnd)
{
    record();
    change(50);
    const QString before = open();
    const ParsedRecording closed = stopAndRead();
    for (const QString& path : {before, station.fileName()}) {  // its ".tmp" is gone
        Reader reader(path);
        EXPECT_FALSE(reader.look());
        EXPECT_EQ(reader->state(), State::Closed);
        EXPECT_EQ(QString::fromStdString(reader->finalPath()), station.fileName());
        reader.expectAllOf(closed);
    }
}

TEST_F(RecorderFollowing, EachFileOfASplitRecordingEndsAndTheNextOneBegins)
{
    record();
    Peer::fileSizeLimit(recorder()) = 100'000;
    std::vector<QString> files{open()};
    std::vector<Reader> readers;
    readers.emplace_back(open());
    while (files.size() < 4) {
        change();
        readers.back().look();
        if (open() != files.back()) {
            EXPECT_EQ(readers.back()->state(), State::Closed);
            files.push_back(open());
            readers.emplace_back(open());
        }
    }
    station.switchOff();
    for (Reader& reader : readers) {
        reader.look();
        EXPECT_EQ(reader->state(), State::Closed);
        reader.expectAllOf(parsed(QString::fromStdString(reader->finalPath())));
    }
}

TEST_F(RecorderFollowing, WithoutAJournalRecordsAreShownAsFarAsTheyReachedTheSystemAndTimesAreUnknown)
{
    record(QStringLiteral("off"));
    Reader reader(open());
    EXPECT_TRUE(reader.look());
    while (reader.seen.size() < 2'000) {
        change();
        EXPECT_TRUE(reader.look());
    }
    EXPECT_FALSE(reader->timesKnown());
    EXPECT_FALSE(reader->types().empty());
    EXPECT_FALSE(reader->startAt(1));
    const ParsedRecording closed = stopAndRead();
    EXPECT_LT(reader.seen.size(), closed.records.size());
    EXPECT_FALSE(reader.look());
    EXPECT_EQ(reader->state(), State::Closed);
    EXPECT_EQ(reader.seen.size(), closed.records.size());
    reader.expectBeginningOf(closed, false);
}

TEST_F(RecorderFollowing, WithoutAJournalAShortRecordingIsReadWithItsTimesOnceItIsClosed)
{
    record(QStringLiteral("off"));
    Reader reader(open());
    change(20);
    EXPECT_TRUE(reader.look());
    EXPECT_TRUE(reader.seen.empty());
    const ParsedRecording closed = stopAndRead();
    EXPECT_FALSE(reader.look());
    EXPECT_TRUE(reader->timesKnown());
    reader.expectAllOf(closed);
}

TEST_F(RecorderFollowing, WhatNobodyWritesAnyMoreIsShownToItsEndAndCalledAbandoned)
{
    record();
    change(6'000);
    const QString copy = station.file(QStringLiteral("left.tmp"));
    TestSupport::writeFile(copy, TestSupport::readFile(open()));
    TestSupport::writeFile(copy + ".journal", TestSupport::readFile(open() + ".journal"));
    Reader reader(copy);
    EXPECT_FALSE(reader.look());
    EXPECT_EQ(reader->state(), State::Abandoned);
    EXPECT_EQ(QString::fromStdString(reader->finalPath()), copy);
    reader.expectAllOf(stopAndRead());
}

#if !defined(_WIN32)  // a name that is open may stay there until it is closed
TEST_F(RecorderFollowing, AFileThatIsTakenAwayIsTold)
{
    record();
    Reader reader(open());
    EXPECT_TRUE(reader.look());
    change();
    QFile::remove(open());
    EXPECT_FALSE(reader.look());
    EXPECT_EQ(reader->state(), State::Removed);
}
#endif

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
        Journal::putEntry(slot, m_identity.salt, number, entry);
        write(Journal::LatestOffset + number * Journal::EntryBytes, {slot, bytes});
    }
    void putIntoTail(std::int64_t position, std::string_view bytes)
    {
        write(Journal::TailOffset + static_cast<std::size_t>(position) - m_tailStart, bytes);
    }
    [[nodiscard]] std::uint64_t check(std::uint64_t number, std::int32_t code, std::string_view data) const
    {
        return Journal::recordCheck(m_identity.salt, number, code, data);
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

TEST_F(RecorderFollowing, ARecorderClosesAndNamesAFileThatIsBeingRead)
{
    record();
    Reader reader(open());
    reader.look();
    const QString journal = open() + ".journal";
    station.switchOff();
    EXPECT_TRUE(station.fileName().endsWith(QLatin1String(".rec")));
    EXPECT_TRUE(QFile::exists(station.fileName()));
    EXPECT_FALSE(reader.look());
    EXPECT_EQ(reader->state(), State::Closed);
    {
        const Reader last = std::move(reader);
    }
    EXPECT_FALSE(QFile::exists(journal));
}

TEST_F(RecorderFollowing, WhatIsNoRecordingIsRefusedWithASentence)
{
    const QString path = station.file(QStringLiteral("notes.txt"));
    TestSupport::writeFile(path, "Something else.");
    std::string problem;
    EXPECT_FALSE(Following::open(utf8(path), problem));
    EXPECT_EQ(problem, "This is not a recording.");
    EXPECT_FALSE(Following::open(utf8(station.file(QStringLiteral("none.tmp"))), problem));
    EXPECT_EQ(problem, "There is no such file.");
}

}  // namespace
}  // namespace RecorderTests
