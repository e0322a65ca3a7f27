// End-of-day history against the fake driver: the request, the repair and merge of each
// batch, and delivery from the cache timer.
#include <climits>
#include <cstring>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include <qvnrt/RTSecCache.h>
#include <qvnrt/RTSecurity.h>

#include "support/FakeSession.h"
#include "support/ManualClock.h"

namespace {

// Records each ReqEODCallback with a copy of its records, and the number of driver calls
// made before it.
class EodOwner : public RTSecurity {
public:
    struct Call {
        int count;
        int flags;
        std::vector<RTPRICEREC> records;
        int driverCallsBefore;
    };
    bool IsReadyForRTCallback() override { return ready; }
    bool ReqEODCallback(unsigned long, int count, int flags, RTPRICEREC* records) override {
        calls.push_back({count, flags, {}, fake ? fake->callCount() : 0});
        if (records) calls.back().records.assign(records, records + count);
        if (throwing) throw std::runtime_error("owner failed");
        return true;
    }
    std::vector<uint32_t> dates() const {
        std::vector<uint32_t> out;
        for (const Call& call : calls) {
            for (const RTPRICEREC& record : call.records) out.push_back(record.date);
        }
        return out;
    }

    bool ready = true;
    bool throwing = false;
    qvnrt::test::FakeDriver* fake = nullptr;
    std::vector<Call> calls;
};

RTPRICEREC Day(uint32_t date, float close = 10, int32_t value = 100) {
    return RTPRICEREC{date, 0, close, close, close, close, value};
}

class EodHistory : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(session.Connect());
        owner.fake = &session.fake;
        owner.m_strSymbol = "IBM";
        ASSERT_TRUE(owner.RequestEOD(nullptr, 0, 0));
    }

    std::optional<int> Batch(std::vector<RTPRICEREC> records, int flags) {
        return session.fake.fireEod(owner.m_eodRequest, static_cast<int>(records.size()), flags,
                                    records.empty() ? nullptr : records.data());
    }
    void Tick() {
        ticks += 1000;
        RTSecCache::CacheTimerProc(nullptr, 0, 0, ticks);
    }

    qvnrt::test::FakeSession session;
    qvnrt::test::ManualClock clock{5000, 0};
    uint32_t ticks = 0;
    EodOwner owner;
};

struct Repair {
    RTPRICEREC in, out;
};

class EodRepair : public EodHistory, public ::testing::WithParamInterface<Repair> {};

TEST_P(EodRepair, EachRecordIsRepairedOnItsWay) {
    Batch({GetParam().in}, 1);
    Tick();
    ASSERT_EQ(1u, owner.calls.size());
    ASSERT_EQ(1u, owner.calls[0].records.size());
    EXPECT_EQ(0, std::memcmp(&GetParam().out, owner.calls[0].records.data(), sizeof(RTPRICEREC)));
}

INSTANTIATE_TEST_SUITE_P(
    Records, EodRepair,
    ::testing::Values(Repair{{7, 9, 0, 5, 0, 0, 3}, {7, 9, 5, 5, 5, 5, 3}},        // close only
                      Repair{{7, 9, 0, 0, 0, 0, 0}, {7, 9, 0, 0, 0, 0, -32080}},   // all zero
                      Repair{{7, 9, 0, 5, 6, 0, -4}, {7, 9, 0, 5, 6, 0, -4}}));  // left alone

TEST_F(EodHistory, OverlappingBatchesMergeTheSharedDay) {
    Batch({Day(20), Day(21), Day(22)}, 0);
    Batch({Day(18), Day(19), Day(20, 99)}, 0);
    Batch({Day(18, 77)}, 1);  // a one-day batch on the first day adds nothing
    Tick();
    EXPECT_EQ((std::vector<uint32_t>{18, 19, 20, 21, 22}), owner.dates());
    ASSERT_EQ(1u, owner.calls.size());  // final: no record held back
    EXPECT_FLOAT_EQ(77, owner.calls[0].records[0].close);
    EXPECT_FLOAT_EQ(99, owner.calls[0].records[2].close);
}

struct Delivery {
    std::vector<RTPRICEREC> batch;
    int flags;
    std::vector<std::pair<int, int>> calls;  // count and flags of each ReqEODCallback
};

class EodDelivery : public EodHistory, public ::testing::WithParamInterface<Delivery> {};

TEST_P(EodDelivery, OnlyFromATimerTickInTheGivenOrder) {
    Batch(GetParam().batch, GetParam().flags);
    EXPECT_TRUE(owner.calls.empty());
    Tick();
    std::vector<std::pair<int, int>> seen;
    for (const auto& call : owner.calls) seen.emplace_back(call.count, call.flags);
    EXPECT_EQ(GetParam().calls, seen);
    Tick();  // the entry went whole
    EXPECT_EQ(GetParam().calls.size(), owner.calls.size());
}

INSTANTIATE_TEST_SUITE_P(
    Batches, EodDelivery,
    ::testing::Values(Delivery{{}, 0, {{0, -1}}},                      // empty first batch
                      Delivery{{Day(20)}, 0, {{1, 0}}},                // held back, alone
                      Delivery{{Day(20), Day(21)}, 0, {{1, 1}, {1, 0}}}));

TEST_F(EodHistory, BatchesWaitWhileTheOwnerIsNotReady) {
    owner.ready = false;
    Batch({Day(21), Day(22)}, 0);
    Tick();
    Batch({Day(19), Day(20)}, 0);
    Tick();
    session.fake.fireEod(owner.m_eodRequest, 0, 0, nullptr);
    EXPECT_TRUE(owner.calls.empty());
    owner.ready = true;
    Tick();
    EXPECT_EQ((std::vector<uint32_t>{19, 20, 21, 22}), owner.dates());
    EXPECT_EQ(-1, owner.calls.back().flags);
}

TEST_F(EodHistory, ClosingDropsWhatWasBuffered) {
    Batch({Day(20)}, 1);
    const unsigned long request = owner.m_eodRequest;
    owner.CloseEOD();
    EXPECT_FALSE(session.fake.isOpen(request));
    Tick();
    EXPECT_TRUE(owner.calls.empty());

    // The cache's release of the security drops it too.
    RTServer::InitCache(true, session.cacheDir.path().c_str(), 5, 0);
    ASSERT_TRUE(owner.OpenRTSec("IBM"));
    owner.RequestEOD(nullptr, 0, 0);
    Batch({Day(20)}, 1);
    owner.RTSec_Base::Close();
    Tick();
    EXPECT_TRUE(owner.calls.empty());
}

TEST_F(EodHistory, OfflineTheOwnerHearsFirstAndTheDriverIsStillAsked) {
    RTServer::Disconnect();
    session.fake.clearLog();
    owner.RequestEOD(nullptr, 0x100001, 0);
    ASSERT_EQ(1u, owner.calls.size());
    EXPECT_EQ(0, owner.calls[0].count);
    EXPECT_EQ(1, owner.calls[0].flags);
    EXPECT_EQ(0, owner.calls[0].driverCallsBefore);
    const auto call = session.fake.last("clientReqEodRecords");
    EXPECT_EQ("IBM", call.text("symbol"));
    EXPECT_EQ(1, call.integer("streaming"));
}

TEST_F(EodHistory, BrokenBatchesAndStrangersStoreNothing) {
    RTSec_Base notASecurity;
    RTPRICEREC day = Day(20);
    EXPECT_EQ(std::optional<int>(0), session.fake.fireEodWithUser(1, 1, 1, &day, 0));
    EXPECT_EQ(std::optional<int>(0),
              session.fake.fireEodWithUser(1, 1, 1, &day,
                                           reinterpret_cast<unsigned long>(&notASecurity)));
    EXPECT_EQ(std::optional<int>(0), session.fake.fireEod(owner.m_eodRequest, 5, 1, nullptr));
    EXPECT_EQ(std::optional<int>(0), session.fake.fireEod(owner.m_eodRequest, INT_MAX, 1, &day));
    Tick();
    EXPECT_TRUE(owner.calls.empty());
    EXPECT_EQ(std::optional<int>(1), session.fake.fireEod(owner.m_eodRequest, -3, 0, nullptr));
    Tick();
    ASSERT_EQ(1u, owner.calls.size());
    EXPECT_EQ(-1, owner.calls[0].flags);
}

TEST_F(EodHistory, AThrowingOwnerOrAVanishedOneStopsOnlyItsOwnDelivery) {
    owner.throwing = true;
    EodOwner other;
    other.m_strSymbol = "MSFT";
    other.RequestEOD(nullptr, 0, 0);
    Batch({Day(20), Day(21)}, 0);
    RTPRICEREC day = Day(20);
    session.fake.fireEod(other.m_eodRequest, 1, 1, &day);
    {
        EodOwner gone;
        gone.m_strSymbol = "GONE";
        gone.RequestEOD(nullptr, 0, 0);
        session.fake.fireEod(gone.m_eodRequest, 1, 1, &day);
    }
    EXPECT_NO_THROW(Tick());
    EXPECT_EQ(1u, owner.calls.size());  // the held-back record never came
    EXPECT_EQ(1u, other.calls.size());
}

}  // namespace
