// Stepping through records, and every odd answer that callers rely on.
#include "fileaccess_fixture.h"

using namespace FileAccessTests;

namespace {

struct Step {
    std::int32_t code;
    std::string data;
    std::uint64_t time;
};

enum class Call : std::uint8_t { Read, ReadHere, First, Next, At, FirstOf, NextOf, Previous, Keep };

/// A call with its time or code, the time that it returns, and the data of the record afterwards, "*" where that is not
/// told. Keep puts a record of type 7 with "kept" in place of the one that was read.
struct Answer {
    Call call;
    std::uint64_t argument = 0;
    std::uint64_t time = 0;
    const char* data = "*";
};

struct Case {
    const char* name;
    std::vector<Step> steps;
    std::vector<Answer> answers;
};

class NavigationOfLargeRecords : public FileAccessTest {
protected:
    void open(const std::vector<Step>& steps)
    {
        ReferenceRecording recording;
        recording.types({{1, 2, "KEY", "/PATH"}});
        for (const Step& step : steps) {
            recording.record(step.code, step.data, step.time);
        }
        m_file = openBytes(recording.close());
        ASSERT_TRUE(m_file->IsValidFile());
    }
    std::uint64_t answerTo(Call call, std::uint64_t argument)
    {
        const auto code = static_cast<std::int32_t>(argument);
        switch (call) {
            case Call::Read:
                return m_file->read(m_record);
            case Call::ReadHere:
                return m_file->readAndReturnTimeOfCurrentCmd(m_record);
            case Call::First:
                return m_file->readfirst(m_record);
            case Call::Next:
                return m_file->readnext(m_record);
            case Call::At:
                return m_file->read(m_record, argument);
            case Call::FirstOf:
                return m_file->readfirst(m_record, code);
            case Call::NextOf:
                return m_file->readnext(m_record, code);
            case Call::Previous:
                return m_file->readprev(m_record, argument);
            case Call::Keep:
                m_record = makeRecord(7, "kept");
        }
        return 0;
    }
    [[nodiscard]] std::string data() const { return dataOf(m_record); }
    [[nodiscard]] std::size_t size() const { return m_record.strDataLen(); }
    [[nodiscard]] std::int32_t code() const { return m_record.cmd(); }

private:
    std::unique_ptr<CFileAccess> m_file;
    CVTCmdData m_record;
};

class Navigation : public NavigationOfLargeRecords, public testing::WithParamInterface<Case> {};

/// Real times are far above 100.
const std::vector<Step> Ordinary{{1, "a", 1'000}, {2, "b", 1'100}, {1, "c", 1'200}, {3, "d", 1'300}};
const std::vector<Step> Early{{1, "a", 10}, {2, "b", 20}, {3, "c", 30}, {4, "d", 200}, {5, "e", 300}};
constexpr std::uint64_t Huge = 0xFFFF'FFFF'FFFF'0000ULL;
constexpr std::uint64_t LikeARecord = 0x6463'6261'2332'2337ULL;  // "7#2#abcd"

using enum Call;

const std::vector<Case> Cases{
    {"ReadfirstReadsTheFirstAndReturnsTheTimeOfTheSecond", Ordinary, {{At, 1'300}, {First, 0, 1'100, "a"}}},
    {"ReadfirstOnAFileWithOneRecordReadsItAndReturnsZero", {{4, "only", 1'000}}, {{First, 0, 0, "only"}}},
    // At the time table nothing is read any more.
    {"ReadnextStepsToTheEndAndThenReturnsZero",
     Ordinary,
     {{Next, 0, 1'100, "a"},
      {Next, 0, 1'200, "b"},
      {Next, 0, 1'300, "c"},
      {Next, 0, 0, "d"},
      {Keep},
      {Next, 0, 0, "kept"},
      {Next, 0, 0, "kept"},
      {Next, 0, 0, "kept"}}},
    {"AReadAtARecordsTimeReadsThatRecord",
     Ordinary,
     {{At, 1'100, 1'200, "b"}, {At, 1'000, 1'100, "a"}, {At, 1'300, 0, "d"}}},
    {"AReadBetweenTwoTimesReadsTheLaterRecord", Ordinary, {{At, 1'001, 1'200, "b"}, {At, 1, 1'100, "a"}}},
    {"AReadBeyondTheLastTimeReadsTheLastRecord", Ordinary, {{At, 1'301, 0, "d"}, {At, ~std::uint64_t{0}, 0, "d"}}},
    {"AReadAtTimeZeroReadsTheRecordHere", Ordinary, {{At, 1'000, 1'100}, {At, 0, 1'200, "b"}}},
    {"APlainReadReturnsTheTimeOfTheNextRecord",
     Ordinary,
     {{Read, 0, 1'100, "a"}, {At, 1'200, 1'300}, {Read, 0, 0, "d"}}},
    {"TheOtherPlainReadReturnsTheTimeOfTheRecordItself",
     Ordinary,
     {{ReadHere, 0, 1'000, "a"}, {ReadHere, 0, 1'100}, {At, 1'200, 1'300}, {ReadHere, 0, 1'300, "d"}}},
    {"PlainReadsGoOnIntoTheTimeTable",
     {{1, "a", LikeARecord}, {7, "ab", 0}},
     {{First, 0, 0}, {Next, 0, 0, "a"}, {Read, 0, 0, "ab"}}},
    {"TheOtherPlainReadsGoOnIntoTheTimeTable",
     {{1, "a", LikeARecord}, {7, "ab", 0}},
     {{ReadHere, 0, LikeARecord}, {ReadHere, 0, 0, "ab"}}},
    {"ReadfirstByCodeReturnsTheTimeOfTheFirstRecordIfItHasTheCode", Ordinary, {{FirstOf, 1, 1'000, "a"}}},
    // Only the first record is looked at.
    {"ReadfirstByTheCodeOfALaterRecordReturnsZero", Ordinary, {{FirstOf, 2, 0, "a"}, {FirstOf, 3}, {FirstOf, 99}}},
    {"ReadfirstByCodeZeroTakesAnyRecord", Ordinary, {{At, 1'300}, {FirstOf, 0, 1'000, "a"}}},
    // The time 200 ends the search.
    {"ReadfirstByCodeGoesOnWhileTheNextTimeIsBelow100",
     Early,
     {{FirstOf, 2, 20, "b"}, {FirstOf, 3, 30, "c"}, {FirstOf, 4, 0, "c"}}},
    {"ReadfirstByCodeStopsAtTheTime100Itself",
     {{1, "a", 10}, {2, "b", 99}, {3, "c", 100}, {4, "d", 200}},
     {{FirstOf, 2, 99}, {FirstOf, 3, 0, "b"}}},
    {"ReadfirstByCodeReturnsZeroForTheLastRecordEvenIfItMatches",
     {{4, "only", 1'000}},
     {{FirstOf, 4, 0, "only"}, {FirstOf, 0}}},
    {"ReadfirstByCodeReturnsZeroForTheLastOfTwoEvenIfItMatches", {{1, "a", 10}, {2, "b", 20}}, {{FirstOf, 2, 0, "b"}}},
    {"ReadnextByCodeReturnsTheTimeOfTheMatchingRecord",
     Ordinary,
     {{NextOf, 1, 1'000, "a"}, {NextOf, 1, 1'200, "c"}, {NextOf, 1, 0, "d"}}},
    {"ReadnextByCodeReturnsZeroForTheLastRecordEvenIfItMatches", Ordinary, {{NextOf, 3, 0, "d"}}},
    {"ReadnextByCodeZeroIsNoWildcard", Ordinary, {{NextOf, 0, 0, "d"}}},
    {"ReadnextByCodeZeroFindsTheCodeZero",
     {{1, "a", 1'000}, {0, "b", 1'100}, {2, "c", 1'200}},
     {{NextOf, 0, 1'100, "b"}}},
    // The next read goes on after the record that was read.
    {"ReadprevReadsThePrecedingRecordAndReturnsItsTime",
     Ordinary,
     {{Previous, 1'300, 1'200, "c"}, {Previous, 1'200, 1'100, "b"}, {Next, 0, 1'300, "c"}}},
    // And it stays where it was.
    {"ReadprevOfATimeThatIsNotExactlyARecordsReturnsZero",
     Ordinary,
     {{Keep}, {Previous, 1'150, 0, "kept"}, {Previous, 1'301, 0, "kept"}, {Previous, 0, 0, "kept"}, {Next, 0, 1'100}}},
    {"ReadprevOfTheFirstRecordReturnsZero", Ordinary, {{Keep}, {Previous, 1'000, 0, "kept"}}},
    // Its time 0 means: stay here.
    {"ARecordAtTimeZeroCannotBeToldFromTheEnd",
     {{1, "a", 0}, {2, "b", 1'000}, {3, "c", 2'000}},
     {{ReadHere, 0, 0, "a"}, {First, 0, 2'000, "b"}, {Previous, 1'000, 0, "c"}}},
    {"TimesOf64BitsAreFound",
     {{1, "a", 10}, {2, "b", Huge}, {3, "c", Huge}},
     {{First, 0, Huge}, {At, Huge, Huge + 1, "b"}, {Previous, Huge + 1, Huge}}},
};

}  // namespace

TEST_P(Navigation, AnswersAsCallersRelyOn)
{
    std::vector<Step> steps = GetParam().steps;
    std::map<std::string, std::int32_t> codes{{"kept", 7}};
    for (const Step& step : steps) {
        codes[step.data] = step.code;
    }
    std::erase_if(steps, [](const Step& step) { return step.data == "ab"; });  // which only the time table looks like
    open(steps);
    int number = 0;
    for (const auto& [call, argument, time, data] : GetParam().answers) {
        SCOPED_TRACE("call " + std::to_string(++number));
        EXPECT_EQ(answerTo(call, argument), time);
        if (data != std::string("*")) {
            EXPECT_EQ(this->data(), data);
            EXPECT_EQ(code(), codes.at(data));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Every, Navigation, testing::ValuesIn(Cases),
                         [](const testing::TestParamInfo<Case>& tried) { return std::string(tried.param.name); });

TEST_F(NavigationOfLargeRecords, PositionsFollowDataOfAnySize)
{
    open({{1, std::string(100'000, '#'), 1'000}, {2, std::string(8'192, '1'), 2'000}, {3, "c", 3'000}});
    EXPECT_EQ(answerTo(First, 0), 2'000U);
    EXPECT_EQ(size(), 100'000U);
    EXPECT_EQ(answerTo(Next, 0), 3'000U);
    EXPECT_EQ(answerTo(Next, 0), 0U);
    EXPECT_EQ(data(), "c");
    EXPECT_EQ(answerTo(First, 0), 2'000U);
    EXPECT_EQ(data(), std::string(100'000, '#'));
}
