#include "DeskWindow.h"

#include <QHeaderView>
#include <QListWidget>
#include <QSplitter>
#include <QStatusBar>
#include <QTableWidget>
#include <QTextEdit>

#include "CandleView.h"

namespace {

enum Column { kSymbol, kArrow, kLast, kChange, kBid, kAsk, kColumnCount };
constexpr long kMaxHeadlines = 200;

QString Text(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

DeskWindow::DeskWindow(const std::vector<std::string>& symbols, int barMinutes) {
    setWindowTitle("QvnRT desk");
    m_table = new QTableWidget(static_cast<int>(symbols.size()), kColumnCount, this);
    m_table->setHorizontalHeaderLabels({"Symbol", "", "Last", "Change", "Bid", "Ask"});
    m_table->verticalHeader()->hide();
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    for (size_t row = 0; row < symbols.size(); ++row) {
        m_feeds.push_back(std::make_unique<QuoteFeed>(symbols[row], barMinutes));
        m_table->setItem(static_cast<int>(row), kSymbol, new QTableWidgetItem(Text(symbols[row])));
        for (int column = kArrow; column < kColumnCount; ++column) {
            auto* item = new QTableWidgetItem("-");
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            m_table->setItem(static_cast<int>(row), column, item);
        }
    }
    m_chart = new CandleView(this);
    m_headlines = new QListWidget(this);
    m_body = new QTextEdit(this);
    m_body->setReadOnly(true);
    m_body->setPlaceholderText("Select a headline to read its story.");

    auto* news = new QSplitter(Qt::Horizontal);
    news->addWidget(m_headlines);
    news->addWidget(m_body);
    auto* right = new QSplitter(Qt::Vertical);
    right->addWidget(m_chart);
    right->addWidget(news);
    right->setStretchFactor(0, 3);
    right->setStretchFactor(1, 2);
    auto* main = new QSplitter(Qt::Horizontal);
    main->addWidget(m_table);
    main->addWidget(right);
    main->setStretchFactor(1, 1);
    main->setSizes({400, 700});
    setCentralWidget(main);
    resize(1100, 650);

    connect(m_table, &QTableWidget::currentCellChanged, this, [this](int row) { SelectRow(row); });
    connect(m_table, &QTableWidget::cellDoubleClicked, this, [this](int row) {
        if (row >= 0) DisplaySymbolAtAGlanceDlg(this, m_feeds[row]->symbol().c_str());
    });
    connect(m_headlines, &QListWidget::currentRowChanged, this, [this](int row) { ShowBody(row); });
}

DeskWindow::~DeskWindow() {
    Stop();
}

bool DeskWindow::Start() {
    std::string search;
    int opened = 0;
    for (size_t row = 0; row < m_feeds.size(); ++row) {
        QuoteFeed& feed = *m_feeds[row];
        feed.changed = [this, row](QuoteFeed&) { ShowRow(static_cast<int>(row)); };
        if (feed.OpenSecurity(feed.symbol().c_str(), RTSECTYPE_NOT_KNOWN, 1, 0)) ++opened;
        search += (search.empty() ? "" : " ") + feed.symbol();
    }
    m_table->selectRow(0);
    SelectRow(0);
    m_news = std::make_unique<RTNewsItem>(search.c_str(), 0, 0, 1, kMaxHeadlines, 0, 0, nullptr,
                                          0, &DeskWindow::OnArticle,
                                          reinterpret_cast<unsigned long>(this));
    if (!m_news->StartNewsCollection(1, 0)) statusBar()->showMessage("News is not available.");
    return opened > 0;
}

void DeskWindow::Stop() {
    if (m_news) m_news->StopNewsCollection();
    m_headlines->clear();
    m_news.reset();
    for (auto& feed : m_feeds) {
        feed->changed = nullptr;
        feed->CloseSecurity();
    }
}

size_t DeskWindow::ChartBars() const {
    return m_chart->feed() ? m_chart->feed()->bars().size() : 0;
}

std::string DeskWindow::ChartSymbol() const {
    return m_chart->feed() ? m_chart->feed()->symbol() : std::string();
}

const QuoteFeed* DeskWindow::ChartFeed() const {
    return m_chart->feed();
}

void DeskWindow::ShowRow(int row) {
    QuoteFeed& feed = *m_feeds[row];
    // Bars can come before the first trade of the day.
    if (m_chart->feed() == &feed) m_chart->Refresh();
    if (!feed.hasLast) return;
    const auto set = [&](int column, const QString& text) { m_table->item(row, column)->setText(text); };
    set(kLast, Text(feed.Price(feed.last)));
    const double change = feed.last - feed.previousClose;
    set(kChange, feed.previousClose != 0 ? Text((change > 0 ? "+" : "") + feed.Price(change)) : "-");
    m_table->item(row, kChange)->setForeground(change < 0 ? QColor(214, 69, 65) : QColor(38, 166, 91));
    set(kBid, feed.bid != 0 ? Text(feed.Price(feed.bid)) : "-");
    set(kAsk, feed.ask != 0 ? Text(feed.Price(feed.ask)) : "-");
    set(kArrow, feed.tick > 0 ? QString::fromUtf8("\u25B2") : feed.tick < 0 ? QString::fromUtf8("\u25BC") : "");
    m_table->item(row, kArrow)->setForeground(feed.tick < 0 ? QColor(214, 69, 65) : QColor(38, 166, 91));
}

void DeskWindow::SelectRow(int row) {
    if (row < 0 || row >= static_cast<int>(m_feeds.size())) return;
    m_chart->Show(m_feeds[row].get());
}

void DeskWindow::ShowBody(int row) {
    QListWidgetItem* item = row >= 0 ? m_headlines->item(row) : nullptr;
    if (!item) {
        m_body->clear();
        return;
    }
    auto* headline = static_cast<RTNewsHeadline*>(item->data(Qt::UserRole).value<void*>());
    // The body is asked for only now; OnBody shows it when it comes.
    m_body->setPlainText(QString::fromUtf8(
        headline->GetArticleBody(&DeskWindow::OnBody, reinterpret_cast<unsigned long>(this), 0)));
}

int DeskWindow::OnArticle(RTNewsHeadline* headline, AddRemoveArticle what, RTNewsItem*, int,
                          unsigned long user) {
    auto* desk = reinterpret_cast<DeskWindow*>(user);
    if (!headline) return 1;
    if (what == ARTICLE_REMOVED) {
        for (int row = 0; row < desk->m_headlines->count(); ++row) {
            if (desk->m_headlines->item(row)->data(Qt::UserRole).value<void*>() == headline) {
                delete desk->m_headlines->takeItem(row);
                break;
            }
        }
        return 1;
    }
    CString source;
    headline->GetNewsSource(source);
    auto* item = new QListWidgetItem(QString("[%1] %2").arg(QString::fromUtf8(static_cast<const char*>(source)), QString::fromUtf8(headline->GetHeadline())));
    item->setData(Qt::UserRole, QVariant::fromValue(static_cast<void*>(headline)));
    desk->m_headlines->insertItem(0, item);  // newest on top
    return 1;
}

int DeskWindow::OnBody(RTNewsHeadline* headline, unsigned long user) {
    auto* desk = reinterpret_cast<DeskWindow*>(user);
    QListWidgetItem* current = desk->m_headlines->currentItem();
    if (current && current->data(Qt::UserRole).value<void*>() == headline) {
        desk->m_body->setPlainText(QString::fromUtf8(static_cast<const char*>(headline->m_body)));
    }
    return 1;
}
