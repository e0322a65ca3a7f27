#include "store/SecCacheMap.h"

#include "store/SecCacheEntry.h"

namespace RTSecCache {

int CompareSymbols(const char* a, const char* b) {
    for (;; ++a, ++b) {
        const auto x = static_cast<signed char>(*a);
        const auto y = static_cast<signed char>(*b);
        if (x != y) return x < y ? -1 : 1;
        if (x == 0) return 0;
    }
}

SecCacheMap::SecCacheMap() : m_nodes(Less(), Nodes::allocator_type(&m_pool)) {}

SecCacheMap::Node SecCacheMap::find(const char* symbol) {
    const auto found = m_nodes.find(symbol);
    if (found == m_nodes.end()) return {};
    return {found->first.record, &found->second};
}

SecCacheMap::Node SecCacheMap::insert(SecData1* record) {
    const auto at = m_nodes.emplace(Key{record}, nullptr).first;
    return {at->first.record, &at->second};
}

void SecCacheMap::rebase(std::ptrdiff_t delta) {
    for (auto& [key, entry] : m_nodes) {
        key.record = reinterpret_cast<SecData1*>(reinterpret_cast<char*>(key.record) + delta);
        if (entry) entry->m_record = key.record;
    }
}

}  // namespace RTSecCache
