/// \file
/// Hash maps that iterate in the framework's order. Files and callbacks expose that order
/// (a profile is written in it, services are listed in it), so it is part of the
/// behaviour: buckets in index order, and within a bucket the most recently inserted key
/// first. A key that is set again keeps its place.
///
/// The buckets never grow (their number fixes the order), so a lookup through them alone
/// would cost a walk of a chain holding a seventeenth of the map. An index beside them,
/// keyed by a well-mixed hash, finds any key in constant time; the buckets only give the
/// order. Chains are doubly linked so that a removal is constant time too.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include <qvnrt/compat/CString.h>
#include <qvnrt/export.h>

/// An opaque iteration cursor; null is the end.
struct __POSITION {};
typedef __POSITION* POSITION;

namespace qvnrt::compat {

/// h = h * 33 + c over the bytes, unsigned 32-bit.
struct StringHash {
    uint32_t operator()(const CString& key) const {
        uint32_t hash = 0;
        for (const char* p = key; *p; ++p) hash = (hash << 5) + hash + static_cast<unsigned char>(*p);
        return hash;
    }
};

/// The framework's hash of a numeric or pointer key: the value shifted right by 4.
struct ShiftHash {
    uint32_t operator()(unsigned long key) const { return static_cast<uint32_t>(key >> 4); }
    uint32_t operator()(const void* key) const {
        return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(key) >> 4);
    }
};

/// The index's hash: independent of the bucket hash, so that keys sharing a bucket (or a
/// crafted set of keys sharing a times-33 value) still spread in the index.
template <class K>
struct IndexHash {
    size_t operator()(const K& key) const { return std::hash<K>()(key); }
};
template <>
struct IndexHash<CString> {
    // Equality of CString stops at the first NUL, so the hash does too.
    size_t operator()(const CString& key) const {
        return std::hash<std::string_view>()(std::string_view(static_cast<const char*>(key)));
    }
};

/// The one implementation behind the framework's maps, in the framework's iteration order.
/// Values are stored as given: a map of pointers does not own what they point to.
template <class K, class V, class Hash>
class QVNRT_API HashMap {
public:
    explicit HashMap(int blockSize = 10) { (void)blockSize; }  // the block size only tuned allocation
    HashMap(const HashMap&) = delete;
    HashMap& operator=(const HashMap&) = delete;
    ~HashMap() { RemoveAll(); }

    int GetCount() const { return m_count; }
    int GetSize() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }
    unsigned GetHashTableSize() const { return m_tableSize; }

    /// Takes effect when the table is next built, that is while the map is empty.
    void InitHashTable(unsigned size) {
        if (m_count == 0 && size > 0) {
            RemoveAll();
            m_tableSize = size;
        }
    }

    bool Lookup(const K& key, V& value) const {
        const Node* node = Find(key);
        if (!node) return false;
        value = node->value;
        return true;
    }

    V* PLookup(const K& key) {
        Node* node = Find(key);
        return node ? &node->value : nullptr;
    }

    void SetAt(const K& key, const V& value) { (*this)[key] = value; }

    V& operator[](const K& key) {
        if (Node* node = Find(key)) return node->value;
        if (m_buckets.empty()) m_buckets.assign(m_tableSize, nullptr);
        const uint32_t hash = Hash()(key);
        Node*& head = m_buckets[hash % m_tableSize];
        auto node = std::make_unique<Node>(Node{key, V(), hash, head, nullptr});
        m_index.insert(node.get());
        if (head) head->prev = node.get();
        head = node.release();
        ++m_count;
        return head->value;
    }

    bool RemoveKey(const K& key) {
        Node* gone = Find(key);
        if (!gone) return false;
        m_index.erase(gone);
        if (gone->prev) {
            gone->prev->next = gone->next;
        } else {
            m_buckets[gone->hash % m_tableSize] = gone->next;
        }
        if (gone->next) gone->next->prev = gone->prev;
        delete gone;
        --m_count;
        return true;
    }

    void RemoveAll() {
        for (Node*& head : m_buckets) {
            while (head) {
                Node* next = head->next;
                delete head;
                head = next;
            }
        }
        m_buckets.clear();
        m_index.clear();
        m_count = 0;
    }

    POSITION GetStartPosition() const { return ToPosition(FirstFrom(0)); }

    /// Hands out the pair at `position` and moves it to the next pair, null at the end.
    void GetNextAssoc(POSITION& position, K& key, V& value) const {
        const Node* node = reinterpret_cast<const Node*>(position);
        key = node->key;
        value = node->value;
        position = ToPosition(node->next ? node->next : FirstFrom(node->hash % m_tableSize + 1));
    }

private:
    struct Node {
        K key;
        V value;
        uint32_t hash;
        Node* next;
        Node* prev;
    };

    // The index holds the nodes themselves and is searched by key (heterogeneous lookup).
    struct NodeHash {
        using is_transparent = void;
        size_t operator()(const Node* node) const { return IndexHash<K>()(node->key); }
        size_t operator()(const K& key) const { return IndexHash<K>()(key); }
    };
    struct NodeEqual {
        using is_transparent = void;
        bool operator()(const Node* a, const Node* b) const { return a == b; }
        bool operator()(const K& key, const Node* node) const { return node->key == key; }
        bool operator()(const Node* node, const K& key) const { return node->key == key; }
    };

    static POSITION ToPosition(const Node* node) {
        return reinterpret_cast<POSITION>(const_cast<Node*>(node));
    }

    const Node* FirstFrom(size_t bucket) const {
        for (; bucket < m_buckets.size(); ++bucket) {
            if (m_buckets[bucket]) return m_buckets[bucket];
        }
        return nullptr;
    }

    Node* Find(const K& key) const {
        const auto found = m_index.find(key);
        return found == m_index.end() ? nullptr : *found;
    }

    std::vector<Node*> m_buckets;
    std::unordered_set<Node*, NodeHash, NodeEqual> m_index;
    unsigned m_tableSize = 17;
    int m_count = 0;
};

}  // namespace qvnrt::compat

/// Text to text, in the framework's order.
class QVNRT_API CMapStringToString
    : public qvnrt::compat::HashMap<CString, CString, qvnrt::compat::StringHash> {
public:
    using HashMap::HashMap;
};

/// Text to pointer, in the framework's order; the pointers are not owned.
class QVNRT_API CMapStringToPtr
    : public qvnrt::compat::HashMap<CString, void*, qvnrt::compat::StringHash> {
public:
    using HashMap::HashMap;
};
