// SecCacheMap: every record in use in Sec1.dat, found by its symbol, with the entry of the
// symbol while a security is bound to it.
//
// The key is the record's address, and two keys are equal when the symbol texts there are
// equal byte for byte. Since the keys point into the mapped file, rebase moves them all when
// the view moves.
//
// The nodes come from a NodePool, one a record; the index over them is an open-addressing
// table of (hash, node) slots. Every start-up rebuilds the map for every record in the file,
// so the table is sized once from the file's capacity (reserve), a symbol is hashed once and
// its hash kept, and a scan can insert a batch of records whose slots it prefetched first.
// The table is never walked in symbol order: nothing needs that order.
#pragma once

#include <cstddef>
#include <cstdint>
#include "platform/ZeroedBlock.h"
#include "store/NodePool.h"
#include "store/SecData.h"

namespace RTSecCache {

class SecCacheEntry;

// The hash of a NUL-terminated symbol of at most 19 characters (longer ones are cut there,
// as the record keeps them).
uint64_t HashSymbol(const char* symbol);
// HashSymbol of a record's symbol, which ends inside its field.
uint64_t HashRecordSymbol(const SecData1& record);

class SecCacheMap {
public:
    SecCacheMap() = default;
    SecCacheMap(const SecCacheMap&) = delete;
    SecCacheMap& operator=(const SecCacheMap&) = delete;
    ~SecCacheMap();

    // A node: its key, the record, and its value, the entry (null while no security is
    // bound to the symbol).
    struct Node {
        SecData1* record = nullptr;
        SecCacheEntry** entry = nullptr;
        explicit operator bool() const { return record != nullptr; }
    };

    // Makes room for `records` nodes without the table growing again.
    void reserve(size_t records);
    // The node of the record whose symbol is `symbol`; empty when there is none.
    Node find(const char* symbol);
    // Adds a node with a null entry for the record; the existing node when a record of that
    // symbol is there already. `hash` is HashRecordSymbol(*record), for a caller that has
    // it already.
    Node insert(SecData1* record);
    Node insert(SecData1* record, uint64_t hash);
    // Brings the slot of `hash` into the processor's cache ahead of an insert.
    void prefetch(uint64_t hash) const;
    // Adds `delta` bytes to every key, and moves each entry's record with it.
    void rebase(std::ptrdiff_t delta);
    size_t size() const { return m_size; }
    void clear();
    const NodePool& pool() const { return m_pool; }

    // Every node, in no particular order: for the cache's own walks.
    template <class Visit>
    void forEach(Visit visit) {
        for (size_t at = 0; at < m_slotCount; ++at) {
            if (Stored* node = slots()[at].node) visit(node->record, node->entry);
        }
    }

private:
    struct Stored {
        SecData1* record;
        SecCacheEntry* entry;
    };
    struct Slot {
        uint64_t hash = 0;
        Stored* node = nullptr;
    };

    Slot* slots() const { return static_cast<Slot*>(m_table.data()); }
    size_t home(uint64_t hash) const { return static_cast<size_t>(hash) & (m_slotCount - 1); }
    size_t next(size_t at) const { return (at + 1) & (m_slotCount - 1); }
    // Re-places every node in a table of `slots` (a power of two), by the hashes kept.
    void resize(size_t slots);

    NodePool m_pool;
    // The slots, zeroed (empty) when made: none, or a power of two of them at most half full.
    qvnrt::platform::ZeroedBlock m_table;
    size_t m_slotCount = 0;
    size_t m_size = 0;
};

}  // namespace RTSecCache
