#include "store/_cache.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <iostream>
#include <string>

#include "platform/Directories.h"

namespace RTSecCache {

_cache::_cache(uint32_t signature, unsigned growthStep, unsigned recordSize)
    : m_signature(signature), m_growthStep(growthStep), m_recordSize(recordSize) {}

_cache::~_cache() { closeCleanly(); }

void _cache::closeCleanly() {
    // Kept: a decrement, not a reset, so a process that attached to another's file leaves
    // the count one lower for the holder too.
    if (m_view) {
        CacheFileHeader* h = header();
        h->lockCount = static_cast<int32_t>(static_cast<uint32_t>(h->lockCount) - 1u);
    }
    close();
}

bool _cache::open(const char* path) {
    if (!filemapping::open(path, 0, 1)) {
        std::clog << "\n !!! Cache : Can't open " << (path ? path : "");
        return false;
    }
    m_restartReason.clear();
    m_keptAside.clear();
    CacheFileHeader* h = header();
    // fileSize() is 0 in a process that attached without a file handle, so such a process
    // always restamps the shared header. Kept: that is the documented outcome of two
    // processes on one file.
    const uint64_t needed =
        kHeaderSize + static_cast<uint64_t>(std::max(h->capacity, 0)) * m_recordSize;
    const bool accepted = h->signature == m_signature && h->version == kVersion &&
                          h->capacity >= 0 && fileSize() >= needed;
    if (!accepted) {
        if (hasFileHandle()) {
            keepDamagedCopy(path, h->signature != m_signature ? "not a file of this cache"
                                  : h->version != kVersion   ? "unknown version"
                                                             : "shorter than its header says");
        }
        // Silent restart. The free head stays as it is and the old records stay behind as
        // dead bytes; the file is not shortened.
        h->signature = m_signature;
        h->version = kVersion;
        h->capacity = 0;
        h->freeCount = 0;
    }
    if (h->lockCount != 0) {
        // The whole of the crash handling: the file is used as it stands. No line end.
        std::clog << "\n !!! Cache : " << path << " Lock count " << std::to_string(h->lockCount);
    }
    h->lockCount = 1;  // kept: set, not incremented, so it never reads 2
    flush();
    return true;
}

void _cache::keepDamagedCopy(const char* path, const char* reason) {
    // A file just made is one page of zeros: nothing to keep, nothing damaged.
    const CacheFileHeader* h = header();
    const bool blank = h->signature == 0 && h->version == 0 && h->capacity == 0 &&
                       h->freeCount == 0 && h->freeHead == 0 && fileSize() <= kHeaderSize;
    if (blank) return;
    m_restartReason = reason;
    flush();  // the copy reads the file, not the view
    const std::string copy = std::string(path) + ".damaged";
    if (qvnrt::platform::CopyFileReplacing(path, copy)) m_keptAside = copy;
}

void* _cache::allocate() {
    if (!m_view || m_recordSize < kLinkSize) return nullptr;
    CacheFileHeader* h = header();
    // Added by the port: a damaged file may claim free slots with a head outside the file.
    // Such a list is dropped, as a damaged link is below, instead of being written through.
    if (h->freeCount > 0 && !holdsSlot(h->freeHead)) h->freeCount = 0;
    if (h->freeCount <= 0) {
        if (!grow()) return nullptr;
        h = header();
    }

    const int32_t taken = h->freeHead;
    --h->freeCount;
    h->freeHead = link(taken);
    // A damaged chain costs the rest of the list; the next allocation grows the file.
    if (h->freeHead < 0 || h->freeHead >= h->capacity) h->freeCount = 0;
    return slot(taken);
}

void* _cache::slot(int32_t index) const {
    return static_cast<char*>(m_view) + kHeaderSize + static_cast<size_t>(index) * m_recordSize;
}

int32_t _cache::link(int32_t index) const {
    int32_t next;
    std::memcpy(&next, static_cast<char*>(slot(index)) + m_recordSize - kLinkSize, sizeof next);
    return next;
}

void _cache::setLink(int32_t index, int32_t next) {
    std::memcpy(static_cast<char*>(slot(index)) + m_recordSize - kLinkSize, &next, sizeof next);
}

bool _cache::holdsSlot(int64_t index) const {
    return index >= 0 && index < header()->capacity &&
           kHeaderSize + static_cast<uint64_t>(index + 1) * m_recordSize <= m_mappedSize;
}

bool _cache::grow() {
    const int64_t old = std::max(header()->capacity, 0);
    // The step doubles the file once it has passed the growth step.
    const int64_t step = std::max<int64_t>(m_growthStep, old);
    const int64_t capacity = old + step;
    const uint64_t bytes = kHeaderSize + static_cast<uint64_t>(capacity) * m_recordSize;

    void* const before = m_view;
    const bool grown = step > 0 && capacity <= INT32_MAX && bytes <= UINT_MAX &&
                       setSize(static_cast<unsigned>(bytes));
    if (!grown) {
        // Chosen by the port: allocate returns null and the file, view and free list stay
        // as they were. Said once until a growth succeeds again.
        if (!m_growthFailureReported) {
            std::clog << "\n !!! Cache : Can't grow " << m_fullPath << " past "
                      << std::to_string(old) << " records\n";  // a line of its own
            m_growthFailureReported = true;
        }
        return false;
    }
    m_growthFailureReported = false;
    // Every address into the file held anywhere must follow the view.
    if (m_view != before) rebase(m_view, before);

    CacheFileHeader* h = header();
    h->freeCount = static_cast<int32_t>(step);
    h->freeHead = static_cast<int32_t>(old);
    h->capacity = static_cast<int32_t>(capacity);
    std::memset(slot(static_cast<int32_t>(old)), 0, static_cast<size_t>(step) * m_recordSize);
    // Each new slot links to the next; the last one to the capacity, past the end.
    for (int64_t i = old; i < capacity; ++i) {
        setLink(static_cast<int32_t>(i), static_cast<int32_t>(i + 1));
    }
    return true;
}

}  // namespace RTSecCache
