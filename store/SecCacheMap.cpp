#include "store/SecCacheMap.h"

#include <bit>
#include <cstring>
#include <type_traits>
#include <utility>

#include "store/SecCacheEntry.h"

namespace RTSecCache {
namespace {

constexpr size_t kSymbolLength = 19;
constexpr size_t kFirstTableSlots = 1024;

uint64_t Mix(uint64_t value) {
    value ^= value >> 33;
    value *= 0xff51afd7ed558ccdULL;
    value ^= value >> 33;
    value *= 0xc4ceb9fe1a85ec53ULL;
    value ^= value >> 33;
    return value;
}

}  // namespace

uint64_t HashSymbol(const char* symbol) {
    // Three words, zero past the text, hashed together: a few multiplications for the
    // whole symbol instead of one step a character.
    uint64_t words[3] = {0, 0, 0};
    std::memcpy(words, symbol, ::strnlen(symbol, kSymbolLength));
    return Mix(words[0] ^ Mix(words[1] ^ Mix(words[2] + 0x9e3779b97f4a7c15ULL)));
}

SecCacheMap::~SecCacheMap() { clear(); }

void SecCacheMap::reserve(size_t records) {
    const size_t wanted = std::bit_ceil(std::max(records * 2, kFirstTableSlots));
    if (wanted > m_slotCount) resize(wanted);
}

void SecCacheMap::resize(size_t slotCount) {
    static_assert(std::is_trivially_copyable_v<Slot>, "slots are made zeroed and copied");
    qvnrt::platform::ZeroedBlock old(sizeof(Slot) * slotCount);
    std::swap(old, m_table);
    const size_t oldCount = std::exchange(m_slotCount, slotCount);
    const auto* oldSlots = static_cast<const Slot*>(old.data());
    for (size_t i = 0; i < oldCount; ++i) {
        if (!oldSlots[i].node) continue;
        size_t at = home(oldSlots[i].hash);
        while (slots()[at].node) at = next(at);
        slots()[at] = oldSlots[i];
    }
}

SecCacheMap::Node SecCacheMap::find(const char* symbol) {
    if (m_slotCount == 0) return {};
    const uint64_t hash = HashSymbol(symbol);
    for (size_t at = home(hash);; at = next(at)) {
        const Slot& slot = slots()[at];
        if (!slot.node) return {};
        // The record's symbol ends inside its field (the scan and the making of a record see
        // to it), so this is strcmp's equality.
        if (slot.hash == hash &&
            std::strncmp(slot.node->record->symbol, symbol, kSymbolLength + 1) == 0) {
            return {slot.node->record, &slot.node->entry};
        }
    }
}

void SecCacheMap::prefetch(uint64_t hash) const {
    if (m_slotCount != 0) __builtin_prefetch(&slots()[home(hash)], 1);
}

SecCacheMap::Node SecCacheMap::insert(SecData1* record) {
    return insert(record, HashSymbol(record->symbol));
}

SecCacheMap::Node SecCacheMap::insert(SecData1* record, uint64_t hash) {
    if ((m_size + 1) * 2 > m_slotCount) resize(std::max(m_slotCount * 2, kFirstTableSlots));
    size_t at = home(hash);
    for (;; at = next(at)) {
        const Slot& slot = slots()[at];
        if (!slot.node) break;
        if (slot.hash == hash &&
            std::strncmp(slot.node->record->symbol, record->symbol, kSymbolLength + 1) == 0) {
            return {slot.node->record, &slot.node->entry};
        }
    }
    auto* node = static_cast<Stored*>(m_pool.take(sizeof(Stored)));
    *node = Stored{record, nullptr};
    slots()[at] = Slot{hash, node};
    ++m_size;
    return {node->record, &node->entry};
}

void SecCacheMap::rebase(std::ptrdiff_t delta) {
    for (size_t at = 0; at < m_slotCount; ++at) {
        if (!slots()[at].node) continue;
        Stored& node = *slots()[at].node;
        node.record = reinterpret_cast<SecData1*>(reinterpret_cast<char*>(node.record) + delta);
        if (node.entry) node.entry->m_record = node.record;
    }
}

void SecCacheMap::clear() {
    // Every node goes back at once: the pool ends as giving them back one by one leaves it.
    m_pool.releaseAll();
    m_table = qvnrt::platform::ZeroedBlock();
    m_slotCount = 0;
    m_size = 0;
}

}  // namespace RTSecCache
