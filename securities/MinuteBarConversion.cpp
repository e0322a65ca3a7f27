// Bars of any width, aligned to the sessions, built from one-minute bars: the history
// packets (newest first) and the live ones (oldest first). A bar is stamped with its last
// second; a session's last bar ends with the session and may be short.

#include <qvnrt/RTSecurity.h>

#include <cstdlib>
#include <cstring>

#include "securities/SessionWalk.h"
#include "store/IntradayRecords.h"

using qvnrt::securities::SessionWalk;

namespace {

constexpr int32_t kMissingVolume = -32080;
constexpr float kMissingPrice = -32080.0f;

bool Missing(float price) { return price == kMissingPrice; }

// One minute bar merged into a bar that may still hold the heartbeat's missing values.
void Merge(RTINTRADAY_PRICEREC& bar, const RTINTRADAY_PRICEREC& minute) {
    if (bar.volume == kMissingVolume) bar.volume = 0;
    bar.volume = RTSecCache::AddVolume(bar.volume, minute.volume);
    bar.close = minute.close;
    if (Missing(bar.open)) bar.open = minute.open;
    if (Missing(bar.high) || bar.high < minute.high) bar.high = minute.high;
    if (Missing(bar.low) || bar.low == 0.0f || bar.low > minute.low) bar.low = minute.low;
}

}  // namespace

void* RTSecurity::AdjustJulians(int count, void* records, int recordSize) {
    if (count <= 0 || !records || recordSize < static_cast<int>(sizeof(uint32_t))) return nullptr;
    const size_t bytes = static_cast<size_t>(count) * static_cast<size_t>(recordSize);
    auto* copy = static_cast<unsigned char*>(std::malloc(bytes));
    if (!copy) {
        m_lTickStatus = -1;
        return nullptr;
    }
    std::memcpy(copy, records, bytes);
    for (size_t at = 0; at < bytes; at += static_cast<size_t>(recordSize)) {
        uint32_t time;
        std::memcpy(&time, copy + at, sizeof(time));
        if (time != 0) time += EPOCH_1970;  // no time stays no time
        std::memcpy(copy + at, &time, sizeof(time));
    }
    return copy;
}

int RTSecurity::FindEdges(unsigned long time, unsigned long& next) {
    if (m_sessionEnd && time <= m_sessionEnd) return 1;
    m_sessionEnd = 0;
    const SessionWalk walk(m_pSessionInfo, m_pHolidaysInfo);
    next = 0;
    if (!walk.usable()) return 0;
    const int weight = m_origRequest.weight;
    Date date = walk.at(static_cast<uint32_t>(time));
    walk.add(date, weight);
    next = date.m_value;
    walk.sub(date, weight);
    if (date.m_value != time) return 0;
    walk.toNextSessionStart(date);
    walk.sub(date, weight);
    m_lastBarStart = date.m_value;
    walk.toLastSecond(date, weight);
    m_sessionEnd = date.m_value;
    return 1;
}

RTINTRADAY_PRICEREC* RTSecurity::ConvertNewMinuteBars(int& count, RTINTRADAY_PRICEREC* bars) {
    const SessionWalk walk(m_pSessionInfo, m_pHolidaysInfo);
    if (!walk.usable()) {
        count = 0;
        return nullptr;
    }
    if (count <= 0 || !bars) {
        count = 0;
        return nullptr;
    }
    // One record more than the packet: the bar that was open before it goes out too.
    auto* buffer = static_cast<RTINTRADAY_PRICEREC*>(
        std::malloc((static_cast<size_t>(count) + 1) * sizeof(RTINTRADAY_PRICEREC)));
    if (!buffer) {
        m_lTickStatus = -1;
        count = 0;
        return nullptr;
    }
    std::memcpy(buffer, bars, static_cast<size_t>(count) * sizeof(RTINTRADAY_PRICEREC));
    for (int i = 0; i < count; ++i) {
        if (buffer[i].time) buffer[i].time += EPOCH_1970;
    }
    const uint32_t width = static_cast<uint32_t>(-60 * m_origRequest.weight);
    // The output overwrites the packet as it is read: a bar goes out only after the record
    // that closed it has been taken, so writing stays at most one record ahead of reading,
    // and that one is the spare record at the end.
    int produced = 0;
    uint32_t skipUntil = 0;
    for (int i = 0; i < count; ++i) {
        const RTINTRADAY_PRICEREC minute = buffer[i];
        const uint32_t time = minute.time;
        if (time < skipUntil) continue;
        if (time < m_barStart) {
            // Late bars are not merged into closed ones, except into the real bar that the
            // heartbeat's empty bars followed: those are then forgotten.
            if (!m_savedBarStart || m_savedBarStart > time) continue;
            m_barStart = m_savedBarStart;
            m_barEnd = m_savedBarEnd;
            m_sessionEnd = m_savedSessionEnd;
            m_lastBarStart = m_savedLastBarStart;
            m_openBar = m_savedBar;
        }
        m_savedBarStart = 0;
        if (m_barStart && time >= m_barStart && time <= m_barEnd) {
            Merge(m_openBar, minute);
            continue;
        }
        unsigned long next = 0;
        if (!FindEdges(time, next)) {
            skipUntil = static_cast<uint32_t>(next);
            continue;
        }
        if (m_barStart && m_openBar.time) {
            buffer[produced] = m_openBar;
            buffer[produced++].time = m_barEnd;
        }
        // The grid runs back from the session's last bar, in unsigned arithmetic.
        m_barStart = m_lastBarStart - (m_lastBarStart + width - 60 - time) / width * width;
        m_barEnd = m_barStart == m_lastBarStart ? m_sessionEnd : m_barStart + width - 1;
        m_openBar = minute;
        m_openBar.time = m_barEnd;
    }
    // The open bar goes out too: the owner sees it grow packet by packet under one stamp.
    if (m_barStart && m_openBar.time) {
        buffer[produced] = m_openBar;
        buffer[produced++].time = m_barEnd;
    }
    count = produced;
    if (produced == 0) {
        std::free(buffer);
        return nullptr;
    }
    return buffer;
}

RTINTRADAY_PRICEREC* RTSecurity::ConvertMinuteBarsToOrigRequest(int& count, void* bars) {
    const SessionWalk walk(m_pSessionInfo, m_pHolidaysInfo);
    if (!walk.usable() || count <= 0 || !bars) {
        count = 0;
        return nullptr;
    }
    const int total = count;
    const auto* records = static_cast<const RTINTRADAY_PRICEREC*>(bars);
    auto* out = static_cast<RTINTRADAY_PRICEREC*>(
        std::malloc(static_cast<size_t>(total) * sizeof(RTINTRADAY_PRICEREC)));
    if (!out) {
        m_lTickStatus = -1;
        count = 0;
        return nullptr;
    }
    const int weight = m_origRequest.weight;
    const uint32_t width = static_cast<uint32_t>(-60 * weight);
    // The bar this packet may share with the newer packet before it, merged once.
    RTINTRADAY_PRICEREC split = m_lastHistBar;
    RTINTRADAY_PRICEREC bar{};  // time 0: empty
    bool closeSettled = false;
    int produced = 0;
    auto timeOf = [&](int i) { return records[i].time + EPOCH_1970; };
    auto writeOut = [&]() {
        out[produced++] = bar;
        // The oldest bar given so far is the one that an older packet may continue; at an
        // equal stamp the merged bar replaces it, so a bar over three packets stays whole.
        if (m_lastHistBar.time == 0 || m_lastHistBar.time >= bar.time) m_lastHistBar = bar;
        bar.time = 0;
        closeSettled = false;
    };

    int i = total - 1;  // the oldest record
    // The start of the session after the last one walked: a record there is in session and
    // opens its first bar, which spares the minute test and the bar's walk.
    uint32_t knownStart = 0;
    while (i >= 0) {
        uint32_t start = timeOf(i);
        if (start != knownStart) {
            uint32_t next = 0;
            if (!walk.minuteTest(start, next)) {
                do --i;
                while (i >= 0 && timeOf(i) < next);
                continue;
            }
            start = walk.barStart(start, weight);
        }
        uint32_t lastBar = 0;
        const uint32_t sessionEnd =
            walk.sessionEnd(timeOf(i), weight, weight, lastBar, knownStart);
        // Rules the calendar cannot walk, or a session before 1970: no progress to make.
        if (sessionEnd < timeOf(i) || start < EPOCH_1970) {
            --i;
            continue;
        }
        uint32_t end = start == lastBar ? sessionEnd + 1 : start + width;
        // The hot loop compares the driver's own times: the edges are taken back to them
        // once per bar instead of every record being moved forward.
        const uint32_t rawSessionEnd = sessionEnd - EPOCH_1970;
        uint32_t rawStart = start - EPOCH_1970;
        uint32_t rawEnd = end - EPOCH_1970;
        for (; i >= 0; --i) {
            const RTINTRADAY_PRICEREC& minute = records[i];
            const uint32_t time = minute.time;
            if (time > rawSessionEnd) break;
            if (time < rawStart) continue;
            while (time >= rawEnd) {  // bars with no record are left out
                if (bar.time) writeOut();
                start = end;
                end = start == lastBar ? sessionEnd + 1 : start + width;
                rawStart = start - EPOCH_1970;
                rawEnd = end - EPOCH_1970;
            }
            if (!bar.time) {
                bar = minute;
                bar.time = end - 1;
                if (split.time && bar.time == split.time) {
                    // Split over two packets: the newer part holds the bar's close.
                    bar.close = split.close;
                    bar.volume = RTSecCache::AddVolume(bar.volume, split.volume);
                    if (split.high > bar.high) bar.high = split.high;
                    if (bar.low == 0.0f || (split.low != 0.0f && split.low < bar.low)) {
                        bar.low = split.low;
                    }
                    split.time = 0;
                    closeSettled = true;
                }
                continue;
            }
            bar.volume = RTSecCache::AddVolume(bar.volume, minute.volume);
            if (!closeSettled) bar.close = minute.close;
            if (minute.high > bar.high) bar.high = minute.high;
            if (bar.low == 0.0f || (minute.low != 0.0f && minute.low < bar.low)) {
                bar.low = minute.low;
            }
        }
        if (bar.time) {
            // At an equal stamp the bar is the open one, now whole over its packets.
            const bool newest = bar.time >= m_openBar.time;
            const RTINTRADAY_PRICEREC written = bar;
            writeOut();
            if (newest) {
                // The newest bar of a history is the one that live data continue.
                m_openBar = written;
                m_barStart = start;
                m_sessionEnd = sessionEnd;
                m_lastBarStart = lastBar;
                m_barEnd = end - 1;
            }
        }
    }
    count = produced;
    if (produced == 0) {
        std::free(out);
        return nullptr;
    }
    return out;
}
