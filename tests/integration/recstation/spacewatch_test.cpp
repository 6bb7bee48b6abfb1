// When an operator is told that a recording's disk runs full, and how often.
#include "watch/spacewatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace RecStation {
namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr std::int64_t megabyte = 1'000'000;
constexpr std::int64_t gigabyte = 1'000 * megabyte;

class SpaceWatchTest : public testing::Test {
protected:
    /// Another second later.
    std::string check(std::int64_t freeBytes, std::int64_t written = 0)
    {
        m_free = freeBytes;
        m_elapsedMs += 1'000;
        return m_watch.check(QStringLiteral("/r"), written, m_elapsedMs).toStdString();
    }
    /// Ten seconds of writing at a rate, of which nothing may be told.
    void writeAt(std::int64_t bytesPerSecond, std::int64_t freeBytes)
    {
        for (int second = 0; second < 10; ++second) {
            m_written += bytesPerSecond;
            EXPECT_EQ(check(freeBytes, m_written), "");
        }
    }

    std::int64_t m_free = 0;
    std::int64_t m_written = 0;
    std::int64_t m_elapsedMs = 0;
    SpaceWatch m_watch = SpaceWatch([this](const QString&) { return m_free; });
};

TEST_F(SpaceWatchTest, NothingIsToldOfMuchSpaceAndSlowWriting)
{
    writeAt(megabyte, 100 * gigabyte);
}

TEST_F(SpaceWatchTest, LessThanAGigabyteIsToldOnce)
{
    EXPECT_EQ(check(gigabyte), "");
    EXPECT_THAT(check(gigabyte - 1), AllOf(HasSubstr("1000.0 MB are left in /r"), testing::Not(HasSubstr("rate"))));
    EXPECT_EQ(check(gigabyte - 1), "");
    EXPECT_EQ(check(gigabyte * 6 / 10), "");
}

TEST_F(SpaceWatchTest, ItIsToldAgainEachTimeThatHalfOfItIsGone)
{
    EXPECT_NE(check(800 * megabyte), "");
    EXPECT_EQ(check(401 * megabyte), "");
    EXPECT_NE(check(400 * megabyte), "");
    EXPECT_EQ(check(201 * megabyte), "");
    EXPECT_NE(check(200 * megabyte), "");
}

TEST_F(SpaceWatchTest, LessThanTenMinutesAtThePresentRateAreToldWithTheTime)
{
    writeAt(megabyte, 100 * gigabyte);
    std::string told;
    for (int second = 0; second < 10 && told.empty(); ++second) {
        m_written += 500 * megabyte;
        told = check(100 * gigabyte, m_written);
    }
    EXPECT_THAT(told, HasSubstr("100.0 GB are left in /r, enough for about "));
    EXPECT_EQ(check(100 * gigabyte, m_written), "");
}

TEST_F(SpaceWatchTest, AfterSpaceWasMadeItIsToldAnew)
{
    EXPECT_NE(check(900 * megabyte), "");
    EXPECT_EQ(check(50 * gigabyte), "");
    EXPECT_NE(check(900 * megabyte), "");
}

TEST_F(SpaceWatchTest, EachDirectoryIsWatchedByItself)
{
    m_free = 1;
    EXPECT_NE(m_watch.check(QStringLiteral("/a"), 0, 1), "");
    EXPECT_NE(m_watch.check(QStringLiteral("/b"), 0, 1), "");
    EXPECT_EQ(m_watch.check(QStringLiteral("/a"), 0, 2), "");
}

TEST(SpaceWatch, WhereTheSystemDoesNotTellNothingIsToldEither)
{
    SpaceWatch watch([](const QString&) { return std::nullopt; });
    EXPECT_EQ(watch.check(QStringLiteral("/a"), 0, 0), "");
}

TEST(SpaceWatch, TheSystemTellsTheSpaceOfADirectory)
{
    EXPECT_GT(freeSpaceOf(QStringLiteral("/")).value_or(0), 0);
    EXPECT_FALSE(freeSpaceOf(QStringLiteral("/no/such/directory")));
}

}  // namespace
}  // namespace RecStation
