#include "store/IntradayStore.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>
#include <optional>

#include "platform/LiveObjects.h"
#include "store/StoreState.h"

namespace RTSecCache {
namespace {

constexpr const char* kContents = "Contents";

std::string StreamName(uint32_t first) {
    char name[9];
    std::snprintf(name, sizeof(name), "%x", first);
    return name;
}

template <class T>
T Load(const unsigned char* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof(T));
    return value;
}

// Records newest first: the part with cursor >= time > floor, as [begin, end) positions.
template <class Record>
std::pair<size_t, size_t> Slice(const std::vector<Record>& newestFirst, int64_t cursor,
                                int64_t floor) {
    auto newerThan = [](int64_t limit) {
        return [limit](const Record& record) { return static_cast<int64_t>(record.time) > limit; };
    };
    const auto begin = std::partition_point(newestFirst.begin(), newestFirst.end(), newerThan(cursor));
    const auto end = std::partition_point(begin, newestFirst.end(), newerThan(floor));
    return {static_cast<size_t>(begin - newestFirst.begin()),
            static_cast<size_t>(end - newestFirst.begin())};
}

}  // namespace

std::vector<BlockIndexEntry> ReadContents(const std::vector<unsigned char>& contents) {
    std::vector<BlockIndexEntry> index;
    if (contents.size() < 8 || Load<uint32_t>(contents.data()) != kContentsVersion) return index;
    const size_t count = std::min<size_t>(Load<uint32_t>(contents.data() + 4),
                                          (contents.size() - 8) / sizeof(BlockIndexEntry));
    for (size_t i = 0; i < count; ++i) {
        const auto entry = Load<BlockIndexEntry>(contents.data() + 8 + i * sizeof(BlockIndexEntry));
        // An index out of order or overlapping cannot be searched.
        if (entry.first > entry.last) continue;
        if (!index.empty() && entry.first <= index.back().last) continue;
        index.push_back(entry);
    }
    return index;
}

IntradayStoreBase::IntradayStoreBase() {
    qvnrt::platform::LiveObjects<IntradayStoreBase>::Insert(this);
}

IntradayStoreBase::~IntradayStoreBase() {
    qvnrt::platform::LiveObjects<IntradayStoreBase>::Erase(this);
}

template <class Record>
IntradayStore<Record>::IntradayStore(CompoundFile& file, const char* storage, IntradayLink& link)
    : m_file(file), m_storage(storage), m_link(link) {
    std::vector<unsigned char> contents;
    // A new storage, or one of another version, starts empty (its old block streams stay
    // unreferenced).
    if (m_file.read(m_storage, kContents, contents)) m_index = ReadContents(contents);
    const auto keep = static_cast<uint32_t>(Store().keepSeconds());
    for (size_t i = 0; i < m_index.size();) {
        const BlockIndexEntry& entry = m_index[i];
        std::vector<unsigned char> header;
        const bool aged = static_cast<uint32_t>(now() - entry.lastUse) >= keep;
        const bool sound = m_file.readPrefix(m_storage, StreamName(entry.first),
                                             sizeof(BlockHeader), header) &&
                           header.size() == sizeof(BlockHeader) &&
                           Load<BlockHeader>(header.data()).version == kBlockVersion &&
                           Load<BlockHeader>(header.data()).count == entry.count;
        if (aged || !sound) {
            removeBlock(i);
        } else {
            ++i;
        }
    }
}

template <class Record>
IntradayStore<Record>::~IntradayStore() {
    flushLive();
    saveIndex();
    closeShared();
    for (const auto& [handle, range] : m_pending) {
        if (handle != 0) m_link.closeRequest(handle);
    }
}

template <class Record>
uint32_t IntradayStore<Record>::now() const {
    return static_cast<uint32_t>(Store().now());
}

template <class Record>
bool IntradayStore<Record>::request(StoreOwner owner, uint32_t start, uint32_t end, int flags,
                                    SpanRequester& driver) {
    const bool refresh = (flags & kRefreshFlag) != 0;
    PendingRange range;
    range.security = owner;
    // An open start (0) is the first second there is: the request ends once the blocks reach
    // below its start, and nothing lies below 0.
    uint32_t from = std::max<uint32_t>(toCacheTime(start), 1);
    uint32_t to = toCacheTime(end);
    range.requestedFrom = from;
    range.cursor = to;
    m_subscribers.try_emplace(owner);

    if (!refresh) {
        // The covered start of the span needs no fetching.
        auto block = std::upper_bound(m_index.begin(), m_index.end(), from,
                                      [](uint32_t t, const BlockIndexEntry& e) { return t < e.first; });
        if (block != m_index.begin()) --block;
        for (; block != m_index.end() && block->first <= from && (to == 0 || from <= to); ++block) {
            if (block->last >= from) {
                from = block->last + 1;
                block->lastUse = now();
            }
        }
    }
    // The shared open-ended request brings everything from its from on.
    if (hasShared() && (to == 0 || to > m_shared.from)) to = m_shared.from - 1;
    if (to != 0 && !refresh && !m_index.empty()) {
        // The covered end of the span needs none either.
        auto block = std::lower_bound(m_index.begin(), m_index.end(), to,
                                      [](const BlockIndexEntry& e, uint32_t t) { return e.first < t; });
        if (block == m_index.end()) --block;
        for (;;) {
            if (block->last < to || from > to) break;
            if (block->first <= to) to = block->first - 1;
            if (block == m_index.begin()) break;
            --block;
        }
    }
    range.from = from;
    range.to = to;

    if (m_link.connected()) {
        if (from <= to || to == 0) {
            const uint32_t handle = driver.ask(from, to);
            m_historyInFlight = true;
            if (!hasShared() && to == 0 && handle != 0) {
                m_sharedHandle = handle;
                m_shared = range;
            }
        }
    } else {
        // Off line the request ends once the blocks are delivered; with no block at all it
        // ends at once too (an open-ended request would otherwise wait for a driver).
        if (range.from == 0) range.from = 1;
        range.to = range.from - 1;
        range.cursor = m_index.empty() ? std::max<uint32_t>(range.requestedFrom, 1) : m_index.back().last;
    }
    const uint32_t handle = m_link.handleOf(owner);
    deliver(m_pending.emplace(handle, range));
    return m_link.handleOf(owner) != 0;
}

template <class Record>
void IntradayStore<Record>::send(StoreOwner owner, int count, int live, const Record* records,
                                 bool fromCache) {
    auto& counts = Store().tickCounts();
    (fromCache ? counts.fromCache : counts.fromDriver) += static_cast<unsigned long long>(count);
    m_link.send(owner, count, live, kType, records);
}

template <class Record>
void IntradayStore<Record>::sendSlice(StoreOwner owner, const Records& newestFirst, int64_t cursor,
                                      int64_t floor, bool fromCache) {
    const auto [begin, end] = Slice(newestFirst, cursor, floor);
    if (end > begin) send(owner, static_cast<int>(end - begin), 0, newestFirst.data() + begin, fromCache);
}

template <class Record>
void IntradayStore<Record>::deliver(typename Pending::iterator pending) {
    // The owner's handler runs inside each send and may close the request: the range is
    // worked on as a copy and looked up again at the end.
    const uint32_t key = pending->first;
    PendingRange range = pending->second;
    if (range.cursor == 0) {
        // Open-ended: nothing is known until the shared request has brought its newest edge.
        if (!hasShared() || m_shared.to == 0) return;
        if (!m_liveBuffer.empty()) {
            Records newestFirst(m_liveBuffer.rbegin(), m_liveBuffer.rend());
            send(range.security, static_cast<int>(newestFirst.size()), 0, newestFirst.data(), false);
            range.cursor = m_liveStart;
        } else {
            range.cursor = m_shared.to;
        }
    }
    int64_t floor;
    if (hasShared() && m_shared.from <= m_shared.to && range.cursor >= m_shared.from) {
        floor = m_shared.to;
    } else {
        floor = range.from > range.to ? static_cast<int64_t>(range.requestedFrom) - 1 : range.to;
    }
    int64_t cursor = range.cursor;
    auto after = std::upper_bound(m_index.begin(), m_index.end(), cursor,
                                  [](int64_t t, const BlockIndexEntry& e) { return t < e.first; });
    for (size_t at = static_cast<size_t>(after - m_index.begin()); at > 0;) {
        --at;
        if (at >= m_index.size()) break;
        BlockIndexEntry& block = m_index[at];
        if (static_cast<int64_t>(block.last) < floor) break;
        const int64_t below = static_cast<int64_t>(block.first) - 1;
        if (block.count != 0) {
            Records records;
            block.lastUse = now();
            if (readBlock(block, records)) sendSlice(range.security, records, cursor, floor, true);
        }
        cursor = std::max(floor, below);
    }
    // Nothing left to fetch: what the blocks did not hold down to the floor is not there (a
    // reply that failed leaves no block, and its request must end all the same).
    if (range.from > range.to) cursor = std::min(cursor, floor);

    // Found again: the owner may have closed it inside a send.
    auto [first, last] = m_pending.equal_range(key);
    auto still = std::find_if(first, last, [&](const auto& p) { return p.second.security == range.security; });
    if (still == last) return;
    if (cursor < static_cast<int64_t>(range.requestedFrom) || !m_link.connected()) {
        m_pending.erase(still);
        m_link.send(range.security, 0, 0, kType, nullptr);
        return;
    }
    range.cursor = static_cast<uint32_t>(std::max<int64_t>(cursor, 0));
    still->second = range;
}

template <class Record>
void IntradayStore<Record>::enterLive(const TICKREC* ticks, int count) {
    if constexpr (kType == RTREC_TICKREC) {
        int first = 0;
        while (first < count && !m_liveBuffer.empty() && ticks[first].time < m_liveBuffer.back().time) {
            ++first;
        }
        m_liveBuffer.insert(m_liveBuffer.end(), ticks + first, ticks + count);
    } else {
        for (int i = 0; i < count; ++i) {
            const TICKREC tick = ticks[i];
            const uint32_t minute = tick.time - tick.time % 60;
            if (!m_liveBuffer.empty() && m_liveBuffer.back().time == minute) {
                MinuteBar& bar = m_liveBuffer.back();
                bar.volume = AddVolume(bar.volume, tick.volume);
                bar.close = tick.price;
                bar.high = std::max(bar.high, tick.price);
                bar.low = std::min(bar.low, tick.price);
            } else if (m_liveBuffer.empty() || m_liveBuffer.back().time < minute) {
                m_liveBuffer.push_back({minute, tick.volume, tick.price, tick.price, tick.price, tick.price});
            }  // a tick older than the last bar is dropped
        }
    }
    if (m_liveBuffer.size() > kLiveBufferLimit && m_liveStart != 0) flushLive();
}

template <class Record>
int IntradayStore<Record>::onDriverReply(uint32_t handle, int count, int live, int type, void* data) {
    if (live) {
        if (count > 0 && data && type == RTREC_TICKREC) enterLive(static_cast<const TICKREC*>(data), count);
        return 1;
    }
    m_historyInFlight = false;
    const bool shared = hasShared() && handle == m_sharedHandle;
    const auto found = m_pending.find(handle);
    if (found == m_pending.end() && !shared) return 1;
    PendingRange& range = shared ? m_shared : found->second;
    if (count <= 0) {
        endReply(shared, range, handle, count);
        return 1;
    }
    if (type != kType || !data) return 1;  // records of another kind cannot be kept here

    // Copied out: the driver's packet need not be aligned, nor in order.
    Records batch(static_cast<size_t>(count));
    std::memcpy(batch.data(), data, batch.size() * sizeof(Record));
    auto newerFirst = [](const Record& a, const Record& b) { return a.time > b.time; };
    if (!std::is_sorted(batch.begin(), batch.end(), newerFirst)) {
        std::stable_sort(batch.begin(), batch.end(), newerFirst);
    }
    const int consumed = range.to == 0 ? meetLiveEdge(range, batch.data(), count) : 0;
    if (consumed < count) {
        Records rest(batch.begin() + consumed, batch.end());
        const uint32_t oldest = rest.back().time;
        const uint32_t last = std::max(range.to, rest.front().time);
        writeRange(oldest, last, std::move(rest));
        range.to = oldest - 1;
    }
    passReply(shared, range, batch.data(), count);
    return 1;
}

template <class Record>
int IntradayStore<Record>::meetLiveEdge(PendingRange& range, const Record* reply, int count) {
    const uint32_t newest = reply[0].time;
    const auto dropped = static_cast<size_t>(
        std::partition_point(m_liveBuffer.begin(), m_liveBuffer.end(),
                             [newest](const Record& r) { return r.time <= newest; }) -
        m_liveBuffer.begin());
    m_liveBuffer.erase(m_liveBuffer.begin(), m_liveBuffer.begin() + static_cast<long>(dropped));
    for (auto& [owner, subscriber] : m_subscribers) {
        subscriber.cursor = subscriber.cursor > dropped ? subscriber.cursor - dropped : 0;
    }
    // The reply's newest second goes to the bottom of the live buffer, not to disk: more
    // records of that second may still arrive live, and one second is never split.
    int n = 1;
    while (n < count && reply[n].time == newest) ++n;
    m_liveBuffer.insert(m_liveBuffer.begin(), std::make_reverse_iterator(reply + n),
                        std::make_reverse_iterator(reply));
    m_liveStart = newest;
    range.to = newest - 1;
    for (auto& [owner, subscriber] : m_subscribers) {
        subscriber.cursor += static_cast<size_t>(n);
        subscriber.volume =
            AddVolume(subscriber.volume, m_liveBuffer[static_cast<size_t>(n - 1)].volume);
    }
    return n;
}

template <class Record>
void IntradayStore<Record>::passReply(bool shared, PendingRange& range, const Record* reply,
                                      int count) {
    const Records newestFirst(reply, reply + count);
    if (!shared) {
        if (range.cursor < sharedFrom()) {
            send(range.security, count, 0, newestFirst.data(), false);
            range.cursor = range.to;
        }
        return;
    }
    // Every range waiting on the shared request takes its part; the owners' handlers may
    // close ranges meanwhile, so each is looked up afresh.
    std::vector<std::pair<uint32_t, StoreOwner>> waiting;
    for (const auto& [key, pending] : m_pending) {
        if (pending.cursor == 0 || pending.cursor >= m_shared.from) waiting.emplace_back(key, pending.security);
    }
    for (const auto& [key, owner] : waiting) {
        auto [first, last] = m_pending.equal_range(key);
        auto it = std::find_if(first, last, [owner = owner](const auto& p) { return p.second.security == owner; });
        if (it == last) continue;
        const PendingRange pending = it->second;
        it->second.cursor = m_shared.to;
        const int64_t cursor = pending.cursor == 0 ? INT64_MAX : pending.cursor;
        sendSlice(owner, newestFirst, cursor, static_cast<int64_t>(pending.requestedFrom) - 1, false);
    }
}

template <class Record>
void IntradayStore<Record>::endReply(bool shared, PendingRange& range, uint32_t handle, int count) {
    if (range.from <= range.to && count == 0 && m_link.connected()) {
        // The driver has proved the rest of the span empty: kept as such, not asked again.
        writeRange(range.from, range.to, {});
        saveIndex();
    }
    if (range.from == 0) range.from = 1;  // "to 0" would read as "up to the present"
    range.to = range.from - 1;
    if (shared) {
        std::vector<std::pair<uint32_t, StoreOwner>> waiting;
        for (const auto& [key, pending] : m_pending) waiting.emplace_back(key, pending.security);
        for (const auto& [key, owner] : waiting) {
            auto [first, last] = m_pending.equal_range(key);
            auto it = std::find_if(first, last, [owner = owner](const auto& p) { return p.second.security == owner; });
            if (it != last) deliver(it);
        }
        return;
    }
    // The owner keeps its handle as the name of its request; the driver's side is done.
    m_link.closeRequest(handle);
    const auto [first, last] = m_pending.equal_range(handle);
    const StoreOwner owner = range.security;
    auto it = std::find_if(first, last, [owner](const auto& p) { return p.second.security == owner; });
    if (it != last) deliver(it);
}

template <class Record>
bool IntradayStore<Record>::readBlock(const BlockIndexEntry& entry, Records& records) {
    bool sound = false;
    m_file.visit(m_storage, StreamName(entry.first), [&](const unsigned char* bytes, size_t size) {
        if (size < sizeof(BlockHeader)) return;
        const auto header = Load<BlockHeader>(bytes);
        if (header.version != kBlockVersion || header.count != entry.count) return;
        if (size != sizeof(BlockHeader) + size_t{header.count} * sizeof(Record)) return;
        records.resize(header.count);
        if (header.count) std::memcpy(records.data(), bytes + sizeof(BlockHeader), size - sizeof(BlockHeader));
        sound = true;
    });
    // Records are served as they lie, so a block whose records are out of order or outside
    // its span (a damaged file) is not served at all: owners rely on history newest first.
    const auto outOfPlace = [&entry](const Record& newer, const Record& older) {
        return newer.time < older.time || newer.time > entry.last || older.time < entry.first;
    };
    if (sound && std::adjacent_find(records.begin(), records.end(), outOfPlace) != records.end()) {
        sound = false;
    }
    if (sound && records.size() == 1) {
        sound = records.front().time >= entry.first && records.front().time <= entry.last;
    }
    return sound;
}

template <class Record>
void IntradayStore<Record>::removeBlock(size_t at) {
    m_file.destroy(m_storage, StreamName(m_index[at].first));
    m_index.erase(m_index.begin() + static_cast<long>(at));
}

template <class Record>
void IntradayStore<Record>::writeRange(uint32_t first, uint32_t last, Records records) {
    std::optional<BlockIndexEntry> remainder;
    Records remainderRecords;
    auto holding = [this](uint32_t t) {
        const auto it = std::find_if(m_index.begin(), m_index.end(),
                                     [t](const BlockIndexEntry& e) { return e.first <= t && t <= e.last; });
        return static_cast<size_t>(it - m_index.begin());
    };
    // The block holding last: its newer part joins this range.
    if (const size_t at = holding(last); at < m_index.size()) {
        const BlockIndexEntry block = m_index[at];
        Records held;
        if (readBlock(block, held)) {
            const auto newer = std::partition_point(held.begin(), held.end(),
                                                    [last](const Record& r) { return r.time > last; });
            records.insert(records.begin(), held.begin(), newer);
            last = block.last;
            remainder = block;
            remainderRecords = std::move(held);
        }
        removeBlock(at);
    }
    // The block reaching into first from below: its older part is written back.
    if (const size_t at = holding(first); at < m_index.size() && m_index[at].first < first) {
        const BlockIndexEntry block = m_index[at];
        Records held;
        if (readBlock(block, held)) {
            remainder = block;
            remainderRecords = std::move(held);
        }
        removeBlock(at);
    }
    if (remainder && remainder->first > 0 && remainder->first < first) {
        writeBlock({remainder->first, first - 1, 0, remainder->lastUse}, remainderRecords);
    }
    for (size_t at = 0; at < m_index.size();) {
        if (m_index[at].first >= first && m_index[at].first <= last) {
            removeBlock(at);
        } else {
            ++at;
        }
    }
    writeBlock({first, last, 0, now()}, records);
}

template <class Record>
void IntradayStore<Record>::writeBlock(const BlockIndexEntry& entry, const Records& records) {
    auto at = std::lower_bound(m_index.begin(), m_index.end(), entry.first,
                               [](const BlockIndexEntry& e, uint32_t t) { return e.first < t; });
    if (at != m_index.end() && at->first <= entry.last) {
        const auto position = static_cast<size_t>(at - m_index.begin());
        removeBlock(position);
        at = m_index.begin() + static_cast<long>(position);
    }
    const auto [begin, end] = Slice(records, entry.last, static_cast<int64_t>(entry.first) - 1);
    BlockIndexEntry written = entry;
    written.count = static_cast<uint32_t>(end - begin);
    const BlockHeader header{kBlockVersion, entry.first, entry.last, written.count, 0};
    std::vector<unsigned char> bytes(sizeof(header) + written.count * sizeof(Record));
    std::memcpy(bytes.data(), &header, sizeof(header));
    if (written.count) std::memcpy(bytes.data() + sizeof(header), records.data() + begin, written.count * sizeof(Record));
    // A full disk: the block is not added and its records stay uncached.
    if (!m_file.write(m_storage, StreamName(entry.first), bytes.data(), bytes.size())) return;
    m_index.insert(at, written);
}

template <class Record>
void IntradayStore<Record>::saveIndex() {
    std::vector<unsigned char> bytes(8 + m_index.size() * sizeof(BlockIndexEntry));
    const uint32_t head[2] = {kContentsVersion, static_cast<uint32_t>(m_index.size())};
    std::memcpy(bytes.data(), head, sizeof(head));
    if (!m_index.empty()) std::memcpy(bytes.data() + 8, m_index.data(), m_index.size() * sizeof(BlockIndexEntry));
    // A commit that fails (a full disk) loses every block written since the last one: the
    // index goes back to what the file holds, and those spans stay uncached.
    if (m_file.write(m_storage, kContents, bytes.data(), bytes.size()) && m_file.commit()) return;
    std::vector<unsigned char> contents;
    m_index = m_file.read(m_storage, kContents, contents) ? ReadContents(contents)
                                                          : std::vector<BlockIndexEntry>{};
}

template <class Record>
void IntradayStore<Record>::flushLive() {
    const auto size = static_cast<int64_t>(m_liveBuffer.size());
    int64_t keep = 1;
    for (const auto& [owner, subscriber] : m_subscribers) {
        const auto cursor = static_cast<int64_t>(subscriber.cursor);
        if (size - keep >= cursor) keep = size - cursor + 1;  // nothing unsent moves out
    }
    while (keep < size && m_liveBuffer[size - keep].time == m_liveBuffer[size - keep - 1].time) ++keep;
    const int64_t going = size - keep;
    if (going <= 0) return;
    Records batch(m_liveBuffer.rend() - going, m_liveBuffer.rend());
    m_liveBuffer.erase(m_liveBuffer.begin(), m_liveBuffer.begin() + going);
    const uint32_t newest = batch.front().time;  // read before the batch moves away
    writeRange(m_liveStart + 1, newest, std::move(batch));
    m_liveStart = newest;
    for (auto& [owner, subscriber] : m_subscribers) {
        subscriber.cursor = subscriber.cursor > static_cast<size_t>(going) ? subscriber.cursor - going : 0;
    }
}

template <class Record>
void IntradayStore<Record>::pushLive() {
    if (m_historyInFlight) return;
    std::vector<StoreOwner> owners;
    for (const auto& [owner, subscriber] : m_subscribers) owners.push_back(owner);
    for (const StoreOwner owner : owners) {
        auto found = m_subscribers.find(owner);
        if (found == m_subscribers.end()) continue;  // closed by an earlier owner's handler
        StoreSubscriber& subscriber = found->second;
        const size_t size = m_liveBuffer.size();
        if constexpr (kType == RTREC_TICKREC) {
            if (subscriber.cursor == size) continue;
            if (subscriber.cursor > size) {
                subscriber.cursor = size;
                continue;
            }
            if (!m_link.ready(owner)) continue;
            const Records fresh(m_liveBuffer.begin() + static_cast<long>(subscriber.cursor), m_liveBuffer.end());
            subscriber.cursor = size;
            send(owner, static_cast<int>(fresh.size()), 1, fresh.data(), false);
        } else {
            if (m_liveBuffer.empty() || size < subscriber.cursor) continue;
            const MinuteBar& last = m_liveBuffer.back();
            if (subscriber.cursor == size && last.volume == subscriber.volume && last.open == subscriber.open &&
                last.close == subscriber.close && last.high == subscriber.high && last.low == subscriber.low) {
                continue;
            }
            if (!m_link.ready(owner)) continue;
            size_t start = subscriber.cursor;
            const bool again = start > 0 && m_liveBuffer[start - 1].volume != subscriber.volume;
            if (again) --start;
            Records fresh(m_liveBuffer.begin() + static_cast<long>(start), m_liveBuffer.end());
            // A bar sent again carries only what it gained since.
            if (again) {
                fresh.front().volume = SubtractVolume(fresh.front().volume, subscriber.volume);
            }
            subscriber.cursor = size;
            subscriber.volume = last.volume;
            subscriber.open = last.open;
            subscriber.close = last.close;
            subscriber.high = last.high;
            subscriber.low = last.low;
            if (!fresh.empty()) send(owner, static_cast<int>(fresh.size()), 1, fresh.data(), false);
        }
    }
}

template <class Record>
bool IntradayStore<Record>::unsubscribe(StoreOwner owner, bool* ownerHeldShared) {
    const uint32_t handle = m_link.handleOf(owner);
    bool existed = m_subscribers.erase(owner) != 0;
    auto [first, last] = m_pending.equal_range(handle);
    auto it = std::find_if(first, last, [owner](const auto& p) { return p.second.security == owner; });
    if (it != last) {
        m_pending.erase(it);
        existed = true;
    }
    if (ownerHeldShared) *ownerHeldShared = hasShared() && handle == m_sharedHandle;
    return existed;
}

template <class Record>
void IntradayStore<Record>::closeShared() {
    if (!hasShared()) return;
    m_link.closeRequest(m_sharedHandle);
    m_sharedHandle = 0;
    m_shared = PendingRange{};
}

template class IntradayStore<TICKREC>;
template class IntradayStore<MinuteBar>;

}  // namespace RTSecCache
