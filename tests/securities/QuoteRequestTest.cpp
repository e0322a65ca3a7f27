// The quote request from the object to the driver and back, with the cache off.
#include <cstdint>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include <qvnrt/CSymbolMap.h>
#include <qvnrt/RTSecurity.h>

#include "support/FakeSession.h"
#include "support/RecordingSecurity.h"

namespace {

using qvnrt::test::RecordingSecurity;

class QuoteRequest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.Connect()); }

    unsigned long Request(RTSecurity& security, const char* symbol, int type = 1,
                          int flags = 1) {
        security.ReqSecurity(symbol, nullptr, static_cast<RTSecurityType>(type), flags, 0);
        return security.m_request;
    }

    qvnrt::test::FakeSession session;
};

TEST_F(QuoteRequest, TravelsToTheDriverAndBackFieldByField) {
    RecordingSecurity security;
    const unsigned long handle = Request(security, "ibm");
    ASSERT_NE(0u, handle);
    EXPECT_EQ(0, security.GetLastError());
    const auto call = session.fake.last("clientReqSecurities");
    EXPECT_EQ(std::vector<std::string>{"IBM"}, call.symbols());
    EXPECT_EQ(security.m_strDefaultFields.str(), call.text("fields"));
    EXPECT_EQ(1, call.integer("streaming"));
    EXPECT_EQ(1, call.integer("count"));
    EXPECT_EQ(1, call.integer("assetType"));
    EXPECT_EQ(reinterpret_cast<unsigned long>(&security), call.number("user"));

    session.fake.fireSecurityText(handle, RTFIELD_NAME, "International Business Machines");
    session.fake.fireSecurityDouble(handle, RTFIELD_LAST, 131.5);
    session.fake.fireSecurityFloat(handle, RTFIELD_PREV_CLOSE, 130.0f);
    EXPECT_EQ(0, security.changed);
    EXPECT_EQ(std::optional<int>(1), session.fake.fireSecurityEnd(handle));
    EXPECT_EQ(1, security.changed);
    EXPECT_STREQ("International Business Machines", security.m_strName);
    EXPECT_FLOAT_EQ(131.5f, security.m_lastTrade);
    EXPECT_EQ(3u, security.fields.size());  // field 0 is not a field
}

TEST_F(QuoteRequest, StreamingBitAndUnmappedSymbolFlag) {
    appSymbolMap.SetAt("XYZ", "ABC");
    RTSecurity security;
    Request(security, "abc", 5, 0);
    auto call = session.fake.last("clientReqSecurities");
    EXPECT_EQ(std::vector<std::string>{"ABC\nXYZ"}, call.symbols());
    EXPECT_EQ(0, call.integer("streaming"));

    Request(security, "abc", 5, 0x100001);  // bit 20: as it stands, never passed on
    call = session.fake.last("clientReqSecurities");
    EXPECT_EQ(std::vector<std::string>{"abc"}, call.symbols());
    EXPECT_EQ(1, call.integer("streaming"));
}

TEST_F(QuoteRequest, SecondRequestClosesTheFirstAtTheDriverFirst) {
    RTSecurity security;
    const unsigned long first = Request(security, "IBM");
    session.fake.clearLog();
    const unsigned long second = Request(security, "MSFT");
    EXPECT_NE(first, second);
    EXPECT_EQ((std::vector<std::string>{"clientCloseEvent", "clientReqSecurities"}),
              session.fake.names());
    EXPECT_EQ(first, session.fake.last("clientCloseEvent").number("request"));
    EXPECT_FALSE(session.fake.isOpen(first));
}

TEST_F(QuoteRequest, NegativeStatusClosesTheSecurity) {
    RecordingSecurity security;
    const unsigned long handle = Request(security, "BAD");
    session.fake.fireSecurity(handle, -1, 0, 0, nullptr);
    EXPECT_EQ(1, security.closed);
    EXPECT_EQ(0u, security.m_request);
    EXPECT_FALSE(security.IsRequested());
    // Anything later under that handle is dropped: the handle no longer matches.
    session.fake.fireSecurityEnd(handle);
    EXPECT_EQ(0, security.changed);
}

TEST_F(QuoteRequest, LateCallbacksDoNothing) {
    RecordingSecurity security;
    const unsigned long handle = Request(security, "IBM");
    security.CloseEvent();
    EXPECT_EQ(std::optional<int>(1), session.fake.fireSecurityEnd(handle, -1));
    EXPECT_EQ(0, security.closed);

    // The object is gone: the stored user value no longer names a live object.
    auto gone = std::make_unique<RecordingSecurity>();
    const unsigned long goneHandle = Request(*gone, "MSFT");
    gone.reset();
    EXPECT_EQ(std::optional<int>(1), session.fake.fireSecurityText(goneHandle, 2, "late"));
    EXPECT_EQ(std::optional<int>(1), session.fake.fireSecurityEnd(goneHandle));
}

TEST_F(QuoteRequest, NullAndForeignUserValues) {
    RecordingSecurity security;
    const unsigned long handle = Request(security, "IBM");
    EXPECT_EQ(std::optional<int>(0),
              session.fake.fireSecurityWithUser(handle, 0, 0, 0, nullptr, 0));
    int notASecurity = 0;
    EXPECT_EQ(std::optional<int>(1),
              session.fake.fireSecurityWithUser(handle, 0, 0, 0, nullptr,
                                                reinterpret_cast<unsigned long>(&notASecurity)));
    EXPECT_EQ(0, security.changed);
    // A bare helper call with a live object but another handle is dropped as well.
    EXPECT_EQ(1, RTSecurity::ReqSecCallbackHelper(handle + 1, 0, 0, 0, nullptr,
                                                   reinterpret_cast<unsigned long>(&security)));
    EXPECT_EQ(0, security.changed);
}

TEST_F(QuoteRequest, DriverRefusingTheRequest) {
    session.fake.pushResult("clientReqSecurities", 0);
    RTSecurity security;
    EXPECT_EQ(1, security.ReqSecurity("IBM", nullptr, static_cast<RTSecurityType>(1), 1, 0));
    EXPECT_EQ(0u, security.m_request);
    EXPECT_EQ(0, security.GetLastError());
}

TEST_F(QuoteRequest, OfflineRequestsReachNoDriver) {
    RTServer::Disconnect();
    RTSecurity security;
    EXPECT_EQ(0, security.OpenSecurity("IBM", static_cast<RTSecurityType>(1), 1, 0));
    EXPECT_EQ(-1, security.GetLastError());
    EXPECT_EQ(0u, security.m_request);
    EXPECT_EQ(0, session.fake.count("clientReqSecurities"));
}

TEST_F(QuoteRequest, EmptyFieldStringAsksNothing) {
    RTSecurity security;
    security.SetDefaultFields("");
    EXPECT_EQ(1, security.ReqSecurity("IBM", nullptr, static_cast<RTSecurityType>(1), 1, 0));
    EXPECT_EQ(0u, security.m_request);
    EXPECT_EQ(0, session.fake.count("clientReqSecurities"));
    char fields[] = "\x04\x05";
    security.ReqSecurity("IBM", fields, static_cast<RTSecurityType>(1), 1, 0);
    EXPECT_EQ("\x04\x05", session.fake.last("clientReqSecurities").text("fields"));
}

}  // namespace
