#include <Cordel/Util/Time.h>
#include <Cordel/Util/detail/TickCount.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

using namespace Cordel;

TEST(Time, TickIsRoundedHalfAwayFromZeroAndClamped)
{
    EXPECT_EQ(Util::detail::TickFromSeconds(1.0624), 1062u);
    EXPECT_EQ(Util::detail::TickFromSeconds(1.0625), 1063u) << "1062.5 exactly";
    EXPECT_EQ(Util::detail::TickFromSeconds(0.0), 0u);
    EXPECT_EQ(Util::detail::TickFromSeconds(-3.0), 0u);
    EXPECT_EQ(Util::detail::TickFromSeconds(4294967.2944), 4294967294u);
    EXPECT_EQ(Util::detail::TickFromSeconds(4294967.295), 4294967295u);
    // About 50 days of up-time: held at the top instead of wrapping.
    EXPECT_EQ(Util::detail::TickFromSeconds(50.0 * 86400), 4294967295u);
}

TEST(Time, TickFollowsTheBootClockAndCalendarFollowsTime)
{
    timespec boot;
    clock_gettime(CLOCK_BOOTTIME, &boot);
    double const before = boot.tv_sec * 1000.0 + boot.tv_nsec / 1e6;
    unsigned int const tick = Util::GetTickCountMillis();
    EXPECT_GE(tick + 1.0, before);
    EXPECT_LE(tick, before + 1000.0);
    EXPECT_LE(Util::GetTickCountMillis() - tick, 1000u) << "never runs backwards";

    long long const t = Util::GetTimeSeconds();
    EXPECT_LE(std::llabs(t - static_cast<long long>(time(nullptr))), 1);
    Util::TimeMeasureStart(true);
    Util::TimeMeasureEnd(true, "nothing");
}
