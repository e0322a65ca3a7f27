#include "store/RTSecChangeDB.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <iostream>
#include <new>
#include <vector>

#include <qvnrt/RTSecChangeDB.h>

#include "platform/Directories.h"
#include "store/StoreState.h"

namespace RTSecCache {
namespace {

constexpr size_t kHeaderSize = sizeof(SecChangeFileHeader);
constexpr size_t kRecordSize = sizeof(RTSecChange);
// The most records whose file size still fits the 32 bits that a mapped file's size has.
constexpr size_t kMostRecords = (UINT_MAX - kHeaderSize) / kRecordSize;
constexpr size_t kLongestSymbol = 15;

int CompareChangeSymbols(const char* left, const char* right) {
    for (size_t i = 0; i < sizeof RTSecChange::symbol; ++i) {
        const auto l = static_cast<signed char>(left[i]);
        const auto r = static_cast<signed char>(right[i]);
        if (l != r) return l < r ? -1 : 1;
        if (l == 0) return 0;
    }
    return 0;
}

RTSecChange Probe(const char* symbol, uint32_t time, char kind) {
    RTSecChange probe{};
    std::strncpy(probe.symbol, symbol, kLongestSymbol);
    probe.time = time;
    probe.kind = kind;
    return probe;
}

}  // namespace

bool SecChangeLess(const RTSecChange& left, const RTSecChange& right) {
    if (const int bySymbol = CompareChangeSymbols(left.symbol, right.symbol)) return bySymbol < 0;
    if (left.time != right.time) return left.time < right.time;
    return static_cast<unsigned char>(left.kind) < static_cast<unsigned char>(right.kind);
}

bool RTSecChangeDB::usable() const {
    return m_view && header()->signature != kResetMarker;
}

size_t RTSecChangeDB::room() const {
    return m_mappedSize > kHeaderSize ? (m_mappedSize - kHeaderSize) / kRecordSize : 0;
}

long RTSecChangeDB::openTimestamp(const std::string& path) {
    if (!usable()) {
        open(path.c_str(), 0, 1);
        if (m_view && !usable()) {
            // The original took the slots from the file's size; an attached process has no
            // file size to read, so the view's size (the same for the holder) is used.
            SecChangeFileHeader& fresh = *header();
            fresh.signature = kResetMarker;
            fresh.count = 0;
            fresh.slots = static_cast<uint32_t>(room());
            fresh.timestamp = 0;
        }
        m_reportedBadCount = false;
    }
    return usable() ? header()->timestamp : 0;
}

std::span<RTSecChange> RTSecChangeDB::records() {
    if (!m_view) return {};
    const SecChangeFileHeader& head = *header();
    const size_t inUse = std::min<size_t>(head.count, room());
    if ((head.count > head.slots || head.count > room()) && !m_reportedBadCount) {
        m_reportedBadCount = true;
        std::clog << m_fullPath << ": count " << head.count << " for " << head.slots
                  << " slots and room for " << room() << " records; reading " << inUse << std::endl;
    }
    auto* first = reinterpret_cast<RTSecChange*>(static_cast<char*>(m_view) + kHeaderSize);
    return {first, inUse};
}

std::pair<RTSecChange*, RTSecChange*> RTSecChangeDB::find(const char* symbol, unsigned long time) {
    if (!usable() || !symbol) return {nullptr, nullptr};
    // A time beyond 32 bits lies after every record; cutting it would wrap it round.
    const auto from = static_cast<uint32_t>(std::min<unsigned long>(time, UINT32_MAX));
    const std::span<RTSecChange> all = records();
    const RTSecChange low = Probe(symbol, from, 0);
    // Kind 0x7f bounds the range: a record at the last second with a kind above it falls
    // outside. Kept as the file has always been read.
    const RTSecChange high = Probe(symbol, UINT32_MAX, 0x7f);
    RTSecChange* first = std::lower_bound(all.begin(), all.end(), low, SecChangeLess).base();
    RTSecChange* last = std::lower_bound(all.begin(), all.end(), high, SecChangeLess).base();
    return {first, std::max(first, last)};
}

bool RTSecChangeDB::merge(long timestamp, int count, const RTSecChange* changes,
                          SecChangeApplier apply) {
    // The timestamp goes first, as it always has: a crash before the flush leaves a stamp
    // newer than the records.
    const int32_t previousStamp = m_view ? header()->timestamp : 0;
    if (m_view) header()->timestamp = static_cast<int32_t>(timestamp);  // the file keeps 32 bits
    if (count < 0 || !changes) return m_view != nullptr;

    const size_t storedCount = records().size();
    if (storedCount + static_cast<size_t>(count) > kMostRecords) {
        std::clog << kFileName << ": a batch of " << count
                  << " changes would outgrow the file; dropped" << std::endl;
        if (m_view) header()->timestamp = previousStamp;
        return false;
    }
    std::vector<RTSecChange> merged;
    try {
        // std::sort is the introsort that leaves runs of 16 to an insertion sort; in which
        // order it leaves equal records was never specified, and is not now.
        std::vector<RTSecChange> batch(changes, changes + count);
        std::sort(batch.begin(), batch.end(), SecChangeLess);
        // Applied even when the file is not open: data that the service has withdrawn must
        // not stay in view because the file could not be mapped.
        if (apply && !batch.empty()) apply(batch.data(), batch.size());
        if (!m_view) return false;

        const std::span<RTSecChange> stored = records();
        // The batch comes first: of a new and an old record that compare equal, the new
        // stays, while equal records of one batch are all kept.
        merged.reserve(batch.size() + stored.size());
        std::set_union(batch.begin(), batch.end(), stored.begin(), stored.end(),
                       std::back_inserter(merged), SecChangeLess);
    } catch (const std::bad_alloc&) {
        // The driver's count decides the size; no exception may leave the library.
        std::clog << kFileName << ": no memory for a batch of " << count << " changes; dropped"
                  << std::endl;
        if (m_view) header()->timestamp = previousStamp;
        return false;
    }

    if (!setSize(static_cast<unsigned>(kHeaderSize + kRecordSize * merged.size()))) {
        std::clog << kFileName << ": cannot grow to " << merged.size()
                  << " changes; the batch is not stored" << std::endl;
        header()->timestamp = previousStamp;
        return false;
    }
    SecChangeFileHeader& head = *header();  // the view may have moved
    head.slots = static_cast<uint32_t>(merged.size());
    if (!merged.empty()) {
        std::memcpy(static_cast<char*>(m_view) + kHeaderSize, merged.data(),
                    merged.size() * kRecordSize);
    }
    head.count = static_cast<uint32_t>(merged.size());
    m_reportedBadCount = false;
    flush();
    return true;
}

}  // namespace RTSecCache

long GetRTSecChangeTimestamp() {
    const std::string directory = qvnrt::platform::HostDirectory();
    if (directory.empty()) return 0;
    const std::string path =
        qvnrt::platform::JoinPath(directory, RTSecCache::RTSecChangeDB::kFileName);
    return RTSecCache::Store().changeDB().openTimestamp(path);
}

bool SetRTSecChangeInfo(long timestamp, int count, RTSecChange* changes) {
    RTSecCache::Store().changeDB().merge(timestamp, count, changes,
                                         RTSecCache::Hooks().applyChanges);
    return true;
}

std::pair<RTSecChange*, RTSecChange*> GetRTSecChangeInfo(const char* symbol, unsigned long time) {
    return RTSecCache::Store().changeDB().find(symbol, time);
}

std::pair<RTSecChange*, RTSecChange*> GetRTSecChangeRecords() {
    RTSecCache::RTSecChangeDB& db = RTSecCache::Store().changeDB();
    if (!db.usable()) return {nullptr, nullptr};
    const std::span<RTSecChange> all = db.records();
    return {all.data(), all.data() + all.size()};
}
