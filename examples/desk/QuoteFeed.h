// One security of the watch list: the quote fields the desk shows, kept as they arrive, and
// its session-aligned bars of the chart's width, history first, then the open bar live.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <qvnrt/qvnrt.h>

struct Bar {
    uint32_t stamp = 0;  // a Date value: the bar's last second, or its session's close
    double open = 0, high = 0, low = 0, close = 0;
};

class QuoteFeed : public RTSessSecurity {
public:
    QuoteFeed(std::string symbol, int barMinutes);
    ~QuoteFeed() override;

    // Called after each complete batch of fields, and after each packet of bars.
    std::function<void(QuoteFeed&)> changed;

    const std::string& symbol() const { return m_symbol; }
    // Oldest first, one per stamp.
    const std::vector<Bar>& bars() const { return m_bars; }
    int barSeconds() const { return m_barSeconds; }
    // Bars that came as history, and stamps first seen live.
    size_t historyBars() const { return m_historyBars; }
    size_t liveBars() const { return m_liveBars; }
    bool historyDone() const { return m_historyDone; }
    // The session rules the bars are cut by (size 0 before they arrive).
    const SESSION_INFO& sessionRules() const { return m_rules; }
    // A price in the security's own display style (decimals or fractions).
    std::string Price(double value);

    bool hasLast = false;
    double last = 0, previousClose = 0, bid = 0, ask = 0;
    int tick = 0;  // 1 up, -1 down, 0 not known

    int ReqSecCallback(unsigned long request, int status, int field, int dataType,
                       void* data) override;
    void OnSecChanged() override;
    void OnSessChanged() override;
    bool ReqTickCallback(unsigned long request, int count, int done, int isNew, int type,
                         void* data) override;

private:
    bool RequestBars();
    // Puts `record` in its place by stamp; a live bar growing under its stamp replaces it.
    bool Store(const RTINTRADAY_PRICEREC& record);

    std::string m_symbol;
    int m_barSeconds;
    std::vector<Bar> m_bars;
    SESSION_INFO m_rules{};
    bool m_barsAsked = false;
    bool m_historyDone = false;
    size_t m_historyBars = 0;
    size_t m_liveBars = 0;
};
