// Which bad lines are reported, and the fields and numbers of a line.
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "input/badlines.h"
#include "input/fields.h"

namespace RecStation {
namespace {

using namespace testing;

TEST(BadLines, TheFirstTwentyAreToldOneByOneAndTheRestAsANumber)
{
    std::vector<std::string> told;
    BadLines bad("source", false, [&told](const QString& sentence) { told.push_back(sentence.toStdString()); });
    for (std::size_t line = 1; line <= 23; ++line) {
        bad.add(line, "wrong");
    }
    ASSERT_THAT(told, SizeIs(20));
    EXPECT_EQ(told.back(), "source: line 20: wrong");
    bad.finish();
    bad.finish();
    ASSERT_THAT(told, SizeIs(21));
    EXPECT_EQ(told.back(), "source: and 3 more bad lines");
    EXPECT_EQ(bad.count(), 23U);
}

TEST(BadLines, StrictThrowsTheFirst)
{
    BadLines bad("source", true, [](const QString&) {});
    try {
        bad.add(7, "wrong");
        FAIL() << "nothing thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "source: line 7: wrong (--strict allows no bad line)");
    }
    EXPECT_EQ(bad.count(), 1U);
}

TEST(CommaFields, EmptyFieldsCountAndTheLastOneToo)
{
    std::vector<std::string> fields;
    CommaFields line(",a,,b,");
    while (const auto field = line.next()) {
        fields.emplace_back(*field);
    }
    EXPECT_THAT(fields, ElementsAre("", "a", "", "b", ""));
}

TEST(ParseNumber, TakesAllOfTheTextOrNothing)
{
    EXPECT_EQ(parseNumber<double>("-1.5e3"), -1500);
    EXPECT_EQ(parseNumber<double>("+2"), 2);
    for (const char* text : {"", "+", "+-2", "1.5x", " 1", "1,5", "--1"}) {
        EXPECT_EQ(parseNumber<double>(text), std::nullopt) << text;
    }
}

TEST(Shown, HidesControlCharactersAndCutsLongFields)
{
    EXPECT_EQ(shown(std::string_view("a\0\x1B\xFF", 4)), "\"a???\"");
    EXPECT_EQ(shown(std::string(1000, 'x')), '"' + std::string(40, 'x') + "...\"");
}

}  // namespace
}  // namespace RecStation
