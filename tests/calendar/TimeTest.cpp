#include <qvnrt/Time.h>

#include <gtest/gtest.h>

#include "calendar/CalendarTestSupport.h"
#include "support/ManualClock.h"

TEST(Time, DefaultIsTheLocalTimeOfDayOfTheLibraryClock) {
    qvnrt::test::ScopedEnv tz("TZ", "EST5EDT,M3.2.0,M11.1.0");
    qvnrt::test::ManualClock clock(
        static_cast<time_t>(qvnrt::test::GmtValue(2010, 7, 1, 13, 4, 5) - EPOCH_1970));
    Time summer;
    EXPECT_EQ(9, summer.getHour());
    EXPECT_EQ(4, summer.getMinute());
    EXPECT_EQ(5, summer.m_second);
    EXPECT_EQ(2, summer.m_mode);

    clock.now = static_cast<time_t>(qvnrt::test::GmtValue(2010, 1, 1, 4, 59, 0) - EPOCH_1970);
    Time winter;
    EXPECT_EQ(23, winter.getHour());
    winter.setTime(7, 45, 30);
    EXPECT_EQ(7, winter.getHour());
    EXPECT_EQ(45, winter.getMinute());
    EXPECT_EQ(30, winter.m_second);
    EXPECT_EQ(2, winter.m_mode);
}
