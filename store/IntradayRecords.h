// What the intraday stores keep on disk: the block index entry, the block header, the minute
// bar, and the times of the stores. Every number is 32 bits, little-endian, in the byte
// order of this machine (the build refuses any other), so records are copied byte for byte.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

#include <qvnrt/driver.h>

namespace RTSecCache {

static_assert(std::endian::native == std::endian::little,
              "the .tik layouts are little-endian and are copied as they lie in memory");

// One block of the index: the span it covers, how many records it holds (0: the span is
// known to hold none), and its last use in seconds since 1970.
struct BlockIndexEntry {
    uint32_t first;
    uint32_t last;
    uint32_t count;
    uint32_t lastUse;
};
static_assert(sizeof(BlockIndexEntry) == 16);

// The 20 bytes before a block's records.
struct BlockHeader {
    uint32_t version;
    uint32_t first;
    uint32_t last;
    uint32_t count;
    uint32_t reserved;
};
static_assert(sizeof(BlockHeader) == 20);

constexpr uint32_t kContentsVersion = 1;
constexpr uint32_t kBlockVersion = 2;

// A minute bar of the minute store; its time is the minute's start, a multiple of 60. It
// has the field order of RTINTRADAY_PRICEREC, so bars leave the store as they lie.
struct MinuteBar {
    uint32_t time;
    int32_t volume;
    float open;
    float close;
    float high;
    float low;
};
static_assert(sizeof(MinuteBar) == 24 && sizeof(MinuteBar) == sizeof(RTINTRADAY_PRICEREC));
static_assert(sizeof(TICKREC) == 13);

// Request times are Date values; the stores keep seconds since 1970. A request time below
// 1970 becomes 0, the open start.
constexpr uint32_t kDateOf1970 = 2211988800u;
constexpr uint32_t toCacheTime(uint32_t t) { return t < kDateOf1970 ? 0 : t - kDateOf1970; }
// Volumes are summed into bars and differenced for subscribers in 64 bits and kept at the
// 32-bit bounds: a driver's volumes are not to be trusted, and a sum that wrapped would show
// a busy bar with a negative volume (and would be undefined in C++).
constexpr int32_t ClampVolume(int64_t volume) {
    return static_cast<int32_t>(std::clamp<int64_t>(volume, INT32_MIN, INT32_MAX));
}
constexpr int32_t AddVolume(int32_t total, int32_t more) {
    return ClampVolume(int64_t{total} + more);
}
constexpr int32_t SubtractVolume(int32_t total, int32_t less) {
    return ClampVolume(int64_t{total} - less);
}

constexpr uint32_t toRequestTime(uint32_t t) { return t == 0 ? 0 : t + kDateOf1970; }

}  // namespace RTSecCache
