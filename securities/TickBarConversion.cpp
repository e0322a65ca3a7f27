// Bars of N ticks. A bar never spans a session: the last bar of a session may be short, and
// counting starts afresh at the next one. History arrives newest first, so the oldest
// session of a packet is held back until the older packet has shown where it starts; live
// ticks that come while history runs wait, and join it at its newest end.

#include <qvnrt/RTSecurity.h>

#include <cstdlib>
#include <cstring>

#include "securities/SessionWalk.h"
#include "securities/TickTimes.h"
#include "store/IntradayRecords.h"

using qvnrt::securities::SessionWalk;
using qvnrt::securities::TickTime;

namespace {

constexpr uint32_t kNoSessionEnd = 0xFFFFFFFFu;

// TICKBARREC is packed, so its bar may lie off its alignment: it moves in and out by bytes.
RTINTRADAY_PRICEREC BarOf(const TICKBARREC& record) {
    RTINTRADAY_PRICEREC bar;
    std::memcpy(&bar, &record, sizeof(bar));
    return bar;
}

TICKBARREC Record(const RTINTRADAY_PRICEREC& bar, uint8_t continued) {
    TICKBARREC record{};
    std::memcpy(&record, &bar, sizeof(bar));
    record.continued = continued;
    return record;
}

void Widen(float& high, float& low, float price) {
    if (high == 0.0f || high < price) high = price;
    if (low == 0.0f || low > price) low = price;
}

}  // namespace

TICKBARREC* RTSecurity::ConvertNewTicksToTickBars(int& count, TICKREC* ticks) {
    if (m_tickCount == -1) {
        // History still runs: the ticks wait for it.
        const int needed = m_nPendingTicks + count;
        int capacity = m_nPendingCapacity;
        if (!m_pPendingTicks) {
            capacity = (count / 10 + 1) * 10;
        } else if (needed > capacity) {
            capacity = (needed / 10 + 1) * 10;
        }
        if (capacity != m_nPendingCapacity || !m_pPendingTicks) {
            void* grown = std::realloc(m_pPendingTicks, static_cast<size_t>(capacity) * sizeof(TICKREC));
            if (!grown) {
                std::free(m_pPendingTicks);
                m_pPendingTicks = nullptr;
                m_nPendingTicks = m_nPendingCapacity = 0;
                m_lTickStatus = -1;
                count = 0;
                return nullptr;
            }
            m_pPendingTicks = static_cast<TICKREC*>(grown);
            m_nPendingCapacity = capacity;
        }
        std::memcpy(m_pPendingTicks + m_nPendingTicks, ticks,
                    static_cast<size_t>(count) * sizeof(TICKREC));
        m_nPendingTicks = needed;
        count = 0;
        return nullptr;
    }
    const SessionWalk walk(m_pSessionInfo, m_pHolidaysInfo);
    if (!walk.usable()) {
        count = 0;
        return nullptr;
    }
    int capacity = 10;
    auto* out = static_cast<TICKBARREC*>(std::malloc(capacity * sizeof(TICKBARREC)));
    if (!out) {
        m_lTickStatus = -1;
        count = 0;
        return nullptr;
    }
    const int weight = m_origRequest.weight;
    int produced = 0;
    if (m_tickCount > 0) {
        out[0] = Record(m_openBar, 1);  // goes on from the packet before
        produced = 1;
    }
    bool used = false;
    uint32_t skipUntil = 0;
    for (int i = 0; i < count; ++i) {
        const TICKREC tick = ticks[i];
        const uint32_t time = TickTime(tick);
        if (!m_sessionEnd || m_sessionEnd < time) {
            if (time < skipUntil) continue;
            uint32_t next = 0;
            if (!walk.minuteTest(time, next)) {
                skipUntil = next;
                continue;
            }
            uint32_t lastBar = 0;
            m_sessionEnd = walk.sessionEnd(time, -1, weight, lastBar);
        }
        if (m_tickCount == 0) {
            if (produced == capacity) {
                void* grown = std::realloc(out, static_cast<size_t>(capacity) * 2 * sizeof(TICKBARREC));
                if (!grown) {
                    std::free(out);
                    m_lTickStatus = -1;
                    count = 0;
                    return nullptr;
                }
                out = static_cast<TICKBARREC*>(grown);
                capacity *= 2;
            }
            out[produced++] = TICKBARREC{};
        }
        TICKBARREC& record = out[produced - 1];
        RTINTRADAY_PRICEREC bar = BarOf(record);
        bar.time = time;
        if (m_tickCount == 0) bar.open = tick.price;
        Widen(bar.high, bar.low, tick.price);
        bar.close = tick.price;
        bar.volume = RTSecCache::AddVolume(bar.volume, tick.volume);
        std::memcpy(&record, &bar, sizeof(bar));
        record.flag = tick.flag;
        used = true;
        if (++m_tickCount >= weight) {
            record.complete = 1;
            m_tickCount = 0;
        }
    }
    if (!used) {
        std::free(out);
        count = 0;
        return nullptr;
    }
    if (m_tickCount != 0) m_openBar = BarOf(out[produced - 1]);
    count = produced;
    return out;
}

RTINTRADAY_PRICEREC* RTSecurity::ConvertHistTicksToTickBars(int& count, TICKREC* ticks,
                                                            int& more) {
    const SessionWalk walk(m_pSessionInfo, m_pHolidaysInfo);
    if (!walk.usable()) {
        count = 0;
        return nullptr;
    }
    const bool newTicks = ticks && count > 0;
    if (!newTicks && m_nHeldTicks == 0 && m_nPendingTicks > 0) {
        // A history with nothing to hold back ends, and live ticks waited for it: they make
        // the history now, or they would wait for ever. Held ticks lie newest first.
        m_pHeldTicks = static_cast<TICKREC*>(
            std::malloc(static_cast<size_t>(m_nPendingTicks) * sizeof(TICKREC)));
        if (!m_pHeldTicks) {
            m_lTickStatus = -1;
            count = 0;
            return nullptr;
        }
        for (int i = 0; i < m_nPendingTicks; ++i) {
            m_pHeldTicks[i] = m_pPendingTicks[m_nPendingTicks - 1 - i];
        }
        m_nHeldTicks = m_nPendingTicks;
        std::free(m_pPendingTicks);
        m_pPendingTicks = nullptr;
        m_nPendingTicks = m_nPendingCapacity = 0;
    }
    TICKREC* source = ticks;
    if (m_nHeldTicks > 0) {
        if (newTicks) {
            // The packet is older than the held ticks: it goes behind them.
            void* grown = std::realloc(m_pHeldTicks, static_cast<size_t>(m_nHeldTicks + count) *
                                                         sizeof(TICKREC));
            if (!grown) {
                m_lTickStatus = -1;
                count = 0;
                return nullptr;
            }
            m_pHeldTicks = static_cast<TICKREC*>(grown);
            std::memcpy(m_pHeldTicks + m_nHeldTicks, ticks, static_cast<size_t>(count) * sizeof(TICKREC));
            count += m_nHeldTicks;
        } else {
            count = m_nHeldTicks;
        }
        source = m_pHeldTicks;
    } else if (!source) {
        count = 0;
        return nullptr;
    }
    RTINTRADAY_PRICEREC* result = nullptr;
    if (count > 0) result = ConvertTicksToTickBars(count, source, newTicks ? 0 : 1, more);
    if (!newTicks) {
        std::free(m_pHeldTicks);
        m_pHeldTicks = nullptr;
        m_nHeldTicks = 0;
    }
    return result;
}

RTINTRADAY_PRICEREC* RTSecurity::ConvertTicksToTickBars(int& count, TICKREC* ticks, int final,
                                                        int& more) {
    const SessionWalk walk(m_pSessionInfo, m_pHolidaysInfo);
    if (!walk.usable() || count <= 0 || !ticks) {
        count = 0;
        return nullptr;
    }
    bool hold = !final;
    int total = count;
    int index = 0;
    int held = 0;
    int produced = 0;
    RTINTRADAY_PRICEREC* out = nullptr;
    while (index < total) {
        TICKREC* tick = ticks + (total - 1 - index);
        const uint32_t time = TickTime(*tick);
        uint32_t next = 0;
        if (!walk.minuteTest(time, next)) {
            hold = false;
            if (next <= time) next = time + 1;  // always past the tick in hand
            FilterTicksBetweenSessions(tick, nullptr, index, total, next);
            continue;
        }
        uint32_t lastBar = 0;
        uint32_t sessionEnd = walk.sessionEnd(time, -1, -1, lastBar);
        if (sessionEnd < time) sessionEnd = time;  // rules that cannot be walked
        if (hold) {
            // Its start may lie in the older packet, and a tick bar counts from the
            // session's first tick.
            while (index < total && TickTime(ticks[total - 1 - index]) <= sessionEnd) {
                ++index;
                ++held;
            }
            hold = false;
            continue;
        }
        if (!out) {
            // Every bar holds a tick at least, so this is one buffer for the whole packet
            // even when every session ends in a short bar.
            const size_t bars = static_cast<size_t>(total - index) +
                                static_cast<size_t>(m_nPendingTicks > 0 ? m_nPendingTicks : 0);
            out = static_cast<RTINTRADAY_PRICEREC*>(std::malloc(bars * sizeof(RTINTRADAY_PRICEREC)));
            if (!out) {
                m_lTickStatus = -1;
                count = 0;
                return nullptr;
            }
        }
        more = BuildXTickBars(out, tick, produced, index, total, sessionEnd);
    }
    if (held > 0) {
        // The held ticks are the oldest, at the top of the array.
        TICKREC* heldStart = ticks + (total - held);
        if (ticks == m_pHeldTicks) {
            std::memmove(m_pHeldTicks, heldStart, static_cast<size_t>(held) * sizeof(TICKREC));
        } else {
            void* buffer = std::realloc(m_pHeldTicks, static_cast<size_t>(held) * sizeof(TICKREC));
            if (!buffer) {
                std::free(out);
                m_lTickStatus = -1;
                count = 0;
                return nullptr;
            }
            m_pHeldTicks = static_cast<TICKREC*>(buffer);
            std::memcpy(m_pHeldTicks, heldStart, static_cast<size_t>(held) * sizeof(TICKREC));
        }
        m_nHeldTicks = held;
    } else if (ticks == m_pHeldTicks) {
        m_nHeldTicks = 0;
    }
    count = produced;
    if (produced == 0) {
        std::free(out);
        return nullptr;
    }
    return out;
}

int RTSecurity::BuildXTickBars(RTINTRADAY_PRICEREC*& out, TICKREC*& tick, int& produced,
                               int& index, int& total, unsigned long sessionEnd) {
    const int weight = m_origRequest.weight;
    RTINTRADAY_PRICEREC bar{};
    int inBar = 0;
    bool onHistory = true;
    TICKREC* pending = nullptr;  // taken over from m_pPendingTicks, oldest first
    int pendingCount = 0;
    int pendingAt = 0;
    TICKREC* current = tick;
    int historyIndex = index;

    auto writeBar = [&]() { out[produced - 1] = bar; };
    auto take = [&](const TICKREC& record) {
        if (inBar == weight) {
            writeBar();
            bar = RTINTRADAY_PRICEREC{};
            inBar = 0;
        }
        if (inBar == 0) {
            ++produced;
            bar.volume = record.volume;
            bar.open = record.price;
            bar.high = record.price;
            bar.low = record.price;
        } else {
            bar.volume = RTSecCache::AddVolume(bar.volume, record.volume);
            Widen(bar.high, bar.low, record.price);
        }
        bar.close = record.price;
        bar.time = TickTime(record);
        ++inBar;
    };

    for (;;) {
        if (onHistory) {
            // Down in memory is forward in time.
            while (historyIndex < total) {
                take(*current);
                if (++historyIndex >= total) break;
                --current;
                if (TickTime(*current) > sessionEnd) break;
            }
            tick = current;
            index = historyIndex;
            if (historyIndex < total || m_nPendingTicks <= 0) break;
            pending = m_pPendingTicks;
            pendingCount = m_nPendingTicks;
            m_nPendingTicks = 0;
            onHistory = false;
        }
        while (pendingAt < pendingCount && TickTime(pending[pendingAt]) <= sessionEnd) {
            take(pending[pendingAt++]);
        }
        if (pendingAt < pendingCount) {
            // A short bar at a session's end is kept as a bar.
            if (inBar > 0) {
                writeBar();
                bar = RTINTRADAY_PRICEREC{};
                inBar = 0;
            }
            sessionEnd = kNoSessionEnd;  // the rest run without a limit
            continue;
        }
        break;
    }
    if (pending) {
        std::free(pending);
        m_pPendingTicks = nullptr;
        m_nPendingTicks = m_nPendingCapacity = 0;
    }
    if (bar.time > m_openBar.time) {
        if (inBar < weight) {
            m_tickCount = inBar;
            m_openBar = bar;
        } else {
            m_tickCount = 0;
        }
        m_sessionEnd = sessionEnd == kNoSessionEnd ? 0 : static_cast<uint32_t>(sessionEnd);
    }
    if (inBar > 0) writeBar();
    return inBar == weight;
}
