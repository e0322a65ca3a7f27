// The bookkeeping that RTSecList's requests and its callback share: the bits of
// m_listFlags, and the bounds on rows that a service announces.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>

namespace qvnrt::securities {

// Bits of RTSecList::m_listFlags.
constexpr unsigned kListUnderWay = 0x1;    // a service-built list is under way
constexpr unsigned kAwaitingStart = 0x2;   // its first callback is awaited
constexpr unsigned kRankedList = 0x4;

// The most rows a service-built list grows to. A row's place comes from the service's
// count, so a wild count must not turn into an allocation without bound: rows past this
// are dropped. Far above any list or chain a service sends.
constexpr int kMaxListRows = 1 << 17;

// How many elements to reserve for `count` more rows after `size`, within kMaxListRows.
inline int ReservableRows(int size, int count) {
    const int64_t wanted = int64_t{size} + std::max(count, 0);
    return static_cast<int>(std::min<int64_t>(wanted, kMaxListRows));
}

// `a + b` held within int: the position a list's rows count down from.
inline int SaturatedSum(int a, int b) {
    const int64_t sum = int64_t{a} + b;
    return static_cast<int>(std::clamp<int64_t>(sum, INT_MIN, INT_MAX));
}

// The row a service's count points at, or -1 when it lies outside what the list may hold.
inline int RowOf(int index, int status) {
    const int64_t row = int64_t{index} - status;
    return row >= 0 && row < kMaxListRows ? static_cast<int>(row) : -1;
}

}  // namespace qvnrt::securities
