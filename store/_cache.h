// A record file: a 4096-byte header, then fixed-size record slots with a free list.
//
// A free slot keeps the index of the next free slot in its last four bytes; in a slot in
// use those bytes are an ordinary field of the record. No slot is ever given back, so the
// files only grow: by the growth step, then by doubling once the capacity passes it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>

#include "store/filemapping.h"

namespace RTSecCache {

// The file's integers are little-endian and are used in place.
static_assert(std::endian::native == std::endian::little);

struct CacheFileHeader {
    uint32_t signature;  // the cache's own
    uint32_t version;    // 1
    int32_t capacity;    // record slots in the file
    int32_t freeCount;   // slots on the free list
    int32_t freeHead;    // index of the first free slot
    int32_t lockCount;   // 0 when closed cleanly, 1 while open
    uint8_t reserved[4072];
};
static_assert(sizeof(CacheFileHeader) == 4096);
static_assert(offsetof(CacheFileHeader, capacity) == 8);
static_assert(offsetof(CacheFileHeader, freeCount) == 12);
static_assert(offsetof(CacheFileHeader, freeHead) == 16);
static_assert(offsetof(CacheFileHeader, lockCount) == 20);
static_assert(offsetof(CacheFileHeader, reserved) == 24);

class _cache : public filemapping {
public:
    static constexpr uint32_t kVersion = 1;
    static constexpr unsigned kHeaderSize = sizeof(CacheFileHeader);
    // The free list's link: the last four bytes of a free slot.
    static constexpr unsigned kLinkSize = 4;

    // `recordSize` must be at least kLinkSize; allocate refuses to work otherwise.
    _cache(uint32_t signature, unsigned growthStep, unsigned recordSize);
    // Decrements the lock count when a view exists, then closes.
    ~_cache() override;
    // What destruction does, for an owner that must know the file closed before it goes on;
    // destruction afterwards does nothing more.
    void closeCleanly();

    // Opens read-write and checks the header: a foreign, wrong-version or short file
    // restarts empty without a word. A non-zero lock count is reported on std::clog, and
    // the count is set to 1. True when a view exists.
    bool open(const char* path);
    // A free slot, growing the file when none is left; null when there is no view or the
    // file cannot grow (said once on std::clog, and everything stored stays in place).
    void* allocate();

    // The header, or null when nothing is mapped. Valid until the view moves.
    CacheFileHeader* header() const { return static_cast<CacheFileHeader*>(m_view); }
    // Address of slot `index`; the caller keeps it within the capacity.
    void* slot(int32_t index) const;
    // The free-list link in the last four bytes of slot `index`.
    int32_t link(int32_t index) const;
    void setLink(int32_t index, int32_t next);

    // After an open that found the file damaged (foreign, wrong version, shorter than its
    // header says) and restarted it: why, and the copy of the old file kept beside it
    // (path + ".damaged", the latest one only; empty when it could not be copied). Both
    // empty after a clean open, or a new file.
    const std::string& restartReason() const { return m_restartReason; }
    const std::string& keptAside() const { return m_keptAside; }

    uint32_t signature() const { return m_signature; }
    unsigned growthStep() const { return m_growthStep; }
    unsigned recordSize() const { return m_recordSize; }

protected:
    uint32_t m_signature;
    unsigned m_growthStep;
    unsigned m_recordSize;

private:
    bool grow();
    // Whether `index` names a slot that lies inside both the capacity and the view.
    bool holdsSlot(int64_t index) const;

    // Added by the port: a failed growth is said once, not at every allocation after it.
    bool m_growthFailureReported = false;
    // Added by the port: the damaged file's bytes are copied aside before the restart, so
    // that what the restart drops can still be looked at or recovered.
    void keepDamagedCopy(const char* path, const char* reason);
    std::string m_restartReason;
    std::string m_keptAside;
};

}  // namespace RTSecCache
