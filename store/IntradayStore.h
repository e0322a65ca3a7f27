// A symbol's intraday store: the blocks of one kind of record in its .tik file, the requests
// being served from them, and the live records not yet settled on disk. TickStore keeps
// ticks (TICKREC, storage "T"); MinuteStore keeps minute bars (MinuteBar, storage "M") and
// builds its live bars from ticks. Everything is newest first on disk and in history
// replies, oldest first in the live buffer.
//
// One thread, no locks: every call comes from the main loop, the driver's replies included.
// historyInFlight keeps live records back while a history reply that must sit below them
// is on its way.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <qvnrt/driver.h>

#include "store/CompoundFile.h"
#include "store/IntradayLink.h"
#include "store/IntradayRecords.h"

namespace RTSecCache {

// A request being served: what it still lacks from the driver (from, to), where it began,
// and the newest time not yet delivered. 0 in to or cursor means up to the present.
struct PendingRange {
    StoreOwner security = nullptr;
    uint32_t from = 0;
    uint32_t to = 0;
    uint32_t requestedFrom = 0;
    uint32_t cursor = 0;
};

// How far a subscriber has been given the live buffer, and (minute store) the last bar it
// was given, so that a bar sent again carries only what was added since.
struct StoreSubscriber {
    size_t cursor = 0;
    int32_t volume = 0;
    float open = 0, close = 0, high = 0, low = 0;
};

// The entries of a "Contents" stream: none unless it is of version 1; its count believed only
// as far as the stream holds entries; entries out of order or overlapping left out.
std::vector<BlockIndexEntry> ReadContents(const std::vector<unsigned char>& contents);

// The flag of a request that wants everything from the driver, cached or not.
constexpr int kRefreshFlag = 0x20000;

// The address a driver's reply carries. Registered while alive, so that a late reply for a
// destroyed store is recognised and dropped.
class IntradayStoreBase {
public:
    virtual ~IntradayStoreBase();
    // A reply of the driver to one of this store's requests; always answers 1.
    virtual int onDriverReply(uint32_t handle, int count, int live, int type, void* data) = 0;

protected:
    IntradayStoreBase();
};

template <class Record>
class IntradayStore : public IntradayStoreBase {
public:
    // Opens the storage and reads its index, dropping blocks not used for `keepSeconds`
    // and blocks whose header disagrees with the index.
    IntradayStore(CompoundFile& file, const char* storage, IntradayLink& link);
    IntradayStore(const IntradayStore&) = delete;
    IntradayStore& operator=(const IntradayStore&) = delete;
    // Settles the live buffer, saves the index and closes every driver request still open.
    ~IntradayStore() override;

    // Serves [start, end] (request times) to `owner` from the blocks and asks `driver` for
    // the missing span. True when the owner now holds a driver handle.
    bool request(StoreOwner owner, uint32_t start, uint32_t end, int flags, SpanRequester& driver);
    // Forgets the owner. True when it was a subscriber or had a pending range.
    bool unsubscribe(StoreOwner owner, bool* ownerHeldShared);
    bool idle() const { return m_subscribers.empty() && m_pending.empty(); }
    bool hasSubscribers() const { return !m_subscribers.empty(); }
    void closeShared();

    int onDriverReply(uint32_t handle, int count, int live, int type, void* data) override;
    // Once per timer pass: live records to the subscribers that are ready.
    void pushLive();
    void saveIndex();
    void flushLive();

    const std::vector<BlockIndexEntry>& index() const { return m_index; }
    // The live records not yet on disk, oldest first, and the newest time on disk below them.
    const std::vector<Record>& liveBuffer() const { return m_liveBuffer; }
    uint32_t liveStart() const { return m_liveStart; }
    static constexpr int kType = sizeof(Record) == sizeof(TICKREC) ? RTREC_TICKREC
                                                                     : RTREC_INTRADAY_PRICEREC;

private:
    using Records = std::vector<Record>;
    using Pending = std::multimap<uint32_t, PendingRange>;

    void deliver(typename Pending::iterator pending);
    void enterLive(const TICKREC* ticks, int count);
    // Moves the reply's newest second to the bottom of the live buffer; how many records.
    int meetLiveEdge(PendingRange& range, const Record* reply, int count);
    void passReply(bool shared, PendingRange& range, const Record* reply, int count);
    void endReply(bool shared, PendingRange& range, uint32_t handle, int count);
    void writeRange(uint32_t first, uint32_t last, Records records);
    void writeBlock(const BlockIndexEntry& entry, const Records& records);
    bool readBlock(const BlockIndexEntry& entry, Records& records);
    void removeBlock(size_t at);
    bool hasShared() const { return m_sharedHandle != 0; }
    // The shared request's from; above every time when there is none.
    uint32_t sharedFrom() const { return hasShared() ? m_shared.from : UINT32_MAX; }
    // Records to the owner, counted as the cache's or the driver's.
    void send(StoreOwner owner, int count, int live, const Record* records, bool fromCache);
    void sendSlice(StoreOwner owner, const Records& newestFirst, int64_t cursor, int64_t floor,
                   bool fromCache);
    uint32_t now() const;

    CompoundFile& m_file;
    std::string m_storage;
    IntradayLink& m_link;

    std::vector<BlockIndexEntry> m_index;
    uint32_t m_sharedHandle = 0;
    PendingRange m_shared;
    std::map<StoreOwner, StoreSubscriber> m_subscribers;
    Pending m_pending;
    uint32_t m_liveStart = 0;
    Records m_liveBuffer;
    bool m_historyInFlight = false;
};

class TickStore final : public IntradayStore<TICKREC> {
public:
    TickStore(CompoundFile& file, IntradayLink& link) : IntradayStore(file, "T", link) {}
};

class MinuteStore final : public IntradayStore<MinuteBar> {
public:
    MinuteStore(CompoundFile& file, IntradayLink& link) : IntradayStore(file, "M", link) {}
};

// The live buffer is settled to disk once it holds more than this many records.
constexpr size_t kLiveBufferLimit = 4000;

}  // namespace RTSecCache
