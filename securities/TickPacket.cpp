// One packet of an intraday request on its way to the owner: the state machine that chooses
// the conversion, and the market-open test that tells the owner when nothing more is due.

#include <qvnrt/RTSecurity.h>

#include <cstdint>
#include <cstdlib>

#include "securities/IntradayClock.h"
#include "securities/MinuteBarsFromTicks.h"
#include "securities/SessionWalk.h"

using qvnrt::securities::SessionWalk;

int RTSecurity::ReqTickCallbackHelper2(unsigned long handle, int count, int isNew, int type,
                                       void* data) {
    const int original = count;
    int done = 1;
    if (m_lTickStatus == -1) return 1;

    void* converted = nullptr;
    bool passThrough = false;  // unconverted records of a type with no time to adjust
    bool unknownType = false;  // records that the plain request cannot have produced
    const short ownerWeight = m_origRequest.weight;
    if (original > 0 && data) {
        if (!m_bConvert) {
            if (type == RTREC_TICKREC) {
                converted = AdjustJulians(count, data, sizeof(TICKREC));
            } else if (type == RTREC_INTRADAY_PRICEREC) {
                done = 0;
                converted = AdjustJulians(count, data, sizeof(RTINTRADAY_PRICEREC));
            } else {
                passThrough = true;
            }
        } else if (m_plainRequest.weight < 0) {
            done = 0;
            if (isNew && type == RTREC_TICKREC) {
                // A driver may send live minutes as trades; the minute store folds them into
                // one-minute bars, and so does this path while it serves without the store.
                void* bars = qvnrt::securities::MinuteBarsFromTicks(count, data);
                if (bars) {
                    converted = ConvertNewMinuteBars(count, static_cast<RTINTRADAY_PRICEREC*>(bars));
                    std::free(bars);
                } else if (count > 0) {
                    m_lTickStatus = -1;
                }
            } else if (type != RTREC_INTRADAY_PRICEREC) {
                unknownType = true;
            } else if (isNew) {
                converted = ConvertNewMinuteBars(count, static_cast<RTINTRADAY_PRICEREC*>(data));
            } else {
                converted = ConvertMinuteBarsToOrigRequest(count, data);
            }
            type = RTREC_INTRADAY_PRICEREC;
        } else if (type != RTREC_TICKREC) {
            unknownType = true;
        } else if (isNew) {
            TICKREC* ticks = static_cast<TICKREC*>(data);
            if (ownerWeight != 1) {
                converted = ConvertNewTicksToTickBars(count, ticks);
                done = m_tickCount == 0 ? 1 : 0;
            } else {
                converted = FilterNewTicks(count, ticks);
            }
        } else {
            TICKREC* ticks = static_cast<TICKREC*>(data);
            if (ownerWeight != 1) {
                int more = 0;
                converted = ConvertHistTicksToTickBars(count, ticks, more);
            } else {
                converted = FilterTickDataToOrigRequest(count, ticks);
            }
        }
    } else if (original == 0 && ownerWeight >= 2) {
        int more = 0;
        converted = ConvertHistTicksToTickBars(count, nullptr, more);  // flushes held ticks
    }

    if (converted) {
        data = converted;
        if (ownerWeight > 1) type = isNew ? RTREC_TICKBARREC : RTREC_INTRADAY_PRICEREC;
    } else if (!passThrough) {
        count = 0;
        data = nullptr;
    }

    // Records of a kind the request cannot convert are refused as a failed packet is: the
    // owner hears the empty call, and the request goes on.
    if (m_lTickStatus == -1 || unknownType) {
        const bool answer = ReqTickCallback(handle, 0, 0, 0, 0, nullptr);
        std::free(converted);
        return answer;
    }
    if (original > 0 && count == 0) {
        std::free(converted);  // everything was filtered out: the owner hears nothing
        return 1;
    }
    if (done == 0 && (m_bFirstPacket || isNew)) testMarketOpen(done);
    m_bFirstPacket = 0;
    const int answer =
        static_cast<uint8_t>(ReqTickCallback(handle, count, done, isNew, type, data));
    if (original != 0 || count == 0) {
        std::free(converted);
        return answer;
    }
    // The end of history flushed held ticks into bars: the owner is told the end as well.
    std::free(converted);
    return ReqTickCallback(handle, 0, 0, 0, 0, nullptr);
}

// Runs once per session edge, not once per packet: between edges the answer is remembered
// in m_closedUntil or m_openUntil.
void RTSecurity::testMarketOpen(int& done) {
    const SessionWalk walk(m_pSessionInfo, m_pHolidaysInfo);
    if (!walk.usable()) return;
    calcSecondsDelayed();
    const uint32_t now = static_cast<uint32_t>(qvnrt::securities::IntradayNow() -
                                               m_secondsDelayed + EPOCH_1970);
    if (m_closedUntil && now < m_closedUntil) {
        done = 1;
        return;
    }
    if (!m_closedUntil && m_openUntil && now <= m_openUntil) return;
    Date date = walk.at(now);
    walk.toLastSecond(date, -1);
    walk.toFirstSecond(date, -1);
    if (now < date.m_value) {
        m_closedUntil = date.m_value;
        m_openUntil = 0;
        done = 1;
        return;
    }
    walk.toNextSessionStart(date);
    walk.sub(date, -1);
    walk.toLastSecond(date, -1);
    m_closedUntil = 0;
    m_openUntil = date.m_value;
}
