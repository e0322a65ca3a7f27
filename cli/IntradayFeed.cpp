#include "cli/IntradayFeed.h"

#include <cstring>

namespace qvnrt::cli {

IntradayFeed::IntradayFeed() = default;

IntradayFeed::~IntradayFeed() = default;

uint8_t IntradayFeed::zone() const {
    return m_pSessionInfo ? m_pSessionInfo->m_info.chTimeZone : ZONE_LOCAL;
}

void IntradayFeed::OnSessChanged() {
    if (!m_pSessionRec) return;
    auto* session = new CSessionInfo(m_pSessionRec);
    auto* holidays = new CHolidaysInfo(m_pHolidayRec);
    setSessHolInfo(session, holidays, 0);
    session->Free();
    holidays->Free();
}

void IntradayFeed::OnSessClosed() {
    m_closed = true;
    RTSessSecurity::OnSessClosed();
}

void IntradayFeed::OnSecClosed() {
    m_closed = true;
    RTSessSecurity::OnSecClosed();
}

bool IntradayFeed::ReqTickCallback(unsigned long, int count, int done, int isNew, int type,
                                   void* data) {
    if (count == 0 && !data) {
        if (isNew) {
            if (done && onSessionEnd) onSessionEnd();  // the heartbeat saw the session end
        } else {
            // The end of history; after a failure the request is dead.
            m_historyDone = true;
            m_failed = m_lTickStatus == -1;
        }
        return true;
    }
    if (type == RTREC_TICKREC) {
        const auto* ticks = static_cast<const TICKREC*>(data);
        if (isNew) {
            if (onLiveTicks) onLiveTicks(ticks, count);
        } else {
            historyTicks.insert(historyTicks.end(), ticks, ticks + count);
        }
    } else if (type == RTREC_INTRADAY_PRICEREC) {
        const auto* records = static_cast<const RTINTRADAY_PRICEREC*>(data);
        for (int i = 0; i < count; ++i) bars[records[i].time] = records[i];
    } else if (type == RTREC_TICKBARREC) {
        const auto* records = static_cast<const TICKBARREC*>(data);
        for (int i = 0; i < count; ++i) {
            // A bar that goes on from the last packet moves its stamp to its newest tick.
            RTINTRADAY_PRICEREC bar;  // out of the packed record, by bytes
            std::memcpy(&bar, &records[i], sizeof(bar));
            if (records[i].continued && m_lastTickBar) bars.erase(m_lastTickBar);
            bars[bar.time] = bar;
            m_lastTickBar = bar.time;
        }
    }
    if (type == RTREC_INTRADAY_PRICEREC && !isNew && !bars.empty()) {
        m_lastTickBar = bars.rbegin()->first;
    }
    return true;
}

}  // namespace qvnrt::cli
