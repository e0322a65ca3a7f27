// NodePool: the nodes of SecCacheMap, taken from blocks rather than one by one.
//
// 16 block slots; block 0 holds 256 nodes and block i (i > 0) 256 << (i - 1), so 256, 256,
// 512, 1024 and so on, about eight million in all. A block keeps its free nodes on a list
// whose link lies in the last four bytes of each free node, as the record files do.
// Taking a node searches the blocks from the first for a free one, and makes a block when
// the search reaches an empty slot. A node given back goes on its block's list; a last
// block that is wholly free is released, and then the one before it is tested the same way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

namespace RTSecCache {

class NodePool {
public:
    static constexpr int kBlockSlots = 16;
    static constexpr int32_t kFirstBlockNodes = 256;

    NodePool() = default;
    NodePool(const NodePool&) = delete;
    NodePool& operator=(const NodePool&) = delete;
    ~NodePool();

    // The size of every node, fixed by the first take. Throws std::bad_alloc when no node
    // can be had.
    void* take(size_t nodeSize);
    void give(void* node);
    // Gives back every node taken, releasing every block.
    void releaseAll();

    // Blocks in use, for tests and measurements.
    int blocksInUse() const;

private:
    struct Block {
        unsigned char* nodes = nullptr;
        int32_t freeCount = 0;
        int32_t freeHead = -1;
    };

    static int32_t NodesIn(int block) {
        return block == 0 ? kFirstBlockNodes : kFirstBlockNodes << (block - 1);
    }
    int32_t& linkOf(const Block& block, int32_t index) const;
    bool makeBlock(int slot);
    void releaseTrailingFreeBlocks();

    Block m_blocks[kBlockSlots];
    size_t m_nodeSize = 0;
    // Every block before this one exists and is full, so a take may start its search here
    // and still find the node the search from the first block would: a start-up scan takes
    // a million nodes without walking the full blocks each time.
    int m_firstWithFree = 0;
};

// A std allocator over one NodePool, for the map's nodes.
template <class T>
class NodePoolAllocator {
public:
    using value_type = T;

    explicit NodePoolAllocator(NodePool* pool) : m_pool(pool) {}
    template <class U>
    NodePoolAllocator(const NodePoolAllocator<U>& other) : m_pool(other.pool()) {}

    T* allocate(size_t count) {
        if (count != 1) return static_cast<T*>(::operator new(count * sizeof(T)));
        return static_cast<T*>(m_pool->take(sizeof(T)));
    }
    void deallocate(T* pointer, size_t count) {
        if (count != 1) {
            ::operator delete(pointer);
            return;
        }
        m_pool->give(pointer);
    }

    NodePool* pool() const { return m_pool; }
    template <class U>
    bool operator==(const NodePoolAllocator<U>& other) const {
        return m_pool == other.pool();
    }

private:
    NodePool* m_pool;
};

}  // namespace RTSecCache
