// A candlestick chart of one security's session-aligned bars, newest at the right. Where two
// bars are more than one width apart (the market was closed) the chart leaves a gap and
// marks it with a dashed line, rather than drawing flat bars for the closed time.
#pragma once

#include <QWidget>

#include <functional>
#include <string>
#include <vector>

#include "QuoteFeed.h"

class CandleView : public QWidget {
public:
    explicit CandleView(QWidget* parent = nullptr);

    // Shows `feed`'s bars (null: none); call Refresh when they change.
    void Show(QuoteFeed* feed);
    void Refresh() { update(); }
    QuoteFeed* feed() const { return m_feed; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QuoteFeed* m_feed = nullptr;
};
