/// \file
/// EventMulticaster: an ordered set of listeners and the two ways of raising an event on them.
#pragma once

#include <set>

#include <qvnrt/export.h>

/// Listeners by address, in ascending order. The multicaster does not own its listeners:
/// remove one before it is destroyed.
template <class Listener>
class QVNRT_API EventMulticaster {
public:
    EventMulticaster() = default;
    /// Copies carry the listener set.
    EventMulticaster(const EventMulticaster&) = default;
    EventMulticaster& operator=(const EventMulticaster&) = default;
    virtual ~EventMulticaster() = default;

    /// Adding a listener twice has no effect; removing an unknown one is ignored.
    void addListener(Listener& listener) { m_listeners.insert(&listener); }
    void removeListener(Listener& listener) { m_listeners.erase(&listener); }

    /// An event without an argument: each call is guarded, a listener's exception is dropped
    /// and the walk goes on.
    void raiseEvent(void (Listener::*event)()) {
        Walk([event](Listener* listener) {
            try {
                (listener->*event)();
            } catch (...) {
            }
        });
    }

    /// An event with an int argument: unguarded, so a listener's exception ends the walk and
    /// leaves the caller. Kept: applications rely on seeing it.
    void raiseEvent(void (Listener::*event)(int), int argument) {
        Walk([event, argument](Listener* listener) { (listener->*event)(argument); });
    }

    /// Ordered by the address of the listener.
    std::set<void*> m_listeners;

private:
    /// Walks in ascending address order. The next listener is looked up after each call, so a
    /// listener may remove itself, or another, while it is being called.
    template <class Call>
    void Walk(Call call) {
        for (auto at = m_listeners.begin(); at != m_listeners.end();) {
            void* const current = *at;
            call(static_cast<Listener*>(current));
            at = m_listeners.upper_bound(current);
        }
    }
};
