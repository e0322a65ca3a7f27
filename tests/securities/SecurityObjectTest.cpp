// The security objects on their own: construction, field updates, comparison and cloning.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <tuple>
#include <typeinfo>

#include <gtest/gtest.h>

#include <qvnrt/CSymbolMap.h>
#include <qvnrt/RTSecurity.h>

#include "platform/LiveObjects.h"

namespace {

int Field(RTSec_Base& security, int field, int32_t value) {
    return security.ReqSecCallback(1, 0, field, RTDATA_INT, &value);
}
int Field(RTSec_Base& security, int field, std::string text) {
    return security.ReqSecCallback(1, 0, field, RTDATA_TEXT, text.data());
}

TEST(SecurityObject, NewObjectsStartUnknownAndUnopened) {
    RTSecurity security;
    EXPECT_EQ(-1, security.m_exchange);
    EXPECT_EQ(98, security.m_assetType);
    EXPECT_EQ(1, security.m_delivered);
    EXPECT_FALSE(security.IsOpen());
    long error = 0;
    EXPECT_EQ(0, security.GetSecInt(1, &error));
    EXPECT_EQ(-2, error);
    EXPECT_EQ(nullptr, security.GetSecString(2, &error));
    EXPECT_EQ(0, security.GetSecInt(1, nullptr));  // a null error pointer is allowed
    SESSION_INFO* rules = reinterpret_cast<SESSION_INFO*>(1);
    HOLIDAYS_INFO* holidays = reinterpret_cast<HOLIDAYS_INFO*>(1);
    EXPECT_FALSE(security.GetSessionInfo(rules, holidays));
    EXPECT_EQ(nullptr, rules);
    EXPECT_EQ(nullptr, holidays);
}

TEST(SecurityObject, DefaultFieldStringAsksForTheUsualFields) {
    RTSecurity security;
    std::string expected = {1, 2, 3, 4, 5, 6, 7, 59, 8};
    for (int f = 10; f <= 18; ++f) expected += static_cast<char>(f);
    expected += {27, 28};
    for (int f = 31; f <= 39; ++f) expected += static_cast<char>(f);
    for (int f = 41; f <= 58; ++f) expected += static_cast<char>(f);
    EXPECT_EQ(expected, security.m_strDefaultFields.str());
    // Per object: changing one leaves new objects with the library's string.
    security.SetDefaultFields("\x01\x02");
    EXPECT_EQ(expected, RTSecurity().m_strDefaultFields.str());
}

TEST(SecurityObject, FieldsLandInTheObject) {
    RTSec_Base security;
    double last = 101.25;
    float close = 99.5f;
    Field(security, 2, "International Business");
    Field(security, 3, 5);
    security.ReqSecCallback(1, 0, 4, RTDATA_DOUBLE, &last);
    security.ReqSecCallback(1, 0, 5, RTDATA_FLOAT, &close);
    Field(security, 7, 0x120);  // a byte value: the low byte
    Field(security, 8, 17);
    Field(security, 58, 12);
    EXPECT_STREQ("International Business", security.m_strName);
    EXPECT_EQ(5, security.m_assetType);
    EXPECT_FLOAT_EQ(101.25f, security.m_lastTrade);
    EXPECT_FLOAT_EQ(99.5f, security.m_prevClose);
    EXPECT_EQ(0x20, security.m_bitFlags);
    EXPECT_EQ(17, security.m_exchange);
    EXPECT_EQ(12, security.m_field58);
    EXPECT_EQ(0, Field(security, 9, 1));  // unknown to the base: ignored, result 0
    EXPECT_EQ(0, security.ReqSecCallback(1, -1, 2, RTDATA_TEXT, nullptr));  // negative status
}

TEST(SecurityObject, TickDirectionFollowsTheSignOfField59) {
    RTSec_Base security;
    EXPECT_EQ(0, security.m_tickDirection);
    Field(security, 59, 0);
    EXPECT_EQ(1, security.m_tickDirection);
    Field(security, 59, 0xFFFF);  // a signed 16-bit -1
    EXPECT_EQ(2, security.m_tickDirection);
    Field(security, 59, 3);
    EXPECT_EQ(1, security.m_tickDirection);
}

TEST(SecurityObject, Field1KeepsTheApplicationsSpelling) {
    appSymbolMap.SetAt("XYZ", "ABC");
    // Held symbol, asset type, flags, symbol sent, symbol kept: the sent one replaces the
    // held one only when it names another symbol (case, the cut to 19 and mapping aside).
    const std::tuple<const char*, int, int, const char*, const char*> rows[] = {
        {"", 0, 0, "ibm", "ibm"},         {"ibm", 0, 0, "IBM", "ibm"},
        {"ibm", 0, 0, "MSFT", "MSFT"},    {"abc", 5, 0, "xyz", "abc"},
        {"abc", 5, 1, "xyz", "xyz"},
        {"abcdefghijklmnopqrst", 0, 0, "ABCDEFGHIJKLMNOPQRS", "abcdefghijklmnopqrst"},
    };
    for (const auto& [held, type, flags, sent, kept] : rows) {
        RTSec_Base security;
        security.m_strSymbol = held;
        security.m_assetType = static_cast<RTSecurityType>(type);
        security.m_flags = flags;
        Field(security, 1, sent);
        EXPECT_STREQ(kept, security.m_strSymbol) << held << " <- " << sent;
    }
}

TEST(SecurityObject, RequestSymbolMapping) {
    appSymbolMap.SetAt("XYZ", "ABC");
    // Symbol, asset type, flags, and the symbol asked of the driver: only a mappable type
    // without the unmapped flag adds the mapped name after a line feed.
    const std::tuple<const char*, int, int, const char*> rows[] = {
        {"abc", 5, 0, "ABC\nXYZ"}, {"abc", 0, 0, "ABC"},     {"abc", 3, 0, "ABC"},
        {"abc", 5, 1, "ABC"},      {"other", 5, 0, "OTHER"},
    };
    for (const auto& [symbol, type, flags, asked] : rows) {
        RTSec_Base security;
        security.m_strSymbol = symbol;
        security.m_assetType = static_cast<RTSecurityType>(type);
        security.m_flags = flags;
        EXPECT_STREQ(asked, security.GetReqSymbol()) << symbol << " type " << type;
    }
}

TEST(SecurityObject, OptionFields) {
    RTSec_Option option;
    float strike = 42.5f;
    int32_t kind = 0xFF;  // read as a signed byte
    int32_t expiry = 20261231;
    EXPECT_EQ(1, option.ReqSecCallback(1, 0, 37, RTDATA_FLOAT, &strike));
    EXPECT_EQ(1, option.ReqSecCallback(1, 0, 44, RTDATA_INT, &kind));
    EXPECT_EQ(1, option.ReqSecCallback(1, 0, 47, RTDATA_INT, &expiry));
    EXPECT_EQ(1, Field(option, 8, 4));  // the base's field, and the option's result
    EXPECT_FLOAT_EQ(42.5f, option.m_optionStrike);
    EXPECT_EQ(-1, option.m_optionKind);
    EXPECT_EQ(20261231u, option.m_optionExpiry);
    EXPECT_EQ(4, option.m_exchange);
    EXPECT_EQ(1, option.ReqSecCallback(1, -3, 37, RTDATA_FLOAT, nullptr));

    option.m_optionText = "text";
    option.CloseEvent();
    EXPECT_TRUE(option.m_optionText.IsEmpty());
    EXPECT_EQ(0, option.m_optionKind);
    EXPECT_EQ(0.0f, option.m_optionStrike);
}

TEST(SecurityObject, SecurityCloseEventKeepsTheOptionFields) {
    RTSecurity security;
    security.m_optionStrike = 10.0f;
    security.m_strSymbol = "IBM";
    security.m_assetType = static_cast<RTSecurityType>(1);
    security.m_lastError = -1;
    EXPECT_EQ(1, security.CloseEvent());
    EXPECT_EQ(10.0f, security.m_optionStrike);
    EXPECT_TRUE(security.m_strSymbol.IsEmpty());
    EXPECT_EQ(98, security.m_assetType);
    EXPECT_EQ(0, security.GetLastError());
}

TEST(SecurityObject, CompareToNeedsTheExactClass) {
    RTSec_Base a, b;
    a.m_strSymbol = "A";
    b.m_strSymbol = "B";
    a.m_lastTrade = 2.0f;
    b.m_lastTrade = 1.0f;
    EXPECT_LT(a.compareTo(&b, 1), 0);
    EXPECT_EQ(1, a.compareTo(&b, 4));
    EXPECT_EQ(0, a.compareTo(&b, 3));

    RTSecurity s, t;
    s.m_strSymbol = "A";
    t.m_strSymbol = "B";
    EXPECT_EQ(0, s.compareTo(&t, 1));  // a derived class compares equal under every key

    RTSec_Option o, p;
    o.m_strSymbol = "A";
    p.m_strSymbol = "B";
    o.m_optionStrike = 5.0f;
    p.m_optionStrike = 6.0f;
    o.m_optionKind = 3;
    p.m_optionKind = 1;
    o.m_optionExpiry = 0xFFFFFFFFu;  // unsigned: the largest
    p.m_optionExpiry = 1;
    EXPECT_EQ(-1, o.compareTo(&p, 37));
    EXPECT_EQ(2, o.compareTo(&p, 44));
    EXPECT_EQ(1, o.compareTo(&p, 47));
    EXPECT_EQ(0, o.compareTo(&p, 1));  // passed to the base, which finds no exact match
    EXPECT_EQ(0, o.compareTo(&a, 37));  // another class: the base compares nothing of it
}

TEST(SecurityObject, CloneCarriesClassIdentityAndValues) {
    RTSec_Option source;
    source.m_strSymbol = "IBM";
    source.m_exchange = 7;
    source.m_request = 99;
    RTSec_Base* copy = source.clone();
    EXPECT_EQ(typeid(RTSec_Option), typeid(*copy));
    EXPECT_STREQ("IBM", copy->m_strSymbol);
    EXPECT_EQ(7, copy->m_exchange);
    EXPECT_EQ(99u, copy->m_request);
    // A clone is never destroyed through the ordinary path: its texts are the source's.
    qvnrt::platform::LiveObjects<RTSec_Base>::Erase(copy);
    ::operator delete(static_cast<void*>(copy));
}

TEST(SecurityObject, CopiesAreMemberwise) {
    RTSec_Base source;
    source.m_strSymbol = "IBM";
    source.m_request = 5;
    RTSec_Base copy(source);
    source.m_strSymbol = "changed";
    EXPECT_STREQ("IBM", copy.m_strSymbol);
    EXPECT_EQ(5u, copy.m_request);
    RTSec_Base assigned;
    assigned = source;
    EXPECT_STREQ("changed", assigned.m_strSymbol);
}

}  // namespace
