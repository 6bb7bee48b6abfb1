// Checking whole files: which sentence each fault gets and where, and that no changed byte goes unnoticed where the
// format could tell.
#include <random>

#include <recording2/inspection/verify/verification.h>

#include "madefile.h"

namespace {

using namespace Recording2::Inspection;
using namespace testing;
using namespace TestSupport;

constexpr std::size_t HeaderArea = 500;

class Verify : public MadeFileTest {
protected:
    /// The remarks, "damage 12: text" each.
    std::vector<std::string> verify(const std::string& bytes)
    {
        std::vector<std::string> lines;
        for (const Remark& remark : Recording2::Inspection::verify(store(bytes)).remarks) {
            lines.push_back((remark.severity == Severity::Damage ? "damage " : "note ") +
                            std::to_string(remark.offset) + ": " + remark.text);
        }
        return lines;
    }
};

ReferenceRecording recording()
{
    ReferenceRecording recording;
    recording.types({{20, 7, "DFSPECTRUM", "/Df"}, {36, 3, "LEVEL", "/Level"}});
    recording.record(20, "34;1;2", 10, true).record(36, "-30", 11).record(36, "-31", 500);
    return recording;
}

std::string soundBytes()
{
    return recording().close();
}

std::string bookmarkBytes(std::uint64_t time, const std::string& text)
{
    return ByteBuilder().time(time).text(text).bytes();
}

/// The same file with its header written anew, all positions as they were unless changed.
std::string withHeader(const std::string& bytes, const std::string& header)
{
    return ByteBuilder(TestSupport::headerArea()).overwrite(0, header).bytes() + bytes.substr(HeaderArea);
}

HeaderFields headerOf(const Summary& summary)
{
    const auto& positions = summary.header.positions;
    return {.typeTable = positions.typeTable,
            .firstRecord = positions.firstRecord,
            .timeTable = positions.timeTable,
            .channelRangeTable = positions.channelRangeTable,
            .bookmarkTable = positions.bookmarkTable};
}

}  // namespace

TEST_F(Verify, AFileThatCannotBeReadIsToldByItsProblem)
{
    const Verification found = Recording2::Inspection::verify(store("a letter"));
    EXPECT_EQ(found.readability, Recording2::Inspection::Readability::NoRecording);
    EXPECT_EQ(found.problem, "This is not a recording.");
    EXPECT_THAT(found.remarks, IsEmpty());
}

TEST_F(Verify, AHeaderThatTakesTheWholeAreaHasNoFilling)
{
    HeaderFields header;
    const auto length = static_cast<std::size_t>(Recording2::Inspection::inspect(store(soundBytes())).ends.header);
    header.jobId = std::string(HeaderArea - length + 4 - 2, 'x');  // 4 as it is; its length takes two digits more
    const std::string bytes = recording().close(header);
    ASSERT_EQ(Recording2::Inspection::inspect(store(bytes)).ends.header, 500);
    EXPECT_THAT(verify(bytes), IsEmpty());
}

TEST_F(Verify, VeryManyUnnamedTypesAreNotToldOneByOne)
{
    ReferenceRecording made = recording();
    for (int i = 0; i < 1000; ++i) {
        made.record(1000 + i, "x", 600 + static_cast<std::uint64_t>(i));
    }
    const std::vector<std::string> lines = verify(made.close());
    ASSERT_EQ(lines.size(), 21U);
    EXPECT_THAT(lines.back(), testing::HasSubstr("980 records are of still other types"));
}

TEST_F(Verify, BytesThatBelongToNoTableAreDamageWithinAndANoteBehind)
{
    EXPECT_THAT(verify(ReferenceRecording().record(1, "x", 10).close() + "more"),
                ElementsAre("note 500: There are records but no type table.",
                            "note 500: 1 record is of type 1, which the type table does not name.",
                            "note 518: 4 bytes stand behind all tables."));
    const std::string bytes = soundBytes();
    HeaderFields header = headerOf(Recording2::Inspection::inspect(store(bytes)));
    header.channelRangeTable = 0;
    header.bookmarkTable = static_cast<std::int32_t>(bytes.size());
    const std::string withBookmark = withHeader(bytes, header.bytes()) + bookmarkBytes(10, "mark");
    const std::vector<std::string> lines = verify(withBookmark);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_THAT(lines.front(), testing::HasSubstr("9 bytes belong to no table"));
}

TEST_F(Verify, TwoTablesAtOnePlaceAreDamage)
{
    const std::string bytes = soundBytes();
    HeaderFields header = headerOf(Recording2::Inspection::inspect(store(bytes)));
    header.bookmarkTable = header.channelRangeTable;
    EXPECT_THAT(verify(withHeader(bytes, header.bytes())),
                testing::Contains(testing::HasSubstr("begin at the same place")));
}

TEST_F(Verify, RecordsAndBookmarksBehindTheEndAreNotes)
{
    std::string bytes = recording().record(36, "-5", 70'000).close();  // of 60 s
    HeaderFields header = headerOf(Recording2::Inspection::inspect(store(bytes)));
    header.bookmarkTable = static_cast<std::int32_t>(bytes.size());
    bytes = withHeader(bytes, header.bytes()) + bookmarkBytes(70'000, "at the last") + bookmarkBytes(90'000, "later");
    const std::vector<std::string> lines = verify(bytes);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0], testing::HasSubstr("The last record is 9667 ms later than the end of the recording."));
    EXPECT_THAT(lines[1], testing::HasSubstr("1 bookmark is later than the end of the recording."));
}

namespace {

/// What a reader gets of a file, without the values of which any may be true: of these the lengths.
struct Structure {
    std::vector<std::int64_t> positions;
    std::size_t types = 0;
    std::vector<std::tuple<std::int64_t, std::string, bool>> records;  // position, data, has a time
    std::size_t times = 0;
    std::size_t ranges = 0;
    std::vector<std::size_t> bookmarkLengths;

    bool operator==(const Structure&) const = default;
};

Structure structureOf(const std::string& path)
{
    const Summary summary = Recording2::Inspection::inspect(path);
    const auto& h = summary.header;
    Structure structure;
    structure.positions = {h.positions.typeTable, h.positions.firstRecord, h.positions.timeTable,
                           h.positions.channelRangeTable, h.positions.bookmarkTable};
    structure.types = summary.types.size();
    Recording2::Inspection::walkRecords(path, summary, [&](const Record& record) {
        const bool named = std::any_of(summary.times.begin(), summary.times.end(),
                                       [&](const auto& entry) { return entry.position == record.position; });
        structure.records.emplace_back(record.position, record.data, named);
        return true;
    });
    structure.times = summary.times.size();
    structure.ranges = summary.channelRangeTimes.size();
    for (const auto& bookmark : summary.bookmarks) {
        structure.bookmarkLengths.push_back(bookmark.text.size());
    }
    return structure;
}

/// A recording with everything, and the offsets of its bytes that are no data of records.
struct Sample {
    std::string bytes;
    std::vector<std::size_t> structural;
};

class ChangedBytes : public Verify, public testing::WithParamInterface<std::uint32_t> {
protected:
    Sample makeSample(std::mt19937& random)
    {
        ReferenceRecording made;
        made.types({{20, 7, "DFSPECTRUM", "/Df"}, {36, 3, "LEVEL", "/Level"}, {46, 4, "FREQUENCY", "/F"}});
        std::uint64_t time = 10;
        for (int i = 0; i < 12; ++i) {
            const bool range = random() % 3 == 0;
            const std::string data = (range ? "34;" : "") + std::string(1 + random() % 40, static_cast<char>(random()));
            made.record(range ? 20 : 36, data, time, range);
            time += 1 + random() % 100;
        }
        Sample sample{made.close(), {}};
        HeaderFields header = headerOf(Recording2::Inspection::inspect(store(sample.bytes)));
        header.bookmarkTable = static_cast<std::int32_t>(sample.bytes.size());
        sample.bytes =
            withHeader(sample.bytes, header.bytes()) + bookmarkBytes(20, "first") + bookmarkBytes(40, "second");
        const std::string path = store(sample.bytes);
        std::vector<bool> isData(sample.bytes.size());
        Recording2::Inspection::walkRecords(path, Recording2::Inspection::inspect(path), [&](const Record& record) {
            const std::size_t head = std::to_string(record.code).size() + std::to_string(record.data.size()).size() + 2;
            const auto data = static_cast<std::ptrdiff_t>(static_cast<std::size_t>(record.position) + head);
            std::fill_n(isData.begin() + data, record.data.size(), true);
            return true;
        });
        for (std::size_t i = 0; i < isData.size(); ++i) {
            if (!isData[i]) {
                sample.structural.push_back(i);
            }
        }
        return sample;
    }
    /// Whether the change is told, or makes no difference to a reader.
    void expectNoticed(const Structure& original, const std::string& changed, const std::string& what)
    {
        const std::string path = store(changed);
        const Verification found = Recording2::Inspection::verify(path);
        if (found.readability == Recording2::Inspection::Readability::Ok && found.count(Severity::Damage) == 0) {
            EXPECT_EQ(structureOf(path), original) << what;
        }
    }
};

}  // namespace

TEST_P(ChangedBytes, OfHeaderAndTablesAreNoticedWhereTheyMisleadAReader)
{
    std::mt19937 random(GetParam());
    const Sample sample = makeSample(random);
    ASSERT_THAT(verify(sample.bytes), IsEmpty());
    const Structure original = structureOf(store(sample.bytes));
    constexpr int Changes = 25;
    for (int i = 0; i < Changes; ++i) {
        constexpr std::string_view Others("0123456789#- \n\0\xff", 16);
        const std::size_t at = sample.structural[random() % sample.structural.size()];
        const std::string where = " at " + std::to_string(at);
        std::string changed = sample.bytes;
        changed[at] = static_cast<char>(changed[at] ^ (1 << random() % 8));
        expectNoticed(original, changed, "flipped" + where);
        changed = sample.bytes;
        changed[at] = Others[random() % Others.size()];
        expectNoticed(original, changed, "replaced" + where);
        changed = sample.bytes;
        expectNoticed(original, changed.erase(at, 1), "deleted" + where);
        changed = sample.bytes;
        expectNoticed(original, changed.insert(at, 1, Others[random() % Others.size()]), "inserted" + where);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ChangedBytes, testing::Range(1U, 21U));
