// The end of what positions can name. The files are sparse, so they cost no space.
#include <recording2/file/recordingwriter.h>
#include <recording2/fileaccess.h>
#include <recording2/fileaccess_p.h>

#include "support/libraryobjects.h"
#include "support/tracelog.h"

namespace Recording2 {

class FileAccessTestPeer {
public:
    static void seek(CFileAccess& file, std::int64_t position) { file.d->shared->growing->file().seek(position); }
    static void seek(RecordingWriter& writer, std::int64_t position) { writer.m_file->seek(position); }
    static std::int64_t position(const CFileAccess& file) { return file.d->shared->growing->file().position(); }
};

}  // namespace Recording2

using namespace Recording2;

namespace {

constexpr std::int64_t Last = 2'147'483'647;

class FileAccessLimit : public testing::Test {
protected:
    void write(unsigned long long time, const char* text)
    {
        CVTCmdData record = TestSupport::makeRecord(46, text);
        m_file.write(record, time, true);
    }
    void close()
    {
        CHeaderData header = TestSupport::makeHeader({});
        m_file.CloseRecording(header, true);
    }
    static auto tracesOfAFullFile()
    {
        const auto& lines = TestSupport::TraceLog::lines();
        return std::count_if(lines.begin(), lines.end(),
                             [](const auto& line) { return line.text.contains("recording file is full"); });
    }

    QTemporaryDir m_directory;
    std::string m_path = m_directory.filePath("a.rec").toStdString();
    CFileAccess m_file{m_path.c_str(), QString(), nullptr, true, false, false, nullptr, nullptr};
    TestSupport::TraceLog m_log;
};

}  // namespace

TEST_F(FileAccessLimit, RecordsPastTheLastPositionAreRefusedAndTracedOnce)
{
    write(10, "kept");
    FileAccessTestPeer::seek(m_file, Last - 40);
    write(20, "refused");
    write(30, "refused too");
    EXPECT_EQ(FileAccessTestPeer::position(m_file), Last - 40);
    EXPECT_EQ(tracesOfAFullFile(), 1);
}

TEST_F(FileAccessLimit, AFullFileClosesCleanlyAndReadsBackWhatItTook)
{
    write(10, "kept");
    FileAccessTestPeer::seek(m_file, Last - 40);
    write(20, "refused");
    close();
    CFileAccess reader(m_path.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    ASSERT_TRUE(reader.IsValidFile());
    CVTCmdData record;
    reader.readfirst(record);
    EXPECT_STREQ(record.str(), "kept");
    EXPECT_EQ(reader.read(record, 20ULL), 0U);
    EXPECT_STREQ(record.str(), "kept");
}

TEST_F(FileAccessLimit, RecordsLeaveRoomForTheirTablesSoThatAFullFileIsReadByTime)
{
    FileAccessTestPeer::seek(m_file, Last - 2000);
    for (unsigned long long time = 10; time < 200; ++time) {
        write(time, "data");
    }
    EXPECT_EQ(tracesOfAFullFile(), 1);
    const std::int64_t end = FileAccessTestPeer::position(m_file);
    close();
    CFileAccess reader(m_path.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    ASSERT_TRUE(reader.IsValidFile());
    EXPECT_TRUE(reader.channelRangeDefAvailable());
    CVTCmdData record;
    int records = 1;
    for (unsigned long long time = reader.readfirst(record); time != 0; time = reader.readnext(record)) {
        ++records;
        EXPECT_STREQ(record.str(), "data");
    }
    EXPECT_EQ(records, (end - (Last - 2000)) / 9);  // "46#4#data"
    EXPECT_GT(records, 30);
}

TEST_F(FileAccessLimit, AChannelRangeTableThatNoHeaderCouldNameIsLeftOut)
{
    write(10, "kept");
    FileAccessTestPeer::seek(m_file, Last - 5);
    close();
    CFileAccess reader(m_path.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    ASSERT_TRUE(reader.IsValidFile());
    EXPECT_FALSE(reader.channelRangeDefAvailable());
}

TEST_F(FileAccessLimit, ATimeThatCannotMoveOnIsRefused)
{
    write(std::numeric_limits<unsigned long long>::max(), "kept");
    const std::int64_t end = FileAccessTestPeer::position(m_file);
    write(1, "refused");
    EXPECT_EQ(FileAccessTestPeer::position(m_file), end);
}

TEST_F(FileAccessLimit, ARecordingMadeOfOthersFailsWhereItsRecordsOrTablesPassTheLastPosition)
{
    const std::string data(100, 'x');
    for (const bool anotherRecord : {true, false}) {
        RecordingWriter writer(m_directory.filePath("made.rec").toStdString(), System::DefaultFileMode);
        ASSERT_EQ(writer.begin(""), 0);
        FileAccessTestPeer::seek(writer, Last);
        writer.add(46, data);
        EXPECT_TRUE(writer.good());
        if (anotherRecord) {
            writer.add(46, data);
        } else {
            const std::vector<std::uint64_t> times{10};
            Format::HeaderRecord header;
            writer.end(header, {times, {}, {}});
        }
        EXPECT_EQ(writer.close(false), System::FileTooLarge);
    }
    EXPECT_TRUE(QDir(m_directory.path()).entryList({"made*"}).isEmpty());
}
