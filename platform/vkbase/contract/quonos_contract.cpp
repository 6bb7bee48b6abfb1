// The clock: the system's time, or that of its replacement.
#include <chrono>

#include <gtest/gtest.h>

#include <vkbase/quonos.h>

namespace {

class FixedClock : public IQuonOS {
public:
    [[nodiscard]] unsigned long long CurrentTime() const override { return 42; }
};

unsigned long long SystemMicroseconds()
{
    using namespace std::chrono;
    const auto now = system_clock::now().time_since_epoch();
    return static_cast<unsigned long long>(duration_cast<microseconds>(now).count());
}

}  // namespace

TEST(QuonOS, GivesTheSystemsTimeInMicroseconds)
{
    const unsigned long long before = SystemMicroseconds();
    const unsigned long long time = QuonOS::Create()->CurrentTime();
    EXPECT_LE(before, time);
    EXPECT_LE(time, SystemMicroseconds());
}

TEST(QuonOS, GivesAReplacementUntilItIsTakenBack)
{
    FixedClock clock;
    QuonOS::Replace(&clock);
    EXPECT_EQ(QuonOS::Create(), &clock);
    EXPECT_EQ(QuonOS::Create()->CurrentTime(), 42U);
    QuonOS::Replace(nullptr);
    EXPECT_NE(QuonOS::Create()->CurrentTime(), 42U);
}
