// Zeroed memory straight from the kernel, in huge pages where the kernel allows them.
//
// For a large table reached at random, such as the security cache's index over a million
// records: with 4 KiB pages nearly every access there also misses the TLB, and the walk of
// the page tables costs more than the access itself.
#pragma once

#include <cstddef>

namespace qvnrt::platform {

class ZeroedBlock {
public:
    ZeroedBlock() = default;
    // `bytes` of zeroed, writable memory; throws std::bad_alloc when it cannot be had.
    explicit ZeroedBlock(size_t bytes);
    ~ZeroedBlock();
    ZeroedBlock(ZeroedBlock&& other) noexcept;
    ZeroedBlock& operator=(ZeroedBlock&& other) noexcept;
    ZeroedBlock(const ZeroedBlock&) = delete;
    ZeroedBlock& operator=(const ZeroedBlock&) = delete;

    void* data() const { return m_data; }
    size_t size() const { return m_size; }

private:
    void* m_data = nullptr;
    size_t m_size = 0;
};

}  // namespace qvnrt::platform
