// CSV as logs have it: separators, quotes, line ends, and records without an end.
#include <vector>

#include <gmock/gmock.h>

#include "sources/bearings/csvreader.h"
#include "support/textinput.h"

namespace {

using RecStation::CsvReader;
using RecStation::CsvRecord;
using namespace testing;

std::vector<CsvRecord> read(const std::string& text, std::optional<char> separator = std::nullopt,
                            std::size_t piece = 1'000'000)
{
    CsvReader reader(TestSupport::textInput(text, piece), separator);
    std::vector<CsvRecord> records;
    while (auto record = reader.next()) {
        records.push_back(*std::move(record));
    }
    return records;
}

TEST(CsvReader, FieldsAndLinesComeInTheirOrderHoweverTheBytesArrive)
{
    for (const std::size_t piece : {1U, 2U, 3U, 7U, 1000U}) {
        const auto records = read("\xEF\xBB\xBFone;two\r\n 1 ;;\n\n\"a;\"\"b\"\"\n;\" ; z", {}, piece);
        ASSERT_THAT(records, SizeIs(3));
        EXPECT_THAT(records[0].fields, ElementsAre("one", "two"));
        EXPECT_THAT(records[1].fields, ElementsAre("1", "", ""));
        EXPECT_THAT(records[2].fields, ElementsAre("a;\"b\"\n;", "z"));
        EXPECT_EQ(records[0].line, 1U);
        EXPECT_EQ(records[1].line, 2U);
        EXPECT_EQ(records[2].line, 4U);
        EXPECT_THAT(records[2].problem, IsEmpty());
    }
}

TEST(CsvReader, LinesAreCountedWithEveryKindOfLineEnd)
{
    for (const char* end : {"\n", "\r\n", "\r"}) {
        const std::string line = end;
        const auto records = read("a" + line + line + "\"b" + line + "\"" + line + "c");
        ASSERT_THAT(records, SizeIs(3));
        EXPECT_EQ(records[1].line, 3U);
        EXPECT_EQ(records[2].line, 5U);
    }
}

TEST(CsvReader, TheSeparatorIsTheOneThatIsGivenOrThatTheFirstLineHasMostOf)
{
    EXPECT_EQ(RecStation::guessSeparator("a;b;c,d"), ';');
    EXPECT_EQ(RecStation::guessSeparator("a,b,c;d"), ',');
    EXPECT_EQ(RecStation::guessSeparator("a\tb c"), '\t');
    EXPECT_EQ(RecStation::guessSeparator("\"a,b,c\";d"), ';');
    EXPECT_EQ(RecStation::guessSeparator("alone"), ',');
    EXPECT_THAT(read("a;b\n1,2;3\n")[1].fields, ElementsAre("1,2", "3"));
    EXPECT_THAT(read("a;b|c", '|')[0].fields, ElementsAre("a;b", "c"));
    EXPECT_THAT(read(""), IsEmpty());
    EXPECT_THAT(read("\n\r\n"), IsEmpty());
}

TEST(CsvReader, ACommaInNumbersIsNoSeparator)
{
    EXPECT_EQ(RecStation::guessSeparator("1,5;2,5;3,5", true), ';');
    CsvReader reader(TestSupport::textInput("1,5;2,5\n", 1), std::nullopt, true);
    const auto record = reader.next();
    ASSERT_TRUE(record);
    EXPECT_THAT(record->fields, ElementsAre("1,5", "2,5"));
    EXPECT_TRUE(record->decimalComma);
}

TEST(CsvReader, RemarksAndEmptyRowsArePassedOverAndRemarksCounted)
{
    for (const std::size_t piece : {1U, 5U, 1000U}) {
        CsvReader reader(TestSupport::textInput("# by, a, program\n\na;b\n;;\n#1;2\n \n3;\"#4\"\n#", piece),
                         std::nullopt);
        const auto names = reader.next();
        ASSERT_TRUE(names);
        EXPECT_THAT(names->fields, ElementsAre("a", "b"));
        EXPECT_EQ(names->line, 3U);
        const auto row = reader.next();
        ASSERT_TRUE(row);
        EXPECT_THAT(row->fields, ElementsAre("3", "#4"));
        EXPECT_EQ(row->line, 7U);
        EXPECT_FALSE(reader.next());
        EXPECT_EQ(reader.comments(), 3U);
    }
}

TEST(CsvReader, TextBehindAClosingQuoteIsAProblemOfThatRecordOnlyAndAQuoteThatIsNotClosedOfTheRest)
{
    const auto behind = read("a,b\n\"x\"y,1\nc,d\n");
    ASSERT_THAT(behind, SizeIs(3));
    EXPECT_THAT(behind[1].problem, HasSubstr("behind a closing quote"));
    EXPECT_THAT(behind[2].problem, IsEmpty());
    const auto open = read("a,b\n1,\"x\n2,3\n");
    ASSERT_THAT(open, SizeIs(2));
    EXPECT_EQ(open[1].line, 2U);
    EXPECT_EQ(open[1].problem, "a quote is not closed up to the end, line 4");
}

TEST(CsvReader, ARecordIsBoundedInMemoryAndTheNextOneIsReadAgain)
{
    constexpr std::size_t tooMany = 1'100'000;
    for (const char c : {'x', ','}) {
        const auto records = read("a,b\n" + std::string(tooMany, c) + "\nc,d\n");
        ASSERT_THAT(records, SizeIs(3));
        EXPECT_THAT(records[1].problem, HasSubstr("longer than 1 MiB"));
        EXPECT_THAT(records[2].fields, ElementsAre("c", "d"));
        EXPECT_THAT(records[2].problem, IsEmpty());
    }
}

}  // namespace
