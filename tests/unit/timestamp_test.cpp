// CTimeStamp: stamps without a time, conversions, distances, texts, and the current time.
#include <QTimeZone>

#include <recording2/timestamp.h>
#include <vkbase/quonos.h>

#include "support/testing.h"

using Recording2::CTimeStamp;

namespace {

CTimeStamp ms(Recording2::UnsignedLong milliseconds)
{
    return {milliseconds};
}

CTimeStamp us(unsigned long long microseconds)
{
    return {microseconds};
}

class FixedClock final : public IQuonOS {
public:
    [[nodiscard]] unsigned long long CurrentTime() const override { return 987'654'321; }
};

/// Leaves neither an override nor a clock of its own after.
class CurrentTime : public testing::Test {
public:
    CurrentTime() { QuonOS::Replace(&m_clock); }
    ~CurrentTime() override
    {
        CTimeStamp::SetCts(0);
        QuonOS::Replace(nullptr);
    }

private:
    FixedClock m_clock;
};

/// A null stamp has no text; one that holds 0 has.
bool isNull(const CTimeStamp& stamp)
{
    return stamp.toString().isEmpty();
}

}  // namespace

TEST(TimeStamp, ANullStampEqualsZeroReadsAsZeroAndHasNoText)
{
    const CTimeStamp null;
    EXPECT_TRUE(null == us(0));
    EXPECT_FALSE(null != us(0));
    EXPECT_FALSE(isNull(us(0)));
    EXPECT_FALSE(null.time().isValid());
    EXPECT_EQ(null.getTimeStamp(), 0U);
    EXPECT_EQ(null.getMicroSecs(), 0U);
    EXPECT_EQ(null.getMilliSecs(), 0U);
    EXPECT_EQ(null.lTime(), 0);
    EXPECT_EQ(null.microsecsTo(us(77)), 77U);
    EXPECT_EQ(null.msecsTo(us(7'000)), 7U);
    EXPECT_EQ(null.timeDiffInMSecs(us(7'000)), 7);
    EXPECT_EQ(us(7'000).microsecsTo(null), 7'000U);
    EXPECT_TRUE(isNull(null));
    EXPECT_TRUE(null.toString2().isEmpty());
    EXPECT_TRUE(null.toString("yyyy").isEmpty());
    EXPECT_TRUE(null.toString("yyyy", 3'600).isEmpty());
}

TEST(TimeStamp, ACopyOfANullStampIsNotNullAndHoldsZero)
{
    const CTimeStamp null;
    const CTimeStamp copy(null);  // NOLINT(performance-unnecessary-copy-initialization): the copy is what is tested
    EXPECT_FALSE(isNull(copy));
    EXPECT_EQ(copy.getTimeStamp(), 0U);
    EXPECT_TRUE(copy == null);
}

TEST(TimeStamp, ACopyAndAnAssignedStampDoNotShareTheirTime)
{
    CTimeStamp source = us(5);
    const CTimeStamp copy(source);
    CTimeStamp target;
    target = source;
    source.setTime_ts(6);
    EXPECT_EQ(copy.getTimeStamp(), 5U);
    EXPECT_EQ(target.getTimeStamp(), 5U);
}

TEST(TimeStamp, A32BitNumberIsMillisecondsComputedIn64BitsAndA64BitNumberMicroseconds)
{
    EXPECT_EQ(ms(5).getTimeStamp(), 5'000U);
    EXPECT_EQ(ms(4'294'967'295U).getTimeStamp(), 4'294'967'295'000U);
    EXPECT_EQ(us(18'446'744'073'709'551'615ULL).getTimeStamp(), 18'446'744'073'709'551'615ULL);
}

TEST(TimeStamp, ADateIsMidnightUtcAndADateTimeOfAnyZoneIsUtcWithoutMilliseconds)
{
    EXPECT_EQ(CTimeStamp(QDate(1970, 1, 2)).getTimeStamp(), 86'400'000'000U);
    EXPECT_EQ(CTimeStamp(QDate(1970, 1, 2), QTime(0, 0, 1, 5)).getTimeStamp(), 86'401'005'000U);
    const CTimeStamp stamp(QDateTime(QDate(2020, 5, 17), QTime(12, 0, 0, 999), Qt::UTC));
    EXPECT_EQ(stamp.toString(), "2020-05-17 12-00-00.000");
    EXPECT_EQ(stamp.getTimeStamp(), 1'589'716'800'000'000U);
    const QDateTime local(QDate(2020, 5, 17), QTime(12, 0), QTimeZone(2 * 3'600));
    EXPECT_EQ(CTimeStamp(local).toString(), "2020-05-17 10-00-00.000");
}

TEST(TimeStamp, ADateTimeAssignedLosesItsMillisecondsToo)
{
    const QDateTime time(QDate(1970, 1, 1), QTime(0, 0, 3, 999), Qt::UTC);
    for (CTimeStamp stamp : {CTimeStamp(), us(1)}) {
        stamp = time;
        EXPECT_EQ(stamp.getTimeStamp(), 3'000'000U);
    }
}

TEST(TimeStamp, AZeroStampAssignedToANullStampLeavesItNullAndAnotherOrTheEpochAsADateTimeAllocates)
{
    CTimeStamp null;
    null = us(0);
    EXPECT_TRUE(isNull(null));
    null = CTimeStamp();
    EXPECT_TRUE(isNull(null));
    null = us(5);
    EXPECT_FALSE(isNull(null));
    EXPECT_EQ(null.getTimeStamp(), 5U);
    CTimeStamp epoch;
    epoch = QDateTime(QDate(1970, 1, 1), QTime(0, 0), Qt::UTC);
    EXPECT_FALSE(isNull(epoch));
    EXPECT_EQ(epoch.getTimeStamp(), 0U);
}

TEST(TimeStamp, AStampAssignedToItselfChangesNothingAndANullStampAssignedMakesItZeroButNotNull)
{
    CTimeStamp stamp = us(5);
    const CTimeStamp& same = stamp;
    stamp = same;
    EXPECT_EQ(stamp.getTimeStamp(), 5U);
    stamp = CTimeStamp();
    EXPECT_FALSE(isNull(stamp));
    EXPECT_EQ(stamp.getTimeStamp(), 0U);
}

TEST(TimeStamp, SettingTheTimeOfANullStampAllocatesEvenForZero)
{
    CTimeStamp null;
    null.setTime_ts(0);
    EXPECT_FALSE(isNull(null));
    null.setTime_ts(9);
    EXPECT_EQ(null.getTimeStamp(), 9U);
}

TEST(TimeStamp, SettsWrapsEveryStepAt32BitsAndTakesNegativeNumbersAsUnsignedOnes)
{
    CTimeStamp stamp = us(1);
    const std::vector<std::tuple<int, int, std::uint64_t>> rows = {
        {1, 0, 500'654'080},
        {1, 1, 500'655'080},
        {std::numeric_limits<int>::max(), std::numeric_limits<int>::max(), 4'294'967'296U - 500'655'080U},
        {0, 5, 5'000},
        {100, 0, 2'820'767'744},      // 50,065,408,000 - 11 * 2^32
        {0, 5'000'000, 705'032'704},  // 5,000,000,000 - 2^32
        {100, 5'000'000, 3'525'800'448},
        {8, 1'000'000, 710'265'344},  // neither product wraps, their sum does
        {0, -1, 4'294'966'296},
        {-1, 0, 3'794'313'216}};
    for (const auto& [days, ms, expected] : rows) {
        stamp.setts(days, ms);
        EXPECT_EQ(stamp.getTimeStamp(), expected) << days << ", " << ms;
    }
}

TEST(TimeStamp, SettsOnANullStampLeavesItNull)
{
    CTimeStamp null;
    null.setts(1, 1);
    EXPECT_TRUE(isNull(null));
    EXPECT_EQ(null.getTimeStamp(), 0U);
}

TEST(TimeStamp, MillisecondsAreTruncatedDaysWholeLTimeOf32BitsAndTheTimeOfDayUtc)
{
    EXPECT_EQ(us(1'999).getMilliSecs(), 1U);
    EXPECT_EQ(us(1'999).getMicroSecs(), 1'999U);
    EXPECT_EQ(us(18'446'744'073'709'551'615ULL).getMilliSecs(), 18'446'744'073'709'551ULL);
    EXPECT_EQ(us(5'000'000'000'000).lTime(), 705'032'704);
    EXPECT_EQ(us(4'294'967'295'000).lTime(), -1);
    EXPECT_EQ(us(2'147'483'647'000).lTime(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(us(2'147'483'648'000).lTime(), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(us(4'294'967'296'000).lTime(), 0);
    EXPECT_EQ(us(1'700'000'000'123'000).lTime(), 1'700'000'000'123LL - 396LL * (1LL << 32));
    EXPECT_EQ(us(0).lDate(), 0);
    EXPECT_EQ(us(86'399'999'999).lDate(), 0);
    EXPECT_EQ(us(86'400'000'000).lDate(), 1);
    EXPECT_EQ(us(1'589'716'800'000'000).lDate(), 18'399);
    EXPECT_EQ(us(86'400'000'000ULL + 3'723'004'567ULL).time(), QTime(1, 2, 3, 4));
}

TEST(TimeStamp, DistancesAreAbsoluteAndTruncatedButTheDifferenceToAnEarlierTimeIsHuge)
{
    EXPECT_EQ(us(5'000).microsecsTo(us(6'999)), 1'999U);
    EXPECT_EQ(us(6'999).microsecsTo(us(5'000)), 1'999U);
    EXPECT_EQ(us(5'000).msecsTo(us(6'999)), 1U);
    EXPECT_EQ(us(6'999).msecsTo(us(5'000)), 1U);
    EXPECT_EQ(us(0).microsecsTo(us(18'446'744'073'709'551'615ULL)), 18'446'744'073'709'551'615ULL);
    EXPECT_EQ(us(1'000).timeDiffInMSecs(us(4'999)), 3);
    EXPECT_EQ(us(1'000).timeDiffInMSecs(us(1'000)), 0);
    EXPECT_EQ(us(5'000).timeDiffInMSecs(us(4'000)), 18'446'744'073'709'550);
}

TEST(TimeStamp, AddingMillisecondsLeavesTheStampItselfAndNeverGoesBelowTheEpochNorToNull)
{
    EXPECT_EQ(us(3'000'000).addMSecs(-5'000).getTimeStamp(), 0U);
    EXPECT_EQ(us(6'000'000).addMSecs(-5'000).getTimeStamp(), 1'000'000U);
    EXPECT_EQ(us(5'000'000).addMSecs(-5'000).getTimeStamp(), 0U);
    EXPECT_EQ(us(4'999'999).addMSecs(-5'000).getTimeStamp(), 0U);
    EXPECT_FALSE(isNull(us(3'000'000).addMSecs(-5'000)));
    const CTimeStamp stamp = us(1'500);
    EXPECT_EQ(stamp.addMSecs(2).getTimeStamp(), 3'500U);
    EXPECT_EQ(stamp.addMSecs(0).getTimeStamp(), 1'500U);
    EXPECT_EQ(stamp.getTimeStamp(), 1'500U);
    const CTimeStamp sum = CTimeStamp().addMSecs(5'000);
    EXPECT_FALSE(isNull(sum));
    EXPECT_EQ(sum.getTimeStamp(), 0U);
}

TEST(TimeStamp, ComparisonsAreThoseOfUnsigned64BitNumbers)
{
    const auto expectRising = [](const CTimeStamp& low, const CTimeStamp& high) {
        EXPECT_TRUE(low < high && low <= high && low != high && high > low && high >= low) << low.getTimeStamp();
        EXPECT_FALSE(high < low || high <= low || low == high || low > high || low >= high) << low.getTimeStamp();
    };
    const auto expectEqual = [](const CTimeStamp& one, const CTimeStamp& other) {
        EXPECT_TRUE(one == other && one <= other && one >= other) << one.getTimeStamp();
        EXPECT_FALSE(one != other || one < other || one > other) << one.getTimeStamp();
    };
    const CTimeStamp null;
    const CTimeStamp huge = us(18'446'744'073'709'551'615ULL);
    expectRising(null, us(1));
    expectRising(us(1), huge);
    expectEqual(us(1), us(1));
    expectEqual(null, us(0));
}

TEST(TimeStamp, TheTwoFixedTextFormsAreUtcAndTheFormatMayTakeAnOffset)
{
    const CTimeStamp stamp = us(1'589'716'923'456'789);
    EXPECT_EQ(stamp.toString(), "2020-05-17 12-02-03.456");
    EXPECT_EQ(stamp.toString2(), "2020-05-17__12-02-03");
    EXPECT_EQ(stamp.toString("hh:mm"), "12:02");
    EXPECT_EQ(stamp.toString("hh:mm", 7'200), "14:02");
    EXPECT_EQ(stamp.toString("hh:mm", -3'600), "11:02");
}

TEST_F(CurrentTime, IsTheClockOfTheStationButWhileAnOverrideIsSet)
{
    for (const unsigned long long override : {0ULL, 42ULL, 43ULL, 0ULL}) {
        CTimeStamp::SetCts(override);
        EXPECT_EQ(CTimeStamp::cts().getTimeStamp(), override == 0 ? 987'654'321U : override);
    }
}
