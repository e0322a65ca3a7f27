/// \file
/// CStringArray, CPtrArray, CDWordArray: growing arrays with the framework's names.
#pragma once

#include <cassert>
#include <cstdint>
#include <vector>

#include <qvnrt/compat/CString.h>
#include <qvnrt/export.h>

namespace qvnrt::compat {

/// The one implementation behind the three array classes. Indexes are not checked in
/// release builds, as with the framework's arrays: an index outside the array is a fault
/// of the caller.
template <class T>
class QVNRT_API VectorArray {
public:
    int GetSize() const { return static_cast<int>(m_items.size()); }
    int GetCount() const { return GetSize(); }
    int GetUpperBound() const { return GetSize() - 1; }
    bool IsEmpty() const { return m_items.empty(); }

    const T& GetAt(int index) const { return m_items[Checked(index)]; }
    T& ElementAt(int index) { return m_items[Checked(index)]; }
    void SetAt(int index, const T& value) { m_items[Checked(index)] = value; }
    const T& operator[](int index) const { return m_items[Checked(index)]; }
    T& operator[](int index) { return m_items[Checked(index)]; }

    int Add(const T& value) {
        m_items.push_back(value);
        return GetUpperBound();
    }
    void SetSize(int size) { m_items.resize(size > 0 ? static_cast<size_t>(size) : 0); }
    // Room for `size` elements in all without growing again; a smaller size does nothing.
    void Reserve(int size) {
        if (size > 0) m_items.reserve(static_cast<size_t>(size));
    }
    void InsertAt(int index, const T& value, int count = 1) {
        if (index > GetSize()) SetSize(index);
        m_items.insert(m_items.begin() + index, static_cast<size_t>(count), value);
    }
    void RemoveAt(int index, int count = 1) {
        m_items.erase(m_items.begin() + Checked(index), m_items.begin() + index + count);
    }
    void RemoveAll() { m_items.clear(); }

    /// Direct access for range-for and algorithms.
    auto begin() { return m_items.begin(); }
    auto end() { return m_items.end(); }
    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

private:
    size_t Checked(int index) const {
        assert(index >= 0 && index < GetSize());
        return static_cast<size_t>(index);
    }

    std::vector<T> m_items;
};

}  // namespace qvnrt::compat

/// The framework's array types, by element: text, untyped pointers (not owned), 32-bit words.
class QVNRT_API CStringArray : public qvnrt::compat::VectorArray<CString> {};
class QVNRT_API CPtrArray : public qvnrt::compat::VectorArray<void*> {};
class QVNRT_API CDWordArray : public qvnrt::compat::VectorArray<uint32_t> {};
