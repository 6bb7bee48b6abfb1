// Logs of bearings: their lines and fields, their times, and what the source makes of them.
#include <values/tree.h>
#include <values/value.h>

#include "input/timetext.h"
#include "sources/bearings/bearingssource.h"
#include "sources/bearings/csvreader.h"
#include "support/problem.h"
#include "support/recordingbytes.h"
#include "support/testing.h"
#include "support/textinput.h"

namespace {

using namespace RecStation;
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

/// A record of a line and its fields, with a problem or none.
auto isRecord(std::size_t line, const std::vector<std::string>& fields, const Matcher<std::string>& problem = "")
{
    return AllOf(Field("line", &CsvRecord::line, line), Field("fields", &CsvRecord::fields, fields),
                 Field("problem", &CsvRecord::problem, problem));
}

TEST(CsvReader, FieldsAndLinesComeInTheirOrderHoweverTheBytesArrive)
{
    for (const std::size_t piece : {1U, 2U, 3U, 7U, 1000U}) {
        const auto records = read("\xEF\xBB\xBFone;two\r\n 1 ;;\n\n\"a;\"\"b\"\"\n;\" ; z", {}, piece);
        EXPECT_THAT(records, ElementsAre(isRecord(1, {"one", "two"}), isRecord(2, {"1", "", ""}),
                                         isRecord(4, {"a;\"b\"\n;", "z"})));
    }
}

TEST(CsvReader, LinesAreCountedWithEveryKindOfLineEnd)
{
    for (const char* end : {"\n", "\r\n", "\r"}) {
        const std::string line = end;
        const auto records = read("a" + line + line + "\"b" + line + "\"" + line + "c");
        EXPECT_THAT(records, ElementsAre(isRecord(1, {"a"}), isRecord(3, {"b" + line}), isRecord(5, {"c"})));
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
        EXPECT_THAT(reader.next(), Optional(isRecord(3, {"a", "b"})));
        EXPECT_THAT(reader.next(), Optional(isRecord(7, {"3", "#4"})));
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
        EXPECT_THAT(records[2], isRecord(3, {"c", "d"}));
    }
}

constexpr long long second = 1'000'000;
constexpr long long hour = 3600 * second;

TEST(LogTime, DatesAreReadByTheirFormat)
{
    // Two digits mean the years 1970 to 2069.
    const std::vector<std::tuple<const char*, const char*, long long>> rows = {
        {"yyyy-MM-dd", "1970-01-02", 1},  {"MM/dd/yy", "01/14/17", 17'180}, {"d.M.yyyy", "14.1.2017", 17'180},
        {"yyyy-MM-dd", "1969-12-31", -1}, {"MM/dd/yy", "01/01/70", 0},      {"MM/dd/yy", "12/31/99", 10'956},
        {"MM/dd/yy", "02/29/00", 11'016}, {"MM/dd/yy", "02/29/68", 35'853}, {"(yyyy.MM) dd", "(1970.01) 03", 2},
        {"yyyyMMdd", "19700103", 2},
    };
    for (const auto& [format, text, days] : rows) {
        EXPECT_EQ(LogDateFormat(format).parse(text), days) << format << ' ' << text;
    }
    for (const char* text : {"", "13/01/17", "02/29/17", "1/14/17", "01/14/2017", "NA"}) {
        EXPECT_EQ(LogDateFormat("MM/dd/yy").parse(text), std::nullopt) << text;
    }
    EXPECT_EQ(LogDateFormat("yyyy.MM.dd").parse("1970-01-03"), std::nullopt);
}

TEST(LogTime, AFormatHasEachOfDayMonthAndYearOnce)
{
    for (const char* format : {"", "dd", "dd.MM", "dd.MM.y", "dd.MM.yyyy dd", "d.d.yyyy", "dd.MM.yyyyyy"}) {
        EXPECT_THROW(LogDateFormat{format}, std::invalid_argument) << format;
    }
}

TEST(LogTime, TimesOfDayHaveMinutesSecondsOrMicroseconds)
{
    EXPECT_EQ(parseTimeOfDay("5:31"), 5 * hour + 31 * 60 * second);
    EXPECT_EQ(parseTimeOfDay("05:31:07"), 5 * hour + (31 * 60 + 7) * second);
    EXPECT_EQ(parseTimeOfDay("23:59:59.25"), 24 * hour - second * 3 / 4);
    EXPECT_EQ(parseTimeOfDay("0:00:00.0000019"), 1);
    for (const char* text : {"", "24:00", "5:60", "5:31:60", "5", "5:3", "-5:30", "5:31pm", "5:31:07."}) {
        EXPECT_EQ(parseTimeOfDay(text), std::nullopt) << text;
    }
}

TEST(LogTime, UtcOffsets)
{
    EXPECT_EQ(parseUtcOffset("UTC"), 0);
    EXPECT_EQ(parseUtcOffset("Z"), 0);
    EXPECT_EQ(parseUtcOffset("-05:00"), -5 * hour);
    EXPECT_EQ(parseUtcOffset("+5:45"), 5 * hour + hour * 3 / 4);
    EXPECT_EQ(parseUtcOffset("+14"), 14 * hour);
    for (const char* text : {"", "5", "+14:01", "-05:60", "America/Bogota", "utc+5"}) {
        EXPECT_EQ(parseUtcOffset(text), std::nullopt) << text;
    }
}

using testing::HasSubstr;
using Number = values::ValueNumeric<double>;

const std::string header = "date;time;station;latitude;longitude;altitude;frequency;azimuth\n";

class BearingsSource : public testing::Test {
protected:
    void prepare(const std::string& text)
    {
        const QString path = m_directory.filePath("field log.v2.csv");
        TestSupport::writeFile(path, text);
        m_options.file = path.toStdString();
        m_source = RecStation::makeBearingsSource(m_options, [](const QString& /*sentence*/) {});
        m_source->prepare();
    }

    values::Tree m_tree;
    QTemporaryDir m_directory;
    BearingsOptions m_options;
    std::unique_ptr<Source> m_source;
};

TEST_F(BearingsSource, AFileThatChangedSinceItsChannelsWereFoundIsRefused)
{
    const std::string text = header + "2017-01-14;10:31;E1;4;-75;0;150;7\n";
    prepare(text);
    TestSupport::writeFile(QString::fromStdString(m_options.file), text + "2017-01-14;10:31;E1;4;-75;0;151;7\n");
    EXPECT_THROW(
        while (m_source->nextTime()) { m_source->step(); }, std::runtime_error);
}

TEST_F(BearingsSource, APathHeldByAnotherKindOfValueIsRefused)
{
    values::ValuePtr<Number> other;
    other.Attach("/DfSpectrum");
    EXPECT_THAT(TestSupport::problemOf([this] { prepare(header + "2017-01-14;10:31;E1;4;-75;0;150;7\n"); }),
                HasSubstr("/DfSpectrum is already there"));
}

}  // namespace
