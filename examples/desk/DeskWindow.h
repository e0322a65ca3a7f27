// The desk's window: the watch list at the left, the chart of the selected symbol above the
// news pane at the right. A double click on a symbol opens Symbol At A Glance.
#pragma once

#include <QMainWindow>

#include <memory>
#include <string>
#include <vector>

#include <qvnrt/qvnrt.h>

#include "QuoteFeed.h"

class CandleView;
class QListWidget;
class QTableWidget;
class QTextEdit;

class DeskWindow : public QMainWindow {
public:
    DeskWindow(const std::vector<std::string>& symbols, int barMinutes);
    ~DeskWindow() override;

    // Opens the securities and the news search; false when the service refused them all.
    bool Start();
    // Closes them; the window stays.
    void Stop();
    // The bars of the symbol the chart shows.
    size_t ChartBars() const;
    std::string ChartSymbol() const;
    // The security the chart shows (null: none).
    const QuoteFeed* ChartFeed() const;

private:
    void ShowRow(int row);
    void SelectRow(int row);
    void ShowBody(int row);
    static int OnArticle(RTNewsHeadline* headline, AddRemoveArticle what, RTNewsItem* item,
                         int count, unsigned long user);
    static int OnBody(RTNewsHeadline* headline, unsigned long user);

    std::vector<std::unique_ptr<QuoteFeed>> m_feeds;
    std::unique_ptr<RTNewsItem> m_news;
    QTableWidget* m_table;
    CandleView* m_chart;
    QListWidget* m_headlines;
    QTextEdit* m_body;
};
