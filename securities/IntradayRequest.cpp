// RTSecurity's intraday request: the owner's request, its plain form, and closing it.

#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTServer.h>

#include <cstdlib>
#include <cstring>

#include "securities/IntradayClock.h"
#include "securities/PendingTicks.h"
#include "securities/TickFrontDoor.h"

namespace {

constexpr short kMinutesInDay = 1440;
constexpr uint8_t kPlainFilterMode = 2;
constexpr int16_t kPlainDays = 198;  // every day of the week
constexpr int kDelayedFlag = 0x20;
constexpr int kExchangeDelayMinutes = 11;
constexpr long kDefaultDelayMinutes = 20;

}  // namespace

bool RTSecurity::RequestTick(unsigned long start, unsigned long end, short weight, short live,
                             unsigned char filterMode, unsigned char time0, unsigned char time1,
                             unsigned char time2, unsigned char time3, short days,
                             bool* sessions, unsigned char extra, unsigned char route,
                             unsigned short requestWord, int reqOptions, ServiceLimit limit) {
    CloseTick();
    // No bar of no width, none wider than a day, no span that ends before it starts: such a
    // request could only deliver nonsense, so it is refused before it reaches the driver.
    if (weight == 0 || weight < -kMinutesInDay) return false;
    if (end != 0 && end < start) return false;
    LOCTICKDATA request;
    std::memset(&request, 0, sizeof(request));  // the reserved bytes take part in a comparison
    request.start = static_cast<uint32_t>(start);
    request.end = static_cast<uint32_t>(end);
    request.weight = weight;
    request.live = live;
    request.requestWord = requestWord;
    request.route = route;
    request.filterMode = filterMode;
    request.days = days;
    request.timeFilter[0] = time0;
    request.timeFilter[1] = time1;
    request.timeFilter[2] = time2;
    request.timeFilter[3] = time3;
    for (int i = 0; i < 4 && sessions; ++i) request.sessions[i] = sessions[i] ? 1 : 0;
    request.extra = extra;
    return RequestTick(request, reqOptions, limit);
}

bool RTSecurity::RequestTick(LOCTICKDATA& request, int reqOptions, ServiceLimit limit) {
    m_lTickStatus = 0;
    if (m_pCacheEntry) RTSecCache::closeTicks(m_pCacheEntry, this);
    m_plainRequest = request;
    m_origRequest = request;
    modifyRequest();
    // Without a cache record (the cache off, or no symbol) there is no front door to ask.
    if (!m_pCacheEntry) return false;
    return RTSecCache::openTicks(m_pCacheEntry, this, &m_plainRequest, reqOptions, limit);
}

void RTSecurity::modifyRequest() {
    m_bConvert = 0;
    LOCTICKDATA& plain = m_plainRequest;
    LOCTICKDATA original = m_origRequest;
    std::memset(original.sessions, 0, sizeof(original.sessions));
    original.extra = 0;

    plain.filterMode = kPlainFilterMode;
    plain.days = kPlainDays;
    std::memset(plain.timeFilter, 0, sizeof(plain.timeFilter));
    std::memset(plain.sessions, 0, sizeof(plain.sessions));
    plain.extra = 0;
    if (m_origRequest.weight >= 0) {
        plain.weight = 1;
        if (m_origRequest.weight != 1) {
            m_bConvert = 1;
            return;
        }
    } else {
        // One cached minute store serves every width, so live updates are asked for only
        // where they can come: an open end.
        plain.weight = -1;
        plain.live = (plain.live == 1 && plain.end == 0) ? 1 : 0;
        original.live = (original.live == 1 && original.end == 0) ? 1 : 0;
    }
    if (std::memcmp(&original, &plain, sizeof(LOCTICKDATA)) != 0) m_bConvert = 1;
}

void RTSecurity::CloseTick() {
    m_tickCount = -1;
    m_barStart = m_barEnd = m_sessionEnd = m_lastBarStart = 0;
    m_openBar.time = 0;
    m_lastHistBar.time = 0;
    m_savedBarStart = m_savedBarEnd = m_savedSessionEnd = m_savedLastBarStart = 0;
    m_bFirstPacket = 1;
    std::free(m_pHeldTicks);
    m_pHeldTicks = nullptr;
    m_nHeldTicks = 0;
    // Live ticks that waited for the history of this request belong to it, not to the next
    // one: they go with it.
    std::free(m_pPendingTicks);
    m_pPendingTicks = nullptr;
    m_nPendingTicks = m_nPendingCapacity = 0;
    m_bConvert = 0;
    if (m_pCacheEntry) RTSecCache::closeTicks(m_pCacheEntry, this);
    qvnrt::securities::DropPendingTicks(this);
    unsigned long handle = m_hTickEvent;
    RTServer::CloseEvent(handle);
    m_hTickEvent = 0;
}

void RTSecurity::calcSecondsDelayed() {
    if (m_secondsDelayed != -1) return;
    m_secondsDelayed = 0;
    long error = 0;
    int flags = m_bitFlags;
    if (flags == 0) {
        flags = GetSecInt(7, &error);
        if (error != 0) flags = 0;
    }
    if (!(flags & kDelayedFlag)) return;
    int exchange = m_exchange;
    if (exchange == -1) {
        error = 0;
        exchange = GetSecInt(8, &error);
        if (error != 0) exchange = -1;
    }
    if (exchange == -1) return;
    const unsigned long minutes =
        GetExchangeLong(exchange, kExchangeDelayMinutes, kDefaultDelayMinutes) & 0xFF;
    m_secondsDelayed = static_cast<int32_t>(minutes * 60);
}
