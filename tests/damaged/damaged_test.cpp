// Damaged files: the inspection says what is wrong with them, and reading them comes to an end. Each fault is made from
// a sound golden file. Odd files that are legal stand beside them: these must not be called damaged.
#include <random>

#include <recording2/fileaccess.h>
#include <recording2/inspection/inspection.h>
#include <recording2/inspection/verify/verification.h>
#include <recording2/recordmodel.h>

#include "support/files.h"
#include "support/recordingbytes.h"

namespace {

using Recording2::CFileAccess;
using Recording2::CHeaderData;
using Recording2::CVTCmdData;
using Recording2::CVTTypesData;
namespace Inspection = Recording2::Inspection;
using Inspection::Readability;
using namespace testing;

using Bytes = std::function<std::string()>;

constexpr std::size_t HeaderArea = 500;

std::string golden(const std::string& name)
{
    const std::string bytes = TestSupport::bytesOf(std::string(GOLDEN_FOLDER) + "/" + name + "/" + name + ".rec");
    EXPECT_NE(bytes, "") << name;
    return bytes;
}

/// The bytes with the one occurrence of a piece replaced.
std::string with(std::string bytes, const std::string& piece, const std::string& replacement)
{
    const std::size_t at = bytes.find(piece);
    EXPECT_NE(at, std::string::npos) << piece;
    EXPECT_EQ(bytes.find(piece, at + 1), std::string::npos) << piece;
    return bytes.replace(at, piece.size(), replacement);
}

/// The same within the header, whose area keeps its size.
std::string withHeader(const std::string& bytes, const std::string& piece, const std::string& replacement)
{
    std::string area = with(bytes.substr(0, HeaderArea), piece, replacement);
    const std::size_t length = area.find_last_not_of('0', HeaderArea - 2 + replacement.size() - piece.size()) + 1;
    area.resize(length);
    area.append(HeaderArea - 1 - length, '0');
    return area + '#' + bytes.substr(HeaderArea);
}

std::string timeBytes(std::uint64_t milliseconds)
{
    return TestSupport::ByteBuilder().time(milliseconds).bytes();
}

std::string randomBytes()
{
    std::mt19937 generator(1);  // NOLINT(cert-msc51-cpp,cert-msc32-c): the same bytes every time
    std::string bytes(2000, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(generator() & 0xffU); });
    return bytes;
}

/// A file in a folder that goes with it.
class File {
public:
    File() = default;
    explicit File(const std::string& bytes) { write(bytes); }
    void write(const std::string& bytes) const { TestSupport::writeBytes(path(), bytes); }
    [[nodiscard]] std::string path() const { return (m_folder.path() + "/file.rec").toStdString(); }

private:
    QTemporaryDir m_folder;
};

/// All findings, of the tables and of the records, one a line.
std::string findingsOf(const std::string& path)
{
    const Inspection::Summary summary = Inspection::inspect(path);
    std::string text = summary.problem.empty() ? "" : summary.problem + "\n";
    const auto append = [&](const std::vector<Inspection::Finding>& findings) {
        for (const Inspection::Finding& finding : findings) {
            EXPECT_GE(finding.offset, 0);
            EXPECT_LE(finding.offset, summary.fileSize);
            text += std::to_string(finding.offset) + ": " + finding.text + "\n";
        }
    };
    append(summary.findings);
    append(Inspection::walkRecords(path, summary, [](const Inspection::Record&) { return true; }));
    return text;
}

/// Calls a read operation until it returns 0, which no operation may do without end.
void untilZero(std::size_t limit, const std::function<unsigned long long()>& read)
{
    std::size_t count = 0;
    while (read() != 0 && count <= limit) {
        ++count;
    }
    EXPECT_LE(count, limit) << "reading does not come to an end";
}

/// Uses every operation that reads. What it gives for a damaged file is not said, only that it ends.
void readEverything(const std::string& path, std::size_t fileSize)
{
    CFileAccess file(path.c_str(), QString(), nullptr, false, true, false, nullptr, nullptr);
    CHeaderData header;
    file.read(header);
    CVTTypesData types;
    file.read(types);
    CVTCmdData record;
    unsigned long long time = file.readfirst(record);
    untilZero(fileSize, [&] { return time = file.readnext(record); });
    file.readfirst(record, 0);
    file.readfirst(record, 36);
    untilZero(fileSize, [&] { return file.readnext(record, 36); });
    file.read(record, 1ULL);
    untilZero(fileSize, [&] { return file.read(record); });
    file.read(record, 1ULL);
    untilZero(fileSize, [&] { return file.readAndReturnTimeOfCurrentCmd(record); });
    time = 4'294'968'297ULL;
    untilZero(fileSize, [&] { return time = file.readprev(record, time); });
    file.readTables();
}

// A golden file of that name, changed: within the header, anywhere, or cut.
Bytes header(const char* name, const std::string& piece, const std::string& replacement)
{
    return [=] { return withHeader(golden(name), piece, replacement); };
}
Bytes body(const char* name, const std::string& piece, const std::string& replacement)
{
    return [=] { return with(golden(name), piece, replacement); };
}
Bytes positions(const char* positions)
{
    return header("full", "500#695#1030#0#0#1#", positions);
}
Bytes exactly(const std::string& bytes)
{
    return [=] { return bytes; };
}
Bytes cut(const char* name, std::size_t size)
{
    return [=] { return golden(name).substr(0, size); };
}

struct Fault {
    const char* name;
    Bytes bytes;
    const char* text;  // part of what is found
    Readability readability = Readability::Ok;
};

std::ostream& operator<<(std::ostream& out, const Fault& fault)
{
    return out << fault.name;
}

const std::string BookmarkPositions = "500#522#551#0#590#0#";

const std::vector<Fault> Faults = {
    {"EmptyFile", exactly(""), "is empty", Readability::Empty},
    {"TextFile", exactly("Dear reader,\nthis is a letter and not a recording.\n"), "not a recording",
     Readability::NoRecording},
    {"NumbersWithoutVersion", exactly("12 13 14\n"), "not a recording", Readability::NoRecording},
    {"RandomBytes", randomBytes, "not a recording", Readability::NoRecording},
    {"OldFormat", header("full", "2#0#9.", "1#7#9."), "version 1.7", Readability::OldFormat},
    {"NeverClosed", [] { return TestSupport::headerArea() + golden("full").substr(HeaderArea); }, "never closed",
     Readability::NeverClosed},
    {"NeverClosedAndEmpty", TestSupport::headerArea, "never closed", Readability::NeverClosed},
    {"NeverClosedWithinTheHeaderArea", exactly(std::string(37, '0')), "never closed", Readability::NeverClosed},
    {"CutInTheHeader", cut("full", 100), "within its header", Readability::Truncated},
    {"CutAtTheEndOfTheHeader", cut("empty", 499), "within its header", Readability::Truncated},
    {"CutBehindTheHeader", cut("full", 500), "type table should begin at 500, but the file ends at 500"},
    {"CutInTheTypeTable", cut("full", 560), "Type entry 3 of 6 is longer than the bytes that are left"},
    {"CutInTheRecords", cut("full", 800), "719: The data of a record is longer than the bytes that are left"},
    {"CutBetweenRecords", cut("full", 989), "time table should begin at 1030, but the file ends at 989"},
    {"CutInTheTimeTable", cut("full", 1070), "1069: An entry of the time table is cut off by the end of the file"},
    {"CutBetweenTimes", cut("full", 1069), "1069: The time table ends before the last record"},
    {"CutInTheChannelRangeTable", cut("channelranges", 690), "683: An entry of the channel range table is cut off"},
    {"CutInTheBookmarks", cut("bookmarks", 620), "603: A bookmark is longer than the bytes that are left"},
    {"HeaderFieldIsNoNumber", header("full", "#0.025#", "#0,025#"), "The step width is not followed by its separator"},
    {"HeaderFieldOutOfRange", header("full", "#-30#", "#99999999999#"), "The minimum level is out of range"},
    {"HeaderTextOfHugeLength", header("full", "#4#A1B2", "#2147483647#A1B2"),
     "The job id is longer than the bytes that are left"},
    {"HeaderTextOfNegativeLength", header("full", "#4#A1B2", "#-4#A1B2"), "The job id has a negative length"},
    {"HeaderTextWithANulByte", header("full", "#4#A1B2", std::string("#4#A\0B2", 7)), "The job id holds a NUL byte"},
    {"HeaderLongerThanItsArea", body("empty", "#7#UNKNOWN", "#450#" + std::string(450, 'x')),
     "500: The header is longer than its 500 bytes"},
    {"PositionsBeyondTheFile", positions("500#695#99999#0#0#1#"),
     "time table should begin at 99999, but the file ends at 1136"},
    {"NegativePosition", positions("-5#695#1030#0#0#1#"), "type table should begin at -5"},
    {"PositionWithinTheHeader", positions("500#20#1030#0#0#1#"),
     "first record should begin at 20, which is within the header"},
    {"TimeTableInFrontOfTheRecords", positions("500#1030#695#0#0#1#"), "time table stands in front of the records"},
    {"TypeTableBehindTheRecords", positions("1030#695#1030#0#0#1#"),
     "type table does not stand in front of the records"},
    {"BookmarksInFrontOfTheTimeTable", header("bookmarks", BookmarkPositions, "500#522#551#0#540#0#"),
     "bookmark table stands in front of the time table"},
    {"RecordsWithoutTimeTable", positions("500#695#0#0#0#1#"), "There are records but no time table"},
    {"TimeTableWithoutRecords", positions("500#0#1030#0#0#1#"), "There is a time table but no record"},
    {"NegativeTypeCount", body("full", "#6#46#4#9#FREQUENCY", "#-6#46#4#8#FREQUENC"),
     "500: The number of types is damaged"},
    {"HugeTypeCount", body("channelranges", "1#20#7#10#DFSPECTRUM", "2147483647#20#7#1#D"), "of 2147483647"},
    {"KeywordOfHugeLength", body("full", "9#FREQUENCY", "999999999#Y"),
     "Type entry 1 of 6 is longer than the bytes that are left"},
    {"TypeNumberTwice", body("full", "47#2#14#DEVICE", "36#2#14#DEVICE"), "The type number 36 stands twice"},
    {"CommandCodeIsNoNumber", body("full", "36#5#-31.5", "xx#5#-31.5"),
     "709: The command code of a record is not a number"},
    {"DataOfHugeLength", body("full", "36#5#-31.5", "2#9999999#"),
     "709: The data of a record is longer than the bytes that are left"},
    {"DataOfNegativeLength", body("full", "36#5#-31.5", "36#-5#31.5"),
     "709: The data of a record has a negative length"},
    {"RecordWithoutData", body("full", "36#5#-31.5", "36#0#-31.5"), "709: A record has no data"},
    {"SeparatorOverwritten", body("full", "36#5#-31.5", "36#5 -31.5"),
     "The data length of a record is not followed by its separator"},
    {"DataLengthTooSmall", body("full", "36#5#-31.5", "36#4#-31.5"), "718: 1 of the records are not in the time table"},
    {"TimesOutOfOrder", body("full", timeBytes(200), timeBytes(2)), "1082: An entry of the time table is out of order"},
    {"TimeOfNoRecord", body("full", timeBytes(200) + "989#", timeBytes(200) + "990#"),
     "1 entries of the time table name a position at which no record begins"},
    {"TimeEntryMissing", body("full", timeBytes(200) + "989#", ""), "989: 1 of the records are not in the time table"},
    {"FirstTimeEntryMissing", body("full", timeBytes(10) + "695#", ""),
     "The time table does not begin with the first record"},
    {"ChannelRangesOutOfOrder", body("channelranges", timeBytes(10) + timeBytes(100), timeBytes(100) + timeBytes(10)),
     "683: A time in the channel range table is out of order"},
    {"BookmarkOfHugeLength", body("bookmarks", "#2#ok", "#9999999999#ok"),
     "590: A bookmark is longer than the bytes that are left"},
    {"BookmarkOfNegativeLength", body("bookmarks", "#2#ok", "#-2#ok"), "590: A bookmark has a negative length"},
    {"BookmarkWithoutTime", body("bookmarks", timeBytes(2000), timeBytes(0)), "590: A bookmark has no time"},
};

class DamagedFile : public testing::TestWithParam<Fault> {};

TEST_P(DamagedFile, IsReportedByTheInspectionFoundByVerifyingAndReadToAnEnd)
{
    const std::string bytes = GetParam().bytes();
    const File file(bytes);
    const Inspection::Summary summary = Inspection::inspect(file.path());
    EXPECT_EQ(summary.readability, GetParam().readability);
    EXPECT_EQ(summary.problem.empty(), summary.readability == Readability::Ok);
    EXPECT_THAT(findingsOf(file.path()), HasSubstr(GetParam().text));
    const Inspection::Verification found = Inspection::verify(file.path());
    EXPECT_EQ(found.readability, GetParam().readability);
    EXPECT_EQ(found.count(Inspection::Severity::Damage) > 0, found.readability == Readability::Ok);
    for (const Inspection::Remark& remark : found.remarks) {
        EXPECT_GE(remark.offset, 0);
        EXPECT_LE(remark.offset, found.fileSize);
    }
    readEverything(file.path(), bytes.size());
}

const auto NameOf = [](const auto& info) { return std::string(info.param.name); };

INSTANTIATE_TEST_SUITE_P(Every, DamagedFile, testing::ValuesIn(Faults), NameOf);

struct Quirk {
    const char* name;
    Bytes bytes;
};

std::ostream& operator<<(std::ostream& out, const Quirk& quirk)
{
    return out << quirk.name;
}

const std::vector<Quirk> Quirks = {
    {"BookmarksWithoutChannelRanges", [] { return golden("bookmarks"); }},
    {"RecordsOfTypesThatTheTypeTableDoesNotName", [] { return golden("full"); }},
    {"ChannelRangeTableOfZeros", [] { return golden("channelranges").substr(0, 674) + std::string(32, '\0'); }},
    {"ZerosBehindTheLastChannelRange", [] { return golden("channelranges").substr(0, 683) + std::string(23, '\0'); }},
    {"ZerosLeftByLongerBookmarks", [] { return golden("bookmarks") + std::string(100, '0'); }},
    {"FewZerosLeftByLongerBookmarks", [] { return golden("bookmarks") + std::string(3, '0'); }},
    {"AllBookmarksRemoved", [] { return golden("bookmarks").substr(0, 590) + std::string(36, '0'); }},
    {"BookmarkWithoutText", [] { return golden("bookmarks") + timeBytes(5000) + "0#"; }},
    {"ChannelRangesAddedBehindBookmarks",
     [] { return withHeader(golden("bookmarks"), BookmarkPositions, "500#522#551#626#590#0#") + timeBytes(10); }},
    {"SecondTypeTable",
     [] {
         std::string bytes = withHeader(golden("empty"), "0#0#0#0#0#0#0", "500#524#533#0#0#0#0");
         return bytes + "1#36#3#5#LEVEL6#/LEVEL" + "0#" + "36#4#-31." + timeBytes(10) + "524#";
     }},
    {"BytesBehindTheTimeTable", [] { return golden("full") + "something else that stands behind"; }},
    {"PairsBehindTheTimeTable", [] { return golden("full") + timeBytes(1) + "695#" + timeBytes(2) + "9#"; }},
    {"TypeTableWithoutRecords", [] { return withHeader(golden("empty"), "0#0#0#0#0#0#0", "500#0#0#0#0#0#0") + "0#"; }},
};

class OddFile : public testing::TestWithParam<Quirk> {};

TEST_P(OddFile, IsSoundHasNoDamageForVerifyingAndIsReadToAnEnd)
{
    const std::string bytes = GetParam().bytes();
    const File file(bytes);
    EXPECT_EQ(Inspection::inspect(file.path()).readability, Readability::Ok);
    EXPECT_THAT(findingsOf(file.path()), IsEmpty());
    for (const Inspection::Remark& remark : Inspection::verify(file.path()).remarks) {
        EXPECT_EQ(remark.severity, Inspection::Severity::Note) << remark.offset << ": " << remark.text;
    }
    readEverything(file.path(), bytes.size());
}

INSTANTIATE_TEST_SUITE_P(Every, OddFile, testing::ValuesIn(Quirks), NameOf);

std::vector<Inspection::Record> recordsOf(const std::string& bytes)
{
    const File file(bytes);
    std::vector<Inspection::Record> records;
    Inspection::walkRecords(file.path(), Inspection::inspect(file.path()), [&](const Inspection::Record& record) {
        records.push_back(record);
        return true;
    });
    return records;
}

}  // namespace

TEST(DamagedFiles, AMissingFileIsToldFromADirectory)
{
    const QTemporaryDir folder;
    const std::string path = folder.path().toStdString();
    EXPECT_EQ(Inspection::inspect(path + "/nothing.rec").readability, Readability::Missing);
    EXPECT_EQ(Inspection::inspect(path + "/nothing/nothing.rec").readability, Readability::Missing);
    EXPECT_EQ(Inspection::inspect(path).readability, Readability::Unreadable);
    EXPECT_THAT(Inspection::inspect(path).problem, HasSubstr("directory"));
    readEverything(path + "/nothing.rec", 0);
    readEverything(path, 0);
}

TEST(DamagedFiles, RecordsBehindADamagedOneAreFoundThroughTheTimeTableAndKeepTheirTimes)
{
    const auto behind = recordsOf(with(golden("full"), "36#5#-31.5", "xx#5#-31.5"));
    ASSERT_EQ(behind.size(), 7U);
    EXPECT_EQ(behind[1].position, 719);
    EXPECT_EQ(behind[1].timeMs, 12U);
    const auto cutOff = recordsOf(golden("full").substr(0, 989));
    ASSERT_EQ(cutOff.size(), 4U);
    EXPECT_EQ(cutOff[0].data, "100000000");
    EXPECT_EQ(cutOff[0].timeMs, 0U) << "with the table the times are gone";
    const auto oneTime = recordsOf(with(golden("full"), timeBytes(200), timeBytes(2)));
    ASSERT_EQ(oneTime.size(), 8U);
    EXPECT_EQ(oneTime[4].timeMs, 0U);
    EXPECT_EQ(oneTime[5].timeMs, 4'294'967'297U);
}

TEST(DamagedFiles, TheWalkStopsWhenItsCallerHasSeenEnough)
{
    const File file(golden("full"));
    int seen = 0;
    const auto findings = Inspection::walkRecords(file.path(), Inspection::inspect(file.path()),
                                                  [&](const Inspection::Record&) { return ++seen < 3; });
    EXPECT_EQ(seen, 3);
    EXPECT_THAT(findings, IsEmpty());
}

TEST(DamagedFiles, EveryCutOfEveryGoldenFileIsAnswered)
{
    // A cut between two channel ranges or two bookmarks does not show: their tables have neither a count nor an end.
    const std::vector<std::pair<const char*, std::size_t>> shown = {
        {"empty", 499}, {"full", 1135}, {"channelranges", 674}, {"bookmarks", 590}};
    const File file;
    for (const auto& [name, last] : shown) {
        const std::string bytes = golden(name);
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            file.write(bytes.substr(0, size));
            EXPECT_TRUE(!findingsOf(file.path()).empty() || size > last) << name << " cut at " << size;
            readEverything(file.path(), size);
        }
    }
}

TEST(DamagedFiles, EveryByteOfEveryGoldenFileMayBeOverwritten)
{
    const File file;
    for (const char* name : {"empty", "full", "channelranges", "bookmarks"}) {
        const std::string bytes = golden(name);
        for (std::size_t at = 0; at < bytes.size(); ++at) {
            for (const char byte : {'\0', '#', '9', '-'}) {
                std::string damaged = bytes;
                damaged[at] = byte;
                file.write(damaged);
                findingsOf(file.path());
                readEverything(file.path(), bytes.size());
            }
        }
    }
}
