// The library against recordings that an independent generator made: it writes the same bytes, also where it rewrites
// finished ones, and reads the same values.
#include <recording2/inspection/inspection.h>

#include "support/libraryobjects.h"
#include "support/testing.h"

namespace {

using namespace Recording2;
using namespace testing;
namespace Inspection = Recording2::Inspection;

/// A record and the time that it is stored with.
struct Stored {
    std::int32_t code = 0;
    std::uint64_t timeMs = 0;
    std::string data;
    bool channelRange = false;
};

/// A record as it is read, with the time that it got.
struct Read {
    std::uint64_t timeMs = 0;
    std::int32_t code = 0;
    std::string data;
    bool operator==(const Read&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Read& record)
{
    return out << record.code << " @" << record.timeMs << " " << testing::PrintToString(record.data);
}

std::string everyByte()
{
    std::string bytes;
    for (int value = 0; value < 256; ++value) {
        bytes.push_back(static_cast<char>(value));
    }
    return bytes;
}

constexpr unsigned long long Late = 4'294'967'297;

/// What a recording is made of. Version 2.0, started by an operator, if nothing else is said.
struct Content {
    TestSupport::HeaderFields header;
    std::vector<TestSupport::TypeFields> types;
    std::vector<Stored> stored;
    std::vector<Read> read;
};

Content emptyRecording()
{
    Content content;
    content.header.startFrequency = 90'000'000;
    content.header.stopFrequency = 120'000'000;
    content.header.stepWidth = 100'000;
    content.header.minLevel = 0;
    content.header.maxLevel = 120;
    content.header.startMs = 1'700'000'000'000;
    content.header.stopMs = 1'700'000'000'000;
    content.header.jobId = "Not available";
    content.header.deviceName = "";
    content.header.deviceType = "UNKNOWN";
    return content;
}

Content fullRecording()
{
    Content content;
    content.header.startFrequency = 90'012'345.0F;
    content.header.stopFrequency = 120'000'000;
    content.header.startMs = 1'700'000'000'123;
    content.header.stopMs = 1'704'294'967'420;
    content.header.deviceName =
        "Empf\xe4nger S\xfc"
        "d";
    content.header.deviceType = "Receiver";
    content.header.automatic = true;
    content.types = {{46, 4, "FREQUENCY", "/FREQUENCY"},
                     {36, 3, "LEVEL", "/LEVEL"},
                     {1, 6, "RFSPECTRUM", "/Receivers/1/Scn/RfSpectrum"},
                     {6, 5, "MODULATION", "/Receivers/1/Mon/DEMODULATION"},
                     {0, -1, "SITE", "/Ger\xe4t/Ort"},
                     {47, 2, "DEVICE_CAPTION", ""}};
    content.stored = {{46, 10, "100000000"},
                      {36, 10, "-31.5"},
                      {1, 10, everyByte()},
                      {36, 5, "-32"},
                      {36, 200, ""},
                      {36, 150, "#1#2#"},
                      {7, Late, std::string(1, '\0')},
                      {0, Late, "Nord"},
                      {-2147483647 - 1, Late + 1000, "9#9#"}};
    content.read = {{10, 46, "100000000"}, {11, 36, "-31.5"},
                    {12, 1, everyByte()},  {13, 36, "-32"},
                    {200, 36, "#1#2#"},    {Late, 7, std::string(1, '\0')},
                    {Late + 1, 0, "Nord"}, {Late + 1000, -2147483647 - 1, "9#9#"}};
    return content;
}

Content channelRangeRecording()
{
    Content content;
    content.header.startFrequency = 20'000'000;
    content.header.stopFrequency = 3'000'000'000.0F;
    content.header.stepWidth = 25'000;
    content.header.maxLevel = 120;
    content.header.startMs = 1'600'000'000'000;
    content.header.stopMs = 1'600'000'005'000;
    content.header.jobId = "";
    content.header.deviceName = "Direction finder";
    content.header.deviceType = "DF";
    content.types = {{20, 7, "DFSPECTRUM", "/DfSpectrum"}};
    content.stored = {{20, 10, "34;20e6 25e3 4", true},
                      {20, 11, "bearings"},
                      {20, 100, "no range here", true},
                      {20, 100, "x34;y", true},
                      {20, 4000, "bearings"}};
    content.read = {{10, 20, "34;20e6 25e3 4"},
                    {11, 20, "bearings"},
                    {100, 20, "no range here"},
                    {101, 20, "x34;y"},
                    {4000, 20, "bearings"}};
    return content;
}

Content bookmarkedRecording()
{
    Content content;
    content.header.startMs = 1'650'000'000'000;
    content.header.stopMs = 1'650'000'004'000;
    content.types = {{36, 3, "LEVEL", "/LEVEL"}};
    content.stored = {{36, 10, "-31.5"}, {36, 1500, "-30"}, {36, 3000, "-29.25"}};
    content.read = {{10, 36, "-31.5"}, {1500, 36, "-30"}, {3000, 36, "-29.25"}};
    return content;
}

std::string goldenPath(const std::string& name)
{
    return std::string(GOLDEN_FOLDER) + "/" + name + "/" + name + ".rec";
}

std::string bytesOf(const std::string& path)
{
    return TestSupport::readFile(QString::fromStdString(path));
}

/// The bytes of a recording that the library writes with this content.
std::string bytesWritten(const Content& content)
{
    const QTemporaryDir folder;
    const std::string path = (folder.path() + "/recording.rec").toStdString();
    CFileAccess file(path.c_str(), QString(), nullptr, true, false, false, nullptr, nullptr);
    EXPECT_TRUE(file.IsValidFile());
    if (!content.types.empty()) {
        CVTTypesData types = TestSupport::makeTypes(content.types);
        file.write(types);
    }
    for (const Stored& stored : content.stored) {
        CVTCmdData record = TestSupport::makeRecord(stored.code, stored.data);
        file.write(record, stored.timeMs, stored.channelRange);
    }
    CHeaderData header = TestSupport::makeHeader(content.header);
    file.CloseRecording(header, true);
    return bytesOf(path);
}

CFileAccess openGolden(const std::string& name)
{
    return CFileAccess(goldenPath(name).c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
}

void expectSameHeader(const CHeaderData& actual, const TestSupport::HeaderFields& expected)
{
    EXPECT_EQ(actual.majorversion(), expected.majorVersion);
    EXPECT_EQ(actual.minorversion(), expected.minorVersion);
    EXPECT_EQ(actual.stepWidth(), expected.stepWidth);
    EXPECT_EQ(actual.stopFreq(), expected.stopFrequency);
    EXPECT_EQ(actual.minLevel(), expected.minLevel);
    EXPECT_EQ(actual.maxLevel(), expected.maxLevel);
    EXPECT_EQ(actual.startTS().getMicroSecs(), expected.startMs * 1000);
    EXPECT_EQ(actual.stopTS().getMicroSecs(), expected.stopMs * 1000);
    EXPECT_EQ(actual.getJobID(), expected.jobId);
    EXPECT_EQ(actual.deviceName(), expected.deviceName);
    EXPECT_EQ(actual.deviceType(), expected.deviceType);
    EXPECT_EQ(actual.isAutomaticRec(), expected.automatic);
}

/// Every record, with readfirst and readnext, which give the time of the record that follows.
std::vector<Read> recordsRead(CFileAccess& file, std::uint64_t firstTime)
{
    std::vector<Read> records;
    std::uint64_t time = firstTime;
    CVTCmdData record;
    for (std::uint64_t next = file.readfirst(record); time != 0; next = file.readnext(record)) {
        records.push_back({time, record.cmd(), TestSupport::dataOf(record)});
        time = next;
    }
    return records;
}

void expectReadBack(const std::string& name, const Content& expected)
{
    CFileAccess file = openGolden(name);
    ASSERT_TRUE(file.IsValidFile());
    CHeaderData header;
    EXPECT_EQ(file.read(header), 1U);
    expectSameHeader(header, expected.header);
    CVTTypesData types;
    EXPECT_EQ(file.read(types), 1U);
    EXPECT_EQ(TestSupport::fieldsOf(types), expected.types);
    EXPECT_EQ(recordsRead(file, expected.read.front().timeMs), expected.read);
}

std::vector<Read> recordsWalked(const std::string& name, const Inspection::Summary& summary)
{
    std::vector<Read> records;
    const auto findings = Inspection::walkRecords(goldenPath(name), summary, [&](const Inspection::Record& record) {
        records.push_back({record.timeMs, record.code, record.data});
        return true;
    });
    EXPECT_THAT(findings, IsEmpty());
    return records;
}

}  // namespace

TEST(GoldenFiles, ARecordingIsWrittenByteForByteUpToItsBookmarks)
{
    EXPECT_EQ(bytesWritten(emptyRecording()), bytesOf(goldenPath("empty")));
    EXPECT_EQ(bytesWritten(fullRecording()), bytesOf(goldenPath("full")));
    EXPECT_EQ(bytesWritten(channelRangeRecording()), bytesOf(goldenPath("channelranges")));
    constexpr std::size_t HeaderArea = 500;
    constexpr std::size_t Bookmarks = 590;
    EXPECT_EQ(bytesWritten(bookmarkedRecording()).substr(HeaderArea),
              bytesOf(goldenPath("bookmarks")).substr(HeaderArea, Bookmarks - HeaderArea));
}

TEST(GoldenFiles, AnEmptyRecordingIsReadWithoutRecords)
{
    CFileAccess file = openGolden("empty");
    ASSERT_TRUE(file.IsValidFile());
    CHeaderData header;
    EXPECT_EQ(file.read(header), 1U);
    expectSameHeader(header, emptyRecording().header);
    EXPECT_EQ(header.startFreq(), 90'000'000);
    CVTCmdData record;
    EXPECT_EQ(file.readfirst(record), 0U);
    EXPECT_EQ(record.strDataLen(), 0U);
}

TEST(GoldenFiles, TypeTableRecordsAndTimesAreReadBackAndFrequenciesWithSixSignificantDigits)
{
    expectReadBack("full", fullRecording());
    expectReadBack("channelranges", channelRangeRecording());
    expectReadBack("bookmarks", bookmarkedRecording());
    CFileAccess file = openGolden("full");
    CHeaderData header;
    file.read(header);
    EXPECT_EQ(header.startFreq(), 90'012'300);
    EXPECT_EQ(header.stopFreq(), 120'000'000);
}

TEST(GoldenFiles, BookmarksWithoutAChannelRangeTableLeaveStrayPairsInTheTimeIndex)
{
    CFileAccess file = openGolden("bookmarks");
    const std::string strayData("3000#0.025#-30#100#\0", 20);
    for (const std::uint64_t time : {2000ULL, 196'635'503ULL, 8'244'235'440'894'325'027ULL}) {
        CVTCmdData record;
        EXPECT_EQ(file.read(record, time), 0U);
        EXPECT_EQ(record.cmd(), 0);
        EXPECT_EQ(TestSupport::dataOf(record), strayData);
    }
    CVTCmdData record;
    EXPECT_EQ(file.read(record, 2001), 0U);
    EXPECT_STREQ(record.strData(), "-29.25");
    EXPECT_EQ(file.readprev(record, 3000), 2000U);
    EXPECT_EQ(record.cmd(), 0);
}

TEST(GoldenFiles, InspectionSeesTheSameRecordsAndFindsNoDamage)
{
    const std::vector<std::pair<std::string, Content>> cases = {{"empty", emptyRecording()},
                                                                {"full", fullRecording()},
                                                                {"channelranges", channelRangeRecording()},
                                                                {"bookmarks", bookmarkedRecording()}};
    for (const auto& [name, content] : cases) {
        const Inspection::Summary summary = Inspection::inspect(goldenPath(name));
        EXPECT_EQ(summary.readability, Inspection::Readability::Ok) << name;
        EXPECT_THAT(summary.findings, IsEmpty()) << name;
        EXPECT_EQ(summary.types.size(), content.types.size()) << name;
        EXPECT_EQ(recordsWalked(name, summary), content.read) << name;
    }
}

TEST(GoldenFiles, InspectionReadsHeaderAndTables)
{
    const Inspection::Summary full = Inspection::inspect(goldenPath("full"));
    EXPECT_EQ(full.fileSize, 1136);
    EXPECT_EQ(full.header.startFrequencyHz, 90'012'300);
    EXPECT_EQ(full.header.startMs, 1'700'000'000'123U);
    EXPECT_EQ(full.header.jobId, "A1B2");
    EXPECT_EQ(full.header.deviceName, std::string("Empf\xe4nger S\xfc") + "d");
    EXPECT_EQ(full.ends.header, 107);
    EXPECT_EQ(full.header.positions.typeTable, 500);
    EXPECT_EQ(full.header.positions.firstRecord, 695);
    EXPECT_EQ(full.header.positions.timeTable, 1030);
    EXPECT_TRUE(full.header.automatic);
    ASSERT_EQ(full.times.size(), 8U);
    EXPECT_EQ(full.times.back().timeMs, Late + 1000);
    EXPECT_EQ(full.times.back().position, 1012);

    EXPECT_THAT(Inspection::inspect(goldenPath("channelranges")).channelRangeTimes, ElementsAre(10U, 100U, 101U));

    const Inspection::Summary marked = Inspection::inspect(goldenPath("bookmarks"));
    EXPECT_EQ(marked.times.size(), 3U);
    ASSERT_EQ(marked.bookmarks.size(), 2U);
    EXPECT_EQ(marked.bookmarks[0].timeMs, 2000U);
    EXPECT_EQ(marked.bookmarks[1].text, std::string("third\0#mark", 11));
}

namespace {

using Rewrite = std::function<void(CFileAccess&)>;

/// Rewrites a copy of one golden file and compares it with another.
void expectRewritten(const std::string& from, const std::string& to, const Rewrite& rewrite)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("copy.rec");
    ASSERT_TRUE(QFile::copy(QString::fromStdString(goldenPath(from)), path));
    ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner));
    {
        CFileAccess file(path.toLocal8Bit().constData(), QString(), nullptr, false, true, false, nullptr, nullptr);
        ASSERT_TRUE(file.IsValidFile());
        rewrite(file);
    }
    EXPECT_EQ(TestSupport::readFile(path), bytesOf(goldenPath(to)));
}

}  // namespace

TEST(GoldenRewrites, FewerBookmarksLeaveZerosAndMoreExtendTheFile)
{
    expectRewritten("bookmarks", "bookmarks_shorter", [](CFileAccess& file) {
        file.removeBookmark(3000);
        file.writeBookmarks();
    });
    expectRewritten("bookmarks", "bookmarks_longer", [](CFileAccess& file) {
        file.removeBookmark(2000);
        file.addBookmark(2500, "a longer text than the first one had");
        file.addBookmark(4000, "");
        file.writeBookmarks();
    });
    expectRewritten("bookmarks", "bookmarks_emptied", [](CFileAccess& file) {
        file.removeBookmark(2000);
        file.removeBookmark(3000);
        file.writeBookmarks();
    });
    expectRewritten("channelranges", "bookmarks_added", [](CFileAccess& file) {  // stored on destruction
        file.addBookmark(4000, "ends");
        file.addBookmark(100, "starts");
    });
}

TEST(GoldenRewrites, AClearedRangeTableIsZerosAndARebuiltOneStandsWhereTheOldOneWas)
{
    const Rewrite clear = [](CFileAccess& file) { file.clearChannelRangeDef(); };
    expectRewritten("channelranges", "ranges_cleared", clear);  // and they pass the end
    expectRewritten("bookmarks_added", "ranges_cleared_bookmarks", clear);
    expectRewritten("channelranges", "ranges_rebuilt", [](CFileAccess& file) {
        file.clearChannelRangeDef();
        file.addChannelRangeDef(4000);
        file.addChannelRangeDef(11);
        file.rebuildChannelRangeDef();
    });
    expectRewritten("bookmarks_added", "ranges_overrun", [](CFileAccess& file) {  // over the bookmarks
        file.addChannelRangeDef(200);
        file.rebuildChannelRangeDef();
    });
}
