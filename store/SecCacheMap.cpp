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

uint64_t HashWords(const uint64_t (&words)[3]) {
    return Mix(words[0] ^ Mix(words[1] ^ Mix(words[2] + 0x9e3779b97f4a7c15ULL)));
}

}  // namespace

// Three words, zero past the text, hashed together: a few multiplications for the whole
// symbol instead of one step a character.
uint64_t HashSymbol(const char* symbol) {
    uint64_t words[3] = {0, 0, 0};
    std::memcpy(words, symbol, ::strnlen(symbol, kSymbolLength));
    return HashWords(words);
}

// The same words read straight from the field, without a call to find the text's end:
// the field's 20 bytes are all readable, and the bytes from the first NUL on are masked off.
uint64_t HashRecordSymbol(const SecData1& record) {
    uint64_t words[3] = {0, 0, 0};
    std::memcpy(words, record.symbol, sizeof(record.symbol));
    constexpr uint64_t kLow = 0x0101010101010101ULL;
    constexpr uint64_t kHigh = 0x8080808080808080ULL;
    bool ended = false;
    for (uint64_t& word : words) {
        if (ended) {
            word = 0;
            continue;
        }
        // The lowest set high bit marks the first NUL byte (later marks may be false).
        const uint64_t nuls = (word - kLow) & ~word & kHigh;
        if (nuls == 0) continue;
        const int kept = std::countr_zero(nuls) / 8;
        word &= kept == 0 ? 0 : ~uint64_t{0} >> (64 - 8 * kept);
        ended = true;
    }
    return HashWords(words);
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
    return insert(record, HashRecordSymbol(*record));
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
