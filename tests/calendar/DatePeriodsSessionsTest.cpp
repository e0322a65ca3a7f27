// Trading periods with sessions that open the trading day on the evening before (futures), a
// night and a day session, four sessions in a day, and a plain session early in the morning
// across the daylight changes of zone 18.
#include <qvnrt/Date.h>

#include <random>

#include <gtest/gtest.h>

#include "calendar/PeriodTestSupport.h"

using qvnrt::test::At;
using qvnrt::test::BarList;
using qvnrt::test::Hm;
using qvnrt::test::kEastern;
using qvnrt::test::Sessions;
using qvnrt::test::Text;
using qvnrt::test::Walker;

namespace {

// The week of Monday 2005-02-28.
constexpr int kY = 2005, kM = 3;

}  // namespace

TEST(DatePeriodSessions, FuturesOpenTheTradingDayTheEveningBefore) {
    Walker futures{Sessions(false, {{Hm(18, 0), Hm(17, 0)}}), -1};
    // Live minutes are checked one by one in DatePeriodsSessionReferenceTest.cpp; from a gap,
    // one minute on goes to the next session.
    uint32_t next = 0;
    EXPECT_FALSE(futures.inSession(At(kY, kM, 3, 17, 30), &next));
    EXPECT_EQ(Text(At(kY, kM, 3, 18, 0)), Text(next));
    EXPECT_EQ(Text(At(kY, kM, 3, 16, 59)), Text(futures.first(At(kY, kM, 3, 17, 30))));
    // Friday's evening session belongs to Saturday and Saturday's to Sunday: not traded.
    EXPECT_EQ(Text(At(kY, kM, 4, 16, 59)), Text(futures.first(At(kY, kM, 5, 20, 0))));
    EXPECT_EQ(Text(At(kY, kM, 3, 20, 0)), Text(futures.add(At(kY, kM, 2, 20, 0), 1380)));
    EXPECT_EQ(Text(At(kY, kM, 8, 10, 20)), Text(futures.add(At(kY, kM, 2, 20, 0), 5000)));
    EXPECT_EQ(Text(At(kY, kM, 9, 1, 20)), Text(futures.add(At(kY, kM, 3, 10, 0), 5000)));
    EXPECT_EQ(Text(At(kY, kM, 6, 18, 1)), Text(futures.add(At(kY, kM, 4, 16, 59), 2)));
    EXPECT_EQ(Text(At(kY, 2, 25, 4, 40)), Text(futures.sub(At(kY, kM, 2, 20, 0), 5000)));
    EXPECT_EQ(Text(At(kY, kM, 3, 9, 0)), Text(futures.sub(At(kY, kM, 3, 10, 0), 60)));
    // Kept: the step to the next session also turns the date when it wraps to session 0, on
    // top of the turn after the crossover, so the search passes over one evening. A walk
    // whose count ends on a week's end goes on to the first live bar without that search.
    EXPECT_EQ(Text(At(kY, kM, 3, 18, 0)), Text(futures.nextStart(At(kY, kM, 2, 10, 0))));
    EXPECT_EQ(Text(At(kY, kM, 3, 18, 0, 59)), Text(futures.last(At(kY, kM, 2, 17, 30))));
    EXPECT_EQ(Text(At(kY, kM, 6, 18, 0)), Text(futures.add(At(kY, kM, 4, 16, 59), 1)));
}

TEST(DatePeriodSessions, ANightAndADaySession) {
    // The night session opens the trading day: Sunday night belongs to Monday, Friday night to
    // Saturday.
    Walker night{Sessions(false, {{Hm(19, 0), Hm(7, 0)}, {Hm(8, 30), Hm(15, 15)}}), -5};
    uint32_t next = 0;
    EXPECT_FALSE(night.inSession(At(kY, kM, 2, 7, 30), &next));
    EXPECT_EQ(Text(At(kY, kM, 2, 8, 30)), Text(next));
    EXPECT_FALSE(night.inSession(At(kY, kM, 2, 16, 0), &next));
    EXPECT_EQ(Text(At(kY, kM, 2, 19, 0)), Text(next));
    EXPECT_FALSE(night.inSession(At(kY, kM, 4, 20, 0)));
    EXPECT_EQ(Text(At(kY, kM, 2, 6, 55)), Text(night.first(At(kY, kM, 2, 7, 30))));
    EXPECT_EQ(Text(At(kY, kM, 2, 8, 34, 59)), Text(night.last(At(kY, kM, 2, 7, 30))));
    EXPECT_EQ(Text(At(kY, kM, 4, 15, 10)), Text(night.first(At(kY, kM, 4, 16, 0))));
    // Kept: stepping back to session 3 turns the date for a not same-day security as well, so
    // from Friday night (Saturday's, not traded) the search passes over Friday.
    EXPECT_EQ(Text(At(kY, kM, 3, 15, 10)), Text(night.first(At(kY, kM, 4, 20, 0))));
    EXPECT_EQ(Text(At(kY, kM, 3, 4, 20)), Text(night.add(At(kY, kM, 2, 20, 0), 100)));
    EXPECT_EQ(Text(At(kY, kM, 7, 0, 10)), Text(night.add(At(kY, kM, 2, 20, 0), 500)));
    EXPECT_EQ(Text(At(kY, kM, 2, 13, 45)), Text(night.sub(At(kY, kM, 2, 20, 0), 30)));
    EXPECT_EQ(Text(At(kY, kM, 1, 23, 0)), Text(night.sub(At(kY, kM, 2, 3, 0), 48)));
}

TEST(DatePeriodSessions, FourSessionsInADay) {
    Walker four{Sessions(true, {{Hm(8, 0), Hm(10, 0)},
                                {Hm(10, 30), Hm(12, 0)},
                                {Hm(13, 0), Hm(15, 0)},
                                {Hm(15, 30), Hm(17, 0)}}),
                -30};
    EXPECT_EQ(Text(At(kY, kM, 2, 9, 30)), Text(four.first(At(kY, kM, 2, 10, 10))));
    EXPECT_EQ(Text(At(kY, kM, 2, 10, 59, 59)), Text(four.last(At(kY, kM, 2, 10, 10))));
    EXPECT_EQ(Text(At(kY, kM, 2, 14, 30)), Text(four.first(At(kY, kM, 2, 15, 10))));
    EXPECT_EQ(Text(At(kY, kM, 2, 15, 59, 59)), Text(four.last(At(kY, kM, 2, 15, 10))));
    EXPECT_EQ(Text(At(kY, kM, 3, 8, 0)), Text(four.nextStart(At(kY, kM, 2, 16, 0))));
    // Fourteen bars a day: 8:00, 8:30, 9:00, 9:30, 10:30, 11:00, 11:30, 13:00 ...
    EXPECT_EQ(Text(At(kY, kM, 2, 13, 0)), Text(four.add(At(kY, kM, 2, 9, 0), 5)));
    EXPECT_EQ(Text(At(kY, kM, 3, 8, 0)), Text(four.add(At(kY, kM, 2, 9, 0), 12)));
    EXPECT_EQ(Text(At(kY, kM, 7, 14, 30)), Text(four.add(At(kY, kM, 2, 9, 0), 50)));
    EXPECT_EQ(Text(At(kY, kM, 2, 13, 30)), Text(four.sub(At(kY, kM, 2, 16, 0), 4)));
    // Leaving session 3 turns the date.
    EXPECT_EQ(Text(At(kY, kM, 3, 8, 0)), Text(four.add(At(kY, kM, 2, 16, 0), 2)));
}

// A session that starts within two hours of the zone's change of time cannot be stepped by
// whole days: the fast walk hands such walks to the general one, which must still land where
// the bars one by one land, across the changes of April and October.
TEST(DatePeriodSessions, EarlySessionsWalkCarefullyAcrossDaylightChanges) {
    Walker early{Sessions(true, {{Hm(3, 0), Hm(10, 0)}}), -10};
    const BarList bars(Hm(3, 0), Hm(10, 0), {}, -10, 1995, 2006);
    std::mt19937 random(17);
    for (int k = 0; k < 200; ++k) {
        const int year = 1996 + k % 10;
        const long from = bars.firstAtOrAfter(At(year, k % 2 ? 3 : 10, 25, 3, 0)) +
                          static_cast<long>(random() % 400);
        const int count = 1 + static_cast<int>(random() % 2000);
        ASSERT_EQ(Text(bars.at(from + count)), Text(early.add(bars.at(from), count)))
            << count << " from " << Text(bars.at(from));
    }
}
