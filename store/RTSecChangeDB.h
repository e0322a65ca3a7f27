// RTSecChangeDB: "secmaint.dat", the sorted security changes that the service reported, and
// the service's mark of the last change set. One instance lives in the store's state; the
// exported calls of <qvnrt/RTSecChangeDB.h> go through it.
//
// Layout, 32-bit little-endian: a 256-byte header (signature word, count, slots, signed
// timestamp, zeros), then `count` RTSecChange records of 56 bytes, sorted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include <qvnrt/driver.h>

#include "store/StoreHooks.h"
#include "store/filemapping.h"

namespace RTSecCache {

struct SecChangeFileHeader {
    uint32_t signature;
    uint32_t count;
    uint32_t slots;
    int32_t timestamp;
    uint8_t reserved[240];
};
static_assert(sizeof(SecChangeFileHeader) == 256);
static_assert(offsetof(SecChangeFileHeader, count) == 4);
static_assert(offsetof(SecChangeFileHeader, slots) == 8);
static_assert(offsetof(SecChangeFileHeader, timestamp) == 12);

// The order of the file: symbol byte by byte as signed characters (as strcmp compared them
// where the file was born), then time, then kind, both unsigned. Reads at most the 16 bytes
// of each symbol, so a record without a terminator compares safely.
bool SecChangeLess(const RTSecChange& left, const RTSecChange& right);

class RTSecChangeDB : public filemapping {
  public:
    static constexpr uint32_t kResetMarker = 0x4d4e5400;
    static constexpr const char kFileName[] = "secmaint.dat";

    // A view exists and its first word is not kResetMarker. The sense is kept as it always
    // was: a new, zero-filled file is usable at once, and a file that holds the marker is
    // not, even right after it has been reset.
    bool usable() const;

    // Without a usable view: opens `path` read-write, and writes a fresh header (the marker,
    // count 0, slots for the file's room, timestamp 0) when the view is still not usable.
    // Returns the stored timestamp, 0 without a usable view.
    long openTimestamp(const std::string& path);

    // The records of `symbol` (cut to 15 characters) at or after `time`; both null without
    // a usable view or a symbol.
    std::pair<RTSecChange*, RTSecChange*> find(const char* symbol, unsigned long time);

    // Stores the timestamp, hands the sorted batch to `apply` (when set), merges it into the
    // file and flushes once. A negative count or null records store the timestamp alone.
    // Without a view the batch is still applied, but nothing is stored. False when nothing
    // could be stored: no view, or the merged file could not be sized (then the previous
    // timestamp is put back, so that the service sends the batch again).
    bool merge(long timestamp, int count, const RTSecChange* changes, SecChangeApplier apply);

    // The records in use, clamped to what the view holds; a count beyond the slots or the
    // file is reported once on std::clog. Empty without a view.
    std::span<RTSecChange> records();

  private:
    SecChangeFileHeader* header() const { return static_cast<SecChangeFileHeader*>(m_view); }
    size_t room() const;

    bool m_reportedBadCount = false;
};

}  // namespace RTSecCache
