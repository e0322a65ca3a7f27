#include "CandleView.h"

#include <QPainter>

#include <algorithm>

namespace {

constexpr int kSlot = 9;          // pixels per bar
constexpr int kGapSlots = 2;      // pixels of a session gap, in bars
constexpr int kPriceAxis = 80;    // the price labels at the right
constexpr int kMargin = 16;

// Bars of one session follow each other by one width (the session's last bar by less); more
// than that is closed time between sessions.
bool Apart(const Bar& earlier, const Bar& later, int barSeconds) {
    return static_cast<int64_t>(later.stamp) - earlier.stamp > barSeconds;
}

}  // namespace

CandleView::CandleView(QWidget* parent) : QWidget(parent) {
    setMinimumSize(320, 200);
    setAutoFillBackground(true);
    QPalette dark = palette();
    dark.setColor(QPalette::Window, QColor(24, 26, 30));
    setPalette(dark);
}

void CandleView::Show(QuoteFeed* feed) {
    m_feed = feed;
    update();
}

void CandleView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(QColor(200, 200, 200));
    if (!m_feed || m_feed->bars().empty()) {
        painter.drawText(rect(), Qt::AlignCenter, "waiting for bars...");
        return;
    }
    const std::vector<Bar>& all = m_feed->bars();
    const int plotWidth = width() - kPriceAxis - kMargin;
    // From the newest bar back, as many as fit, gaps included.
    size_t first = all.size();
    int used = 0;
    while (first > 0) {
        const bool gap = first < all.size() && Apart(all[first - 1], all[first], m_feed->barSeconds());
        const int need = kSlot + (gap ? kGapSlots * kSlot : 0);
        if (used + need > plotWidth) break;
        used += need;
        --first;
    }
    double low = all[first].low, high = all[first].high;
    for (size_t i = first; i < all.size(); ++i) {
        low = std::min(low, all[i].low);
        high = std::max(high, all[i].high);
    }
    if (high <= low) high = low + 1e-6;
    const int top = kMargin, bottom = height() - kMargin;
    const auto y = [&](double price) {
        return bottom - static_cast<int>((price - low) / (high - low) * (bottom - top));
    };

    painter.drawText(QRect(width() - kPriceAxis, top - 8, kPriceAxis - 4, 16), Qt::AlignRight,
                     QString::fromStdString(m_feed->Price(high)));
    painter.drawText(QRect(width() - kPriceAxis, bottom - 8, kPriceAxis - 4, 16), Qt::AlignRight,
                     QString::fromStdString(m_feed->Price(low)));
    painter.drawText(QRect(kMargin, 0, plotWidth, kMargin), Qt::AlignLeft,
                     QString("%1  %2-minute bars").arg(QString::fromStdString(m_feed->symbol()))
                         .arg(m_feed->barSeconds() / 60));

    int x = kMargin + plotWidth - used;
    for (size_t i = first; i < all.size(); ++i) {
        if (i > first && Apart(all[i - 1], all[i], m_feed->barSeconds())) {
            painter.setPen(QPen(QColor(90, 90, 90), 1, Qt::DashLine));
            painter.drawLine(x + kGapSlots * kSlot / 2, top, x + kGapSlots * kSlot / 2, bottom);
            x += kGapSlots * kSlot;
        }
        const Bar& bar = all[i];
        const QColor colour = bar.close >= bar.open ? QColor(38, 166, 91) : QColor(214, 69, 65);
        const int centre = x + kSlot / 2;
        painter.setPen(colour);
        painter.drawLine(centre, y(bar.high), centre, y(bar.low));
        const int bodyTop = y(std::max(bar.open, bar.close));
        const int bodyHeight = std::max(1, y(std::min(bar.open, bar.close)) - bodyTop);
        painter.fillRect(x + 1, bodyTop, kSlot - 2, bodyHeight, colour);
        x += kSlot;
    }
}
