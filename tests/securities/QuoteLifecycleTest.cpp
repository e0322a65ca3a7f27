// RTSecurity's lifecycle and typed accessors, with the cache off.
#include <cstring>

#include <gtest/gtest.h>

#include <qvnrt/CSessionInfo.h>
#include <qvnrt/RTSecurity.h>

#include "support/FakeSession.h"
#include "support/RecordingSecurity.h"

namespace {

class QuoteLifecycle : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.Connect()); }
    qvnrt::test::FakeSession session;
};

TEST_F(QuoteLifecycle, OpenSecurityIsTheCleanForm) {
    qvnrt::test::RecordingSecurity security;
    ASSERT_NE(0, security.OpenSecurity("ibm", static_cast<RTSecurityType>(1), 1, 0));
    const unsigned long first = security.m_request;
    EXPECT_TRUE(security.IsRequested());
    EXPECT_NE(0, security == first);
    EXPECT_EQ(0, security == first + 1);
    ASSERT_NE(0, security.OpenSecurity("msft", static_cast<RTSecurityType>(1), 1, 0));
    EXPECT_FALSE(session.fake.isOpen(first));
    EXPECT_STREQ("msft", security.m_strSymbol);

    security.CloseSecurity();
    EXPECT_FALSE(security.IsRequested());
    EXPECT_TRUE(security.m_strSymbol.IsEmpty());
    EXPECT_EQ(-1, security.m_exchange);
    EXPECT_EQ(2, session.fake.count("clientCloseEvent"));
}

TEST_F(QuoteLifecycle, ModifySecurity) {
    RTSecurity security;
    char fields[] = "\x04\x05";
    EXPECT_EQ(0, security.ModifySecurity(fields));  // no request open
    EXPECT_STREQ("\x04\x05", security.m_strDefaultFields);
    EXPECT_EQ(0, session.fake.count("clientModifySecurity"));

    security.OpenSecurity("IBM", static_cast<RTSecurityType>(1), 1, 0);
    session.fake.pushResult("clientModifySecurity", 7);
    char more[] = "\x0a";
    EXPECT_EQ(7, security.ModifySecurity(more));  // the driver's answer
    auto call = session.fake.last("clientModifySecurity");
    EXPECT_EQ(security.m_request, call.number("request"));
    EXPECT_EQ("\x0a", call.text("fields"));
    security.ModifySecurity(nullptr);  // passed on as null; the defaults stay
    EXPECT_TRUE(session.fake.last("clientModifySecurity").isNull("fields"));
    EXPECT_STREQ("\x0a", security.m_strDefaultFields);

    RTServer::Disconnect();
    char offline[] = "\x02";
    EXPECT_EQ(1, security.ModifySecurity(offline));  // offline: stored, no driver call
    EXPECT_STREQ("\x02", security.m_strDefaultFields);
    EXPECT_EQ(2, session.fake.count("clientModifySecurity"));
}

TEST_F(QuoteLifecycle, PriceAccessorsTreatExactZeroAsMissingAndByteOnesGiveTheLowByte) {
    RTSecurity security;
    long error = 99;
    EXPECT_EQ(0.0f, security.GetSecPrevClose(&error));
    EXPECT_EQ(-4, error);
    EXPECT_EQ(0.0, security.GetSecLastTrade(&error));
    EXPECT_EQ(-4, error);
    security.m_lastTrade = -1.5f;  // a negative price is present
    EXPECT_EQ(-1.5, security.GetSecLastTrade(&error));
    EXPECT_EQ(0, error);

    // Byte accessors give the low byte.
    security.m_bitFlags = 0x1A5;
    security.m_exchange = -1;
    security.m_assetType = static_cast<RTSecurityType>(7);
    error = 99;
    EXPECT_EQ(0xA5, security.GetSecBitFlags(&error));
    EXPECT_EQ(0, error);
    EXPECT_EQ(0xFF, security.GetSecExchange(&error));
    EXPECT_EQ(7, security.GetSecAssetType(&error));
    error = 99;
    EXPECT_EQ(0.0f, security.GetSecEPS(&error));
    EXPECT_EQ(-2, error);  // no cache record
}

TEST_F(QuoteLifecycle, NameAndDescriptionDiffer) {
    RTSecurity security;
    security.m_strName = "ABCDEFGH";
    char buffer[16];
    std::memset(buffer, 'z', sizeof(buffer));
    long error = 99;
    // GetSecName needs an open record; without the cache there is none.
    EXPECT_EQ(0, security.GetSecName(buffer, 4, &error));
    EXPECT_EQ(-2, error);
    EXPECT_EQ('z', buffer[0]);

    // GetSecCurrDesc needs none, and always terminates at buffer[length].
    EXPECT_EQ(4, security.GetSecCurrDesc(buffer, 4, &error));
    EXPECT_EQ(0, error);
    EXPECT_STREQ("ABCD", buffer);
    EXPECT_EQ('z', buffer[5]);
    security.m_strName.Empty();
    EXPECT_EQ(0, security.GetSecCurrDesc(buffer, 4, &error));
    EXPECT_EQ(-4, error);
    EXPECT_STREQ("", buffer);
}

TEST_F(QuoteLifecycle, SessionReferencesAreCounted) {
    RTSecurity security;
    auto* rules = new CSessionInfo();
    EXPECT_EQ(1, rules->m_refCount);
    security.setSessHolInfo(rules, nullptr, 9);
    EXPECT_EQ(2, rules->m_refCount);
    EXPECT_EQ(9, rules->m_info.spare);
    EXPECT_EQ(rules, security.sessionRulesAre());
    // Setting the same object again keeps it alive even when the security holds it alone.
    EXPECT_EQ(1, rules->Free());
    security.setSessHolInfo(rules, nullptr, 0);
    EXPECT_EQ(1, rules->m_refCount);
    security.setSessHolInfo(nullptr, nullptr, 0);  // the last reference: deleted (ASan)
    EXPECT_EQ(nullptr, security.sessionRulesAre());
}

}  // namespace
