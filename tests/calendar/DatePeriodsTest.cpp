// Trading periods on same-day securities: the bars of a session, the edges of bars in and
// between sessions, the one-minute in-session test, holidays, the period codes, inputs that
// cannot be walked, and the DATE.LOG lines.
#include <qvnrt/Date.h>

#include <random>

#include <gtest/gtest.h>

#include "calendar/DateLog.h"
#include "calendar/PeriodTestSupport.h"
#include "support/TempDir.h"

using qvnrt::test::At;
using qvnrt::test::Hm;
using qvnrt::test::HolidayTable;
using qvnrt::test::kEastern;
using qvnrt::test::Sessions;
using qvnrt::test::Text;
using qvnrt::test::Walker;

namespace {

// 2005-03-02 is a Wednesday.
constexpr int kY = 2005, kM = 3, kD = 2;

Date On(uint32_t value) {
    Date date(value);
    date.m_timeZone = kEastern;
    return date;
}

uint32_t Wed(int hour, int minute, int second = 0) {
    return At(kY, kM, kD, hour, minute, second);
}

Walker Plain(int weight, HOLIDAYS_INFO* holidays = nullptr) {
    return {Sessions(true, {{Hm(9, 30), Hm(16, 0)}}), weight, holidays};
}

Walker Lunch(int weight) {
    return {Sessions(true, {{Hm(9, 30), Hm(12, 0)}, {Hm(13, 0), Hm(16, 0)}}), weight};
}

}  // namespace

TEST(DatePeriods, ASessionHoldsItsBarsAndEndsWithAShortOne) {
    // A shortened day far away turns the fast walk off: both walks must agree.
    HolidayTable far({{1991, 12, 24, 0, static_cast<uint16_t>(Hm(13, 0))}}, false);
    for (HOLIDAYS_INFO* holidays : {static_cast<HOLIDAYS_INFO*>(nullptr), far.get()}) {
        for (const auto& [weight, bars] : {std::pair{-5, 78}, {-7, 56}}) {
            SCOPED_TRACE(testing::Message() << weight << (holidays ? " general" : " fast"));
            Walker plain = Plain(weight, holidays);
            int count = 0;
            uint32_t bar = Wed(9, 30), lastBar = 0;
            for (; bar < Wed(23, 0) && count < 1000; ++count) {
                lastBar = bar;
                bar = plain.add(bar, 1);
            }
            EXPECT_EQ(bars, count);
            EXPECT_EQ(Text(Wed(15, 55)), Text(lastBar));
            EXPECT_EQ(Text(At(kY, kM, kD + 1, 9, 30)), Text(bar));
            EXPECT_EQ(bar, plain.add(Wed(9, 30), bars));
            // The last seven-minute bar is five minutes long and ends with the session.
            EXPECT_EQ(Text(Wed(15, 59, 59)), Text(plain.last(Wed(15, 59, 30))));
            EXPECT_EQ(Text(Wed(15, 55)), Text(plain.first(Wed(15, 59, 30))));
        }
        EXPECT_EQ(Text(Wed(9, 58)), Text(Plain(-7, holidays).first(Wed(10, 2, 7))));
        EXPECT_EQ(Text(Wed(10, 4, 59)), Text(Plain(-7, holidays).last(Wed(10, 2, 7))));
    }
}

TEST(DatePeriods, GapsGoBackToTheLastBarAndOnToTheFirstBar) {
    Walker lunch = Lunch(-5);
    EXPECT_EQ(Text(Wed(11, 55)), Text(lunch.first(Wed(12, 30))));
    EXPECT_EQ(Text(Wed(13, 4, 59)), Text(lunch.last(Wed(12, 30))));
    EXPECT_EQ(Text(Wed(13, 0)), Text(lunch.nextStart(Wed(12, 30))));
    EXPECT_EQ(Text(At(kY, kM, kD + 1, 9, 30)), Text(lunch.nextStart(Wed(13, 0))));
    // Before the day's first session, and over a weekend.
    EXPECT_EQ(Text(At(kY, kM, kD - 1, 15, 55)), Text(lunch.first(Wed(8, 0))));
    EXPECT_EQ(Text(Wed(9, 34, 59)), Text(lunch.last(Wed(8, 0))));
    EXPECT_EQ(Text(At(kY, kM, 4, 15, 55)), Text(lunch.first(At(kY, kM, 5, 10, 0))));
    EXPECT_EQ(Text(At(kY, kM, 7, 9, 34, 59)), Text(lunch.last(At(kY, kM, 5, 10, 0))));
    // The plain session's fast walk snaps a weekend back to Friday's last bar.
    EXPECT_EQ(Text(At(kY, kM, 7, 9, 30)), Text(Plain(-5).add(At(kY, kM, 5, 10, 0), 1)));
    EXPECT_EQ(Text(At(kY, kM, 4, 15, 50)), Text(Plain(-5).add(At(kY, kM, 5, 10, 0), -1)));
}

TEST(DatePeriods, OneMinuteOnAndBackFindsTheSessions) {
    Walker plain = Plain(-1);
    for (uint32_t minute = Wed(8, 0); minute < Wed(17, 0); minute += 60) {
        uint32_t next = 0;
        const bool open = minute >= Wed(9, 30) && minute < Wed(16, 0);
        EXPECT_EQ(open, plain.inSession(minute, &next)) << Text(minute);
        if (!open) {
            const uint32_t expected = minute < Wed(9, 30) ? Wed(9, 30) : At(kY, kM, kD + 1, 9, 30);
            EXPECT_EQ(Text(expected), Text(next));
        }
    }
    EXPECT_FALSE(plain.inSession(At(kY, kM, 5, 10, 0)));  // Saturday
    // Securities with several sessions, or that open the evening before, are checked
    // minute by minute in DatePeriodsSessionReferenceTest.cpp.
}

TEST(DatePeriods, HolidaysCloseOrShortenTheDay) {
    // Thursday closed, Friday ends at 13:00: the general walk.
    HolidayTable mixed({{kY, kM, 3, 4, 0xFFFF}, {kY, kM, 4, 0, static_cast<uint16_t>(Hm(13, 0))}},
                       false);
    Walker general = Plain(-5, mixed.get());
    EXPECT_EQ(Text(At(kY, kM, 4, 9, 30)), Text(general.add(Wed(15, 55), 1)));
    EXPECT_EQ(Text(At(kY, kM, 4, 12, 55)), Text(general.first(At(kY, kM, 4, 14, 0))));
    EXPECT_EQ(Text(At(kY, kM, 7, 9, 34, 59)), Text(general.last(At(kY, kM, 4, 14, 0))));
    EXPECT_EQ(Text(At(kY, kM, 4, 12, 59, 59)), Text(general.last(At(kY, kM, 4, 12, 58))));
    EXPECT_EQ(Text(At(kY, kM, 7, 9, 30)), Text(general.add(At(kY, kM, 4, 10, 0), 36)));
    Walker minutes = Plain(-1, mixed.get());
    EXPECT_FALSE(minutes.inSession(At(kY, kM, 3, 11, 0)));
    EXPECT_FALSE(minutes.inSession(At(kY, kM, 4, 13, 30)));
    EXPECT_TRUE(minutes.inSession(At(kY, kM, 4, 12, 30)));
    // Only full holidays: the fast walk, both ways over the closed Thursday.
    HolidayTable full({{kY, kM, 3, 4, 0xFFFF}}, true);
    Walker fast = Plain(-5, full.get());
    EXPECT_EQ(Text(At(kY, kM, 4, 9, 30)), Text(fast.add(Wed(15, 55), 1)));
    EXPECT_EQ(Text(Wed(15, 55)), Text(fast.add(At(kY, kM, 4, 9, 30), -1)));
    EXPECT_EQ(Text(Wed(15, 55)), Text(fast.first(At(kY, kM, 3, 11, 0))));
}

TEST(DatePeriods, TicksAndCalendarCodes) {
    for (const int weight : {0, 5}) {  // ticks: nothing to walk
        Walker ticks = Plain(weight);
        EXPECT_EQ(Wed(10, 1, 13), ticks.add(Wed(10, 1, 13), 3));
        EXPECT_EQ(Wed(10, 1, 13), ticks.sub(Wed(10, 1, 13), 3));
    }
    SESSION_INFO plain = Plain(-5).info;
    Date month = On(At(kY, 1, 31, 10, 0)), expected = month;
    month.addPeriods(1, 'M', -5, &plain, nullptr);
    expected.nextMonth();
    EXPECT_EQ(expected.m_value, month.m_value);
    month.subPeriods(1, 'M', -5, &plain, nullptr);
    EXPECT_EQ(Text(At(kY, 1, 28, 10, 0)), Text(month.m_value));
    Date days = On(At(kY, kM, 4, 10, 0));
    days.addPeriods(1, 'D', -5, nullptr, nullptr);  // calendar codes need no session
    EXPECT_EQ(Text(At(kY, kM, 7, 10, 0)), Text(days.m_value));
    Date bottom;
    bottom.m_value = 2;  // a day back from here wraps to the top of the range
    bottom.subPeriods(1, static_cast<char>(DAYS_ALL), -5, &plain, nullptr);
    EXPECT_EQ(0u, bottom.m_value);
}

TEST(DatePeriods, TablesThatCannotBeWalkedLeaveTheDateAlone) {
    SESSION_INFO together = Sessions(false, {{Hm(8, 0), Hm(12, 0)}, {Hm(8, 0), Hm(16, 0)}});
    SESSION_INFO none = Sessions(true, {});
    SESSION_INFO noDay = Sessions(true, {{Hm(9, 30), Hm(16, 0)}}, 0x38);  // a mask of no day
    SESSION_INFO noDayTwice = Lunch(-5).info;
    noDayTwice.tradeDays[0] = noDayTwice.tradeDays[1] = 0x38;
    for (SESSION_INFO* info : {&together, &none, &noDay, &noDayTwice, (SESSION_INFO*)nullptr}) {
        for (const uint32_t value : {Wed(10, 0), At(kY, kM, 5, 10, 0), 0u, 1u}) {
            Date date = On(value);
            date.addPeriods(5, 'I', -5, info, nullptr);
            date.subPeriods(5, 'I', -5, info, nullptr);
            date.setToFirstSecondOfPeriod(-5, info, nullptr);
            date.setToLastSecondOfPeriod(-5, info, nullptr);
            date.toNextSessionStart(info, nullptr);
            EXPECT_EQ(Text(value), Text(date.m_value));
        }
    }
}

TEST(DatePeriods, LogsCallsAndRules) {
    qvnrt::test::IsolatedHome home;
    home.config().write("QUORVANE.INI", "[INHOUSEDEVELOPMENT]\r\nLOGDATECALLS=T\r\n");
    SESSION_INFO info = Sessions(true, {{Hm(9, 30), Hm(16, 0)}});
    info.sOpeningSession = 1;
    info.bSession[1] = 0;
    HolidayTable table({{kY, kM, 3, 4, 0xFFFF},
                        {kY, kM, 4, 0, 0xFFFF},
                        {kY, kM, 7, 0, static_cast<uint16_t>(Hm(13, 0))}},
                       false);
    Date date = On(At(kY, kM, kD, 10, 0));
    date.addPeriods(1, 'I', -30, &info, table.get(), kEastern);
    const std::string stamp(date.format("%c", kEastern));
    date.subPeriods(2, 'M', -30, &info, nullptr, ZONE_DEFAULT);
    const std::string expected =
        "\r\nStarting a new session\r\n"
        "addPeriods 1 73 -30 18\r\n" +
        std::string(Date(At(kY, kM, kD, 10, 0)).format("%c", kEastern)) +
        "in timeZone 18\r\n"
        "SESSION_INFO sOpeningSession 1 chTimeZone 18 bIsFirstSessionSameDay true"
        "SESSION_INFO bSingleSessionStandard true dailyPeriod 68"
        "SESSION_INFO[0] tradeDays 68 sStartTime 91E sEndTime 1000"
        "SESSION_INFO[1] bSession = false"
        "SESSION_INFO[2] bSession = false"
        "SESSION_INFO[3] bSession = false\r\n"
        "HOLIDAY_INFO sNumHolidays 3 bAreAllHolidaysFull false"
        "HOLIDAYS_INFO[0] 3/3/2005 ALL SESSIONS"
        "HOLIDAYS_INFO[1] 3/4/2005 NO SESSION 0"
        "HOLIDAYS_INFO[2] 3/7/2005 SHORTENED SESSION 0 to D00\r\n"
        "setToFirstSecondOfPeriod newBarWeight -30\r\nfinishing setToFirstSecondOfPeriod\r\n"
        "setToFirstSecondOfPeriod newBarWeight -30\r\nfinishing setToFirstSecondOfPeriod\r\n"
        "finished addPeriods\r\n" +
        stamp + "in timeZone 18\r\n";
    const std::string log = home.config().read("DATE.LOG");
    EXPECT_EQ(expected, log.substr(0, expected.size()));
    EXPECT_NE(std::string::npos, log.find("subPeriods 2 77 -30 255\r\n", expected.size()));
    EXPECT_NE(std::string::npos, log.find("HOLIDAYS NULL\r\nfinished subPeriods\r\n"));
}

// Random session tables, sane or not, from random instants: every walk ends, touches only the
// value and its sequence, and an empty holiday table walks exactly as no table.
TEST(DatePeriods, AnyTableWalksToAnEnd) {
    std::mt19937 random(99);
    auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    HolidayTable empty({}, true);
    const int weights[] = {-1, -5, -7, -30, -60, 0, 3};
    const uint8_t zones[] = {kEastern, ZONE_GMT, 9, 51};
    for (int k = 0; k < 1500; ++k) {
        SESSION_INFO info = Sessions(below(2), {});
        for (int i = 0; i < 4; ++i) {
            info.bSession[i] = below(10) < 7;
            info.tradeDays[i] = below(3) ? 'D' : static_cast<uint8_t>(below(256) & 0xFE);
            info.sStartTime[i] = Hm(below(24), below(4) * 15);
            info.sEndTime[i] = Hm(below(24), below(4) * 15);
        }
        info.bSingleSessionStandard = below(2);
        const uint8_t zone = zones[below(4)];
        const int weight = weights[below(7)], count = below(5000) - 2500;
        const Date start =
            On(At(1990 + below(40), 1 + below(12), 1 + below(28), below(24), below(60)));
        for (int op = 0; op < 5; ++op) {
            uint32_t results[2];
            for (int table = 0; table < 2; ++table) {
                HOLIDAYS_INFO* holidays = table ? empty.get() : nullptr;
                Date date = start;
                if (op == 0) date.addPeriods(count, 'I', weight, &info, holidays, zone);
                if (op == 1) date.subPeriods(count, 'I', weight, &info, holidays, zone);
                if (op == 2) date.setToFirstSecondOfPeriod(weight, &info, holidays, zone);
                if (op == 3) date.setToLastSecondOfPeriod(weight, &info, holidays, zone);
                if (op == 4) date.toNextSessionStart(&info, holidays, zone);
                EXPECT_EQ(start.m_timeZone, date.m_timeZone);
                EXPECT_EQ(start.m_bValid, date.m_bValid);
                results[table] = date.m_value;
            }
            ASSERT_EQ(Text(results[0]), Text(results[1])) << "case " << k << " operation " << op;
        }
    }
}
