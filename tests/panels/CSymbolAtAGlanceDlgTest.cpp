#include <qvnrt/CSymbolAtAGlanceDlg.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include <qvnrt/CDoubleToFractRep.h>
#include <qvnrt/CPrivateProfile.h>
#include <qvnrt/Date.h>

#include "support/FakeSession.h"

namespace {

using Panel = CSymbolAtAGlanceDlg;

// A host's view that keeps the panel's state as a screen would show it.
class RecordingView : public Panel::View {
public:
    void SetSymbolText(const char* text) override { symbolBox = text; }
    bool GetSymbolText(CString& text) override {
        text = symbolBox.c_str();
        return true;
    }
    void SetText(Panel::Text which, const char* text) override { texts[which] = text; }
    bool IsArrowVisible(Panel::Arrow arrow) override { return arrows[arrow]; }
    void ShowArrow(Panel::Arrow arrow, bool visible) override { arrows[arrow] = visible; }
    void ShowButton(Panel::Button button, bool visible) override { shown[button] = visible; }
    void EnableButton(Panel::Button button, bool enabled) override { enabled_[button] = enabled; }
    void SetDefaultButton(Panel::Button button) override { defaultButton = button; }
    void ResetServices() override {
        services.clear();
        selected = -1;
    }
    int AddService(const char* name) override {
        services.emplace_back(name);
        return static_cast<int>(services.size()) - 1;
    }
    int FindService(const char* name) override {
        for (size_t i = 0; i < services.size(); ++i) {
            if (services[i] == name) return static_cast<int>(i);
        }
        return -1;
    }
    void SelectService(int index) override { selected = index; }
    CString GetSelectedService() override {
        return selected >= 0 ? CString(services[selected].c_str()) : CString();
    }
    void EnableServices(bool enabled) override { servicesEnabled = enabled; }

    std::string symbolBox;
    std::map<Panel::Text, std::string> texts;
    std::map<Panel::Arrow, bool> arrows;
    std::map<Panel::Button, bool> shown;
    std::map<Panel::Button, bool> enabled_;
    Panel::Button defaultButton = Panel::kCloseButton;
    std::vector<std::string> services;
    int selected = -1;
    bool servicesEnabled = false;
};

class GlanceTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.Connect()); }

    // Opens the panel on the view, as a host does, and returns the subscription's handle.
    unsigned long Open(const char* symbol = "IBM") {
        panel = std::make_unique<Panel>(symbol);
        EXPECT_EQ(1, panel->OnInitDialog(view));
        return static_cast<unsigned long>(session.fake.last("clientReqSecurities").result);
    }
    // Prices as the security's own style renders them.
    std::string Price(double value) { return CDoubleToFractRep(panel.get()).ToString(value); }
    std::string Text(Panel::Text which) { return view.texts[which]; }

    qvnrt::test::FakeSession session;
    RecordingView view;
    std::unique_ptr<Panel> panel;
};

TEST_F(GlanceTest, SubscribesToTheFieldListAsAStreamingUnknownType) {
    Open("ibm");
    const auto request = session.fake.last("clientReqSecurities");
    EXPECT_EQ(std::vector<std::string>{"IBM"}, request.symbols());
    const std::string fields = request.text("fields");
    EXPECT_EQ(std::string({8,  7, 59, 3,  13, 14, 27, 28, 18, 19, 20, 17,
                           31, 4, 10, 11, 32, 5,  57, 15, 16, 1,  2,  58}),
              fields.substr(0, fields.find('\0')));
    EXPECT_EQ(98, panel->m_assetType);
    for (int text = 0; text < Panel::kTextCount; ++text) {
        EXPECT_EQ("n/a", Text(static_cast<Panel::Text>(text))) << Panel::Label(Panel::Text(text));
    }
    EXPECT_FALSE(view.shown[Panel::kRefreshButton]);
}

TEST_F(GlanceTest, DelayedMarkFollowsTheRawSymbolInEitherOrder) {
    const unsigned long request = Open();
    session.fake.fireSecurityInt(request, RTFIELD_BIT_FLAGS, 0x20);
    EXPECT_EQ(" (d)", view.symbolBox);
    session.fake.fireSecurityText(request, RTFIELD_SYMBOL, "IBM");
    EXPECT_EQ("IBM (d)", view.symbolBox);
    session.fake.fireSecurityInt(request, RTFIELD_BIT_FLAGS, 0x01);
    EXPECT_EQ("IBM", view.symbolBox);
}

struct ChangeCase {
    const char* name;
    float previous;
    double last;
    const char* percent;
    bool plus;
};

class ChangeTest : public GlanceTest, public ::testing::WithParamInterface<ChangeCase> {};

TEST_P(ChangeTest, ChangeSignAndPercent) {
    const ChangeCase c = GetParam();
    const unsigned long request = Open();
    session.fake.fireSecurityFloat(request, RTFIELD_PREV_CLOSE, c.previous);
    session.fake.fireSecurityDouble(request, RTFIELD_LAST, c.last);
    session.fake.fireSecurityEnd(request);
    EXPECT_EQ(c.percent, Text(Panel::kPercent));
    const double change = static_cast<double>(static_cast<float>(c.last)) - c.previous;
    EXPECT_EQ((c.plus ? "+" : "") + Price(change), Text(Panel::kChange));
    EXPECT_EQ(Price(c.previous), Text(Panel::kPrevious));
}

INSTANTIATE_TEST_SUITE_P(Quotes, ChangeTest,
                         ::testing::Values(ChangeCase{"NegativePrevious", -2.0f, -1.0, "50.00%",
                                                      true},
                                           ChangeCase{"Rise", 100.0f, 103.5, "3.50%", true},
                                           ChangeCase{"Level", 5.0f, 5.0, "n/a", true},
                                           ChangeCase{"Fall", 10.0f, 9.0, "-10.00%", false}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(GlanceTest, ZeroValuesLeaveTheirTexts) {
    const unsigned long request = Open();
    session.fake.fireSecurityFloat(request, RTFIELD_EPS, 0.0f);
    session.fake.fireSecurityFloat(request, RTFIELD_PE_RATIO, 12.25f);
    session.fake.fireSecurityFloat(request, RTFIELD_BID, 0.0f);
    session.fake.fireSecurityFloat(request, RTFIELD_ASK, 101.5f);
    session.fake.fireSecurityInt(request, RTFIELD_BID_SIZE, 0);
    session.fake.fireSecurityInt(request, RTFIELD_ASK_SIZE, 0xFFFF);  // zero-extended
    session.fake.fireSecurityInt(request, RTFIELD_VOLUME, 1200);
    session.fake.fireSecurityEnd(request);
    EXPECT_EQ("n/a", Text(Panel::kEPS));
    EXPECT_EQ("12.250", Text(Panel::kPERatio));
    EXPECT_EQ("n/a", Text(Panel::kBid));
    EXPECT_EQ(Price(101.5), Text(Panel::kAsk));
    EXPECT_EQ("n/a", Text(Panel::kBidSize));
    EXPECT_EQ("65535", Text(Panel::kAskSize));
    EXPECT_EQ("1200", Text(Panel::kVolume));
    EXPECT_EQ("n/a", Text(Panel::kTotalVolume));
}

TEST_F(GlanceTest, TickArrowsSwapWithTheSign) {
    const unsigned long request = Open();
    session.fake.fireSecurityInt(request, RTFIELD_TICK, -3);
    EXPECT_TRUE(view.arrows[Panel::kDownArrow]);
    EXPECT_FALSE(view.arrows[Panel::kUpArrow]);
    EXPECT_EQ(2, panel->m_nTickArrow);
    session.fake.fireSecurityInt(request, RTFIELD_TICK, 0);  // level counts as up
    EXPECT_TRUE(view.arrows[Panel::kUpArrow]);
    EXPECT_FALSE(view.arrows[Panel::kDownArrow]);
    EXPECT_EQ(1, panel->m_nTickArrow);
}

// 15 January 2026 14:30:05 GMT.
constexpr int32_t kQuoteTime = static_cast<int32_t>(EPOCH_1970 + 1768487405u);

TEST_F(GlanceTest, QuoteTimeIsShownInTheExchangeZone) {
    session.fake.setExchangeLong(1, RTEXPROP_ZONE, ZONE_GMT);
    session.fake.setExchangeLong(2, RTEXPROP_ZONE, 99);
    session.fake.setExchangeLong(3, RTEXPROP_ZONE, ZONE_FALLBACK);
    const auto timeOn = [&](int exchange) {
        const unsigned long request = Open();
        session.fake.fireSecurityInt(request, RTFIELD_QUOTE_TIME, kQuoteTime);
        if (exchange >= 0) session.fake.fireSecurityInt(request, RTFIELD_EXCHANGE, exchange);
        session.fake.fireSecurityEnd(request);
        return Text(Panel::kTime);
    };
    EXPECT_EQ("n/a", timeOn(-1));  // no exchange yet
    EXPECT_EQ("01/15/2026 14:30:05", timeOn(1));
    const std::string fallback = timeOn(3);
    EXPECT_NE("01/15/2026 14:30:05", fallback);
    EXPECT_EQ(fallback, timeOn(2));  // zone 99 reads as 18
}

TEST_F(GlanceTest, ExchangeTextsComeFromTheDriverOrReadUnknown) {
    session.fake.setExchangeString(4, RTEXPROP_NAME, "NYSE");
    const unsigned long request = Open();
    session.fake.fireSecurityInt(request, RTFIELD_EXCHANGE, 4);
    session.fake.fireSecurityInt(request, RTFIELD_BID_EXCHANGE, 200);
    session.fake.fireSecurityEnd(request);
    EXPECT_EQ("NYSE", Text(Panel::kExchange));
    EXPECT_EQ("Unknown", Text(Panel::kBidExchange));
    EXPECT_EQ("n/a", Text(Panel::kAskExchange));
}

TEST_F(GlanceTest, RefreshResetsEveryValueAndSubscribesAgain) {
    const unsigned long first = Open();
    session.fake.fireSecurityDouble(first, RTFIELD_LAST, 50.0);
    session.fake.fireSecurityFloat(first, RTFIELD_EPS, 2.0f);
    session.fake.fireSecurityInt(first, RTFIELD_TICK, 1);
    session.fake.fireSecurityEnd(first);
    ASSERT_NE("n/a", Text(Panel::kLast));

    view.symbolBox = "MSFT (d)";  // the user's edit; the mark is not part of the symbol
    panel->OnSymbolChanged();
    EXPECT_TRUE(view.shown[Panel::kRefreshButton]);
    EXPECT_TRUE(view.enabled_[Panel::kRefreshButton]);
    EXPECT_EQ(Panel::kRefreshButton, view.defaultButton);
    panel->OnRefresh();

    EXPECT_FALSE(view.shown[Panel::kRefreshButton]);
    EXPECT_EQ(Panel::kCloseButton, view.defaultButton);
    EXPECT_FALSE(view.arrows[Panel::kUpArrow]);
    for (int text = 0; text < Panel::kTextCount; ++text) {
        EXPECT_EQ("n/a", Text(static_cast<Panel::Text>(text))) << Panel::Label(Panel::Text(text));
    }
    EXPECT_EQ(0xFF, panel->m_byExchange);
    EXPECT_EQ(std::vector<std::string>{"MSFT"}, session.fake.last("clientReqSecurities").symbols());
    EXPECT_EQ("MSFT", panel->m_research.m_symbol);
    EXPECT_EQ(1, session.fake.count("clientCloseEvent"));  // the first request, by ReqSecurity

    view.symbolBox = "";
    panel->OnSymbolChanged();
    EXPECT_FALSE(view.enabled_[Panel::kRefreshButton]);
}

TEST_F(GlanceTest, ServiceBoxWithoutServicesIsDisabled) {
    Open();
    EXPECT_EQ(std::vector<std::string>{"<No services available>"}, view.services);
    EXPECT_EQ(0, view.selected);
    EXPECT_FALSE(view.servicesEnabled);
    for (auto button : {Panel::kGotoButton, Panel::kEditButton}) {
        EXPECT_FALSE(view.shown[button]);
        EXPECT_FALSE(view.enabled_[button]);
    }
}

TEST_F(GlanceTest, ServiceBoxListsSymbolServicesAndClearsAVanishedLastOne) {
    session.home.host().write("inetres.txt",
                              "[Internet Background Page]\n"
                              "Quotes=http://example.com/q?s=<SYMBOL>\n"
                              "News=http://example.com/n?s=<SYMBOL>&c=<EXTRA>\n"
                              "Profile=http://example.com/p/<SYMBOL>.html\n"
                              "[Last Internet Search Service]\nName=Gone\n");
    Open();
    EXPECT_EQ(2u, view.services.size());
    EXPECT_EQ(-1, view.FindService("News"));
    EXPECT_EQ(0, view.selected);
    EXPECT_TRUE(view.servicesEnabled);
    EXPECT_TRUE(view.shown[Panel::kGotoButton]);
    EXPECT_EQ(nullptr,
              CPrivateProfile("inetres.txt").GetStartKeyPos("Last Internet Search Service"));

    view.selected = view.FindService("Profile");
    panel->OnServiceChanged();
    panel->OnGoto();
    EXPECT_EQ(std::vector<std::string>{"http://example.com/p/IBM.html"}, session.ui.urls);

    Panel again("IBM");  // the choice is remembered
    RecordingView second;
    again.OnInitDialog(second);
    EXPECT_EQ("Profile", second.services[second.selected]);
}

TEST_F(GlanceTest, DisplayRunsThePanelThroughTheHostAndClosesItAfter) {
    EXPECT_EQ(0, DisplaySymbolAtAGlanceDlg(nullptr, nullptr));
    EXPECT_TRUE(session.ui.panels.empty());

    session.ui.onPanel = [&](qvnrt::Panel& shown) {
        auto* glance = dynamic_cast<Panel*>(&shown);
        EXPECT_NE(nullptr, glance);
        if (glance) glance->OnInitDialog(view);
        return qvnrt::IDOK;
    };
    int owner = 0;
    EXPECT_EQ(0, DisplaySymbolAtAGlanceDlg(&owner, "ibm"));
    EXPECT_EQ(std::vector<std::string>{"Symbol At A Glance"}, session.ui.panels);
    const auto request = session.fake.last("clientReqSecurities");
    EXPECT_EQ(request.result,
              static_cast<long long>(session.fake.last("clientCloseEvent").number("request")));
}

}  // namespace
