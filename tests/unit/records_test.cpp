// Records and type tables of the interface: their data, searches, copies and moves.
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

#include <recording2/recordmodel.h>

using Recording2::CVTCmdData;
using Recording2::CVTTypesData;
using Recording2::S_TYPES;

namespace {

std::string dataOf(const CVTCmdData& record)
{
    return {record.strData(), record.strDataLen()};
}

S_TYPES entry(std::int32_t number, const std::string& keyword)
{
    S_TYPES type;
    type.typeNumber = number;
    type.valueType = number + 100;
    type.keyword = keyword;
    type.valuePath = "/" + keyword;
    return type;
}

}  // namespace

TEST(CommandRecord, ARecordWithoutDataGivesEmptyCStrings)
{
    const CVTCmdData record;
    EXPECT_STREQ(record.str(), "");
    EXPECT_STREQ(record.strData(), "");
    EXPECT_EQ(record.strDataLen(), 0U);
}

TEST(CommandRecord, StrAndStrDataAreTheSamePointer)
{
    CVTCmdData record;
    record.set_str("abc", 3);
    EXPECT_EQ(record.str(), record.strData());
    EXPECT_STREQ(record.str(), "abc");
}

TEST(CommandRecord, ALengthCutsAString)
{
    std::string text = "0123456789";
    CVTCmdData record;
    record.set_str(text, 4);
    EXPECT_EQ(dataOf(record), "0123");
    EXPECT_STREQ(record.str(), "0123");
}

TEST(CommandRecord, WithoutALengthTheWholeStringIsStored)
{
    std::string text(
        "01234\0"
        "6789",
        10);
    CVTCmdData record;
    record.set_str(text, 0);
    EXPECT_EQ(dataOf(record), text);
    record.set_str("x", 1);
    record.set_str(text, -1);
    EXPECT_EQ(dataOf(record), text);
}

TEST(CommandRecord, ALengthTakesTheBytesOfACStringPastItsNul)
{
    CVTCmdData record;
    record.set_str("ab\0def", 6);
    EXPECT_EQ(record.strDataLen(), 6U);
    EXPECT_EQ(dataOf(record), std::string("ab\0def", 6));
}

TEST(CommandRecord, WithoutALengthACStringEndsAtItsNul)
{
    CVTCmdData record;
    record.set_str("ab\0def", 0);
    EXPECT_EQ(dataOf(record), "ab");
    record.set_str("abc\0def", -5);
    EXPECT_EQ(dataOf(record), "abc");
}

TEST(CommandRecord, NewDataReplacesTheOld)
{
    CVTCmdData record;
    record.set_str("a longer text than any small buffer would hold", 0);
    record.set_str("b", 1);
    EXPECT_EQ(dataOf(record), "b");
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

TEST(TypeTable, TheFirstEntryOfANumberWins)
{
    CVTTypesData types;
    types.add_item(entry(5, "FIRST"));
    types.add_item(entry(7, "OTHER"));
    types.add_item(entry(5, "SECOND"));
    ASSERT_EQ(types.get_vector().size(), 2U);
    EXPECT_EQ(types.find_type(5).keyword, "FIRST");
}

TEST(TypeTable, EntriesKeepTheOrderOfInsertion)
{
    CVTTypesData types;
    for (const std::int32_t number : {9, -3, 5, 0}) {
        types.add_item(entry(number, std::to_string(number)));
    }
    ASSERT_EQ(types.get_vector().size(), 4U);
    EXPECT_EQ(types.get_vector()[0].typeNumber, 9);
    EXPECT_EQ(types.get_vector()[1].typeNumber, -3);
    EXPECT_EQ(types.get_vector()[2].typeNumber, 5);
    EXPECT_EQ(types.get_vector()[3].typeNumber, 0);
}

TEST(TypeTable, AnEmptyTableFindsNothing)
{
    CVTTypesData types;
    S_TYPES out = entry(1, "KEPT");
    EXPECT_FALSE(types.find_type(1, out));
    EXPECT_EQ(types.find_type(1).keyword, "");
    EXPECT_EQ(types.find_type(1).valuePath, "");
}

TEST(TypeTable, AFailedSearchLeavesTheOutputUntouched)
{
    CVTTypesData types;
    types.add_item(entry(2, "TWO"));
    S_TYPES out = entry(1, "KEPT");
    EXPECT_FALSE(types.find_type(1, out));
    EXPECT_EQ(out.typeNumber, 1);
    EXPECT_EQ(out.valueType, 101);
    EXPECT_EQ(out.keyword, "KEPT");
    EXPECT_EQ(out.valuePath, "/KEPT");
}

TEST(TypeTable, AFoundEntryIsCopiedWhole)
{
    CVTTypesData types;
    types.add_item(entry(1, "ONE"));
    types.add_item(entry(-2, "TWO"));
    S_TYPES out;
    ASSERT_TRUE(types.find_type(-2, out));
    EXPECT_EQ(out.typeNumber, -2);
    EXPECT_EQ(out.valueType, 98);
    EXPECT_EQ(out.keyword, "TWO");
    EXPECT_EQ(out.valuePath, "/TWO");
    out.keyword = "CHANGED";
    EXPECT_EQ(types.find_type(-2).keyword, "TWO");
}

TEST(TypeTable, TheVectorIsTheTableItself)
{
    CVTTypesData types;
    types.get_vector().push_back(entry(4, "FOUR"));
    EXPECT_EQ(types.find_type(4).keyword, "FOUR");
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

TEST(TypeTable, AnEntryAssignedToItselfStaysAsItIs)
{
    S_TYPES type = entry(6, "SIX");
    const S_TYPES& same = type;
    type = same;
    EXPECT_EQ(type.keyword, "SIX");
    EXPECT_EQ(type.typeNumber, 6);
}

TEST(TypeTable, AnEntryMovedToItselfStaysAsItIs)
{
    S_TYPES type = entry(6, "A KEYWORD LONGER THAN ANY SMALL BUFFER");
    S_TYPES& same = type;
    type = std::move(same);
    EXPECT_EQ(type.keyword, "A KEYWORD LONGER THAN ANY SMALL BUFFER");
    EXPECT_EQ(type.valuePath, "/A KEYWORD LONGER THAN ANY SMALL BUFFER");
    EXPECT_EQ(type.typeNumber, 6);
    EXPECT_EQ(type.valueType, 106);
}

TEST(TypeTable, AMovedEntryArrivesWhole)
{
    S_TYPES type = entry(6, "SIX");
    S_TYPES moved(std::move(type));
    S_TYPES assigned;
    assigned = std::move(moved);
    EXPECT_EQ(assigned.typeNumber, 6);
    EXPECT_EQ(assigned.valueType, 106);
    EXPECT_EQ(assigned.keyword, "SIX");
    EXPECT_EQ(assigned.valuePath, "/SIX");
}

TEST(TypeTable, IsPolymorphicWithADestructorThatIsNotVirtual)
{
    EXPECT_TRUE(std::is_polymorphic_v<CVTTypesData>);
    EXPECT_FALSE(std::has_virtual_destructor_v<CVTTypesData>);
}
