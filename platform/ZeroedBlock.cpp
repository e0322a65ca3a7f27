#include "platform/ZeroedBlock.h"

#include <sys/mman.h>

#include <new>
#include <utility>

namespace qvnrt::platform {

ZeroedBlock::ZeroedBlock(size_t bytes) {
    if (bytes == 0) return;
    void* data = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (data == MAP_FAILED) throw std::bad_alloc();
    // Advice only: where huge pages are off the block works the same, in small pages.
    ::madvise(data, bytes, MADV_HUGEPAGE);
    m_data = data;
    m_size = bytes;
}

ZeroedBlock::~ZeroedBlock() {
    if (m_data) ::munmap(m_data, m_size);
}

ZeroedBlock::ZeroedBlock(ZeroedBlock&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)), m_size(std::exchange(other.m_size, 0)) {}

ZeroedBlock& ZeroedBlock::operator=(ZeroedBlock&& other) noexcept {
    if (this != &other) {
        if (m_data) ::munmap(m_data, m_size);
        m_data = std::exchange(other.m_data, nullptr);
        m_size = std::exchange(other.m_size, 0);
    }
    return *this;
}

}  // namespace qvnrt::platform
