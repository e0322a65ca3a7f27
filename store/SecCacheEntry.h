// SecCacheEntry: what a bound security points at for its symbol. It lives while at least
// one security is bound to the symbol, and reads and writes the symbol's records in place.
#pragma once

#include <initializer_list>
#include <set>

#include <qvnrt/driver.h>

#include "store/SecData.h"
#include "store/SecFieldTable.h"

namespace RTSecCache {

class MinuteStore;
class TickStore;

class SecCacheEntry {
public:
    explicit SecCacheEntry(SecData1* record) : m_record(record) {}
    SecCacheEntry(const SecCacheEntry&) = delete;
    SecCacheEntry& operator=(const SecCacheEntry&) = delete;

    // Reads by field id. -4 in the error word when the field is absent or is not read by
    // this call; an id outside 0 to 59 gives zero or null and leaves the error word alone.
    int getSecInt(int field, long* error);
    float getSecFloat(int field, long* error);
    const char* getSecString(int field, long* error);

    // Writes one field of a driver callback through to the records. A negative code is a
    // rejection: every field drops out of view and the closed bit is set. Field 0 (the end of
    // a batch) clears the closed bit again.
    bool storeSecField(unsigned long handle, int code, int field, int type, void* data);

    // The symbol's SecData2, made on first use; null when Sec2.dat has no room.
    SecData2* secData2();

    bool isClosed() const;
    bool isPresent(int field) const;
    // The record's session rules, and null holidays; true when the rules are filled in.
    bool sessionInfo(SESSION_INFO*& session, HOLIDAYS_INFO*& holidays);
    // A change of kind "S" clears everything cached for the symbol.
    void applySecChange(const RTSecChange* change);
    // Stamps the record's last use with the cache's clock.
    void touch();

    SecData1* m_record;                          // the node's key too; moved by rebase
    std::set<const void*> m_objects;             // kept empty
    // The objects that listen for changes of the symbol's session rules, by address. The
    // store never looks at them: the layer that adds them knows what they are.
    std::set<const void*> m_sessionListeners;
    MinuteStore* m_pMinuteStore = nullptr;
    TickStore* m_pTickStore = nullptr;
    int m_refCount = 0;
    void* m_pRootStorage = nullptr;              // the open .tik file, null when none

private:
    const unsigned char* readable(int field, std::initializer_list<FieldRead> reads,
                                  long* error);
    // The address of a field's bytes, or null when it has no storage (or no SecData2).
    unsigned char* placeOf(int field, bool allocate);
};

}  // namespace RTSecCache
