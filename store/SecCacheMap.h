// SecCacheMap: every record in use in Sec1.dat, ordered by its symbol, with the entry of
// the symbol while a security is bound to it.
//
// The key is the record's address, compared as the symbol text there, byte by byte as
// signed characters in the manner of strcmp. Since the keys point into the mapped file,
// rebase moves them all when the view moves; their order cannot change, because the texts
// move with them.
#pragma once

#include <cstddef>
#include <map>

#include "store/NodePool.h"
#include "store/SecData.h"

namespace RTSecCache {

class SecCacheEntry;

// Signed-character order of two NUL-terminated texts.
int CompareSymbols(const char* a, const char* b);

class SecCacheMap {
public:
    SecCacheMap();

    // A node: its key, the record, and its value, the entry (null while no security is
    // bound to the symbol).
    struct Node {
        SecData1* record = nullptr;
        SecCacheEntry** entry = nullptr;
        explicit operator bool() const { return record != nullptr; }
    };

    // The node of the record whose symbol is `symbol`; empty when there is none.
    Node find(const char* symbol);
    // Adds a node with a null entry for the record; the existing node when a record of that
    // symbol is there already.
    Node insert(SecData1* record);
    // Adds `delta` bytes to every key, in map order, and moves each entry's record with it.
    void rebase(std::ptrdiff_t delta);
    size_t size() const { return m_nodes.size(); }
    void clear() { m_nodes.clear(); }
    const NodePool& pool() const { return m_pool; }

    // Every node, in order: for the cache's own walks.
    template <class Visit>
    void forEach(Visit visit) {
        for (auto& [key, entry] : m_nodes) visit(key.record, entry);
    }

private:
    struct Key {
        mutable SecData1* record;  // moved by rebase; the order stays
    };
    struct Less {
        using is_transparent = void;
        bool operator()(const Key& a, const Key& b) const {
            return CompareSymbols(a.record->symbol, b.record->symbol) < 0;
        }
        bool operator()(const Key& a, const char* b) const {
            return CompareSymbols(a.record->symbol, b) < 0;
        }
        bool operator()(const char* a, const Key& b) const {
            return CompareSymbols(a, b.record->symbol) < 0;
        }
    };
    using Nodes = std::map<Key, SecCacheEntry*, Less,
                           NodePoolAllocator<std::pair<const Key, SecCacheEntry*>>>;

    NodePool m_pool;  // declared first: the nodes go back to it
    Nodes m_nodes;
};

}  // namespace RTSecCache
