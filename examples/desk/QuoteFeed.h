// One security of the watch list: the quote fields the desk shows, kept as they arrive, and
// its bars of the chart's width built from the trades.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <qvnrt/qvnrt.h>

struct Bar {
    int64_t start = 0;  // seconds since 1970, a multiple of the width
    double open = 0, high = 0, low = 0, close = 0;
};

class QuoteFeed : public RTSecurity {
public:
    QuoteFeed(std::string symbol, int barMinutes);
    ~QuoteFeed() override;

    // Called after each complete batch of fields.
    std::function<void(QuoteFeed&)> changed;

    const std::string& symbol() const { return m_symbol; }
    const std::vector<Bar>& bars() const { return m_bars; }
    int barSeconds() const { return m_barSeconds; }
    // A price in the security's own display style (decimals or fractions).
    std::string Price(double value);

    bool hasLast = false;
    double last = 0, previousClose = 0, bid = 0, ask = 0;
    int tick = 0;  // 1 up, -1 down, 0 not known
    uint32_t quoteTime = 0;  // a Date value

    int ReqSecCallback(unsigned long request, int status, int field, int dataType,
                       void* data) override;
    void OnSecChanged() override;

private:
    void AddTrade(double price);

    std::string m_symbol;
    int m_barSeconds;
    std::vector<Bar> m_bars;
};
