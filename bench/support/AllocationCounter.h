// Counts the program's heap allocations, for benchmarks that report allocations per call.
// Replaces the global operator new and delete: include it in exactly one file of a program.
#pragma once

#include <atomic>
#include <cstdlib>
#include <new>

namespace qvnrt::bench {

inline std::atomic<long> g_allocations{0};

inline long Allocations() { return g_allocations.load(std::memory_order_relaxed); }

}  // namespace qvnrt::bench

// g++ cannot see that the replacement pair below belongs together and warns about free()
// on new's memory.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

void* operator new(std::size_t size) {
    qvnrt::bench::g_allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size ? size : 1)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

#pragma GCC diagnostic pop
