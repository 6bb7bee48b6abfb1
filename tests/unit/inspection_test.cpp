// Reading records one at a time, and what can be taken out of damaged files.
#include <recording2/inspection/inspection.h>
#include <recording2/inspection/rescue/salvage.h>

#include "madefile.h"

namespace {

using namespace Recording2::Inspection;

class RecordReaderTest : public MadeFileTest {
protected:
    static std::string threeRecords()
    {
        return TestSupport::ReferenceRecording()
            .record(1, "one", 10)
            .record(2, "two", 20)
            .record(3, "three", 30)
            .close();
    }
};

}  // namespace

TEST_F(RecordReaderTest, GivesOneRecordAfterTheOtherAndThenNoMore)
{
    const std::string path = store(threeRecords());
    const Summary summary = inspect(path);
    RecordReader reader(path, summary);
    Record record;
    ASSERT_TRUE(reader.next(record));
    EXPECT_EQ(record.data, "one");
    EXPECT_EQ(record.timeMs, 10U);
    EXPECT_EQ(record.position, summary.header.positions.firstRecord);
    EXPECT_EQ(reader.bytesRead(), 7);
    ASSERT_TRUE(reader.next(record));
    ASSERT_TRUE(reader.next(record));
    EXPECT_EQ(record.code, 3);
    EXPECT_EQ(reader.bytesRead(), reader.bytesInAll());
    EXPECT_FALSE(reader.next(record));
    EXPECT_FALSE(reader.next(record));
    EXPECT_TRUE(reader.findings().empty());
}

TEST_F(RecordReaderTest, TellsDamageOnceAndGoesOnBehindIt)
{
    std::string bytes = threeRecords();
    const Summary sound = inspect(store(bytes));
    bytes[static_cast<std::size_t>(sound.times[1].position)] = 'x';
    const std::string path = store(bytes);
    const Summary summary = inspect(path);
    RecordReader reader(path, summary);
    Record record;
    ASSERT_TRUE(reader.next(record));
    EXPECT_TRUE(reader.findings().empty());
    ASSERT_TRUE(reader.next(record));
    EXPECT_EQ(record.data, "three");
    EXPECT_EQ(reader.findings().size(), 1U);
    EXPECT_FALSE(reader.next(record));
    const std::size_t findings = reader.findings().size();
    EXPECT_FALSE(reader.next(record));
    EXPECT_EQ(reader.findings().size(), findings);
}

TEST_F(RecordReaderTest, AReaderOfNoRecordingHasNoRecord)
{
    const Summary summary = inspect("/nowhere/nothing.rec");
    RecordReader reader("/nowhere/nothing.rec", summary);
    Record record;
    EXPECT_FALSE(reader.next(record));
    EXPECT_EQ(reader.bytesInAll(), 0);
    EXPECT_TRUE(reader.findings().empty());
}

TEST_F(RecordReaderTest, AFileThatWentAwayIsToldInsteadOfRecords)
{
    const std::string path = store(threeRecords());
    const Summary summary = inspect(path);
    RecordReader reader(path + ".gone", summary);
    Record record;
    EXPECT_FALSE(reader.next(record));
    ASSERT_EQ(reader.findings().size(), 1U);
    EXPECT_EQ(reader.findings().front().text, "The file cannot be opened any more.");
}

namespace {

using namespace testing;
using TestSupport::ByteBuilder;
using TestSupport::ReferenceRecording;

using Times = std::vector<std::optional<std::uint64_t>>;

class SalvageTest : public MadeFileTest {
protected:
    Salvage salvageOf(const std::string& bytes) { return salvage(store(bytes)); }
    /// The data of the records that were kept.
    std::vector<std::string> dataOf(const std::string& bytes)
    {
        const std::string path = store(bytes);
        std::vector<std::string> all;
        const auto take = [&](const Recording2::Inspection::Record& record, std::optional<std::uint64_t>, bool) {
            all.push_back(record.data);
            return true;
        };
        EXPECT_EQ(Recording2::Inspection::readSalvaged(path, salvage(path), take), 0U);
        return all;
    }
    static Times timesOf(const Salvage& found)
    {
        Times times;
        for (const auto& record : found.records) {
            times.push_back(record.timeMs);
        }
        return times;
    }
};

std::string sound()
{
    ReferenceRecording recording;
    recording.types({{20, 7, "DFSPECTRUM", "/Df"}, {36, 3, "LEVEL", "/Level"}});
    recording.record(20, "34;one", 10, true).record(36, "two", 20).record(20, "34;three", 30, true);
    recording.record(36, "four", 40).record(36, "five", 50);
    return recording.close();
}

std::string with(std::string bytes, const std::string& piece, const std::string& replacement)
{
    const std::size_t at = bytes.find(piece);
    EXPECT_NE(at, std::string::npos) << piece;
    return bytes.replace(at, piece.size(), replacement);
}

std::string timeBytes(std::uint64_t time)
{
    return ByteBuilder().time(time).bytes();
}

const Times AllTimes = {10, 20, 30, 40, 50};

void expectEverything(const Salvage& found)
{
    EXPECT_EQ(found.readability, Recording2::Inspection::Readability::Ok);
    EXPECT_EQ(found.records.size(), 5U);
    EXPECT_EQ(found.types.size(), 2U);
    EXPECT_THAT(found.channelRangeTimes, ElementsAre(10, 30));
    EXPECT_THAT(found.lostBytes, IsEmpty());
    EXPECT_FALSE(found.typesLost);
    EXPECT_FALSE(found.channelRangesLost);
}

}  // namespace

TEST_F(SalvageTest, WithoutAnyPositionTheBlocksAreFoundByWhatTheyHold)
{
    std::string bytes = sound();
    const auto end = static_cast<std::size_t>(inspect(store(bytes)).ends.header);
    const std::size_t positions = bytes.find("500#");
    bytes.replace(positions, end - positions, std::string(end - positions, '?'));
    const Salvage found = salvageOf(bytes);
    expectEverything(found);
    EXPECT_EQ(timesOf(found), AllTimes);
    EXPECT_THAT(found.lostHeaderFields, ElementsAre("the positions of the tables"));
}

TEST_F(SalvageTest, AWrongPositionOfTheTimeTableIsPutRight)
{
    std::string bytes = sound();
    const auto position = std::to_string(inspect(store(bytes)).header.positions.timeTable);
    bytes = with(bytes, "#" + position + "#", "#577#");
    ASSERT_NE(position, "577");
    const Salvage found = salvageOf(bytes);
    expectEverything(found);
    EXPECT_EQ(timesOf(found), AllTimes);
}

TEST_F(SalvageTest, AnEntryThatNamesNoRecordDoesNotCostOne)
{
    const std::string bytes = sound();
    const auto position = inspect(store(bytes)).times[1].position;
    const std::string entry = timeBytes(20) + std::to_string(position) + '#';
    const std::string wrong = timeBytes(20) + std::to_string(position + 2) + '#';
    EXPECT_EQ(timesOf(salvageOf(with(bytes, entry, wrong))), (Times{10, {}, 30, 40, 50}));
}

TEST_F(SalvageTest, AByteTooManyInFrontOfTheRecordsMovesAllPositions)
{
    for (const std::size_t at : {60U, 200U, 300U}) {  // in a text of the header, in its filling
        const Salvage found = salvageOf(sound().insert(at, 1, at == 200 ? '0' : 'x'));
        expectEverything(found);
        EXPECT_EQ(timesOf(found), AllTimes) << at;
    }
    const Salvage found = salvageOf(sound().insert(504, 1, 'x'));  // in the type table
    EXPECT_EQ(timesOf(found), AllTimes);
    EXPECT_THAT(found.channelRangeTimes, ElementsAre(10, 30));
    EXPECT_TRUE(found.typesLost);
}

TEST_F(SalvageTest, AFileThatIsNoRecordingIsToldSo)
{
    EXPECT_EQ(salvageOf("a letter").readability, Recording2::Inspection::Readability::NoRecording);
    EXPECT_EQ(salvage("/nowhere/nothing.rec").readability, Recording2::Inspection::Readability::Missing);
}

TEST_F(SalvageTest, CutsAndOverwrittenBytesAreAnswered)
{
    const std::string bytes = sound();
    const std::vector<std::string> all = dataOf(bytes);
    for (std::size_t at = 0; at < bytes.size(); at += 11) {
        const std::vector<std::string> cut = dataOf(bytes.substr(0, at));
        EXPECT_LE(cut.size(), all.size());
        EXPECT_TRUE(std::equal(cut.begin(), cut.end(), all.begin())) << "cut at " << at;
        for (const char byte : {'\0', '#', '9', '-'}) {
            std::string damaged = bytes;
            damaged[at] = byte;
            EXPECT_LE(dataOf(damaged).size(), all.size()) << at << byte;
        }
    }
}
