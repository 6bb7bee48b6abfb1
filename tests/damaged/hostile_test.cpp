// Files that somebody made so that reading them would take for ever, or all memory or disk. Where a reader once did the
// square of the work, the file is so large that this would take many minutes, which is more than a test may take.
#include <recording2/fileaccess.h>
#include <recording2/inspection/inspection.h>
#include <recording2/inspection/rescue/salvage.h>
#include <recording2/inspection/verify/verification.h>
#include <recording2/mappinggenerator.h>
#include <recording2/recordmodel.h>

#include "support/recordingbytes.h"
#include "support/testing.h"

namespace {

using namespace Recording2;
using TestSupport::ByteBuilder;
using TestSupport::HeaderFields;
namespace Inspection = Recording2::Inspection;

constexpr std::int32_t HeaderArea = 500;
constexpr std::int32_t LastPosition = std::numeric_limits<std::int32_t>::max();

class HostileFile : public testing::Test {
protected:
    /// The file: the header, the placeholder after it, the rest.
    void write(const HeaderFields& header, const std::string& rest)
    {
        std::string area = header.bytes();
        ASSERT_LT(area.size(), static_cast<std::size_t>(HeaderArea));
        area.append(HeaderArea - 1 - area.size(), '0');
        TestSupport::writeFile(name(), area + '#' + rest);
    }
    [[nodiscard]] QString name() const { return m_folder.filePath("hostile.rec"); }
    [[nodiscard]] std::string path() const { return TestSupport::fileName8(name()); }
    [[nodiscard]] std::int64_t size() const { return QFileInfo(name()).size(); }
    [[nodiscard]] CFileAccess open() const
    {
        return {path().c_str(), QString(), nullptr, false, true, false, nullptr, nullptr};
    }
    /// The time and the record of every definition of a channel range, with those given at the end.
    [[nodiscard]] std::vector<std::pair<unsigned long long, std::string>> rangeDefinitions() const
    {
        CFileAccess file = open();
        file.CRDTableToBegin();
        std::vector<std::pair<unsigned long long, std::string>> found;
        for (bool more = true; more;) {
            CVTCmdData record;
            unsigned long long time = 0;
            more = file.readNextChannelRangeDef(record, time);
            found.emplace_back(time, record.str());
        }
        return found;
    }
    void inspectAll() const
    {
        const Inspection::Summary summary = Inspection::inspect(path());
        Inspection::walkRecords(path(), summary, [](const Inspection::Record&) { return true; });
        Inspection::verify(path());
        Inspection::salvage(path());
    }

private:
    QTemporaryDir m_folder;
};

std::string typeEntry(std::int32_t number, const std::string& keyword)
{
    return ByteBuilder().number(number).number(1).text(keyword).text("").bytes();
}

TEST_F(HostileFile, TypesByTheHundredThousandAreReadInOnePass)
{
    constexpr std::int32_t Count = 400'000;
    std::string types = ByteBuilder().number(LastPosition).bytes();
    for (std::int32_t i = 0; i < Count; ++i) {
        types += typeEntry(i, "");
    }
    write({.typeTable = HeaderArea}, types);
    CVTTypesData read;
    EXPECT_EQ(open().read(read), 1U);
    // What stands at the end of the file reads as one more entry of the number 0.
    EXPECT_EQ(read.get_vector().size(), static_cast<std::size_t>(Count));
    EXPECT_EQ(read.get_vector().back().typeNumber, Count - 1);
}

TEST_F(HostileFile, ATypeThatStandsManyTimesIsNotCopiedEveryTime)
{
    constexpr int Count = 200'000;
    std::string types = ByteBuilder().number(Count).bytes() + typeEntry(7, std::string(1'000'000, 'K'));
    for (int i = 1; i < Count; ++i) {
        types += typeEntry(7, "x");
    }
    write({.typeTable = HeaderArea}, types);
    CVTTypesData read;
    EXPECT_EQ(open().read(read), 1U);
    ASSERT_EQ(read.get_vector().size(), 1U);
    EXPECT_EQ(read.get_vector().front().keyword.size(), 1'000'000U);
    const Inspection::Summary summary = Inspection::inspect(path());
    EXPECT_LE(summary.findings.size(), 30U);
    EXPECT_LE(summary.types.size(), 30U);
}

TEST_F(HostileFile, ADerivedTypeTableIsGivenEveryEntry)
{
    struct Counting : CVTTypesData {
        void add_item(S_TYPES item) override
        {
            ++count;
            CVTTypesData::add_item(std::move(item));
        }
        int count = 0;
    };
    write({.typeTable = HeaderArea}, ByteBuilder().number(2).bytes() + typeEntry(7, "A") + typeEntry(7, "B"));
    Counting types;
    EXPECT_EQ(open().read(types), 1U);
    EXPECT_EQ(types.count, 2);
    ASSERT_EQ(types.get_vector().size(), 1U);
    EXPECT_EQ(types.get_vector().front().keyword, "A");
}

TEST_F(HostileFile, ATypeTableThatThrowsIsNotRead)
{
    struct Throwing : CVTTypesData {
        void add_item(S_TYPES /*item*/) override { throw 7; }
    };
    write({.typeTable = HeaderArea}, ByteBuilder().number(1).bytes() + typeEntry(7, "A"));
    Throwing types;
    EXPECT_EQ(open().read(types), 0U);
}

TEST_F(HostileFile, DefinitionsThatNameOneLongMomentLookThroughItOnce)
{
    constexpr std::uint64_t Count = 100'000;
    ByteBuilder body;
    ByteBuilder times;
    ByteBuilder ranges;
    for (std::uint64_t time = 10; time < 10 + Count; ++time) {
        times.time(time).number(HeaderArea + body.position());
        ranges.time(time);
        body.raw(TestSupport::recordBytes(7, "x"));
    }
    HeaderFields header{.firstRecord = HeaderArea, .timeTable = HeaderArea + body.position()};
    header.channelRangeTable = header.timeTable + times.position();
    write(header, body.bytes() + times.bytes() + ranges.bytes());
    const auto found = rangeDefinitions();
    ASSERT_EQ(found.size(), Count);
    for (std::uint64_t i = 0; i < Count; ++i) {
        ASSERT_EQ(found[i], std::pair(10ULL + i, std::string("x")));
    }
    inspectAll();
}

TEST_F(HostileFile, ADefinitionInTheMiddleOfAMomentFindsTheRangeBehindIt)
{
    TestSupport::ReferenceRecording recording;
    recording.record(7, "first", 100, true).record(7, "second", 101, true).record(7, "a34;b", 102, true);
    recording.record(7, "behind", 103, true).record(7, "last", 104, true);
    TestSupport::writeFile(name(), recording.close());
    const std::vector<std::pair<unsigned long long, std::string>> expected = {
        {102, "a34;b"}, {102, "a34;b"}, {102, "a34;b"}, {103, "last"}, {104, "last"}};
    EXPECT_EQ(rangeDefinitions(), expected);
}

// Times and ranges that name one place after the other, where a record begins that takes all that follows.
std::string overlapping(HeaderFields& header, std::uint64_t count, std::uint64_t step)
{
    const std::string head = "7#400000#";
    std::string body;
    ByteBuilder times;
    ByteBuilder ranges;
    for (std::uint64_t i = 0; i < count; ++i) {
        times.time(100 + i * step).number(HeaderArea + static_cast<std::int64_t>(body.size()));
        ranges.time(100 + i * step);
        body += head;
    }
    body += std::string(400'000, 'x');
    header.firstRecord = HeaderArea;
    header.timeTable = HeaderArea + static_cast<std::int32_t>(body.size());
    header.channelRangeTable = header.timeTable + times.position();
    return body + times.bytes() + ranges.bytes();
}

TEST_F(HostileFile, RecordsThatOverlapAreNotReadByTheHundredThousandForOneCode)
{
    HeaderFields header;
    const std::string bytes = overlapping(header, 100'000, 2);
    write(header, bytes);
    CVTCmdData record;
    EXPECT_EQ(open().readfirst(record, 8), 0U);
}

TEST_F(HostileFile, RecordsThatOverlapAreNotReadByTheHundredThousandForChannelRanges)
{
    for (const std::uint64_t step : {1U, 2U}) {
        HeaderFields header;
        const std::string bytes = overlapping(header, 100'000, step);
        write(header, bytes);
        CFileAccess file = open();
        file.CRDTableToBegin();
        CVTCmdData record;
        unsigned long long time = 0;
        std::size_t count = 0;
        while (file.readNextChannelRangeDef(record, time)) {
            ++count;
        }
        EXPECT_LT(count, 100'000U);
        Recording2::MappingGenerator generator;
        Recording2::MappingGenerator::BearingMap map;
        long long start = 0;
        long long stop = 0;
        ASSERT_TRUE(generator.LoadRecording(start, stop, path().c_str(), nullptr));
        generator.RequestMapping(map, start + 1'000'000'000, start);
    }
}

TEST_F(HostileFile, TheWalkDoesNotComeBackToARunOfSpacesOrDigitsFromEveryPlaceInIt)
{
    for (const char filling : {' ', '7'}) {
        constexpr std::int32_t Count = 200'000;
        const std::string body(Count * 8, filling);
        ByteBuilder times;
        for (std::int32_t i = 0; i < Count; ++i) {
            times.time(10 + static_cast<std::uint64_t>(i)).number(HeaderArea + i * 8);
        }
        const auto timeTable = HeaderArea + static_cast<std::int32_t>(body.size());
        write({.firstRecord = HeaderArea, .timeTable = timeTable}, body + times.bytes());
        inspectAll();
    }
}

TEST_F(HostileFile, BookmarksBehindDamageAreNotLookedForInEveryChainToTheEnd)
{
    // After the damage every fifth place begins a chain of bookmarks, all of which go wrong at the end of the file.
    std::string body;
    for (int i = 0; i < 300'000; ++i) {
        body += std::string(8, static_cast<char>('a' + i % 26)) + "#1#";
    }
    std::string ascending;
    for (std::uint64_t time = 1; time < 300'000; ++time) {
        ascending += ByteBuilder().time(time).text("x").bytes();
    }
    write({.bookmarkTable = HeaderArea}, "damaged" + body + ascending + "end");
    EXPECT_TRUE(Inspection::salvage(path()).bookmarksLost);
}

TEST_F(HostileFile, TheLastTimeOfAllIsNotFollowedByAnother)
{
    constexpr std::uint64_t Latest = std::numeric_limits<std::uint64_t>::max();
    const std::string records = TestSupport::recordBytes(7, "first") + TestSupport::recordBytes(7, "last");
    const auto first = static_cast<std::int64_t>(TestSupport::recordBytes(7, "first").size());
    ByteBuilder times;
    times.time(0).number(HeaderArea).time(Latest).number(HeaderArea + first);
    HeaderFields header{.startMs = Latest,
                        .stopMs = Latest,
                        .firstRecord = HeaderArea,
                        .timeTable = HeaderArea + static_cast<std::int32_t>(records.size())};
    write(header, records + times.bytes());
    CFileAccess file = open();
    file.addChannelRangeDef(Latest);
    file.CRDTableToBegin();
    CVTCmdData record;
    unsigned long long time = 0;
    EXPECT_FALSE(file.readNextChannelRangeDef(record, time));
    EXPECT_EQ(time, Latest);
    EXPECT_STREQ(record.str(), "last");
    inspectAll();
}

TEST_F(HostileFile, ATablePositionBehindTheEndDoesNotFillTheDisk)
{
    write({.firstRecord = HeaderArea,
           .timeTable = HeaderArea + 5,
           .channelRangeTable = LastPosition - 100,
           .bookmarkTable = LastPosition},
          "7#1#x");
    const std::int64_t before = size();
    const std::string bytes = TestSupport::readFile(name());
    {
        CFileAccess file = open();
        file.addBookmark(10, "a moment");
        file.writeBookmarks();
        file.addChannelRangeDef(10);
        file.rebuildChannelRangeDef();
        file.clearChannelRangeDef();
        file.removeBookmark(10);
        EXPECT_EQ(size(), before);
    }
    EXPECT_EQ(TestSupport::readFile(name()), bytes) << "a file that cannot be rewritten stays as it is";
}

TEST_F(HostileFile, ClearingChannelRangesEndsWithTheFileWhereverTheBookmarksShouldBe)
{
    write({.channelRangeTable = HeaderArea, .bookmarkTable = LastPosition}, "0123456789");
    const std::int64_t before = size();
    CFileAccess file = open();
    file.clearChannelRangeDef();
    EXPECT_LT(size(), before + 8);
    EXPECT_EQ(TestSupport::readFile(name()).substr(HeaderArea, 10), std::string(10, '\0'));
}

}  // namespace
