// Stepping through records, and every odd answer that callers rely on.
#include "fileaccess_fixture.h"

using namespace FileAccessTests;

namespace {

struct Step {
    std::int32_t code;
    std::string data;
    std::uint64_t time;
};

class Navigation : public FileAccessTest {
protected:
    void open(const std::vector<Step>& steps)
    {
        m_file.reset();
        ReferenceRecording recording;
        recording.types({{1, 2, "KEY", "/PATH"}});
        for (const Step& step : steps) {
            recording.record(step.code, step.data, step.time);
        }
        m_file = openBytes(recording.close());
        ASSERT_TRUE(m_file->IsValidFile());
    }
    CFileAccess& file() { return *m_file; }
    CVTCmdData& record() { return m_record; }
    [[nodiscard]] std::string data() const { return dataOf(m_record); }

private:
    std::unique_ptr<CFileAccess> m_file;
    CVTCmdData m_record;
};

/// Real times are far above 100.
const std::vector<Step> ordinary{{1, "a", 1'000}, {2, "b", 1'100}, {1, "c", 1'200}, {3, "d", 1'300}};
const std::vector<Step> early{{1, "a", 10}, {2, "b", 20}, {3, "c", 30}, {4, "d", 200}, {5, "e", 300}};

}  // namespace

TEST_F(Navigation, ReadfirstReadsTheFirstAndReturnsTheTimeOfTheSecond)
{
    open(ordinary);
    file().read(record(), 1'300);
    EXPECT_EQ(file().readfirst(record()), 1'100U);
    EXPECT_EQ(record().cmd(), 1);
    EXPECT_EQ(data(), "a");
}

TEST_F(Navigation, ReadfirstOnAFileWithOneRecordReadsItAndReturnsZero)
{
    open({{4, "only", 1'000}});
    EXPECT_EQ(file().readfirst(record()), 0U);
    EXPECT_EQ(record().cmd(), 4);
    EXPECT_EQ(data(), "only");
}

TEST_F(Navigation, ReadnextStepsToTheEndAndThenReturnsZero)
{
    open(ordinary);
    EXPECT_EQ(file().readnext(record()), 1'100U);
    EXPECT_EQ(data(), "a");
    EXPECT_EQ(file().readnext(record()), 1'200U);
    EXPECT_EQ(file().readnext(record()), 1'300U);
    EXPECT_EQ(file().readnext(record()), 0U);
    EXPECT_EQ(data(), "d");
    for (int i = 0; i < 3; ++i) {  // at the time table: nothing is read any more
        record() = makeRecord(7, "kept");
        EXPECT_EQ(file().readnext(record()), 0U);
        EXPECT_EQ(data(), "kept");
        EXPECT_EQ(record().cmd(), 7);
    }
}

TEST_F(Navigation, AReadAtARecordsTimeReadsThatRecord)
{
    open(ordinary);
    EXPECT_EQ(file().read(record(), 1'100), 1'200U);
    EXPECT_EQ(data(), "b");
    EXPECT_EQ(file().read(record(), 1'000), 1'100U);
    EXPECT_EQ(data(), "a");
    EXPECT_EQ(file().read(record(), 1'300), 0U);
    EXPECT_EQ(data(), "d");
}

TEST_F(Navigation, AReadBetweenTwoTimesReadsTheLaterRecord)
{
    open(ordinary);
    EXPECT_EQ(file().read(record(), 1'001), 1'200U);
    EXPECT_EQ(data(), "b");
    EXPECT_EQ(file().read(record(), 1), 1'100U);
    EXPECT_EQ(data(), "a");
}

TEST_F(Navigation, AReadBeyondTheLastTimeReadsTheLastRecord)
{
    open(ordinary);
    EXPECT_EQ(file().read(record(), 1'301), 0U);
    EXPECT_EQ(data(), "d");
    EXPECT_EQ(file().read(record(), 0xFFFF'FFFF'FFFF'FFFFULL), 0U);
    EXPECT_EQ(data(), "d");
}

TEST_F(Navigation, AReadAtTimeZeroReadsTheRecordHere)
{
    open(ordinary);
    file().read(record(), 1'000);
    EXPECT_EQ(file().read(record(), 0), 1'200U);
    EXPECT_EQ(data(), "b");
}

TEST_F(Navigation, APlainReadReturnsTheTimeOfTheNextRecord)
{
    open(ordinary);
    EXPECT_EQ(file().read(record()), 1'100U);
    EXPECT_EQ(data(), "a");
    file().read(record(), 1'200);
    EXPECT_EQ(file().read(record()), 0U);
    EXPECT_EQ(data(), "d");
}

TEST_F(Navigation, TheOtherPlainReadReturnsTheTimeOfTheRecordItself)
{
    open(ordinary);
    EXPECT_EQ(file().readAndReturnTimeOfCurrentCmd(record()), 1'000U);
    EXPECT_EQ(data(), "a");
    EXPECT_EQ(file().readAndReturnTimeOfCurrentCmd(record()), 1'100U);
    file().read(record(), 1'200);
    EXPECT_EQ(file().readAndReturnTimeOfCurrentCmd(record()), 1'300U);
    EXPECT_EQ(data(), "d");
}

TEST_F(Navigation, PlainReadsGoOnIntoTheTimeTable)
{
    const std::uint64_t time = 0x6463'6261'2332'2337ULL;  // "7#2#abcd"
    open({{1, "a", time}});
    EXPECT_EQ(file().readfirst(record()), 0U);
    EXPECT_EQ(file().readnext(record()), 0U);
    EXPECT_EQ(data(), "a");
    EXPECT_EQ(file().read(record()), 0U);
    EXPECT_EQ(record().cmd(), 7);
    EXPECT_EQ(data(), "ab");

    open({{1, "a", time}});
    EXPECT_EQ(file().readAndReturnTimeOfCurrentCmd(record()), time);
    EXPECT_EQ(file().readAndReturnTimeOfCurrentCmd(record()), 0U);
    EXPECT_EQ(record().cmd(), 7);
    EXPECT_EQ(data(), "ab");
}

TEST_F(Navigation, ReadfirstByCodeReturnsTheTimeOfTheFirstRecordIfItHasTheCode)
{
    open(ordinary);
    EXPECT_EQ(file().readfirst(record(), 1), 1'000U);
    EXPECT_EQ(data(), "a");
}

TEST_F(Navigation, ReadfirstByTheCodeOfALaterRecordReturnsZero)
{
    open(ordinary);
    EXPECT_EQ(file().readfirst(record(), 2), 0U);
    EXPECT_EQ(data(), "a");  // only the first record was looked at
    EXPECT_EQ(file().readfirst(record(), 3), 0U);
    EXPECT_EQ(file().readfirst(record(), 99), 0U);
}

TEST_F(Navigation, ReadfirstByCodeZeroTakesAnyRecord)
{
    open(ordinary);
    file().read(record(), 1'300);
    EXPECT_EQ(file().readfirst(record(), 0), 1'000U);
    EXPECT_EQ(data(), "a");
}

TEST_F(Navigation, ReadfirstByCodeGoesOnWhileTheNextTimeIsBelow100)
{
    open(early);
    EXPECT_EQ(file().readfirst(record(), 2), 20U);
    EXPECT_EQ(data(), "b");
    EXPECT_EQ(file().readfirst(record(), 3), 30U);
    EXPECT_EQ(data(), "c");
    EXPECT_EQ(file().readfirst(record(), 4), 0U);
    EXPECT_EQ(data(), "c");  // the time 200 ended the search
}

TEST_F(Navigation, ReadfirstByCodeStopsAtTheTime100Itself)
{
    open({{1, "a", 10}, {2, "b", 99}, {3, "c", 100}, {4, "d", 200}});
    EXPECT_EQ(file().readfirst(record(), 2), 99U);
    EXPECT_EQ(file().readfirst(record(), 3), 0U);
    EXPECT_EQ(data(), "b");
}

TEST_F(Navigation, ReadfirstByCodeReturnsZeroForTheLastRecordEvenIfItMatches)
{
    open({{4, "only", 1'000}});
    EXPECT_EQ(file().readfirst(record(), 4), 0U);
    EXPECT_EQ(data(), "only");
    EXPECT_EQ(file().readfirst(record(), 0), 0U);

    open({{1, "a", 10}, {2, "b", 20}});
    EXPECT_EQ(file().readfirst(record(), 2), 0U);
    EXPECT_EQ(data(), "b");
}

TEST_F(Navigation, ReadnextByCodeReturnsTheTimeOfTheMatchingRecord)
{
    open(ordinary);
    EXPECT_EQ(file().readnext(record(), 1), 1'000U);
    EXPECT_EQ(data(), "a");
    EXPECT_EQ(file().readnext(record(), 1), 1'200U);
    EXPECT_EQ(data(), "c");
    EXPECT_EQ(file().readnext(record(), 1), 0U);
    EXPECT_EQ(data(), "d");
}

TEST_F(Navigation, ReadnextByCodeReturnsZeroForTheLastRecordEvenIfItMatches)
{
    open(ordinary);
    EXPECT_EQ(file().readnext(record(), 3), 0U);
    EXPECT_EQ(record().cmd(), 3);
    EXPECT_EQ(data(), "d");
}

TEST_F(Navigation, ReadnextByCodeZeroIsNoWildcard)
{
    open(ordinary);
    EXPECT_EQ(file().readnext(record(), 0), 0U);
    EXPECT_EQ(data(), "d");

    open({{1, "a", 1'000}, {0, "b", 1'100}, {2, "c", 1'200}});
    EXPECT_EQ(file().readnext(record(), 0), 1'100U);
    EXPECT_EQ(data(), "b");
}

TEST_F(Navigation, ReadprevReadsThePrecedingRecordAndReturnsItsTime)
{
    open(ordinary);
    EXPECT_EQ(file().readprev(record(), 1'300), 1'200U);
    EXPECT_EQ(data(), "c");
    EXPECT_EQ(file().readprev(record(), 1'200), 1'100U);
    EXPECT_EQ(data(), "b");
    EXPECT_EQ(file().readnext(record()), 1'300U);  // goes on behind the record that was read
    EXPECT_EQ(data(), "c");
}

TEST_F(Navigation, ReadprevOfATimeThatIsNotExactlyARecordsReturnsZero)
{
    open(ordinary);
    record() = makeRecord(7, "kept");
    EXPECT_EQ(file().readprev(record(), 1'150), 0U);
    EXPECT_EQ(file().readprev(record(), 1'301), 0U);
    EXPECT_EQ(file().readprev(record(), 0), 0U);
    EXPECT_EQ(data(), "kept");
    EXPECT_EQ(file().readnext(record()), 1'100U);  // and stays where it was
}

TEST_F(Navigation, ReadprevOfTheFirstRecordReturnsZero)
{
    open(ordinary);
    record() = makeRecord(7, "kept");
    EXPECT_EQ(file().readprev(record(), 1'000), 0U);
    EXPECT_EQ(data(), "kept");
}

TEST_F(Navigation, ARecordAtTimeZeroCannotBeToldFromTheEnd)
{
    open({{1, "a", 0}, {2, "b", 1'000}, {3, "c", 2'000}});
    EXPECT_EQ(file().readAndReturnTimeOfCurrentCmd(record()), 0U);
    EXPECT_EQ(data(), "a");
    EXPECT_EQ(file().readfirst(record()), 2'000U);  // its time 0 means: stay here
    EXPECT_EQ(data(), "b");
    EXPECT_EQ(file().readprev(record(), 1'000), 0U);
    EXPECT_EQ(data(), "c");
}

TEST_F(Navigation, TimesOf64BitsAreFound)
{
    const std::uint64_t huge = 0xFFFF'FFFF'FFFF'0000ULL;
    open({{1, "a", 10}, {2, "b", huge}, {3, "c", huge}});
    EXPECT_EQ(file().readfirst(record()), huge);
    EXPECT_EQ(file().read(record(), huge), huge + 1);
    EXPECT_EQ(data(), "b");
    EXPECT_EQ(file().readprev(record(), huge + 1), huge);
}

TEST_F(Navigation, PositionsFollowDataOfAnySize)
{
    open({{1, std::string(100'000, '#'), 1'000}, {2, std::string(8'192, '1'), 2'000}, {3, "c", 3'000}});
    EXPECT_EQ(file().readfirst(record()), 2'000U);
    EXPECT_EQ(record().strDataLen(), 100'000U);
    EXPECT_EQ(file().readnext(record()), 3'000U);
    EXPECT_EQ(file().readnext(record()), 0U);
    EXPECT_EQ(data(), "c");
    EXPECT_EQ(file().readfirst(record()), 2'000U);
    EXPECT_EQ(data(), std::string(100'000, '#'));
}
