// A recording is read while it is written: what is shown is what was accepted, no more and, in the end, no less.
#include <atomic>

#include "followingtesting.h"

namespace RecorderTests {
namespace {

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
#if defined(_WIN32)  // Wine closes none of a file's openings while somebody locks it
    constexpr std::array<std::uint32_t, 4> Seldom{20, 70, 900, 11'000};
#else
    constexpr std::array<std::uint32_t, 4> Seldom{1, 7, 900, 11'000};
#endif
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
    record("off");
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
    record("off");
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
    const QString copy = station.file("left.tmp");
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

TEST_F(RecorderFollowing, ARecorderClosesAndNamesAFileThatIsBeingRead)
{
    record();
    Reader reader(open());
    reader.look();
    const QString journal = open() + ".journal";
    station.switchOff();
    EXPECT_TRUE(station.fileName().endsWith(".rec"));
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
    const QString path = station.file("notes.txt");
    TestSupport::writeFile(path, "Something else.");
    std::string problem;
    EXPECT_FALSE(Following::open(utf8(path), problem));
    EXPECT_EQ(problem, "This is not a recording.");
    EXPECT_FALSE(Following::open(utf8(station.file("none.tmp")), problem));
    EXPECT_EQ(problem, "There is no such file.");
}

}  // namespace
}  // namespace RecorderTests
