// A record file of one record type.
#pragma once

#include <cstdint>
#include <new>
#include <type_traits>

#include "store/_cache.h"

namespace RTSecCache {

// T's default constructor is the record's initialisation, run on each slot as it is
// taken. A slot arrives zeroed except for its last four bytes, which still hold the free
// list's link. In the language's terms the members that the constructor leaves alone have
// no value, whatever bytes lie there, so a record type sets every member that is read.
template <typename T>
class cache : public _cache {
public:
    static_assert(sizeof(T) >= kLinkSize, "a record must have room for the free list's link");
    static_assert(std::is_trivially_destructible_v<T>, "records are never destroyed");
    static_assert(kHeaderSize % alignof(T) == 0, "slots must be aligned for T");

    explicit cache(uint32_t signature, unsigned growthStep = 1024)
        : _cache(signature, growthStep, sizeof(T)) {}

    T* allocate() {
        void* slot = _cache::allocate();
        return slot ? ::new (slot) T : nullptr;
    }
};

}  // namespace RTSecCache
