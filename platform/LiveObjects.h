// The checked run-time cast of a driver's `user` value.
//
// A driver calls back with the address of the object that asked, and may do so after the
// object is gone. Every class whose address goes to a driver registers itself here in its
// constructors and erases itself in its destructor. A callback looks the address up first
// and casts only a registered one, with dynamic_cast on the real pointer; anything else
// yields null, so a late callback for a destroyed object does nothing and never reads
// freed memory.
//
// One registry per base class (the class whose address is registered), since only a
// pointer of the right base may be dynamic_cast. Not thread-safe: the library runs on one
// thread.
#pragma once

#include <unordered_set>

namespace qvnrt::platform {

template <class Base>
class LiveObjects {
public:
    static void Insert(const Base* object) { Set().insert(object); }
    static void Erase(const Base* object) { Set().erase(object); }
    static bool Contains(const Base* object) { return Set().count(object) != 0; }

    // The object at `user` as a T, or null when no live Base is registered there or the
    // object is not a T.
    template <class T>
    static T* Cast(unsigned long user) {
        const Base* object = reinterpret_cast<const Base*>(user);
        if (!object || !Contains(object)) return nullptr;
        return dynamic_cast<T*>(const_cast<Base*>(object));
    }

private:
    static std::unordered_set<const Base*>& Set() {
        static std::unordered_set<const Base*> set;
        return set;
    }
};

}  // namespace qvnrt::platform
