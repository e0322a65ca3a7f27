#include "store/SecCache.h"

#include <cstring>
#include <iostream>

#include <qvnrt/RTSecCache.h>
#include <qvnrt/RTSec_Base.h>
#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTSessSecurity.h>
#include <qvnrt/RTServer.h>

#include "platform/Clock.h"
#include "platform/Directories.h"
#include "securities/PendingTicks.h"
#include "store/PendingEod.h"
#include "store/SecCacheEntry.h"
#include "store/TickFilePath.h"

namespace RTSecCache {

bool s_cacheEnabled = false;
CString s_cacheDir;
unsigned long s_cacheKeepSeconds = 0;
int s_cacheReserved = 0;
time_t s_cacheNow = 0;
bool s_cacheTimerBusy = false;
uint32_t s_cacheLastTick = 0;

namespace {

constexpr unsigned kGrowthStep = 1024;
constexpr unsigned kTimerMilliseconds = 300;
constexpr uint32_t kMinimumTickGap = 150;
constexpr unsigned kTimerMessage = 0x113;  // the timer message of the Windows build
constexpr size_t kSymbolLength = 19;
constexpr int kDefaultKeepDays = 5;

// Built when the library is loaded, after the statics above (same file, earlier lines).
SecCache g_secCache;

void MakeRecord(SecData1& record, const char* symbol) {
    std::memset(&record, 0, sizeof(record));
    record.secData2Index = -1;
    record.reserved228 = -1;
    std::strncpy(record.symbol, symbol, kSymbolLength);
    record.symbol[kSymbolLength] = '\0';
    record.presence = uint64_t{1} << 1;  // the symbol, field 1
}

// The symbol as the record keeps it: at most 19 characters.
std::string KeyOf(const char* symbol) { return std::string(symbol).substr(0, kSymbolLength); }

// Replays the stored fields of `fieldList` into a security while offline: each as an
// integer, else as text, else as a float, whichever the record holds first.
void Replay(SecCacheEntry& entry, RTSec_Base& security, const char* fieldList) {
    for (const unsigned char* at = reinterpret_cast<const unsigned char*>(fieldList); *at; ++at) {
        const int field = *at;
        long error = -4;
        int32_t integer = entry.getSecInt(field, &error);
        if (error == 0) {
            security.ReqSecCallback(security.m_request, 0, field, RTDATA_INT, &integer);
            continue;
        }
        error = -4;
        const char* text = entry.getSecString(field, &error);
        if (error == 0) {
            security.ReqSecCallback(security.m_request, 0, field, RTDATA_TEXT,
                                    const_cast<char*>(text));
            continue;
        }
        error = -4;
        float value = entry.getSecFloat(field, &error);
        if (error != 0) continue;  // the record lacks it
        if (field == 4) {
            double widened = value;
            security.ReqSecCallback(security.m_request, 0, field, RTDATA_DOUBLE, &widened);
        } else {
            security.ReqSecCallback(security.m_request, 0, field, RTDATA_FLOAT, &value);
        }
    }
}

}  // namespace

SecCache& TheSecCache() { return g_secCache; }

SecCache::SecCache()
    : cache<SecData1>(kSec1Signature, kGrowthStep),
      m_sec2(kSec2Signature, kGrowthStep),
      m_sec3(kSec3Signature, kGrowthStep) {
    const std::string directory =
        qvnrt::platform::JoinPath(qvnrt::platform::CurrentDirectory(), "cache");
    RTServer::InitCache(true, directory.c_str(), kDefaultKeepDays, 0);
}

// The timer leaves the loop it was started on, unless that loop is no longer the current
// one: an application's loop that was replaced may be gone, and the library's own loop
// outlives everything.
SecCache::~SecCache() {
    if (m_timer && m_timerLoop == &qvnrt::GetMainLoop()) m_timerLoop->removeTimer(m_timer);
    m_map.forEach([](SecData1*, SecCacheEntry*& entry) {
        delete entry;
        entry = nullptr;
    });
    m_map.clear();
}

bool SecCache::ensureOpen() {
    if (isOpen()) return true;
    if (m_opened) return false;  // tried once this session, and failed
    m_opened = true;
    s_cacheNow = qvnrt::platform::Now();
    const std::string directory = s_cacheDir.str();
    qvnrt::platform::MakeDirectory(directory);
    open((directory + "/Sec1.dat").c_str());
    m_sec2.open((directory + "/Sec2.dat").c_str());
    if (!isOpen() || !m_sec2.view()) {
        // The start-up scan needs both views; without them the cache is off for the session.
        std::clog << "\n !!! Cache : disabled for this session: the files in " << directory
                  << " cannot be mapped" << std::endl;
        s_cacheEnabled = false;
        return false;
    }
    scan();
    startTimer();
    return true;
}

// Rebuilds the free list of Sec1.dat in index order and fills the map, aging .tik files on
// the way. Sec2.dat's free list lives on from its header.
void SecCache::scan() {
    CacheFileHeader& head = *header();
    int32_t previousFree = -1;
    int32_t freeSlots = 0;
    for (int32_t index = 0; index < head.capacity; ++index) {
        auto* record = static_cast<SecData1*>(slot(index));
        if (record->symbol[0] == '\0') {
            if (previousFree < 0) {
                head.freeHead = index;
            } else {
                setLink(previousFree, index);
            }
            previousFree = index;
            ++freeSlots;
            continue;
        }
        record->symbol[kSymbolLength] = '\0';  // a damaged key still ends inside its field
        m_map.insert(record);
        if (record->tikSize != 0 &&
            static_cast<unsigned long>(s_cacheNow - record->tikTime) > s_cacheKeepSeconds) {
            qvnrt::platform::DeleteFile(TickFilePath(record->symbol));
            record->tikSize = 0;
        }
    }
    // The free slots chained above: capacity less the records in use. (Counting the chain,
    // not the map's nodes, keeps a damaged file with two records of one symbol from sending
    // allocation past the end of the chain.)
    head.freeCount = freeSlots;
}

void SecCache::startTimer() {
    m_timerLoop = &qvnrt::GetMainLoop();
    m_timer = m_timerLoop->addTimer(kTimerMilliseconds, [] {
        CacheTimerProc(nullptr, kTimerMessage, 0, qvnrt::platform::TickCount());
    });
}

// A symbol longer than the record keeps is looked up by the part that is kept, so opening
// it again finds its record instead of making another.
SecCacheMap::Node SecCache::nodeOf(const char* symbol) {
    const std::string key = KeyOf(symbol);
    if (const SecCacheMap::Node found = m_map.find(key.c_str())) return found;
    SecData1* record = allocate();
    if (!record) return {};
    MakeRecord(*record, key.c_str());
    return m_map.insert(record);
}

SecData2* SecCache::secData2(int32_t& index) {
    auto* sec2Header = m_sec2.header();
    if (!sec2Header) return nullptr;
    // An index outside the file (Sec2.dat lost or restarted) is as good as none.
    if (index < 0 || index >= sec2Header->capacity) {
        SecData2* record = m_sec2.allocate();
        if (!record) return nullptr;
        record->first = -1;
        record->field41[0] = '\0';
        record->field42[0] = '\0';
        index = static_cast<int32_t>((reinterpret_cast<unsigned char*>(record) -
                                      static_cast<unsigned char*>(m_sec2.view()) -
                                      kHeaderSize) /
                                     sizeof(SecData2));
        return record;
    }
    return static_cast<SecData2*>(m_sec2.slot(index));
}

void SecCache::rebase(void* newBase, void* oldBase) {
    m_map.rebase(static_cast<char*>(newBase) - static_cast<char*>(oldBase));
}

SecData2* SecCacheEntry::secData2() { return g_secCache.secData2(m_record->secData2Index); }

SecCacheEntry* openEntry(const char* symbol, RTSec_Base* security, const char* fieldList) {
    if (!s_cacheEnabled || !security) return nullptr;
    if (!g_secCache.ensureOpen()) return nullptr;
    // A record's first byte 0 marks a free slot, so there is no record for an empty symbol:
    // such a security works without one.
    if (!symbol || !*symbol) return nullptr;
    if (!fieldList) fieldList = "";

    SecCacheEntry* entry = security->m_pCacheEntry;
    if (entry && std::strcmp(entry->m_record->symbol, security->m_strSymbol) != 0) {
        closeEntry(security);
        entry = nullptr;
    }
    if (!entry) {
        const SecCacheMap::Node node = g_secCache.nodeOf(symbol);
        if (!node) return nullptr;  // no record to be had: the security works without one
        if (!*node.entry) *node.entry = new SecCacheEntry(node.record);
        entry = *node.entry;
        ++entry->m_refCount;
        security->m_pCacheEntry = entry;
    }
    entry->m_record->lastUse = static_cast<uint32_t>(s_cacheNow);

    if (RTServer::IsConnected()) return entry;  // the reply comes from the service
    if (entry->isClosed()) {
        security->OnSecClosed();
        return entry;
    }
    Replay(*entry, *security, fieldList);
    security->OnSecChanged();
    return entry;
}

void closeEntry(RTSec_Base* security) {
    SecCacheEntry* entry = security ? security->m_pCacheEntry : nullptr;
    if (!entry) return;
    security->m_pCacheEntry = nullptr;
    const auto listener = entry->m_sessionListeners.find(security);
    if (listener != entry->m_sessionListeners.end()) entry->m_sessionListeners.erase(listener);
    const auto pending = s_pendingEod.find(security);
    if (pending != s_pendingEod.end()) s_pendingEod.erase(pending);
    entry->m_record->lastUse = static_cast<uint32_t>(s_cacheNow);
    if (--entry->m_refCount > 0) return;
    // The last security: the entry goes, the record stays with all its fields.
    if (const SecCacheMap::Node node = g_secCache.map().find(entry->m_record->symbol)) {
        *node.entry = nullptr;
    }
    delete entry;
}

void CacheTimerProc(HWND, unsigned int, uintptr_t, uint32_t systemTime) {
    s_cacheNow = qvnrt::platform::Now();
    if (s_cacheTimerBusy || systemTime - s_cacheLastTick < kMinimumTickGap) return;
    // Listeners hear the heartbeat before the busy flag is set: a listener's nested loop may
    // come back in up to here.
    RTServer::s_listeners.raiseEvent(&RTServer_Event::OnHeartBeatTick);
    s_cacheTimerBusy = true;
    struct ClearBusy {
        ~ClearBusy() { s_cacheTimerBusy = false; }
    } clearBusy;
    // Live ticks of the direct path (securities/PendingTicks); becomes a registered step.
    qvnrt::securities::DeliverPendingTicks();
    DeliverPendingEod();
    s_cacheLastTick = qvnrt::platform::TickCount();
}

}  // namespace RTSecCache

// Must run before the first security opens: the files are opened once.
void RTServer::InitCache(bool enable, const char* directory, int keepDays, int reserved) {
    RTSecCache::s_cacheEnabled = enable;
    RTSecCache::s_cacheDir = directory;
    RTSecCache::s_cacheKeepSeconds = static_cast<unsigned long>(keepDays) * 86400ul;
    RTSecCache::s_cacheReserved = reserved;
}

bool RTServer::IsCacheEnabled() { return RTSecCache::s_cacheEnabled; }
