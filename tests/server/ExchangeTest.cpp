// RTExchange's accessors and RTSecurity's exchange forwarders against the fake driver.
#include <gtest/gtest.h>

#include <qvnrt/RTExchange.h>
#include <qvnrt/RTSecurity.h>

#include "support/FakeSession.h"

namespace {

class Exchanges : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.Load()); }
    qvnrt::test::FakeSession session;
};

TEST_F(Exchanges, WithoutAnExchangeOrAnErrorPointerAccessorsAnswerMinus2WithoutTheDriver) {
    RTExchange none;
    EXPECT_EQ(-1, none.m_exchange);
    EXPECT_EQ(-1, none.m_position);
    char buffer[16] = "untouched";
    long error = 99;
    EXPECT_EQ(0, none.GetExchangeLongName(buffer, sizeof(buffer), &error));
    EXPECT_STREQ("untouched", buffer);
    EXPECT_EQ(-2, error);
    error = 99;
    EXPECT_EQ(0, none.GetExchangeIndex(&error));
    EXPECT_EQ(-2, error);
    error = 99;
    EXPECT_EQ(0, none.GetExchangeStartHour(&error));
    EXPECT_EQ(-2, error);
    RTExchange noPointer(3);  // a null error pointer sets only the last error
    EXPECT_EQ(0, noPointer.GetExchangeCloseMin(nullptr));
    EXPECT_EQ(-2, noPointer.GetLastError());
    EXPECT_EQ(0, session.fake.count("clientGetExchangeLong"));
    EXPECT_EQ(0, session.fake.count("clientGetExchangeString"));
}

TEST_F(Exchanges, AccessorsReadTheirFieldsThroughTheDriver) {
    session.fake.setExchangeLong(3, RTEXFIELD_INDEX, 0x1234);
    session.fake.setExchangeLong(3, RTEXFIELD_START_HOUR, -5);  // a signed 16-bit result
    session.fake.setExchangeLong(3, RTEXFIELD_CLOSE_MIN, 30);
    session.fake.setExchangeString(3, RTEXFIELD_LONG_NAME, "New York");
    session.fake.setExchangeString(3, RTEXFIELD_CURRENCY, "USD");
    RTExchange exchange(3);
    long error = 99;
    EXPECT_EQ(0x1234, exchange.GetExchangeIndex(&error));
    EXPECT_EQ(0, error);
    EXPECT_EQ(-5, exchange.GetExchangeStartHour(&error));
    EXPECT_EQ(30, exchange.GetExchangeCloseMin(&error));
    char buffer[32] = {};
    EXPECT_EQ(8, exchange.GetExchangeLongName(buffer, sizeof(buffer), &error));
    EXPECT_STREQ("New York", buffer);
    exchange.GetExchangeCurrency(buffer, sizeof(buffer), &error);
    EXPECT_STREQ("USD", buffer);
    const auto call = session.fake.last("clientGetExchangeString");
    EXPECT_EQ(RTEXFIELD_CURRENCY, call.integer("field"));
    EXPECT_EQ(3, call.integer("exchange"));
}

TEST_F(Exchanges, DriverErrorsStayUntilTheNextAccess) {
    session.fake.setExchangeLong(4, RTEXFIELD_START_MIN, 0, -4);
    session.fake.setExchangeLong(5, RTEXFIELD_START_MIN, 15);
    RTExchange exchange(4);
    long error = 0;
    exchange.GetExchangeStartMin(&error);
    EXPECT_EQ(-4, error);
    EXPECT_EQ(-4, exchange.GetLastError());
    // SetExchange reports the error as it stands and leaves it.
    EXPECT_EQ(0, exchange.SetExchange(5));
    EXPECT_EQ(5, exchange.m_exchange);
    EXPECT_EQ(-4, exchange.GetLastError());
    EXPECT_EQ(15, exchange.GetExchangeStartMin(&error));
    EXPECT_EQ(0, exchange.GetLastError());
    EXPECT_EQ(1, exchange.SetExchange(4));

    // Copies carry number, position and error as they stand.
    exchange.m_position = 8;
    exchange.GetExchangeStartMin(&error);
    const RTExchange copy = exchange;
    EXPECT_EQ(4, copy.m_exchange);
    EXPECT_EQ(8, copy.m_position);
    EXPECT_EQ(-4, copy.m_lastError);
}

TEST_F(Exchanges, SecurityForwardersUseThePlainShape) {
    session.fake.setExchangeLong(7, RTEXPROP_ZONE, 22);
    EXPECT_EQ(22u, RTSecurity::GetExchangeLong(7, RTEXPROP_ZONE, 18));
    EXPECT_EQ(18u, RTSecurity::GetExchangeLong(8, RTEXPROP_ZONE, 18));  // the driver's default
    EXPECT_EQ(18, session.fake.last("clientGetExchangeLong").integer("defaultValue"));

    session.fake.setExchangeString(7, RTEXPROP_NAME, "LSE");
    char buffer[40] = {};
    char unknown[] = "Unknown";
    RTSecurity::GetExchangeString(7, RTEXPROP_NAME, buffer, sizeof(buffer), unknown);
    EXPECT_STREQ("LSE", buffer);
}

}  // namespace
