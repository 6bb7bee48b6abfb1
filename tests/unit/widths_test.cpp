// The numbers of the interface that are "long" by name: 32 bits on every platform, whatever the compiler's own long is.
#include <type_traits>

#include <recording2/recordmodel.h>
#include <recording2/timestamp.h>

#include "support/testing.h"

using namespace Recording2;

namespace {

constexpr Long Lowest = std::numeric_limits<std::int32_t>::min();
constexpr Long Highest = std::numeric_limits<std::int32_t>::max();

/// Whether a member function has exactly this type.
template <typename Expected, typename Actual>
constexpr bool Is(Actual /*operation*/)
{
    return std::is_same_v<Expected, Actual>;
}

}  // namespace

TEST(Widths, LongHas32BitsAndWhereTheCompilersOwnHasThemItIsThatOne)
{
    EXPECT_EQ(std::numeric_limits<Long>::digits, 31);
    EXPECT_EQ(std::numeric_limits<UnsignedLong>::digits, 32);
    EXPECT_EQ((std::is_same_v<Long, long>), sizeof(long) == 4);
    EXPECT_EQ((std::is_same_v<UnsignedLong, unsigned long>), sizeof(long) == 4);
}

TEST(Widths, EveryLongOfTheInterfaceIsThat)
{
    EXPECT_TRUE((std::is_constructible_v<CTimeStamp, UnsignedLong>));
    EXPECT_TRUE((Is<void (CTimeStamp::*)(Long, Long)>(&CTimeStamp::setts)));
    EXPECT_TRUE((Is<Long (CTimeStamp::*)() const>(&CTimeStamp::lTime)));
    EXPECT_TRUE((Is<Long (CTimeStamp::*)() const>(&CTimeStamp::lDate)));
    EXPECT_TRUE((Is<Long (CHeaderData::*)() const>(&CHeaderData::version)));
    EXPECT_TRUE((Is<Long (CHeaderData::*)() const>(&CHeaderData::minLevel)));
    EXPECT_TRUE((Is<void (CHeaderData::*)(Long)>(&CHeaderData::set_minLevel)));
    EXPECT_TRUE((Is<Long (CHeaderData::*)() const>(&CHeaderData::maxLevel)));
    EXPECT_TRUE((Is<void (CHeaderData::*)(Long)>(&CHeaderData::set_maxLevel)));
    S_TYPES (CVTTypesData::*const findCopy)(Long) = &CVTTypesData::find_type;
    bool (CVTTypesData::*const findInto)(Long, S_TYPES&) = &CVTTypesData::find_type;
    EXPECT_NE(findCopy, nullptr);
    EXPECT_NE(findInto, nullptr);
}

TEST(Widths, HeadersKeepTheEndsOfTheRange)
{
    CHeaderData header;
    header.set_minLevel(Lowest);
    header.set_maxLevel(Highest);
    EXPECT_EQ(header.minLevel(), Lowest);
    EXPECT_EQ(header.maxLevel(), Highest);
    header.set_version(std::numeric_limits<std::int16_t>::min(), 0);
    EXPECT_EQ(header.version(), Lowest);
}

TEST(Widths, TypesAreFoundByAll32BitsOfTheirNumber)
{
    CVTTypesData types;
    types.add_item({Lowest, 0, "lowest", ""});
    types.add_item({Highest, 0, "highest", ""});
    EXPECT_EQ(types.find_type(Lowest).keyword, "lowest");
    S_TYPES found;
    EXPECT_TRUE(types.find_type(Highest, found));
    EXPECT_EQ(found.keyword, "highest");
}
