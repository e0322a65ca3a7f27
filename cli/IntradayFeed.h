// The program's intraday security: it takes its session rules from the service, asks for
// ticks or bars, and keeps what arrives, history and live, for the tables and the chart.
#pragma once

#include <functional>
#include <map>
#include <vector>

#include <qvnrt/qvnrt.h>

namespace qvnrt::cli {

class IntradayFeed : public RTSessSecurity {
public:
    IntradayFeed();
    ~IntradayFeed() override;

    bool hasRules() const { return m_pSessionInfo != nullptr; }
    bool closed() const { return m_closed; }
    bool historyDone() const { return m_historyDone; }
    bool failed() const { return m_failed; }
    // The zone of the security's sessions (exchange-local time).
    uint8_t zone() const;

    // Bars by their stamp: a bar sent again (grown, or whole after a split) replaces the
    // one before. Empty bars of the heartbeat hold -32080 in every number.
    std::map<uint32_t, RTINTRADAY_PRICEREC> bars;
    // Ticks, history newest first; live ones are handed to onLiveTicks as they come.
    std::vector<TICKREC> historyTicks;
    std::function<void(const TICKREC*, int)> onLiveTicks;
    std::function<void()> onSessionEnd;

private:
    bool ReqTickCallback(unsigned long handle, int count, int done, int isNew, int type,
                         void* data) override;
    void OnSessChanged() override;
    void OnSessClosed() override;
    void OnSecClosed() override;

    uint32_t m_lastTickBar = 0;  // stamp of the newest tick bar, which live records continue
    bool m_closed = false;
    bool m_historyDone = false;
    bool m_failed = false;
};

}  // namespace qvnrt::cli
