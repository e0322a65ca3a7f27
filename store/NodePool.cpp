#include "store/NodePool.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace RTSecCache {

NodePool::~NodePool() {
    for (Block& block : m_blocks) std::free(block.nodes);
}

int32_t& NodePool::linkOf(const Block& block, int32_t index) const {
    unsigned char* node = block.nodes + static_cast<size_t>(index) * m_nodeSize;
    return *reinterpret_cast<int32_t*>(node + m_nodeSize - sizeof(int32_t));
}

bool NodePool::makeBlock(int slot) {
    Block& block = m_blocks[slot];
    const int32_t count = NodesIn(slot);
    block.nodes = static_cast<unsigned char*>(std::malloc(static_cast<size_t>(count) * m_nodeSize));
    if (!block.nodes) return false;
    for (int32_t i = 0; i < count; ++i) linkOf(block, i) = i + 1;
    block.freeCount = count;
    block.freeHead = 0;
    return true;
}

void* NodePool::take(size_t nodeSize) {
    if (m_nodeSize == 0) {
        // Room for the link, and every node aligned for any member of a map node.
        const size_t alignment = alignof(std::max_align_t);
        m_nodeSize = (std::max(nodeSize, sizeof(int32_t)) + alignment - 1) / alignment * alignment;
    }
    if (nodeSize > m_nodeSize) throw std::bad_alloc();
    for (int slot = m_firstWithFree; slot < kBlockSlots; ++slot) {
        Block& block = m_blocks[slot];
        if (!block.nodes && !makeBlock(slot)) throw std::bad_alloc();
        if (block.freeCount == 0) continue;
        m_firstWithFree = slot;
        const int32_t index = block.freeHead;
        block.freeHead = linkOf(block, index);
        --block.freeCount;
        return block.nodes + static_cast<size_t>(index) * m_nodeSize;
    }
    throw std::bad_alloc();
}

void NodePool::give(void* node) {
    unsigned char* const address = static_cast<unsigned char*>(node);
    for (int slot = 0; slot < kBlockSlots; ++slot) {
        Block& block = m_blocks[slot];
        if (!block.nodes) continue;
        const size_t bytes = static_cast<size_t>(NodesIn(slot)) * m_nodeSize;
        if (address < block.nodes || address >= block.nodes + bytes) continue;
        const auto index = static_cast<int32_t>((address - block.nodes) / m_nodeSize);
        linkOf(block, index) = block.freeHead;
        block.freeHead = index;
        ++block.freeCount;
        m_firstWithFree = std::min(m_firstWithFree, slot);
        releaseTrailingFreeBlocks();
        return;
    }
}

void NodePool::releaseTrailingFreeBlocks() {
    for (int slot = kBlockSlots - 1; slot >= 0; --slot) {
        Block& block = m_blocks[slot];
        if (!block.nodes) continue;                   // not the last one in use yet
        if (block.freeCount != NodesIn(slot)) return;  // the last one in use is not free
        std::free(block.nodes);
        block = Block();
    }
}

void NodePool::releaseAll() {
    for (Block& block : m_blocks) {
        std::free(block.nodes);
        block = Block();
    }
    m_firstWithFree = 0;
}

int NodePool::blocksInUse() const {
    int count = 0;
    for (const Block& block : m_blocks) count += block.nodes ? 1 : 0;
    return count;
}

}  // namespace RTSecCache
