// RTSecList against the fake driver: the combined request, service-built and ranked lists,
// the matching of updates to objects, and the array operations.
#include <algorithm>
#include <climits>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <qvnrt/RTSecList.h>

#include "support/FakeSession.h"

namespace {

using namespace std::string_literals;

// Records the list's notifications as text, in order: "start 5", "changed 2", "stop".
class RecordingList : public RTSecList {
public:
    void OnSecListStart(int count) override {
        events.push_back("start " + std::to_string(count));
        RTSecList::OnSecListStart(count);
    }
    void OnSecListStop(void*) override { events.push_back("stop"); }
    void OnSecChanged(int index) override { events.push_back("changed " + std::to_string(index)); }
    void OnSecClosed(int index) override { events.push_back("closed " + std::to_string(index)); }
    RTSec_Base* OnSecCreateNew() override { return plainObjects ? new RTSec_Base : RTSecList::OnSecCreateNew(); }

    std::vector<std::string> symbols() {
        std::vector<std::string> out;
        for (RTSec_Base* security : m_secArray) out.push_back(security->m_strSymbol.str());
        return out;
    }
    std::vector<unsigned long> handles() {
        std::vector<unsigned long> out;
        for (RTSec_Base* security : m_secArray) out.push_back(security->m_request);
        return out;
    }

    std::vector<std::string> events;
    bool plainObjects = false;  // RTSec_Base rows, which compare by key
};

const char kFourSymbols[] = "A\0B\0C\0D\0";

class SecList : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.Connect()); }

    // A service-built list's row, its place given by its status: its symbol, and with
    // `end` the end of its batch.
    void Row(unsigned long request, int status, std::string symbol, bool end = true) {
        session.fake.fireSecurity(request, status, 1, RTDATA_TEXT, symbol.data());
        if (end) session.fake.fireSecurityEnd(request, status);
    }

    qvnrt::test::FakeSession session;
    RecordingList list;
};

struct Range {
    int first, last;
    std::vector<std::string> requested;
};

class SecRequestRange : public SecList, public ::testing::WithParamInterface<Range> {};

TEST_P(SecRequestRange, ClampsIntoTheArray) {
    list.SecRequest(kFourSymbols, static_cast<RTSecurityType>(1), nullptr, 1);
    session.fake.clearLog();
    EXPECT_EQ(1, list.SecRequest(GetParam().first, GetParam().last));
    EXPECT_EQ(GetParam().requested, session.fake.last("clientReqSecurities").symbols());
}

INSTANTIATE_TEST_SUITE_P(Ranges, SecRequestRange,
                         ::testing::Values(Range{2, 1, {"B"}}, Range{-5, 99, {"A", "B", "C", "D"}},
                                           Range{1, 2, {"B", "C"}}, Range{3, -1, {"D"}}),
                         [](const ::testing::TestParamInfo<Range>& info) {
                             const auto name = [](int n) {
                                 return (n < 0 ? "minus" : "") + std::to_string(n < 0 ? -n : n);
                             };
                             return name(info.param.first) + "_to_" + name(info.param.last);
                         });

TEST_F(SecList, SkippedEntriesTakeNoHandleAndTheOthersStayConsecutive) {
    unsigned char fields[] = {4, 5, 0};
    session.fake.setNextHandle(40);
    list.SecRequest("A\0B\0C\0"s.c_str(), static_cast<RTSecurityType>(1), nullptr, 1);
    list.m_secArray[1]->m_flags = 2;
    list.m_secArray[1]->m_request = 0;
    list.SecRequest("D\0"s.c_str(), static_cast<RTSecurityType>(1), fields, 0);
    session.fake.setNextHandle(70);
    list.SecRequest(0, -1);
    const auto call = session.fake.last("clientReqSecurities");
    EXPECT_EQ((std::vector<std::string>{"A", "C", "D"}), call.symbols());
    EXPECT_EQ(3, call.integer("count"));
    EXPECT_EQ("\x04\x05", call.text("fields"));
    EXPECT_EQ(0, call.integer("streaming"));
    EXPECT_EQ((std::vector<unsigned long>{70, 0, 71, 72}), list.handles());
}

TEST_F(SecList, EmptySymbolTextAddsNothing) {
    EXPECT_EQ(0, list.SecRequest("\0B\0"s.c_str(), static_cast<RTSecurityType>(1), nullptr, 1));
    EXPECT_EQ(0, list.SecRequest(nullptr, static_cast<RTSecurityType>(1), nullptr, 1));
    EXPECT_EQ(0, session.fake.count("clientReqSecurities"));
    list.SecSymbolList("X\0Y\0"s.c_str());
    EXPECT_EQ("X\0Y\0\0"s, list.SecSymbolList().str());
}

TEST_F(SecList, OfflineAndRefusedRequestsGiveNoHandles) {
    session.fake.setResult("clientReqSecurities", 0);
    list.SecRequest(kFourSymbols, static_cast<RTSecurityType>(1), nullptr, 1);
    EXPECT_EQ(std::vector<unsigned long>(4, 0), list.handles());
    session.fake.clearResult("clientReqSecurities");
    RTServer::Disconnect();
    session.fake.clearLog();
    EXPECT_EQ(1, list.SecRequest(0, -1));
    EXPECT_EQ(0u, list.m_request);
    EXPECT_EQ(std::vector<unsigned long>(4, 0), list.handles());
    EXPECT_EQ(0, session.fake.count("clientReqSecurities"));
}

TEST_F(SecList, UpdatesFindTheirObjectByHandle) {
    list.SecRequest(kFourSymbols, static_cast<RTSecurityType>(1), nullptr, 1);
    const unsigned long first = list.m_request;
    session.fake.fireSecurityDouble(first + 2, RTFIELD_LAST, 12.5);
    session.fake.fireSecurityEnd(first + 2);
    session.fake.fireSecurityEnd(first);  // wraps round from where the last one was found
    EXPECT_FLOAT_EQ(12.5f, list.m_secArray[2]->m_lastTrade);
    EXPECT_EQ((std::vector<std::string>{"changed 2", "changed 0"}), list.events);
    // A handle of no object, and a user that is not a list, are dropped.
    EXPECT_EQ(std::optional<int>(1),
              session.fake.fireSecurityWithUser(first + 9, 0, 0, 0, nullptr,
                                                reinterpret_cast<unsigned long>(&list)));
    RTSec_Base stranger;
    EXPECT_EQ(std::optional<int>(0),
              session.fake.fireSecurityWithUser(first, 0, 0, 0, nullptr,
                                                reinterpret_cast<unsigned long>(&stranger)));
    EXPECT_EQ(2u, list.events.size());
}

TEST_F(SecList, OneShotAnswersClearEveryHandle) {
    list.SecRequest(kFourSymbols, static_cast<RTSecurityType>(1), nullptr, 0);
    for (int k = 0; k < 4; ++k) session.fake.fireSecurityEnd(list.m_request + k);
    EXPECT_EQ(std::vector<unsigned long>(4, 0), list.handles());
}

TEST_F(SecList, OfflineRowsReplayWhatTheCacheHolds) {
    RTServer::InitCache(true, session.cacheDir.path().c_str(), 5, 0);
    list.SetDefaultFields("\x04");
    list.SecRequest("A\0"s.c_str(), static_cast<RTSecurityType>(1), nullptr, 1);
    session.fake.fireSecurityDouble(list.m_request, RTFIELD_LAST, 7.5);
    session.fake.fireSecurityEnd(list.m_request);

    RTServer::Disconnect();
    RecordingList offline;
    offline.SetDefaultFields("\x04");
    offline.SecRequest("A\0"s.c_str(), static_cast<RTSecurityType>(1), nullptr, 1);
    EXPECT_FLOAT_EQ(7.5f, offline.m_secArray[0]->m_lastTrade);
}

class NegativeStatus : public SecList, public ::testing::WithParamInterface<int> {};

TEST_P(NegativeStatus, ClosesTheObjectAndOnlyMinusTwoMarksItUndelivered) {
    list.SecRequest(kFourSymbols, static_cast<RTSecurityType>(1), nullptr, 1);
    const unsigned long handle = list.m_request + 1;
    EXPECT_EQ(std::optional<int>(1), session.fake.fireSecurityEnd(handle, GetParam()));
    EXPECT_EQ(std::vector<std::string>{"closed 1"}, list.events);
    EXPECT_EQ(0u, list.m_secArray[1]->m_request);
    EXPECT_EQ(GetParam() == -2 ? 0 : 1, list.m_secArray[1]->m_delivered);
}

INSTANTIATE_TEST_SUITE_P(Statuses, NegativeStatus, ::testing::Values(-2, -1, -7, INT_MIN));

TEST_F(SecList, ServiceListFillsRowsAsStatusFallsThenStops) {
    const unsigned long request = list.SecList("STOCKS", static_cast<RTSecurityType>(1), 3);
    ASSERT_NE(0u, request);
    EXPECT_EQ("STOCKS", session.fake.last("clientReqSecurityList").text("symbol"));
    EXPECT_EQ(3, session.fake.last("clientReqSecurityList").integer("limit"));
    const std::vector<std::string> names{"F", "E", "D", "C", "B", "A"};
    for (int status = 5; status >= 0; --status) Row(request, status, names[5 - status], false);
    EXPECT_EQ(names, list.symbols());
    session.fake.fireSecurityEnd(request, 1);
    EXPECT_EQ((std::vector<std::string>{"start 5", "changed 4", "stop"}), list.events);
    EXPECT_EQ(0u, list.m_request);
    // After the end, the request's updates no longer count as rows.
    Row(request, 0, "G");
    EXPECT_EQ(names, list.symbols());
}

TEST_F(SecList, RankedListStartsOverEachRound) {
    const unsigned long request = list.SecRankedList(1, 2, 3, 0);
    EXPECT_EQ(0, list.m_stream);
    for (int round = 0; round < 2; ++round) {
        Row(request, 2, "X" + std::to_string(round));
        Row(request, 1, "Y" + std::to_string(round));
    }
    EXPECT_EQ((std::vector<std::string>{"X0", "Y0", "X1", "Y1"}), list.symbols());
    EXPECT_EQ(2, std::count(list.events.begin(), list.events.end(), "stop"));
    EXPECT_EQ(request, list.m_request);
    list.CloseEvent();
    EXPECT_FALSE(session.fake.isOpen(request));
}

TEST_F(SecList, WildCountsAndThrowingHandlersAreDropped) {
    const unsigned long request = list.SecList("ALL", static_cast<RTSecurityType>(1), 0);
    Row(request, INT_MAX, "FIRST");
    Row(request, 0, "FAR");  // far past anything a list may hold
    session.fake.fireSecurity(request, INT_MAX, 1, RTDATA_TEXT, nullptr);
    EXPECT_EQ(std::vector<std::string>{"FIRST"}, list.symbols());

    struct Throwing : RTSecList {
        void OnSecChanged(int) override { throw std::runtime_error("handler failed"); }
    } throwing;
    throwing.SecRequest("A\0"s.c_str(), static_cast<RTSecurityType>(1), nullptr, 1);
    EXPECT_EQ(std::optional<int>(0), session.fake.fireSecurityEnd(throwing.m_request));
}

TEST_F(SecList, SortIsStableAndIndexesAreChecked) {
    list.plainObjects = true;
    list.SecRequest("C\0A\0B\0D\0"s.c_str(), static_cast<RTSecurityType>(1), nullptr, 1);
    const float prices[] = {2, 1, 2, 1};
    for (int i = 0; i < 4; ++i) list.m_secArray[i]->m_lastTrade = prices[i];
    list.Sort(4);
    EXPECT_EQ((std::vector<std::string>{"A", "D", "C", "B"}), list.symbols());
    list.Sort(1);
    EXPECT_EQ((std::vector<std::string>{"A", "B", "C", "D"}), list.symbols());
    EXPECT_EQ(1, list.m_sortKey);

    list.RemoveAt(1);
    EXPECT_STREQ("C", list.At(1)->m_strSymbol);
    for (int index : {-1, 3}) {
        try {
            list.At(index);
            ADD_FAILURE() << "At(" << index << ") did not throw";
        } catch (const std::out_of_range& e) {
            EXPECT_STREQ("invalid vector<T> subscript", e.what());
        }
        EXPECT_THROW(list.RemoveAt(index), std::out_of_range);
    }
}

}  // namespace
