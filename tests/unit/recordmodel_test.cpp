// The objects of the interface: headers, records and type tables, copied, moved and searched.
#include <type_traits>

#include <recording2/mappinggenerator.h>

#include "support/libraryobjects.h"
#include "support/testing.h"

using namespace Recording2;

namespace {

using TestSupport::dataOf;
using TestSupport::fieldsOf;
using TestSupport::TypeFields;

const TestSupport::HeaderFields Full{.minorVersion = 1, .minLevel = -7, .startMs = 1, .stopMs = 2, .automatic = true};

// Its times are no whole milliseconds.
CHeaderData fullHeader()
{
    CHeaderData header = TestSupport::makeHeader(Full);
    header.set_startTS(CTimeStamp(1'001ULL));
    header.set_stopTS(CTimeStamp(2'002ULL));
    return header;
}

void expectFull(const CHeaderData& header)
{
    EXPECT_EQ(fieldsOf(header), Full);
    EXPECT_EQ(header.startTS().getTimeStamp(), 1'001U);
    EXPECT_EQ(header.stopTS().getTimeStamp(), 2'002U);
}

}  // namespace

TEST(HeaderData, ADefaultHeaderHasEmptyTextsAndTimesThatReadAsZero)
{
    const CHeaderData header;
    EXPECT_EQ(header.deviceTypeLength(), 0U);
    EXPECT_EQ(header.deviceNameLength(), 0U);
    EXPECT_EQ(header.JobIDLength(), 0U);
    EXPECT_STREQ(header.deviceType(), "");
    EXPECT_STREQ(header.deviceName(), "");
    EXPECT_STREQ(header.getJobID(), "");
    EXPECT_EQ(header.startTS().getTimeStamp(), 0U);
    EXPECT_EQ(header.stopTS().getTimeStamp(), 0U);
}

TEST(HeaderData, TheCombinedVersionHoldsTheMajorOneInTheUpperHalfWhichANegativeMinorOneHides)
{
    CHeaderData header;
    for (const auto& [major, minor, combined] : std::vector<std::array<int, 3>>{
             {2, 0, 131'072}, {3, 5, 3 * 65'536 + 5}, {-1, 0, -65'536}, {1, -1, -1}, {2, -1, -1}, {2, -2, -2}}) {
        header.set_version(static_cast<std::int16_t>(major), static_cast<std::int16_t>(minor));
        EXPECT_EQ(header.version(), combined) << major << '.' << minor;
    }
}

TEST(HeaderData, AStringIsStoredWholeWithItsNulBytesAndACStringUpToItsNul)
{
    CHeaderData header;
    std::string text("a\0b", 3);
    header.set_deviceName(text);
    header.set_deviceType(text);
    EXPECT_EQ(std::string(header.deviceName(), header.deviceNameLength()), text);
    EXPECT_EQ(std::string(header.deviceType(), header.deviceTypeLength()), text);
    header.set_deviceName("ab\0cd");
    header.setJobID("x\0y");
    EXPECT_EQ(header.deviceNameLength(), 2U);
    EXPECT_EQ(header.JobIDLength(), 1U);
    header.setJobID("");
    header.set_deviceName("");
    header.set_deviceType("");
    EXPECT_EQ(header.JobIDLength() + header.deviceNameLength() + header.deviceTypeLength(), 0U);
}

TEST(HeaderData, ACopyHasEveryFieldAndWhatIsSetFromItselfStaysAsItIs)
{
    CHeaderData header;
    header.set_deviceName("something that was there before");
    header = fullHeader();
    const CHeaderData copy(header);
    const CHeaderData& same = header;
    header = same;
    expectFull(header);
    header.set_deviceName(header.deviceName());
    header.set_deviceType(header.deviceType());
    header.setJobID(header.getJobID());
    expectFull(header);
    header.set_deviceName("changed");
    expectFull(copy);
}

TEST(HeaderData, ACopysTimesAreNotNullAndAssigningThemBackLeavesNullTimesNull)
{
    CHeaderData original;
    const CHeaderData copy(original);
    EXPECT_EQ(copy.startTS().getTimeStamp(), 0U);
    EXPECT_FALSE(copy.startTS().toString().isEmpty());
    original = copy;
    EXPECT_EQ(original.startTS().getTimeStamp(), 0U);
    EXPECT_EQ(original.stopTS().getTimeStamp(), 0U);
}

TEST(HeaderData, TheTimesReturnedAreCopies)
{
    const CHeaderData header = fullHeader();
    header.startTS().setTime_ts(9);
    CTimeStamp stop = header.stopTS();
    stop.setTime_ts(9);
    expectFull(header);
}

namespace {

S_TYPES entry(std::int32_t number, const std::string& keyword)
{
    return {number, number + 100, keyword, "/" + keyword};
}

}  // namespace

TEST(CommandRecord, ALengthCutsAStringAndWithoutOneTheWholeStringIsStored)
{
    CVTCmdData record;
    EXPECT_STREQ(record.str(), "");
    EXPECT_STREQ(record.strData(), "");
    EXPECT_EQ(record.strDataLen(), 0U);
    std::string text("01234\0a longer text than any small buffer would hold", 52);
    for (const auto& [length, stored] : {std::pair{4, std::string("0123")}, std::pair{0, text}, std::pair{-1, text}}) {
        record.set_str(text, length);
        EXPECT_EQ(dataOf(record), stored);
        EXPECT_EQ(record.str(), record.strData());
    }
    record.set_str(text, 4);
    EXPECT_STREQ(record.str(), "0123");
}

TEST(CommandRecord, ALengthTakesTheBytesOfACStringPastItsNulWhereItEndsWithoutOne)
{
    CVTCmdData record;
    record.set_str("ab\0def", 6);
    EXPECT_EQ(dataOf(record), std::string("ab\0def", 6));
    record.set_str("ab\0def", 0);
    EXPECT_EQ(dataOf(record), "ab");
    record.set_str("abc\0def", -5);
    EXPECT_EQ(dataOf(record), "abc");
    record.set_str("", 0);
    EXPECT_EQ(record.strDataLen(), 0U);
}

TEST(CommandRecord, ACopyHasTheCodeAndEveryByte)
{
    CVTCmdData record;
    record.set_cmd(-9);
    record.set_str("a\0#\xff", 4);
    const CVTCmdData copy(record);
    CVTCmdData assigned;
    assigned = record;
    record.set_str("other", 0);
    for (const CVTCmdData& other : {copy, assigned}) {
        EXPECT_EQ(other.cmd(), -9);
        EXPECT_EQ(dataOf(other), std::string("a\0#\xff", 4));
    }
}

TEST(CommandRecord, OneAssignedOrMovedToItselfStaysAsItIs)
{
    const std::string data("a longer text than any small buffer\0would hold", 46);
    CVTCmdData record;
    record.set_cmd(20);
    record.set_str(data.data(), static_cast<std::int32_t>(data.size()));
    CVTCmdData& same = record;
    record = same;
    EXPECT_EQ(dataOf(record), data);
    record = std::move(same);
    EXPECT_EQ(dataOf(record), data);
    EXPECT_EQ(record.cmd(), 20);
    record.set_str(record.str(), static_cast<std::int32_t>(record.strDataLen()));
    EXPECT_EQ(dataOf(record), data);
}

TEST(TypeTable, EntriesKeepTheOrderOfInsertionAndTheFirstOfANumberWins)
{
    CVTTypesData types;
    types.get_vector().push_back(entry(9, "FIRST"));
    for (const std::int32_t number : {-3, 9, 5, 0, -3}) {
        types.add_item(entry(number, std::to_string(number)));
    }
    std::vector<std::int32_t> numbers;
    for (const S_TYPES& type : types.get_vector()) {
        numbers.push_back(type.typeNumber);
    }
    EXPECT_EQ(numbers, (std::vector<std::int32_t>{9, -3, 5, 0}));
    EXPECT_EQ(types.find_type(9).keyword, "FIRST");
}

TEST(TypeTable, AFailedSearchLeavesTheOutputUntouched)
{
    CVTTypesData types;
    S_TYPES out = entry(1, "KEPT");
    EXPECT_FALSE(types.find_type(1, out));
    EXPECT_EQ(types.find_type(1).keyword, "");
    EXPECT_EQ(types.find_type(1).valuePath, "");
    types.add_item(entry(2, "TWO"));
    EXPECT_FALSE(types.find_type(1, out));
    EXPECT_EQ(fieldsOf(out), (TypeFields{1, 101, "KEPT", "/KEPT"}));
}

TEST(TypeTable, AFoundEntryIsCopiedWhole)
{
    CVTTypesData types;
    types.add_item(entry(1, "ONE"));
    types.add_item(entry(-2, "TWO"));
    S_TYPES out;
    ASSERT_TRUE(types.find_type(-2, out));
    EXPECT_EQ(fieldsOf(out), (TypeFields{-2, 98, "TWO", "/TWO"}));
    out.keyword = "CHANGED";
    EXPECT_EQ(types.find_type(-2).keyword, "TWO");
}

TEST(TypeTable, ACopyHasItsOwnEntries)
{
    CVTTypesData types;
    types.add_item(entry(4, "FOUR"));
    CVTTypesData copy(types);
    types.get_vector().clear();
    EXPECT_EQ(copy.find_type(4).keyword, "FOUR");
    CVTTypesData assigned;
    assigned = copy;
    copy.get_vector().clear();
    EXPECT_EQ(assigned.find_type(4).keyword, "FOUR");
}

TEST(TypeTable, AMovedEntryArrivesWholeAlsoWhereItIsMovedOrAssignedToItself)
{
    const std::string keyword = "A KEYWORD LONGER THAN ANY SMALL BUFFER";
    S_TYPES moved(entry(6, keyword));
    S_TYPES type;
    type = std::move(moved);
    const S_TYPES& same = type;
    type = same;
    EXPECT_EQ(type.keyword, keyword);
    S_TYPES& movable = type;
    type = std::move(movable);
    EXPECT_EQ(fieldsOf(type), (TypeFields{6, 106, keyword, "/" + keyword}));
}

TEST(TypeTable, IsPolymorphicWithADestructorThatIsNotVirtual)
{
    EXPECT_TRUE(std::is_polymorphic_v<CVTTypesData>);
    EXPECT_FALSE(std::has_virtual_destructor_v<CVTTypesData>);
    EXPECT_TRUE(std::has_virtual_destructor_v<Recording2::CFileAccess>);
    EXPECT_TRUE(std::has_virtual_destructor_v<Recording2::MappingGenerator>);
}
