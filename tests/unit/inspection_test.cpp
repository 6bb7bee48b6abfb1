// Reading records one at a time.

#include <gtest/gtest.h>

#include <recording2/inspection/inspection.h>

#include "madefile.h"

namespace {

using Recording2::Inspection::inspect;
using Recording2::Inspection::Record;
using Recording2::Inspection::RecordReader;
using Recording2::Inspection::Summary;

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
