// The heartbeat of a running bar request: empty bars that hold the chart's place while no
// trade comes, and the notice that a session has ended. The application's heartbeat
// listener calls it; the library never does.

#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTServer.h>

#include "securities/IntradayClock.h"
#include "securities/SessionWalk.h"

using qvnrt::securities::SessionWalk;

namespace {

constexpr int32_t kMissingVolume = -32080;
constexpr float kMissingPrice = -32080.0f;

// Clears the re-entry guard however the heartbeat ends.
struct HeartBeatGuard {
    explicit HeartBeatGuard(int32_t& flag) : flag(flag) { flag = 1; }
    ~HeartBeatGuard() { flag = 0; }
    int32_t& flag;
};

}  // namespace

void RTSecurity::OnHeartBeat() {
    if (m_barStart == 0 || !RTServer::IsConnected() || m_bInHeartBeat) return;
    const SessionWalk walk(m_pSessionInfo, m_pHolidaysInfo);
    if (!walk.usable()) return;
    const HeartBeatGuard guard(m_bInHeartBeat);

    calcSecondsDelayed();
    // The last full second, on the clock of the security's own delay.
    const uint32_t now = static_cast<uint32_t>(qvnrt::securities::IntradayNow() -
                                               m_secondsDelayed + EPOCH_1970 - 1);
    if (now <= m_barEnd) return;

    bool barDue = false;
    if (m_sessionEnd == 0 || m_sessionEnd < now) {
        unsigned long next = 0;
        if (FindEdges(now, next)) {
            m_openUntil = m_sessionEnd;
            barDue = true;
        } else {
            m_closedUntil = static_cast<uint32_t>(next);
            unsigned long following = 0;
            FindEdges(next, following);  // learns the coming session's edges
            // The id is the quote handle, not the tick handle: kept, owners match on it.
            if (m_openUntil) ReqTickCallback(m_request, 0, 1, 1, 0, nullptr);
            m_openUntil = 0;
        }
    } else if (m_openUntil || m_closedUntil <= now) {
        m_openUntil = m_sessionEnd;
        barDue = true;
    }
    if (!barDue) return;

    m_closedUntil = 0;
    if (m_savedBarStart == 0) {
        // The last real bar, for a late trade that still belongs to it.
        m_savedBarStart = m_barStart;
        m_savedBarEnd = m_barEnd;
        m_savedSessionEnd = m_sessionEnd;
        m_savedLastBarStart = m_lastBarStart;
        m_savedBar = m_openBar;
    }
    const int weight = m_origRequest.weight;
    Date date = walk.at(now);
    walk.toLastSecond(date, weight);
    m_barEnd = date.m_value;
    walk.toFirstSecond(date, weight);
    m_barStart = date.m_value;
    m_openBar = RTINTRADAY_PRICEREC{m_barEnd, kMissingVolume, kMissingPrice, kMissingPrice,
                                    kMissingPrice, kMissingPrice};
    ReqTickCallback(m_request, 1, 0, 1, RTREC_INTRADAY_PRICEREC, &m_openBar);
}
