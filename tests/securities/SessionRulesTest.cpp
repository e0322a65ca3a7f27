// Session and holiday rules: the counted holders, RTSessSecurity, and the cache's front door.
#include <cstdlib>
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include <qvnrt/CSessionInfo.h>
#include <qvnrt/RTSessSecurity.h>

#include "support/FakeSession.h"

namespace {

SESSION_INFO Rules(int16_t start, int16_t end) {
    SESSION_INFO rules{};
    rules.size = 38;
    rules.bSession[0] = 1;
    rules.tradeDays[0] = 0x44;
    rules.sStartTime[0] = start;
    rules.sEndTime[0] = end;
    rules.chTimeZone = 18;
    rules.bIsFirstSessionSameDay = 1;
    rules.bSingleSessionStandard = 1;
    rules.spare = 0x5A;
    return rules;
}

class Owner : public RTSessSecurity {
public:
    void OnSessChanged() override { ++changed; }
    void OnSessClosed() override {
        ++closed;
        RTSessSecurity::OnSessClosed();
    }
    int changed = 0;
    int closed = 0;
};

TEST(SessionHolders, CountsNeverGoBelowZero) {
    CSessionInfo info;
    EXPECT_EQ(1, info.m_refCount);
    EXPECT_EQ(38, info.m_info.size);
    EXPECT_EQ(2, info.Use());
    EXPECT_FALSE(info.IsFree());
    EXPECT_EQ(1, info.Free());
    EXPECT_EQ(0, info.Free());
    EXPECT_TRUE(info.IsFree());
    EXPECT_EQ(0, info.Free());  // stays at 0
}

TEST(SessionHolders, CopiesLeaveTheSpareByte) {
    const SESSION_INFO rules = Rules(0x091E, 0x1000);
    CSessionInfo fromRecord(&rules);
    EXPECT_EQ(0x091E, fromRecord.m_info.sStartTime[0]);
    EXPECT_NE(0x5A, fromRecord.m_info.spare);
    fromRecord.m_info.spare = 7;
    fromRecord.Use();
    CSessionInfo copy(fromRecord);
    EXPECT_EQ(1, copy.m_refCount);
    EXPECT_NE(7, copy.m_info.spare);
    CSessionInfo assigned;
    assigned = fromRecord;  // the whole object, the count too
    EXPECT_EQ(2, assigned.m_refCount);
    EXPECT_EQ(7, assigned.m_info.spare);
}

TEST(SessionHolders, HolidaysAreHandedOnOnlyWithRows) {
    CHolidaysInfo none;
    EXPECT_EQ(nullptr, none.Rows());
    HOLIDAYS_INFO empty{};
    CHolidaysInfo noRows(&empty);
    EXPECT_EQ(nullptr, noRows.Rows());
    alignas(HOLIDAYS_INFO) unsigned char bytes[4 + 10] = {};
    auto* one = reinterpret_cast<HOLIDAYS_INFO*>(bytes);
    one->sNumHolidays = 1;
    one->rows[0].month = 12;
    CHolidaysInfo withRow(one);
    ASSERT_NE(nullptr, withRow.Rows());
    EXPECT_EQ(12, withRow.Rows()->rows[0].month);
}

class SessionRules : public ::testing::Test {
protected:
    void SetUp() override {
        RTServer::InitCache(true, session.cacheDir.path().c_str(), 5, 0);
        ASSERT_TRUE(session.Connect());
    }
    unsigned long Open(Owner& owner, const char* symbol = "ES") {
        owner.ReqSecurity(symbol, nullptr, static_cast<RTSecurityType>(7), 1, 0);
        return owner.m_hSessEvent;
    }
    void Deliver(unsigned long handle) {
        SESSION_INFO rules = Rules(0x091E, 0x1000);
        session.fake.fireSession(handle, 0, &rules, nullptr);
    }
    qvnrt::test::FakeSession session;
};

TEST_F(SessionRules, RulesAreFetchedCachedAndToldOnlyWhenTheyChange) {
    Owner owner;
    const unsigned long handle = Open(owner);
    ASSERT_NE(0u, handle);
    EXPECT_EQ("ES", session.fake.last("clientReqSessionInfo").text("symbol"));
    SESSION_INFO rules = Rules(0x091E, 0x1000);
    session.fake.fireSession(handle, 0, &rules, nullptr);
    EXPECT_EQ(1, owner.changed);
    ASSERT_NE(nullptr, owner.m_pSessionRec);
    EXPECT_EQ(0x1000, owner.m_pSessionRec->sEndTime[0]);

    session.fake.fireSession(handle, 0, &rules, nullptr);  // the same rules: told once
    EXPECT_EQ(1, owner.changed);

    SESSION_INFO* kept = nullptr;
    HOLIDAYS_INFO* holidays = reinterpret_cast<HOLIDAYS_INFO*>(1);
    EXPECT_TRUE(owner.GetSessionInfo(kept, holidays));
    EXPECT_EQ(0, std::memcmp(kept, &rules, sizeof(rules)));
    EXPECT_EQ(nullptr, holidays);  // holidays are not cached
}

TEST_F(SessionRules, EveryListenerOfTheSymbolHearsAChangeAndOneGoneIsNotCalled) {
    Owner first, second;
    auto gone = std::make_unique<Owner>();
    const unsigned long firstHandle = Open(first);
    Open(second);
    Open(*gone);
    gone.reset();  // clean under ASan
    Deliver(firstHandle);
    EXPECT_EQ(1, first.changed);
    EXPECT_EQ(1, second.changed);
    EXPECT_EQ(0x091E, second.m_pSessionRec->sStartTime[0]);
}

TEST_F(SessionRules, ADriverErrorEmptiesTheCachedRules) {
    Owner owner;
    const unsigned long handle = Open(owner);
    Deliver(handle);
    session.fake.fireSession(handle, -1, nullptr, nullptr);
    EXPECT_EQ(1, owner.closed);
    EXPECT_EQ(0u, owner.m_hSessEvent);
    SESSION_INFO* kept = nullptr;
    HOLIDAYS_INFO* holidays = nullptr;
    EXPECT_FALSE(owner.GetSessionInfo(kept, holidays));
}

TEST_F(SessionRules, KeptRulesAreDeliveredAtOnceEvenOffline) {
    {
        Owner writer;
        Deliver(Open(writer));
    }
    RTServer::Disconnect();
    Owner reader;
    reader.ReqSecurity("ES", nullptr, static_cast<RTSecurityType>(7), 1, 0);
    EXPECT_EQ(1, reader.changed);
    EXPECT_EQ(0u, reader.m_hSessEvent);
    EXPECT_EQ(0, reader.GetLastError());  // the kept rules count as an answer
    ASSERT_NE(nullptr, reader.m_pSessionRec);

    Owner nothingKept;
    EXPECT_EQ(0, [&] {
        nothingKept.readSessHolInfo(false);
        nothingKept.ReqSecurity("NQ", nullptr, static_cast<RTSecurityType>(7), 1, 0);
        return nothingKept.ReqSessionInfo(0);
    }());
    EXPECT_EQ(-1, nothingKept.GetLastError());
}

TEST_F(SessionRules, AskingAgainClosesThePreviousRequest) {
    Owner owner;
    const unsigned long first = Open(owner);
    owner.ReqSessionInfo(0);
    EXPECT_FALSE(session.fake.isOpen(first));
    EXPECT_NE(first, owner.m_hSessEvent);
    RTSessSecurity unopened;
    EXPECT_EQ(0, unopened.ReqSessionInfo(0));  // no cache record
}

TEST_F(SessionRules, CallbacksForOthersAreIgnored) {
    Owner owner;
    const unsigned long handle = Open(owner);
    SESSION_INFO rules = Rules(0x091E, 0x1000);
    EXPECT_EQ(std::optional<int>(0), session.fake.fireSessionWithUser(handle, 0, &rules, nullptr, 0));
    RTSecurity plain;
    EXPECT_EQ(std::optional<int>(1),
              session.fake.fireSessionWithUser(handle, 0, &rules, nullptr,
                                               reinterpret_cast<unsigned long>(&plain)));
    EXPECT_EQ(std::optional<int>(1),
              session.fake.fireSessionWithUser(handle + 100, 0, &rules, nullptr,
                                               reinterpret_cast<unsigned long>(&owner)));
    EXPECT_EQ(0, owner.changed);
    // The static entry follows the same rules.
    EXPECT_EQ(0, RTSecurity::ReqSessCallbackHelper(handle, 0, &rules, nullptr, 0));
    EXPECT_EQ(1, RTSecurity::ReqSessCallbackHelper(handle, 0, &rules, nullptr,
                                                   reinterpret_cast<unsigned long>(&owner)));
    EXPECT_EQ(1, owner.changed);
}

TEST_F(SessionRules, HolidayBlocksAreCopied) {
    Owner owner;
    alignas(HOLIDAYS_INFO) unsigned char bytes[4 + 20] = {};
    auto* holidays = reinterpret_cast<HOLIDAYS_INFO*>(bytes);
    holidays->sNumHolidays = 2;
    holidays->rows[1].day = 25;
    owner.ReqSessCallback(1, 0, nullptr, holidays);
    ASSERT_NE(nullptr, owner.m_pHolidayRec);
    EXPECT_EQ(25, owner.m_pHolidayRec->rows[1].day);
    HOLIDAYS_INFO* first = owner.m_pHolidayRec;
    owner.ReqSessCallback(1, 0, nullptr, holidays);
    EXPECT_NE(first, owner.m_pHolidayRec);  // a new block; the one before is not freed
    std::free(first);
    EXPECT_EQ(0, owner.ReqSessCallback(1, -1, nullptr, holidays));
}

}  // namespace
