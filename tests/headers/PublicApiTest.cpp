// What an application sees: qvnrt.h alone, linked against libqvnrt.so alone. Each case
// touches an exported family, so a name left out of the library's exports fails the link.
#include <qvnrt/qvnrt.h>

#include <gtest/gtest.h>

#include "support/TempDir.h"

TEST(PublicApi, ServerAndSecurities) {
    EXPECT_FALSE(RTServer::IsConnected());
    EXPECT_EQ(0, RTServer::SetDLLName(nullptr));
    RTSecurity security;
    long error = 0;
    EXPECT_EQ(0, security.GetSecInt(3, &error));
    EXPECT_EQ(-2, error);
    RTSessSecurity sessions;
    EXPECT_EQ(0, sessions.ReqSessionInfo(0));
    RTExchange exchange;
    EXPECT_EQ(0, exchange.GetExchangeIndex(&error));
    CSessionInfo rules;
    EXPECT_EQ(2, rules.Use());
    RTSecList list;
    EXPECT_EQ(0, list.SecRequest(0, -1));  // an empty list asks for nothing
    g_appDataServiceRights.NoteConnectionState(-1);
    RTSecCache::CacheTimerProc(nullptr, 0, 0, 0);
}

TEST(PublicApi, CalendarDisplayAndConfiguration) {
    Date date;
    date.setDate(1, 1, 1970);
    EXPECT_EQ(2212032000u, date.m_value);
    EXPECT_EQ(4u, date.dayOfWeek(ZONE_GMT));  // a Thursday
    CDoubleToFractRep rep;
    EXPECT_STREQ("12.375", rep.ToString(12.375));
    CSymbolMap map;
    char ibm[] = "ibm";
    EXPECT_STREQ("ibm", map.RT2DL(ibm, nullptr));
    CPrivateProfile profile(nullptr);
    EXPECT_EQ(0, profile.SetValue("S", "k", ""));
    CInetResearch research("ibm", nullptr);
    EXPECT_EQ(0, research.IsServiceAvailable(nullptr));
    qvnrtSetAppName("app");
    EXPECT_STREQ("0.1.0", qvnrt::LibraryVersion());
}

TEST(PublicApi, HostHooks) {
    struct Host : qvnrt::UiHost {
        int MessageBox(const char*, const char*, unsigned, unsigned) override { return 0; }
        int RunModal(qvnrt::Panel&) override { return qvnrt::IDOK; }
        void BeginWaitCursor() override {}
        void EndWaitCursor() override {}
        bool OpenUrl(const char*) override { return false; }
    } host;
    EXPECT_EQ(nullptr, qvnrt::SetUiHost(&host));
    CNewsUnavailableDlg panel(nullptr);
    EXPECT_EQ(qvnrt::IDOK, qvnrt::GetUiHost().RunModal(panel));
    // The library installs its research panels when it loads: the editor reaches the host.
    qvnrt::test::IsolatedHome home;
    CInetResearch research;
    EXPECT_EQ(qvnrt::IDOK, research.EditInetSearchURLs(nullptr));
    qvnrt::SetUiHost(nullptr);
    qvnrt::PollLoop loop;
    EXPECT_EQ(nullptr, qvnrt::SetMainLoop(&loop));
    qvnrt::SetMainLoop(nullptr);
    CString text;
    text.Format("%d", 42);
    EXPECT_STREQ("42", text);
}
